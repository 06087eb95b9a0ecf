#include "kernel/dofile.h"

#include <cstring>
#include <string>

#include "kernel/brk.h"
#include "kernel/builtins.h"
#include "kernel/cmdparse.h"
#include "kernel/dict.h"
#include "kernel/errors.h"
#include "kernel/gettok.h"
#include "kernel/limits.h"
#include "kernel/loop.h"
#include "kernel/macro.h"
#include "kernel/options.h"
#include "kernel/program.h"
#include "output/spout.h"

namespace korvu {

uint8_t breakallowed = 0, breakdetail = 0;

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
        if (!midline) spoutfordo(lines == 0 ? ". " : "> ");
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
    Echo echo{r, r == dofilep};
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
    c_outlev = 3;
    spout21("input too long\n");
    *eofout = 1;
    dst[0] = 0;
    return 0;
}

struct Frame {
    DoFile* dofile;
    int32_t tmpv_since, tmpf_since;
    uint8_t delimit, s_outlev, ls_outlev, runprog, syselseflg, procflg, breakallowed, breakdetail;
    int32_t vernum, sys_upline, moretime;
    char pgmname[33];
    PgmFrame pgm;
};

// The arguments of a do-file: `0' the whole text, then `1', `2', ... a word
// each; a string's quotes are dropped and an empty word keeps its number.
static int storeargs(const char* text) {
    while (*text == ' ') text++;
    if (static_cast<int>(strlen(text)) >= macrolen) return error(1004);
    if (int rc = macresave("_0", text)) return rc;
    const char* p = text;
    char name[16];
    std::string word;
    for (int n = 1;; n++) {
        while (*p == ' ') p++;
        if (!*p) break;
        word.clear();
        if (p[0] == '`' && p[1] == '"') {
            int depth;
            char* e = pcompoundquotes(const_cast<char*>(p), &depth);
            const char* end = depth ? e : e - 2;
            word.assign(p + 2, end > p + 2 ? end : p + 2);
            p = e;
        } else if (*p == '"') {
            const char* q = strchr(p + 1, '"');
            word.assign(p + 1, q ? q : p + strlen(p));
            p = q ? q + 1 : p + strlen(p);
        } else {
            const char* q = p;
            while (*q && *q != ' ' && *q != '"' && !(q[0] == '`' && q[1] == '"')) q++;
            word.assign(p, q);
            p = q;
        }
        if (static_cast<int>(word.size()) >= macrolen) return error(198);
        snprintf(name, sizeof name, "_%d", n);
        int rc = word.empty() ? macsave0(name) : macresave(name, word.c_str());
        if (rc) return rc;
    }
    return 0;
}

static int doprolog(Frame* f, int mode, bool* stop) {
    if (korvu_level >= 64) return error(1000);
    *stop = true;
    char path[500];
    if (mode != 3) {
        if (int rc = gettokfn(path)) return error(rc);
        if (mode == 0 || mode == 1) {
            // options follow the last comma of the line
            char* rest = wheretok();
            char* comma = strrchr(rest, ',');
            if (comma) {
                *comma = 0;
                TokPos args;
                stattok(&args);
                settok(comma + 1);
                noptn = 0;
                opable = 0;
                if (int rc = proption()) return rc;
                *stop = findopt("stop", 1, 1);
                findopt("delay", 1, 0);
                if (int rc = chkopt()) return rc;
                resettok(&args);
            }
        } else if (mode == 4) {
            gettok(prsestd);
            if (token[0]) return error(198);
        }
    }
    int rc = 0;
    DoFile* r = mode == 3 ? nullptr : dofopen(path, &rc);
    if (mode != 3 && !r) return rc;
    if (mode != 4) {
        typelmac++;
        if (int arc = storeargs(wheretok())) {
            dmzap(typelmac);
            typelmac--;
            dofclos(r);
            return arc;
        }
        f->tmpv_since = tmpvctr;
        f->tmpf_since = tmpfctr;
    }
    f->dofile = dofilep;
    f->delimit = delimit;
    f->s_outlev = s_outlev;
    f->ls_outlev = ls_outlev;
    f->runprog = runprog;
    f->syselseflg = syselseflg;
    f->procflg = procflg;
    f->breakallowed = breakallowed;
    f->breakdetail = breakdetail;
    f->vernum = vernum;
    f->sys_upline = sys_upline;
    f->moretime = moretime;
    strcpy(f->pgmname, sys_pgmname);
    sys_pgmloc = nullptr;
    sys_upline = 0;
    if (mode == 3) {
        if (int prc = pgm_prolog(&f->pgm)) {
            mac_frame_end(f->tmpv_since, f->tmpf_since, 0);
            typelmac--;
            sys_upline = f->sys_upline;
            return prc;
        }
    } else {
        dofilep = r;
        delimit = 0;
        runprog = 0;
    }
    if (mode != 4) {
        ls_outlev = s_outlev;
        if (mode == 1) s_outlev = 3;
        breakallowed = breakdetail = 0;
    }
    korvu_level++;
    return 0;
}

static void doepilog(Frame* f, int mode) {
    if (mode != 4) {
        int32_t rc = globalrc;
        mac_frame_end(f->tmpv_since, f->tmpf_since, mode == 3 ? pgm_retcls(&f->pgm) : 0);
        typelmac--;
        if (rc) globalrc = rc;
    }
    if (mode == 3) {
        pgm_epilog(&f->pgm);
    } else {
        dofclos(dofilep);
        dofilep = f->dofile;
        doeof = 0;
        delimit = f->delimit;
    }
    if (mode != 4) {
        s_outlev = f->s_outlev;
        ls_outlev = f->ls_outlev;
        vernum = f->vernum;
        moretime = f->moretime;
        breakallowed = f->breakallowed;
        breakdetail = f->breakdetail;
    }
    runprog = f->runprog;
    sys_upline = f->sys_upline;
    syselseflg = f->syselseflg;
    strcpy(sys_pgmname, f->pgmname);
    sys_pgmloc = nullptr;
    korvu_level--;
    if (mode == 0) {
        uint8_t old = c_outlev;
        c_outlev = 1;
        newline();
        spout21("end of do-file\n");
        c_outlev = old;
    }
}

int godo(int mode, int keep) {
    if (byvar) return error(190);
    Frame f;
    bool stop;
    if (int rc = doprolog(&f, mode, &stop)) return rc;
    for (;;) {
        stopflag = altstopflag = 0;
        if (mode != 3) {
            uint8_t old = c_outlev;
            c_outlev = 1;
            newline();
            c_outlev = old;
        }
        if (getreq(1)) {
            globalrc = 0;
            break;
        }
        if (stopflag) {
            globalrc = 1;
            break;
        }
        if (!doreq()) break;
        if (stop && globalrc) break;
    }
    int rc = globalrc;
    doepilog(&f, mode);
    globalrc = rc;
    return rc;
}

int opbrace() {
    gettok(prsestd);
    if (token[0]) return braceerror(1);
    uint8_t savedproc = procflg, savedelse = syselseflg;
    int code = 0;
    for (;;) {
        if (getreq(1)) {
            procflg = savedproc;
            syselseflg = savedelse;
            return nomatchbrace();
        }
        char* p = console;
        while (*p == ' ') p++;
        if (*p == '}') {
            p++;
            while (*p == ' ') p++;
            if (*p) {
                procflg = savedproc;
                return braceerror(0);
            }
            break;
        }
        if (!doreq()) {
            exitflg = 1;
            procflg = savedproc;
            syselseflg = savedelse;
            return 0;
        }
        if (globalrc && procflg) {
            code = globalrc;
            procflg = 0;
        } else if (stopflag && procflg) {
            code = 1;
            procflg = 0;
        }
    }
    procflg = savedproc;
    syselseflg = savedelse;
    return code;
}

} // namespace korvu

namespace korvu {
int docmd(int mode) {
    return godo(mode, 0);
}
} // namespace korvu
