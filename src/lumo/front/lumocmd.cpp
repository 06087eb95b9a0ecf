// The `lumo` command in its four forms, the block's internal commands, the
// settings of the compiler and the start-up of the language.
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "data/area/dataarea.h"
#include "kernel/cmds/builtins.h"
#include "kernel/dict/dict.h"
#include "kernel/errors/errors.h"
#include "kernel/flow/flow.h"
#include "kernel/loop/loop.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/gettok.h"
#include "kernel/program/program.h"
#include "lumo/front/lexer.h"
#include "lumo/io/lumofile.h"
#include "lumo/lumo.h"
#include "lumo/objects/mobj.h"
#include "lumo/vm/vm.h"
#include "output/spout.h"
#include "results/settings.h"

namespace korvu {

uint8_t m_strict = 0;
uint8_t m_optimize = 1;
uint8_t m_lnum = 0;
uint8_t m_dbugflg = 0;
int32_t lumo_state = 1;
int32_t lumo_cmdtype = 0;
uint8_t m_mayreadcons = 0, m_abort_on_end = 0;
int32_t lumo_xeq_depth = 0;
int32_t m_sysclock = 0;
std::string m_libpath = "base;math;stat;io;eispack";
LumoLineSource m_linesource = nullptr;
LumoRun m_runhook = nullptr;

static bool libpath_done = false;

// Until the machine is linked, compiled statements cannot run.
static int norun(LumoFcn*) {
    return errtext(199, "running compiled Lumo statements is not yet available\n");
}

static void m_resetclock() {
    m_sysclock = 0;
}

void link_lumo() {
    m_runhook = norun;
    link_lumovm();
}

#ifndef NDEBUG
// The reference-count audit of debug builds: at exit, once every named
// matrix and function is dropped, no object of the store may be left.
static void m_audit() {
    lumo_clearmats();
    m_dropallfcns();
    lumostakfree();
    mo_reinit();
    if (mo_counts.live || mo_counts.scells)
        fprintf(stderr, "lumo audit: %lld objects and %lld strings not released\n",
                static_cast<long long>(mo_counts.live), static_cast<long long>(mo_counts.scells));
}
#endif

void lumoinit() {
    if (const char* p = getenv("LUMOLIB")) m_libpath = p;
    libpath_done = true;
#ifndef NDEBUG
    static bool audit = false;
    if (!audit) atexit(m_audit);
    audit = true;
#endif
}

// Lines beyond the first come from the running source: the do-file, the
// program or the user.
// Inside the block a line starting with `*` is a statement, not a comment.
static int blockgetline() {
    const uint8_t keep = getreq_keepstar;
    getreq_keepstar = 1;
    const int rc = flow_getline();
    getreq_keepstar = keep;
    return rc;
}

static int cmdlines(std::string& out) {
    if (blockgetline()) return 1;
    out = console;
    return 0;
}

static const char* skipbl(const char* p) {
    while (*p == ' ' || *p == '\t') p++;
    return p;
}

static bool isword(const char* p, const char* w) {
    const size_t n = strlen(w);
    return !strncmp(p, w, n) && (p[n] == 0 || p[n] == ' ' || p[n] == '\t');
}

// Internal commands of the block: `lumo clear`, `lumo drop name()`, and the
// others say that they are not yet available.
static int blockcmd(const char* line) {
    const char* p = skipbl(line);
    if (*p == '#') return 0;
    if (isword(p, "help")) return notyet("help");
    p = skipbl(p + 4);
    std::string word;
    while (*p && *p != ' ' && *p != '\t') word += *p++;
    p = skipbl(p);
    if (word.empty()) return errtext(198, "lumo: subcommand expected\n");
    if (word == "clear") {
        if (*p) return error(198);
        lumo_clearmats();
        m_dropallfcns();
        if (lumo_xeq_depth <= 1) m_freeunlinkedmats();
        if (++m_sysclock >= 2147483645) m_resetclock();
        return 0;
    }
    if (word == "drop") {
        // names of matrices and of functions (with "()")
        while (*p) {
            std::string name;
            while (*p && *p != '(' && *p != ' ') name += *p++;
            const bool fcn = !strncmp(p, "()", 2);
            if (fcn) p += 2;
            if (name.empty() || (*p && *p != ' ')) return error(198);
            if (fcn && ++m_sysclock >= 2147483645) m_resetclock();
            if (fcn ? m_dropfcn(name.c_str()) : lumo_dropmat(name.c_str()))
                return errorf(111, fcn ? "%s() not found\n" : "%s not found\n", name.c_str());
            p = skipbl(p);
        }
        if (lumo_xeq_depth <= 1) m_freeunlinkedmats();
        return 0;
    }
    if (word == "describe") return lumo_describe(p);
    if (word == "memory") return lumo_memory(p);
    if (word == "rename") return lumo_rename(p);
    if (word == "mosave") return lumo_mosave(p);
    if (word == "llib") return lumo_llib(p);
    if (word == "which") return lumo_which(p);
    if (word == "matsave") return lumo_matsave(p);
    if (word == "matuse") return lumo_matuse(p);
    if (word == "matdescribe") return lumo_matdescribe(p);
    return errorf(198, "lumo %s:  invalid subcommand\n", word.c_str());
}

// `lumo describe` and the others typed as a command: a subcommand word
// alone or followed by names, never by an operator.
static bool issubcmd(const char* p) {
    static const char* const words[] = {"clear",   "drop",   "describe",   "memory",
                                        "rename",  "mosave", "which",      "llib",
                                        "matsave", "matuse", "matdescribe"};
    for (const char* w : words) {
        const size_t n = strlen(w);
        if (strncmp(p, w, n)) continue;
        const char* q = skipbl(p + n);
        if (p[n] == 0) return true;
        if (p[n] != ' ' && p[n] != '\t') continue;
        if (isalpha(static_cast<unsigned char>(*q)) || *q == '_' || *q == '*') return true;
        // file names of the file subcommands
        if (w[0] == 'm' && w[1] == 'a' && (*q == '"' || *q == '/' || *q == '~')) return true;
    }
    return false;
}

// Compiles and runs the statements of one line. Returns the code of the
// first failure; *sawend: an `end` line stopped a compilation.
static int doline(const std::string& line) {
    std::string text = line;
    for (;;) {
        if (++m_sysclock >= 2147483645) m_resetclock();
        lumo_state = 1;
        std::string rest;
        int rc = cc_compile(text.c_str(), &rest);
        if (rc == -1) return 0;
        if (rc) return rc;
        const LumoFcn* f = cc_lastfcn();
        if (f && !strcmp(dmname(f), mwrd_istmt)) {
            rc = m_runhook ? m_runhook(const_cast<LumoFcn*>(f)) : norun(nullptr);
            if (lumo_xeq_depth == 1) m_freeunlinkedmats();
            if (rc) return rc;
        }
        m_dropoldfcns();
        const char* r = skipbl(rest.c_str());
        if (!*r) return 0;
        text = r;
    }
}

struct LumoSaved {
    int32_t state, cmdtype;
    uint8_t mayread, abort_on_end, delimit, strict;
    LumoLineSource src;
};

int lumocmd(int) {
    if (!libpath_done) lumoinit();
    LumoSaved sv{lumo_state, lumo_cmdtype, m_mayreadcons, m_abort_on_end,
                 delimit,    m_strict,     m_linesource};
    delimit = 0;
    m_strict = kset.lumostrict;
    m_optimize = kset.lumooptimize;
    m_lnum = kset.lumolnum;
    // a block inside an ado-file is not held to the strict setting
    if (runprog && sys_pgmloc && static_cast<const PgmRec*>(sys_pgmloc)->loadtime) m_strict = 0;
    lumo_xeq_depth++;
    const char* rest = skipbl(wheretok() ? wheretok() : "");
    bool colon = false;
    if (*rest == ':') {
        colon = true;
        rest = skipbl(rest + 1);
    }
    const std::string first = rest;
    int rc = 0;
    if (!colon && issubcmd(rest)) {
        std::string line = "lumo ";
        line += rest;
        rc = blockcmd(line.c_str());
        lumo_xeq_depth--;
        delimit = sv.delimit;
        m_strict = sv.strict;
        return rc;
    }
    m_linesource = cmdlines;
    if (!first.empty()) {
        // one statement
        lumo_cmdtype = colon ? 3 : 1;
        m_mayreadcons = colon ? 0 : 1;
        m_abort_on_end = 0;
        rc = doline(first);
    } else {
        lumo_cmdtype = colon ? 4 : 2;
        m_mayreadcons = 1;
        m_abort_on_end = 1;
        for (;;) {
            if (blockgetline()) break;
            std::string line = console;
            const char* p = skipbl(line.c_str());
            if (isword(p, "end") && !*skipbl(p + 3)) break;
            if (isword(p, "lumo") || isword(p, "help") || *p == '#') {
                rc = blockcmd(p);
            } else {
                m_lex.sawend = 0;
                m_lex.eof = 0;
                rc = doline(line);
            }
            const bool ended = m_lex.sawend || m_lex.eof;
            m_lex.sawend = 0;
            m_lex.eof = 0;
            if (rc) {
                if (lumo_cmdtype == 4) {
                    // the rest of the block is skipped
                    if (!ended)
                        for (;;) {
                            if (blockgetline()) break;
                            const char* q = skipbl(console);
                            if (isword(q, "end") && !*skipbl(q + 3)) break;
                        }
                    break;
                }
                char buf[80];
                snprintf(buf, sizeof buf, "{search r(%d):r(%d);}\n", rc, rc);
                errptl(0, buf);
                rc = 0;
            }
            if (ended) break;
        }
    }
    lumo_state = sv.state;
    lumo_cmdtype = sv.cmdtype;
    m_mayreadcons = sv.mayread;
    m_abort_on_end = sv.abort_on_end;
    delimit = sv.delimit;
    m_strict = sv.strict;
    m_linesource = sv.src;
    lumo_xeq_depth--;
    i_nvar = nvar;
    return rc;
}

int lumoxeq(const char* text) {
    // the text stands behind ":" as a one-line block of the colon form
    std::string line = ":";
    line += text;
    std::vector<char> tmp(line.begin(), line.end());
    tmp.push_back(0);
    char* save = console;
    TokState ts;
    borrow_gettok(&ts);
    console = tmp.data();
    settok(console);
    const int rc = lumocmd(0);
    console = save;
    return_gettok(&ts);
    return rc;
}

// Settings.

int set_lumodebug() {
    return readflag(&m_dbugflg);
}

} // namespace korvu
