#include "kernel/flow/dofile.h"

#include <cstring>
#include <string>
#include <vector>

#include "data/area/dataarea.h"
#include "kernel/cmds/builtins.h"
#include "kernel/dict/dict.h"
#include "kernel/errors/errors.h"
#include "kernel/flow/flow.h"
#include "kernel/loop/brk.h"
#include "kernel/loop/limits.h"
#include "kernel/loop/loop.h"
#include "kernel/loop/scratch.h"
#include "kernel/macro/macro.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/gettok.h"
#include "kernel/parse/options.h"
#include "kernel/program/pgmframe.h"
#include "output/spout.h"

namespace korvu {

static int run_depth = 0; // frames of `run` open

DoFile* dofopen(const char* path, int* rcout) {
    std::string name = path;
    const char* base = strrchr(path, '/');
    base = base ? base + 1 : path;
    if (!strchr(base, '.')) name += ".do";
    FILE* fp = fopen(name.c_str(), "rb");
    if (!fp) {
        *rcout = fierr(601, name.c_str());
        return nullptr;
    }
    DoFile* r = new DoFile();
    r->fp = fp;
    *rcout = 0;
    return r;
}

int getdofcm(DoFile* r) {
    int c;
    if (r->pushed >= 0) {
        c = r->pushed;
        r->pushed = -1;
    } else {
        c = getc(r->fp);
    }
    if (c == 13) {
        int d = getc(r->fp);
        if (d != 10 && d != EOF) r->pushed = d;
        return 10;
    }
    return c == EOF ? -1 : c;
}

void dofclos(DoFile* r) {
    if (!r) return;
    if (r->fp) fclose(r->fp);
    delete r;
}

// The echo of the raw text. Each physical line is shown once, behind ". "
// for the first line of a command and "> " for the lines that continue it.
struct Echo {
    DoFile* r;
    bool current;
    int lines = 0;        // physical lines echoed for this command
    bool midline = false; // part of this physical line is out already

    void put(int c) {
        if (!current) return;
        if (r->necho >= 500) emit(false);
        r->echo[r->necho++] = static_cast<char>(c);
    }
    void emit(bool nl) {
        if (!current) return;
        r->echo[r->necho] = 0;
        if (!midline) spoutfordo(lines == 0 ? req_prompt : "> ");
        spoutfordo(r->echo);
        r->necho = 0;
        if (nl) {
            spoutfordo("\n");
            lines++;
            midline = false;
        } else {
            midline = true;
        }
    }
    bool blank() const {
        for (int i = 0; i < r->necho; i++)
            if (r->echo[i] != ' ') return false;
        return true;
    }
};

int rddofile(char* dst, DoFile* r, int maxlen, int delim, uint8_t* eofout) {
    // a file run by `run` (an ado-file being loaded among them) is silent:
    // its echo too, which would otherwise pass the raised threshold
    Echo echo{r, r == dofilep && run_depth == 0};
    int n = 0, col = 0;
    int comment = 0; // depth of /* */
    bool linecomment = false, continuation = false;
    bool instr = false;    // inside a simple string
    int cdepth = 0;        // depth of compound strings
    bool hashline = false; // a line starting with # under ; ends at its newline
    auto put = [&](char c) {
        if (n >= maxlen - 1) return false;
        dst[n++] = c;
        return true;
    };
    for (;;) {
        int c = getdofcm(r);
        if (c < 0) {
            if (r->necho && !echo.blank()) echo.emit(true);
            r->necho = 0;
            *eofout = 1;
            dst[0] = 0;
            return 0;
        }
        if (c == '\n') {
            col = 0;
            bool wascont = continuation;
            linecomment = continuation = false;
            // the rest of a line whose command ended at a semicolon
            if (delim == 1 && n == 0 && !comment && echo.lines == 0 && echo.blank()) {
                r->necho = 0;
                continue;
            }
            echo.emit(true);
            if (comment || wascont) continue;
            if (delim == 0 || hashline) break;
            if (n > 0) put(' ');
            continue;
        }
        if (c == '\t') {
            int to = (col / 8 + 1) * 8;
            for (; col < to; col++) {
                echo.put(' ');
                if (!comment && !linecomment && !put(' ')) goto toolong;
            }
            continue;
        }
        if (c < 32 || c == 255) continue;
        echo.put(c);
        col++;
        if (linecomment) continue;
        if (comment) {
            if (c == '*' || c == '/') {
                int d = getdofcm(r);
                if (c == '*' && d == '/') {
                    echo.put(d);
                    comment--;
                    continue;
                }
                if (c == '/' && d == '*') {
                    echo.put(d);
                    comment++;
                    continue;
                }
                if (d >= 0) r->pushed = d;
            }
            continue;
        }
        if (delim == 1 && c == '#' && n == 0) hashline = true;
        if (!instr && cdepth == 0) {
            if (c == '/') {
                int d = getdofcm(r);
                if (d == '*') {
                    echo.put(d);
                    comment = 1;
                    continue;
                }
                if (d == '/' && (n == 0 || dst[n - 1] == ' ')) {
                    echo.put(d);
                    int e = getdofcm(r);
                    if (e == '/' && delim == 0) continuation = true;
                    if (e >= 0) r->pushed = e;
                    linecomment = true;
                    continue;
                }
                if (d >= 0) r->pushed = d;
            }
            if (delim == 1 && c == ';') {
                echo.emit(true);
                break;
            }
        }
        if (cdepth == 0 && c == '"') {
            instr = !instr;
        } else if (!instr && (c == '`' || (cdepth > 0 && c == '"'))) {
            int d = getdofcm(r);
            bool pair = (c == '`' && d == '"') || (c == '"' && d == '\'');
            if (pair) {
                echo.put(d);
                col++;
                cdepth += c == '`' ? 1 : -1;
                if (!put(static_cast<char>(c)) || !put(static_cast<char>(d))) goto toolong;
                continue;
            }
            if (d >= 0) r->pushed = d;
        }
        if (n == 0 && delim == 1 && c == ' ') continue;
        if (!put(static_cast<char>(c))) goto toolong;
    }
    dst[n] = 0;
    return n;
toolong:
    // the echo so far ends its line, so the message stands on its own
    if (echo.midline || r->necho) echo.emit(true);
    errsay("input too long\n");
    r->toolong = true;
    *eofout = 1;
    dst[0] = 0;
    return 0;
}

// ---- frames -----------------------------------------------------------------

uint8_t breakallowed = 0, breakdetail = 0;
int32_t gstate = 0;
uint8_t estrestore = 0;
int32_t psvfctr = -1;
char pbs_sys[16];
uint8_t hastmp_fhopened = 0, hastmp_hreturn = 0, hastmp_class = 0, hastmp_vars = 0;
const LoopBody* loopsrc = nullptr;
uint8_t status_hold = 0;
FrameHooks frame_hooks{};

// The arguments of a do-file or program: `0' the whole text, then `1', `2',
// ... a word each; a string's quotes are dropped and an empty word keeps its
// number.
static int storeargs(const char* text) {
    while (*text == ' ') text++;
    if (static_cast<int>(strlen(text)) >= macrolen) return error(1004);
    if (int rc = macresave("_0", text)) return rc;
    static std::vector<char> word;
    if (word.size() < static_cast<size_t>(macrolen)) word.resize(macrolen);
    const char* p = text;
    char name[16];
    for (int n = 1;; n++) {
        while (*p == ' ') p++;
        if (!*p) break;
        const char *b, *e;
        if (p[0] == '`' && p[1] == '"') {
            int depth;
            const char* q = pcompoundquotes(const_cast<char*>(p), &depth);
            b = p + 2;
            e = depth ? q : q - 2;
            if (e < b) e = b;
            p = q;
        } else if (*p == '"') {
            const char* q = strchr(p + 1, '"');
            b = p + 1;
            e = q ? q : p + strlen(p);
            p = q ? q + 1 : e;
        } else {
            const char* q = p;
            while (*q && *q != ' ' && *q != '"' && !(q[0] == '`' && q[1] == '"')) q++;
            b = p;
            e = q;
            p = q;
        }
        size_t len = static_cast<size_t>(e - b);
        if (len >= static_cast<size_t>(macrolen)) return error(198);
        memcpy(word.data(), b, len);
        word[len] = 0;
        snprintf(name, sizeof name, "_%d", n);
        int rc = len ? macresave(name, word.data()) : macsave0(name);
        if (rc) return rc;
    }
    return 0;
}

// `do file [args] [, nostop]`: options stand behind the last comma.
static int fileoptions(bool* stop) {
    char* rest = wheretok();
    char* comma = strrchr(rest, ',');
    if (!comma) return 0;
    *comma = 0;
    TokPos args;
    stattok(&args);
    settok(comma + 1);
    noptn = 0;
    opable = 0;
    int rc = proption();
    if (!rc) {
        *stop = findopt("stop", 1, 1);
        findopt("delay", 1, 0);
        rc = chkopt();
    }
    resettok(&args);
    return rc;
}

static void save(Frame* f) {
    f->dofilep = dofilep;
    f->loopsrc = loopsrc;
    f->tmpvctr = tmpvctr;
    f->tmpfctr = tmpfctr;
    f->psvfctr = psvfctr;
    f->sys_upline = sys_upline;
    f->delimit = delimit;
    f->moretime = moretime;
    f->trace_l0 = korvu_trace_l0;
    f->trace_l1 = korvu_trace_l1;
    f->vernum = vernum;
    f->caller_vernum = caller_vernum;
    f->mvmodern = mvmodern;
    f->program_class = program_class;
    f->gstate = gstate;
    f->estrestore = estrestore;
    f->syselseflg = syselseflg;
    f->breakallowed = breakallowed;
    f->breakdetail = breakdetail;
    f->resort_on_exit = resort_on_exit;
    f->s_outlev = s_outlev;
    f->ls_outlev = ls_outlev;
    memcpy(f->pgmname, sys_pgmname, sizeof f->pgmname);
    memcpy(f->pgmclass, sys_pgmclass, sizeof f->pgmclass);
    f->runprog = runprog;
    f->sys_is_cls = sys_is_cls;
    f->trace_flg = korvu_trace_flg;
    f->rmsg = korvu_rmsg;
    memcpy(f->pbs_sys, pbs_sys, sizeof pbs_sys);
    f->hastmp_fhopened = hastmp_fhopened;
    f->hastmp_hreturn = hastmp_hreturn;
    f->hastmp_class = hastmp_class;
    f->hastmp_vars = hastmp_vars;
    f->hold = status_hold;
}

int doprolog(Frame* f, int mode) {
    if (korvu_level >= MAXLEVEL) return error(1000);
    f->stop = 1;
    f->reader = nullptr;
    if (mode != DO_PROGRAM) {
        char path[FNLEN];
        if (int rc = gettokfn(path, sizeof path)) return error(rc);
        if (mode == DO_DO || mode == DO_RUN) {
            bool stop = true;
            if (int rc = fileoptions(&stop)) return rc;
            f->stop = stop;
        } else if (mode == DO_INCLUDE) {
            gettok(prsestd);
            if (token[0]) return error(198);
        }
        int rc;
        f->reader = dofopen(path, &rc);
        if (!f->reader) return rc;
    }
    if (mode != DO_INCLUDE) {
        typelmac++;
        if (int rc = storeargs(wheretok())) {
            dmzap(typelmac);
            typelmac--;
            dofclos(f->reader);
            return rc;
        }
    }
    save(f);
    sys_pgmloc = nullptr;
    sys_upline = 0;
    if (mode != DO_INCLUDE) psvfctr = -1;
    loopsrc = nullptr;
    status_hold = 0;
    if (f->reader) {
        dofilep = f->reader;
        delimit = 0;
        runprog = 0;
        in_byable_ado = 0;
        resort_on_exit = sys_is_cls = 0;
        if (mode != DO_INCLUDE) {
            program_class = 0;
            if (!(frame_hooks.autoloading && frame_hooks.autoloading())) sys_pgmclass[0] = 0;
        }
    } else {
        korvu_rmsg = 0;
        if (int rc = pgm_prolog(f->pgm)) {
            // nothing of the frame is live yet but the scope and the saved fields
            runprog = f->runprog;
            sys_upline = f->sys_upline;
            memcpy(sys_pgmname, f->pgmname, sizeof f->pgmname);
            memcpy(sys_pgmclass, f->pgmclass, sizeof f->pgmclass);
            korvu_rmsg = f->rmsg;
            psvfctr = f->psvfctr;
            resort_on_exit = f->resort_on_exit;
            in_byable_ado = f->pgm->byable_ado;
            memcpy(pbs_sys, f->pbs_sys, sizeof pbs_sys);
            loopsrc = f->loopsrc;
            status_hold = f->hold;
            dmzap(typelmac);
            typelmac--;
            return rc;
        }
    }
    if (mode != DO_INCLUDE) {
        hastmp_fhopened = hastmp_hreturn = hastmp_class = hastmp_vars = 0;
        ls_outlev = s_outlev;
        if (mode == DO_RUN) s_outlev = 3;
    }
    korvu_level++;
    // the divider stands at the depth of the frame it opens, as its end does,
    // and names the program by its owner once that is known
    snprintf(f->traceowner, sizeof f->traceowner, "%s", mode == DO_PROGRAM ? sys_pgmclass : "");
    if (trace_shown()) tracepgmdiv(0, f->traceowner, mode == DO_PROGRAM ? sys_pgmname : "do-file");
    if (mode != DO_INCLUDE) {
        caller_vernum = vernum;
        estrestore = breakallowed = breakdetail = 0;
    }
    return 0;
}

// Runs a clean-up step; an earlier code survives a step that resets globalrc.
static void keeprc(int (*step)()) {
    int32_t rc = globalrc;
    step();
    if (rc) globalrc = rc;
}

void doepilog(Frame* f, int mode, int keep) {
    if (frame_hooks.profiler_addtime) frame_hooks.profiler_addtime(sys_pgmname, 0);
    int retcls = mode == DO_PROGRAM ? pgm_retcls(f->pgm) : 0;
    if (mode == DO_PROGRAM) {
        korvu_rmsg = f->rmsg;
        pgm_epilog(f->pgm);
    } else {
        dofclos(f->reader);
        dofilep = f->dofilep;
        doeof = 0;
        delimit = f->delimit;
    }
    int32_t rc = globalrc;
    if (mode != DO_INCLUDE) {
        s_outlev = f->s_outlev;
        ls_outlev = f->ls_outlev;
        if (frame_hooks.file_autoclose && hastmp_fhopened) frame_hooks.file_autoclose(korvu_level);
        if (vernum > 309) rmtmpfn(f->tmpfctr);
        korvu_trace_l0 = f->trace_l0;
        korvu_trace_l1 = f->trace_l1;
        if (mode == DO_PROGRAM) korvu_trace_flg = f->trace_flg;
        vernum = f->vernum;
        if (moretime != f->moretime) {
            moretime = f->moretime;
            if (ptl_cur) ptlset_moreenable(ptl_cur, moretime != 1 && console_is_tty());
        }
        mvmodern = f->mvmodern;
        caller_vernum = f->caller_vernum;
        breakallowed = f->breakallowed;
        breakdetail = f->breakdetail;
    }
    if (mode != DO_INCLUDE) program_class = f->program_class;
    runprog = f->runprog;
    sys_upline = f->sys_upline;
    sys_is_cls = f->sys_is_cls;
    syselseflg = f->syselseflg;
    memcpy(pbs_sys, f->pbs_sys, sizeof pbs_sys);
    loopsrc = f->loopsrc;
    status_hold = f->hold;
    if (mode != DO_INCLUDE) {
        if (estrestore && frame_hooks.estirestore) keeprc(frame_hooks.estirestore);
        estrestore = f->estrestore;
        if (frame_hooks.cleanesti) keeprc(frame_hooks.cleanesti);
        if (resort_on_exit && frame_hooks.sort_restore) {
            int rc = frame_hooks.sort_restore(1);
            if (rc && !globalrc) globalrc = rc;
        }
        resort_on_exit = f->resort_on_exit;
        if (hastmp_hreturn && frame_hooks.cleanhret) keeprc(frame_hooks.cleanhret);
        psvfctr = f->psvfctr;
        rmtmpvn(f->tmpvctr);
        if (hastmp_class && frame_hooks.rmtmpclass) keeprc(frame_hooks.rmtmpclass);
        // a returning program's class decides where its results go
        rmtmpdyn(f->tmpvctr, retcls);
        tmpvctr = f->tmpvctr;
        hastmp_fhopened = f->hastmp_fhopened;
        hastmp_hreturn = f->hastmp_hreturn;
        hastmp_class = f->hastmp_class;
        hastmp_vars = f->hastmp_vars;
    }
    if (trace_shown()) tracepgmdiv(1, f->traceowner, mode == DO_PROGRAM ? sys_pgmname : "do-file");
    memcpy(sys_pgmname, f->pgmname, sizeof f->pgmname);
    sys_pgmloc = nullptr;
    memcpy(sys_pgmclass, f->pgmclass, sizeof f->pgmclass);
    korvu_level--;
    if (mode != DO_INCLUDE) {
        if (gstate && frame_hooks.gstate_close) frame_hooks.gstate_close();
        gstate = f->gstate;
        typelmac--;
        if (!keep && frame_hooks.cls_clear_return) frame_hooks.cls_clear_return();
        if (mode == DO_DO) {
            spoutlev(1, "\nend of do-file\n");
        }
    }
    globalrc = rc;
}

int godo(int mode, int keep) {
    if (byvar) return error(190);
    Frame f;
    PgmFrame pf{};
    f.pgm = &pf;
    if (int rc = doprolog(&f, mode)) return rc;
    if (mode == DO_RUN) run_depth++;
    int32_t last = 0; // under nostop, the code of the last line carried out
    for (;;) {
        stopflag = 0;
        altstopflag = 0;
        if (mode != DO_PROGRAM) {
            uint8_t old = c_outlev;
            c_outlev = 1;
            newline();
            c_outlev = old;
        }
        if (getreq(1)) {
            globalrc = f.stop ? 0 : last;
            // a command too long for the buffer ended the file: the run failed
            if (mode != DO_PROGRAM && dofilep && dofilep->toolong) globalrc = 1004;
            break;
        }
        if (stopflag) {
            globalrc = 1;
            break;
        }
        if (!doreq()) break;
        if (f.stop && globalrc) break;
        last = globalrc;
    }
    if (mode != DO_INCLUDE && psvfctr != -1 && frame_hooks.restore) {
        int32_t rc = globalrc;
        frame_hooks.restore(1);
        if (rc) globalrc = rc;
    }
    int rc = globalrc;
    if (mode == DO_RUN) run_depth--;
    doepilog(&f, mode, keep);
    globalrc = rc;
    return rc;
}

int docmd(int mode) {
    return godo(mode, 0);
}

} // namespace korvu
