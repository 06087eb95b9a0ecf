#include "kernel/loop/loop.h"

#include <cstdio>
#include <cstring>
#include <ctime>
#include <deque>
#include <string>
#include <vector>

#include "class/clslang.h"
#include "kernel/cmds/builtins.h"
#include "kernel/cmds/syscmds.h"
#include "kernel/errors/errors.h"
#include "kernel/flow/dofile.h"
#include "kernel/flow/flow.h"
#include "kernel/loop/brk.h"
#include "kernel/loop/depth.h"
#include "kernel/loop/limits.h"
#include "kernel/macro/macro.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/gettok.h"
#include "output/log/log.h"
#include "output/spout.h"

namespace korvu {

char* console = nullptr;
uint8_t procflg = 1, syselseflg = 0, runprog = 0, doeof = 0, delimit = 0;
DoFile* dofilep = nullptr;
char sys_pgmname[33], sys_pgmclass[33];
const void* sys_pgmloc = nullptr;
int32_t sys_upline = 0;
uint8_t sys_is_cls = 0, exitflg = 0, gexitflg = 0, mac_expanded = 0, realbusy = 0, korvu_rmsg = 0,
        nokbrd = 0;
int32_t korvu_level = 0;
const char* req_prompt = ". ";
int32_t sysclock = 0;
uint8_t getreq_keepstar = 0;
int16_t korvu_busy = 0;
int32_t batchmode = 0;
int32_t sinit_state = 0;
char* tmpdir = nullptr;
int32_t unix_pid = 0;
int32_t usermask = 022;
char kvFAST = 0;
int32_t lastby = 1;
double rmsgtime = 0;
uint8_t korvu_trace_flg = 0;
int32_t cmdlog_on = 0;
uint8_t in_byable_ado = 0;

// Past lines typed by the user, newest last; `#review` lists them. A ring of
// at most conslen bytes: a new line drops the oldest ones from its front, each
// in constant time, so a long session read from a pipe costs no more per line
// than a short one.
static std::deque<std::string> review_ring;
static size_t review_bytes = 0;

static void review_add(const char* line) {
    review_ring.emplace_back(line);
    review_bytes += strlen(line) + 1;
    while (review_bytes > static_cast<size_t>(conslen) && !review_ring.empty()) {
        review_bytes -= review_ring.front().size() + 1;
        review_ring.pop_front();
    }
}

static void review_list(const char* args) {
    int m = 5, n = -1;
    sscanf(args, "%d %d", &m, &n);
    if (m > 100) m = 100;
    if (m < 1) m = 1;
    if (n < 1 || n > m) n = m;
    int shown = 0;
    int number = 1;
    uint8_t old = c_outlev;
    c_outlev = 2;
    for (auto it = review_ring.rbegin(); it != review_ring.rend() && shown < n; ++it, ++number) {
        char buf[32];
        snprintf(buf, sizeof buf, "%d ", number);
        spout21(buf);
        spout21(it->c_str());
        newline();
        shown++;
    }
    c_outlev = old;
}

static const char* skipblanks(const char* p) {
    while (*p == ' ' || *p == '\t') p++;
    return p;
}

// A word at p matching full down to minlen letters; returns the length or 0.
static int wordat(const char* p, const char* full, int minlen) {
    int n = 0;
    while (p[n] && p[n] != ' ' && p[n] != '\t') n++;
    if (n > 40) return 0;
    char w[41];
    memcpy(w, p, n);
    w[n] = 0;
    return cmdcmp(w, full, minlen) ? n : 0;
}

int readcons(int maxlen, int fromdo, int allowhash) {
    for (;;) {
        c_outlev = dofilep ? 2 : 4;
        int len;
        bool fromuser = !(fromdo && dofilep);
        if (!fromuser) {
            rddofile(console, dofilep, maxlen, delimit, &doeof);
            len = static_cast<int>(strlen(console));
        } else {
            bool tty = console_is_tty() && !nokbrd;
            if (!tty && c_outlev >= s_outlev) spoutptl(req_prompt);
            spoutflush();
            if (console_readline(console, maxlen, req_prompt)) {
                doeof = 1;
                console[0] = 0;
                if (!tty && c_outlev >= s_outlev) newline();
                return 0;
            }
            len = static_cast<int>(strlen(console));
            if (len) {
                if (cmdlog_on) cmdlog_write(console);
                review_add(console);
                console_history_add(console);
            }
            if (!tty) {
                spout21(console);
                newline();
            } else {
                // the terminal shows what was typed; the logs still get the echo
                log_echo(console);
            }
        }
        while (len && console[len - 1] == ' ') console[--len] = 0;
        const char* p = skipblanks(console);
        if (*p == '#') {
            int n;
            if (!fromuser && (n = wordat(p, "#delimit", 2))) {
                const char* arg = skipblanks(p + n);
                delimit = strncmp(arg, "cr", 2) == 0 && (arg[2] == 0 || arg[2] == ' ') ? 0 : 1;
                uint8_t old = c_outlev;
                c_outlev = 2;
                spout21("delimiter now ");
                spout21(delimit ? ";" : "cr");
                newline();
                c_outlev = old;
                continue;
            }
            if ((n = wordat(p, "#review", 2))) {
                review_list(p + n);
                continue;
            }
            if (!allowhash) {
                uint8_t old = c_outlev;
                c_outlev = 3;
                spout21("Unknown #command\n");
                c_outlev = old;
                continue;
            }
        }
        spoutflush();
        return len;
    }
}

int getreq(int fromprog) {
    for (;;) {
        if (fromprog && runprog) {
            if (int rc = pgmgetline()) return rc;
            if (korvu_trace_flg) tracepgm(0); // each line as read, blocks too
        } else {
            if (dofilep && stopflag) return 1;
            int16_t busy = korvu_busy;
            korvu_busy = 0;
            readcons(conslen, 1, 0);
            korvu_busy = busy;
            if (doeof) return 1;
        }
        const char* p = skipblanks(console);
        if (!*p || (*p == '*' && !getreq_keepstar)) continue;
        settok(console);
        return 0;
    }
}

// Loop words expand their own text each pass, so the line is left alone.
static bool loopline() {
    const char* p = skipblanks(console);
    for (;;) {
        int n;
        if ((n = wordat(p, "capture", 3)) || (n = wordat(p, "noisily", 1)) ||
            (n = wordat(p, "quietly", 1))) {
            p = skipblanks(p + n);
            continue;
        }
        break;
    }
    return wordat(p, "forvalues", 4) || wordat(p, "foreach", 7) || wordat(p, "while", 2);
}

static timespec req_start;
static bool req_timed = false;

void statusline() {
    if (runprog || status_hold) return;
    uint8_t old = c_outlev;
    c_outlev = 2;
    if (globalrc) {
        if (globalrc == 1) {
            c_outlev = 3;
            newline();
            spoutptl("{hline 2}Break{hline 2}\n");
            c_outlev = 2;
        }
        char buf[80];
        snprintf(buf, sizeof buf, "{search r(%d):r(%d);}", globalrc, globalrc);
        spout_setcoloroflev();
        spoutptl(buf);
        if (!korvu_rmsg) newline();
    } else if (korvu_rmsg) {
        spout21("r;");
    }
    if (korvu_rmsg) {
        timespec now;
        clock_gettime(CLOCK_MONOTONIC, &now);
        long cs = 0;
        if (req_timed)
            cs = (now.tv_sec - req_start.tv_sec) * 100 +
                 (now.tv_nsec - req_start.tv_nsec) / 10000000;
        time_t t = time(nullptr);
        struct tm lt;
        localtime_r(&t, &lt);
        char buf[80];
        snprintf(buf, sizeof buf, " t=%ld.%02ld %d:%02d:%02d\n", cs / 100, cs % 100, lt.tm_hour,
                 lt.tm_min, lt.tm_sec);
        spout21(buf);
        rmsgtime = cs / 100.0;
    }
    c_outlev = old;
}

int doreq() {
    int16_t busy = korvu_busy;
    korvu_busy = 1;
    altstopflag = 0;
    stopflag = 0;
    byvar = 0;
    exitflg = 0;
    lastby = 1;
    req_timed = korvu_rmsg;
    if (req_timed) clock_gettime(CLOCK_MONOTONIC, &req_start);

    if (!runprog) {
        if (loopline()) {
            mac_expanded = 0;
            globalrc = 0;
        } else {
            mac_expanded = 1;
            globalrc = macexp();
        }
    } else if (!procflg) {
        globalrc = 0;
    } else if (korvu_trace_flg && korvu_trace_exp) {
        uint32_t before = cmdhash(console);
        globalrc = macexp();
        if (cmdhash(console) != before) tracepgm(1);
    } else {
        globalrc = macexp();
    }
    settok(console);

    if (globalrc == 0) {
        gettokcmd();
        globalrc = selreq();
        nvar = i_nvar;
    }
    if (exitflg) {
        if (gexitflg) sexit(0);
        exitflg = 0;
        korvu_busy = busy;
        return 0;
    }
    statusline();
    korvu_busy = busy;
    return 1;
}

// Words that keep block structure while commands are skipped.
static bool skipword(const char* w) {
    return cmdcmp(w, "_byobs", 6) || cmdcmp(w, "_cls", 4) || cmdcmp(w, "break", 5) ||
           cmdcmp(w, "capture", 3) || cmdcmp(w, "class", 5) || cmdcmp(w, "else", 4) ||
           cmdcmp(w, "foreach", 7) || cmdcmp(w, "forvalues", 4) || cmdcmp(w, "if", 2) ||
           cmdcmp(w, "m", 1) || cmdcmp(w, "lumo", 4) || cmdcmp(w, "noisily", 1) ||
           cmdcmp(w, "nobreak", 7) || cmdcmp(w, "quietly", vernum < 800 ? 3 : 1) ||
           cmdcmp(w, "version", 4) || cmdcmp(w, "while", 2) || cmdcmp(w, "{", 1);
}

static int selreq_body();

int selreq() {
    if (reqdepth >= reqdepth_limit()) return reqtoodeep();
    reqdepth++;
    int rc = selreq_body();
    reqdepth--;
    return rc;
}

static int selreq_body() {
    cmdinit();
    i_nvar = nvar;
    sysclock = sysclock >= 2147483646 ? 1 : sysclock + 1;
    if (!cmd[0] || cmd[0] == '*') return 0;
    if (!procflg) {
        if (!strcmp(cmd, "{")) return opbrace();
        if (!skipword(cmd)) return 0;
        if (const Builtin* b = lookup_builtin(cmd)) return run_builtin(b);
        return 0;
    }
    if (!strcmp(cmd, "!")) return shellcmd(0);
    if (!strcmp(cmd, "{")) return opbrace();
    if (const Builtin* b = lookup_builtin(cmd)) return run_builtin(b);
    if (cmd[0] == '.') return cls_clscmd();
    // programs and the ado search join here
    return runprogram();
}

// Prefixes: each reads the next word and calls selreq again, so they stack.
static int nextword() {
    gettok(prsestd);
    if (tokis(token, ":")) gettok(prsestd);
    setcmdword(token);
    return 0;
}

int prefix_quietly(int) {
    uint8_t saved = s_outlev;
    uint8_t set = saved;
    if (procflg && s_outlev != 5) set = s_outlev = 3;
    nextword();
    int rc = selreq();
    nvar = i_nvar;
    if (s_outlev == set) s_outlev = saved;
    return rc;
}

int prefix_noisily(int) {
    uint8_t saved = s_outlev;
    uint8_t set = saved;
    // unlike quietly, noisily acts under capture too, so capture noisily shows
    if (procflg) set = s_outlev = vernum < 220 ? 0 : ls_outlev;
    nextword();
    int rc = selreq();
    nvar = i_nvar;
    if (s_outlev == set) s_outlev = saved;
    return rc;
}

int prefix_capture(int) {
    uint8_t saved = s_outlev;
    nextword();
    s_outlev = 5;
    int rc = selreq();
    s_outlev = saved;
    nvar = i_nvar;
    if (!procflg) return 0;
    captrc = rc;
    stopflag = 0;
    altstopflag = 0;
    return 0;
}

int prefix_break(int on) {
    gettokcmd();
    int was = setbreak(on);
    int rc = selreq();
    nvar = i_nvar;
    setbreak(was);
    return rc;
}

} // namespace korvu
