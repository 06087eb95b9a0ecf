// `set` and `query`: one table of words. Each row reads its own syntax,
// checks its range and stores; the table also gives `query` its groups and
// c() its values.
#include "results/settings.h"

#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>

#include "data/area/areacmds.h"
#include "data/area/dataarea.h"
#include "data/select/generate.h"
#include "data/sort/sort.h"
#include "data/vars/varcmds.h"
#include "data/vars/vartab.h"
#include "kernel/cmds/builtins.h"
#include "kernel/errors/errors.h"
#include "kernel/flow/flow.h"
#include "kernel/loop/brk.h"
#include "kernel/loop/limits.h"
#include "kernel/loop/loop.h"
#include "kernel/parse/gettok.h"
#include "kernel/parse/options.h"
#include "kernel/program/program.h"
#include "lumo/lumo.h"
#include "output/ptl/ptl.h"
#include "output/spout.h"

namespace korvu {

MatTolerances matrind;
RngLink rnglink = {};
SchemeLink schemelink = {};
KeptSettings kset;

namespace {

int readint(int* out) {
    gettok(prsenum);
    double v;
    if (cnvstoz(token, &v) || v != std::floor(v) || std::fabs(v) > 2147483647.0) return error(198);
    *out = static_cast<int>(v);
    return 0;
}

int set_more() {
    gettok(prsenum);
    int v = 0;
    if (cmdcmp(token, "on", 2))
        v = 0;
    else if (cmdcmp(token, "off", 3))
        v = 1;
    else {
        double d;
        if (cnvstoz(token, &d) || d != std::floor(d)) return error(198);
        if (int rc = chkrange("more", static_cast<int>(d), 0, 30000)) return rc;
        v = static_cast<int>(d);
    }
    gettok(prsestd);
    bool perm = false;
    if (tokis(token, ",")) {
        gettok(prsestd);
        if (!cmdcmp(token, "permanently", 4)) return error(198);
        perm = true;
        if (v > 1) {
            return errtext(198,
                           "old syntax -set more #- may not be combined with permanent option\n");
        }
    } else if (token[0]) {
        return error(198);
    }
    moretime = v;
    if (ptl_cur) ptlset_moreenable(ptl_cur, v != 1 && console_is_tty());
    if (perm) {
        c_outlev = 1;
        spoutptl("({cmd:set more} preference recorded)\n");
    }
    return 0;
}

int set_rmsg() {
    return readflag(&korvu_rmsg);
}

int set_linesize() {
    int v = 0;
    if (int rc = readint(&v)) return rc;
    if (int rc =
            vernum >= 700 ? chkrange("linesize", v, 40, 255) : chkrange("linesize", v, 10, 32000))
        return rc;
    if (int rc = endofline()) return rc;
    ptlset_maxwidth(ptl_reswin, v);
    korvu_linewidth = ptlquery_maxwidth(ptl_reswin);
    return 0;
}

int set_pagesize() {
    int v = 0;
    if (int rc = readint(&v)) return rc;
    if (int rc = chkrange("pagesize", v, 0, 32000)) return rc;
    if (int rc = endofline()) return rc;
    korvu_pagesize = v;
    ptlset_pagesize(ptl_reswin, v);
    return 0;
}

int set_output() {
    gettok(prsestd);
    uint8_t lev;
    if (cmdcmp(token, "proc", 1))
        lev = 0;
    else if (cmdcmp(token, "inform", 1))
        lev = 2;
    else if (cmdcmp(token, "error", 1))
        lev = 3;
    else
        return notalow(token);
    if (int rc = endofline()) return rc;
    s_outlev = lev;
    return 0;
}

int set_type() {
    gettok(prsestd);
    uint8_t t;
    if (tokis(token, "float"))
        t = KV_FLOAT;
    else if (tokis(token, "double"))
        t = KV_DOUBLE;
    else
        return error(198);
    if (int rc = endofline()) return rc;
    deftype = t;
    return 0;
}

int set_dp() {
    return readpair("comma", 5, "period", 6, &kset.dp_comma);
}

int set_level() {
    gettok(prsenum);
    double v;
    if (cnvstoz(token, &v)) return error(198);
    if (int rc = chkcilevel(v)) return rc;
    if (int rc = endofline()) return rc;
    kset.level = v;
    dflt_cilevel = v;
    return 0;
}

int set_maxiter() {
    int v = 0;
    if (int rc = readint(&v)) return rc;
    if (int rc = chkrange("maxiter", v, 0, 16000)) return rc;
    if (int rc = endofline()) return rc;
    kset.maxiter = v;
    return 0;
}

// set scheme name [, permanently]
int set_scheme() {
    if (!schemelink.set) return notyet("set scheme");
    gettok(prsestd);
    std::string name = token;
    if (name.empty()) return error(198);
    if (name.size() > NAMELEN) return errorf(198, "%s invalid name\n", name.c_str());
    for (char ch : name)
        if (!(std::isalnum(static_cast<unsigned char>(ch)) || ch == '_'))
            return errorf(198, "%s invalid name\n", name.c_str());
    gettok(prsestd);
    bool perm = false;
    if (tokis(token, ",")) {
        gettok(prsestd);
        if (!cmdcmp(token, "permanently", 4)) return error(198);
        perm = true;
        gettok(prsestd);
    }
    if (token[0]) return error(198);
    if (int rc = schemelink.set(name.c_str())) return rc;
    if (perm) {
        c_outlev = 1;
        spoutptl("({cmd:set scheme} preference recorded)\n");
    }
    return 0;
}

int set_seed() {
    if (!rnglink.setseed) return notyet("set seed");
    return rnglink.setseed();
}

int set_seed0() {
    if (!rnglink.setseed0) return notyet("set seed0");
    return rnglink.setseed0();
}

int set_tol(double* where, double lo, double hi, const char* name) {
    gettok(prsenum);
    double v;
    if (cnvstoz(token, &v)) return error(198);
    if (int rc = dchkrange(name, v, lo, hi)) return rc;
    if (int rc = endofline()) return rc;
    *where = v;
    return 0;
}
int set_tol_0() {
    return set_tol(&matrind.tol_0, 0, 1, "tol_0");
}
int set_tol_1() {
    return set_tol(&matrind.tol_1, 0, 1, "tol_1");
}
int set_tol_2() {
    return set_tol(&matrind.tol_2, 0, 1, "tol_2");
}
int set_tol_r() {
    int v = 0;
    if (int rc = readint(&v)) return rc;
    if (int rc = chkrange("tol_r", v, 0, 1)) return rc;
    if (int rc = endofline()) return rc;
    matrind.tol_r = v;
    return 0;
}

int set_lumostrict() {
    return readflag(&kset.lumostrict);
}
int set_lumolnum() {
    return readflag(&kset.lumolnum);
}
int set_lumooptimize() {
    return readflag(&kset.lumooptimize);
}
int set_lumolofirst() {
    return readflag(&kset.lumolofirst);
}
int set_lumofavor() {
    gettok(prsestd);
    uint8_t v;
    if (cmdcmp(token, "speed", 5))
        v = 0;
    else if (cmdcmp(token, "space", 5))
        v = 1;
    else
        return error(198);
    if (int rc = endofline()) return rc;
    kset.lumofavor_space = v;
    return 0;
}
int set_lumocache() {
    int v = 0;
    if (int rc = readint(&v)) return rc;
    if (int rc = chkrange("lumocache", v, 1, 2147483647)) return rc;
    if (int rc = endofline()) return rc;
    kset.lumocache = v;
    return 0;
}
int set_lumolibs() {
    std::string rest = wheretok();
    size_t a = rest.find_first_not_of(' ');
    rest = a == std::string::npos ? std::string() : rest.substr(a);
    while (!rest.empty() && rest.back() == ' ') rest.pop_back();
    if (rest.size() >= 2 && rest.front() == '"' && rest.back() == '"')
        rest = rest.substr(1, rest.size() - 2);
    if (rest.size() > 244) return error(198);
    settok(wheretok() + std::strlen(wheretok()));
    snprintf(kset.lumolibs, sizeof kset.lumolibs, "%s", rest.c_str());
    return 0;
}

// --- values for c() and query ----------------------------------------------------

struct Val {
    int kind; // 1 number, 2 text
    double num;
    std::string str;
};
Val num(double x) {
    return {1, x, ""};
}
Val txt(const char* s) {
    return {2, 0, s};
}
Val onoff(int f) {
    return txt(f ? "on" : "off");
}

Val v_more() {
    return onoff(moretime != 1);
}
Val v_rmsg() {
    return onoff(korvu_rmsg);
}
Val v_linesize() {
    return num(korvu_linewidth);
}
Val v_pagesize() {
    return num(korvu_pagesize);
}
Val v_output() {
    static const char* names[] = {"proc", "", "inform", "error", "", ""};
    return txt(s_outlev <= 5 ? names[s_outlev] : "");
}
Val v_memory() {
    return num(static_cast<double>(totalmemory));
}
Val v_maxvar() {
    return num(maxmaxvar);
}
Val v_matsize() {
    return num(matsize);
}
Val v_virtual() {
    return onoff(kset.virtual_on);
}
Val v_adosize() {
    return num(adosize);
}
Val v_trace() {
    return onoff(korvu_trace_flg);
}
Val v_tracedepth() {
    return num(korvu_trace_l1 - korvu_trace_l0);
}
Val v_traceexpand() {
    return onoff(korvu_trace_exp);
}
Val v_tracesep() {
    return onoff(korvu_trace_sep);
}
Val v_traceindent() {
    return onoff(korvu_trace_indent);
}
Val v_tracenumber() {
    return onoff(korvu_trace_number);
}
Val v_tracehilite() {
    std::string s = korvu_trace_hilite;
    if (korvu_trace_hiword && !s.empty()) s += ", word";
    return {2, 0, s};
}
Val v_varabbrev() {
    return onoff(korvu_varabbrev);
}
Val v_type() {
    return txt(deftype == KV_DOUBLE ? "double" : "float");
}
Val v_dp() {
    return txt(kset.dp_comma ? "comma" : "period");
}
Val v_level() {
    return num(kset.level);
}
Val v_maxiter() {
    return num(kset.maxiter);
}
Val v_seed() {
    char buf[5100] = "";
    if (rnglink.seedtext) rnglink.seedtext(buf, sizeof buf);
    return txt(buf);
}
Val v_scheme() {
    return txt(schemelink.current ? schemelink.current() : "default");
}

Val v_tol_0() {
    return num(matrind.tol_0);
}
Val v_tol_1() {
    return num(matrind.tol_1);
}
Val v_tol_2() {
    return num(matrind.tol_2);
}
Val v_tol_r() {
    return num(matrind.tol_r);
}
Val v_lumostrict() {
    return onoff(kset.lumostrict);
}
Val v_lumolnum() {
    return onoff(kset.lumolnum);
}
Val v_lumooptimize() {
    return onoff(kset.lumooptimize);
}
Val v_lumolofirst() {
    return onoff(kset.lumolofirst);
}
Val v_lumofavor() {
    return txt(kset.lumofavor_space ? "space" : "speed");
}
Val v_lumocache() {
    return num(kset.lumocache);
}
Val v_lumodebug() {
    return onoff(m_dbugflg);
}
Val v_lumolibs() {
    return txt(kset.lumolibs);
}

struct SetRow {
    const char* word;
    int minlen;
    int (*fn)();       // the setter, with the tokenizer behind the word
    const char* key;   // the c() key, or null
    Val (*value)();    // its value, or null
    const char* group; // the heading of `query`, or null
};

int set_virtual_row() {
    int rc = set_virtual();
    if (!rc) kset.virtual_on = static_cast<uint8_t>(virtualflg);
    return rc;
}

constexpr const char* G_OUT = "Output settings";
constexpr const char* G_MEM = "Memory settings";
constexpr const char* G_TRACE = "Trace (program debugging) settings";
constexpr const char* G_LUMO = "Lumo settings";
constexpr const char* G_OTHER = "Other settings";

constexpr SetRow set_table[] = {
    {"more", 4, set_more, "more", v_more, G_OUT},
    {"rmsg", 4, set_rmsg, "rmsg", v_rmsg, G_OUT},
    {"linesize", 8, set_linesize, "linesize", v_linesize, G_OUT},
    {"pagesize", 8, set_pagesize, "pagesize", v_pagesize, G_OUT},
    {"output", 6, set_output, nullptr, v_output, G_OUT},
    {"dp", 2, set_dp, "dp", v_dp, G_OUT},
    {"memory", 3, set_memory, "memory", v_memory, G_MEM},
    {"maxvar", 6, set_maxvar, "maxvar", v_maxvar, G_MEM},
    {"matsize", 3, set_matsize, "matsize", v_matsize, G_MEM},
    {"maxobs", 6, set_maxobs, nullptr, nullptr, nullptr},
    {"virtual", 4, set_virtual_row, "virtual", v_virtual, G_MEM},
    {"adosize", 6, set_adosize, "adosize", v_adosize, G_MEM},
    {"trace", 5, set_trace, "trace", v_trace, G_TRACE},
    {"tracedepth", 10, set_tracedepth, "tracedepth", v_tracedepth, G_TRACE},
    {"traceexpand", 11, set_traceexpand, "traceexpand", v_traceexpand, G_TRACE},
    {"tracesep", 8, set_tracesep, "tracesep", v_tracesep, G_TRACE},
    {"traceindent", 11, set_traceindent, "traceindent", v_traceindent, G_TRACE},
    {"tracenumber", 11, set_tracenumber, "tracenumber", v_tracenumber, G_TRACE},
    {"tracehilite", 11, set_tracehilite, "tracehilite", v_tracehilite, G_TRACE},
    {"lumostrict", 10, set_lumostrict, "lumostrict", v_lumostrict, G_LUMO},
    {"lumolnum", 8, set_lumolnum, "lumolnum", v_lumolnum, G_LUMO},
    {"lumooptimize", 12, set_lumooptimize, "lumooptimize", v_lumooptimize, G_LUMO},
    {"lumofavor", 9, set_lumofavor, "lumofavor", v_lumofavor, G_LUMO},
    {"lumocache", 9, set_lumocache, "lumocache", v_lumocache, G_LUMO},
    {"lumolibs", 8, set_lumolibs, "lumolibs", v_lumolibs, G_LUMO},
    {"lumolofirst", 11, set_lumolofirst, "lumolofirst", v_lumolofirst, G_LUMO},
    {"lumodebug", 9, set_lumodebug, "lumodebug", v_lumodebug, nullptr},
    {"type", 4, set_type, "type", v_type, G_OTHER},
    {"level", 5, set_level, "level", v_level, G_OTHER},
    {"maxiter", 7, set_maxiter, "maxiter", v_maxiter, G_OTHER},
    {"varabbrev", 9, set_varabbrev, "varabbrev", v_varabbrev, G_OTHER},
    {"seed", 2, set_seed, "seed", v_seed, G_OTHER},
    {"scheme", 6, set_scheme, "scheme", v_scheme, G_OTHER},
    {"seed0", 5, set_seed0, nullptr, nullptr, nullptr},
    {"tol_0", 5, set_tol_0, "tol_0", v_tol_0, G_OTHER},
    {"tol_1", 5, set_tol_1, "tol_1", v_tol_1, G_OTHER},
    {"tol_2", 5, set_tol_2, "tol_2", v_tol_2, G_OTHER},
    {"tol_r", 5, set_tol_r, "tol_r", v_tol_r, G_OTHER},
    {"obs", 3, set_obs, nullptr, nullptr, nullptr},
    {"sortseed", 8, set_sortseed, nullptr, nullptr, nullptr},
};

std::string valtext(const Val& v) {
    if (v.kind == 2) return v.str;
    char buf[40];
    snprintf(buf, sizeof buf, "%.15g", v.num);
    return buf;
}

} // namespace

// One of two words (each with its shortest abbreviation) giving 1 or 0, then
// the end of the line; *out is set only when both are right.
int readpair(const char* w1, int n1, const char* w0, int n0, uint8_t* out) {
    gettok(prsestd);
    uint8_t v;
    if (cmdcmp(token, w1, n1))
        v = 1;
    else if (cmdcmp(token, w0, n0))
        v = 0;
    else
        return error(198);
    if (int rc = endofline()) return rc;
    *out = v;
    return 0;
}

// on|off, then the end of the line.
int readflag(uint8_t* out) {
    return readpair("on", 2, "off", 3, out);
}

int setting_value(const char* key, double* numout, char* str, size_t n) {
    for (const SetRow& r : set_table) {
        if (!r.key || std::strcmp(r.key, key)) continue;
        Val v = r.value();
        if (v.kind == 1) {
            *numout = v.num;
            return 1;
        }
        snprintf(str, n, "%s", v.str.c_str());
        return 2;
    }
    return 0;
}

int setcmd(int) {
    gettok(prsestd);
    if (!token[0]) return query(0);
    std::string word = token;
    // "seed0" is a word of its own, checked before the two-letter "seed"
    if (word == "seed0") return set_seed0();
    for (const SetRow& r : set_table)
        if (cmdcmp(word.c_str(), r.word, r.minlen)) {
            if (!std::strcmp(r.word, "seed") && vernum <= 319) break;
            return r.fn();
        }
    return errorf(198, "set %s not allowed: no such setting\n", word.c_str());
}

int query(int) {
    if (int rc = endofline()) return rc;
    const char* groups[] = {G_OUT, G_MEM, G_TRACE, G_LUMO, G_OTHER};
    bool first = true;
    for (const char* g : groups) {
        if (kvpollstd()) return 1;
        c_outlev = 1;
        spoutptlf("%s{txt}    %s\n    {hline %d}\n", first ? "" : "\n", g,
                  static_cast<int>(std::strlen(g)));
        first = false;
        for (const SetRow& r : set_table) {
            if (r.group != g || !r.value) continue;
            char label[40];
            snprintf(label, sizeof label, "    %-13s", r.word);
            c_outlev = 1;
            spout21(label);
            c_outlev = 0;
            if (r.value == v_memory) {
                char mem[40];
                snprintf(mem, sizeof mem, "%.2fM", static_cast<double>(totalmemory) / 1048576.0);
                spout21(mem);
            } else {
                spout21(valtext(r.value()).c_str());
            }
            newline();
        }
    }
    return 0;
}

} // namespace korvu
