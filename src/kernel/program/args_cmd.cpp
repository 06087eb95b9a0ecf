// The small argument commands: `args`, `gettoken`, `confirm`, the markers
// and `unabcmd`.
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "data/area/dataarea.h"
#include "data/area/missing.h"
#include "data/area/storage.h"
#include "data/expr/expr.h"
#include "data/formats/formats.h"
#include "data/sort/bystate.h"
#include "data/vars/varlist.h"
#include "data/vars/vartab.h"
#include "kernel/cmds/builtins.h"
#include "kernel/dict/dict.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/brk.h"
#include "kernel/loop/limits.h"
#include "kernel/loop/loop.h"
#include "kernel/loop/scratch.h"
#include "kernel/macro/macro.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/gettok.h"
#include "kernel/parse/options.h"
#include "kernel/program/argparse.h"
#include "output/spout.h"

namespace korvu {

int kvargs(int) {
    int k = 0;
    for (;;) {
        gettok(prsestd);
        if (!token[0]) break;
        if (tokisstr(token) || chkname(token, 1)) return 198;
        if (int rc = chklmname(token)) return rc;
        std::string name = std::string("_") + token;
        std::string pos = "_" + std::to_string(++k);
        const char* v = macptr(pos.c_str());
        if (v && *v) {
            std::string val = v;
            if (int rc = macresave(name.c_str(), val.c_str())) return rc;
        } else {
            macerase(name.c_str());
        }
    }
    return stopflag ? 1 : 0;
}

namespace {

// "(local) name" or "(global) name"; local by default. The stored name.
int macroname(std::string& out) {
    gettok(prsestd);
    bool global = false;
    if (tokis(token, "(")) {
        gettok(prsestd);
        if (tokis(token, "global"))
            global = true;
        else if (!tokis(token, "local"))
            return error(198);
        if (gtokis(')')) return error(198);
        gettok(prsestd);
    }
    if (!token[0] || tokisstr(token) || tokis(token, ":") || tokis(token, ",")) return error(198);
    if (!global)
        if (int rc = chklmname(token)) return rc;
    out = global ? std::string(token) : std::string("_") + token;
    if (chkmacname(out.c_str())) return error2(1, token);
    return 0;
}

std::string unquote(std::string d) {
    if (d.size() >= 2 && d.front() == '"' && d.back() == '"') return d.substr(1, d.size() - 2);
    if (d.size() >= 4 && d.compare(0, 2, "`\"") == 0 && d.compare(d.size() - 2, 2, "\"'") == 0)
        return d.substr(2, d.size() - 4);
    return d;
}

} // namespace

int kvgettok(int) {
    std::string a, b, c;
    if (int rc = macroname(a)) return rc;
    TokPos at;
    stattok(&at);
    gettok(prsestd);
    if (!tokis(token, ":")) {
        resettok(&at);
        if (int rc = macroname(b)) return rc;
        if (gtokis(':')) return error(198);
    }
    if (int rc = macroname(c)) return rc;
    std::string delims = " ", matchmac, qedmac;
    gettok(prsestd);
    if (tokis(token, ",")) {
        noptn = 0;
        opable = 0;
        if (int rc = proption()) return rc;
        std::vector<char> buf(600);
        findargasis("parse", 1, buf.data(), 600);
        std::string d = unquote(buf.data());
        if (d.size() > 504) return error(198);
        if (!d.empty()) delims = d;
        char m[64];
        findargn("match", 1, m, sizeof m, 1);
        if (m[0]) matchmac = std::string("_") + m;
        findargn("qed", 3, m, sizeof m, 1);
        if (m[0]) qedmac = std::string("_") + m;
        if (int rc = chkopt()) return rc;
    } else if (token[0]) {
        return error(198);
    }
    const char* v = macptr(c.c_str());
    std::string text = v ? v : "";
    size_t i = 0;
    while (i < text.size() && text[i] == ' ') i++;
    std::string first;
    int quoted = 0;
    std::string bracket;
    if (i >= text.size()) {
        // nothing left: both are emptied
    } else if (text[i] == '"' || (text[i] == '`' && i + 1 < text.size() && text[i + 1] == '"')) {
        std::string copy = text.substr(i);
        char* s = copy.data();
        char* e;
        if (*s == '"') {
            int err;
            e = psimplequotes(s, &err);
            first = err ? copy.substr(1) : copy.substr(1, e - s - 2);
        } else {
            int depth;
            e = pcompoundquotes(s, &depth);
            first = depth ? copy.substr(2) : copy.substr(2, e - s - 4);
        }
        quoted = 1;
        i += static_cast<size_t>(e - s);
    } else if (!matchmac.empty() && (text[i] == '(' || text[i] == '[')) {
        std::string copy = text.substr(i);
        int err;
        char* e = pbrackets(copy.data(), &err);
        if (err) {
            return errtext(132, "unmatched open parenthesis or bracket\n");
        }
        size_t len = static_cast<size_t>(e - copy.data());
        bracket = copy.substr(0, 1);
        first = copy.substr(1, len - 2);
        i += len;
    } else if (delims.find(text[i]) != std::string::npos) {
        first = text.substr(i, 1);
        i++;
    } else {
        size_t s = i;
        while (i < text.size() && text[i] != ' ' && delims.find(text[i]) == std::string::npos) {
            if (text[i] == '"') {
                size_t e = text.find('"', i + 1);
                i = e == std::string::npos ? text.size() : e + 1;
                continue;
            }
            if (text[i] == '`' && i + 1 < text.size() && text[i + 1] == '"') {
                std::string copy = text.substr(i);
                int depth;
                char* e = pcompoundquotes(copy.data(), &depth);
                i += static_cast<size_t>(e - copy.data());
                continue;
            }
            i++;
        }
        first = text.substr(s, i - s);
    }
    std::string rest = text.substr(std::min(i, text.size()));
    if (vernum < 700) {
        size_t b = rest.find_first_not_of(' ');
        rest = b == std::string::npos ? std::string() : rest.substr(b);
    }
    if (int rc = macresave(a.c_str(), first.c_str())) return rc;
    if (!b.empty())
        if (int rc = macresave(b.c_str(), rest.c_str())) return rc;
    if (!matchmac.empty())
        if (int rc = macresave(matchmac.c_str(), bracket.c_str())) return rc;
    if (!qedmac.empty())
        if (int rc = macresave(qedmac.c_str(), quoted ? "1" : "0")) return rc;
    return 0;
}

// --- confirm ------------------------------------------------------------------

namespace {

int notfoundwhere(const std::string& what, const char* expected) {
    return errorf(7, "'%s' found where %s expected\n", what.c_str(), expected);
}

std::vector<std::string> restwords() {
    std::vector<std::string> w;
    for (;;) {
        gettok(prsestd2);
        if (!token[0]) break;
        w.emplace_back(tokisstr(token) ? token + 1 : token);
    }
    return w;
}

bool fileexists(const std::string& f) {
    struct stat st;
    return stat(f.c_str(), &st) == 0;
}

int confirmvars(const std::string& qual, const std::vector<std::string>& names) {
    if (names.empty()) {
        return errtext(7, "nothing found where variable name expected\n");
    }
    for (const std::string& n : names) {
        if (qual == "new") {
            if (chkname(n.c_str(), 1)) return 198;
            if (sysfindvar(n.c_str()) > 0) return error2(3, n.c_str());
            continue;
        }
        int v = qual == "exact" ? findvarnoab(n.c_str(), 1) : korvu_findvar(n.c_str(), 1, 0);
        if (v <= 0) return -v ? -v : 111;
        if (qual == "numeric" && typlist[v - 1] <= 244) {
            return errorf(7, "%s is not a numeric variable\n", n.c_str());
        }
        if (qual == "string" && typlist[v - 1] > 244) {
            return errorf(7, "%s is not a string variable\n", n.c_str());
        }
    }
    return 0;
}

int confirmnumber(const std::string& qual, const std::string& text) {
    double v;
    if (text.empty() || text.find(' ') != std::string::npos || cnvstoz(text.c_str(), &v) ||
        v >= misval)
        return notfoundwhere(text, "number");
    if (qual == "integer" && v != static_cast<double>(static_cast<long long>(v)))
        return notfoundwhere(text, "integer");
    return 0;
}

int confirmfile(const std::string& qual, const std::string& f) {
    if (f.empty()) {
        return errtext(7, "nothing found where filename expected\n");
    }
    if (qual == "new") {
        if (fileexists(f)) return fierr(602, f.c_str());
        FILE* fp = fopen(f.c_str(), "w");
        if (!fp) return fierr(603, f.c_str());
        fclose(fp);
        unlink(f.c_str());
        return 0;
    }
    if (access(f.c_str(), R_OK) != 0) return fierr(601, f.c_str());
    return 0;
}

int confirmformat(const std::string& qual, const std::string& f) {
    FmtDesc d;
    int kind = qual == "numeric" ? 1 : qual == "string" ? 2 : 0;
    bool ok = !f.empty() && (qual == "date" ? !chkdfmt(f.c_str(), &d) || !chktfmt(f.c_str(), &d)
                                            : !chkfmt(f.c_str(), kind, &d));
    if (!ok) {
        std::string what = qual.empty() || qual == "date" ? "format" : qual + " format";
        if (qual == "date") what = "date format";
        return notfoundwhere(f, what.c_str());
    }
    return 0;
}

} // namespace

int confirm(int) {
    if (byvar) return error(190);
    gettok(prsestd);
    std::string w = tokisstr(token) ? token + 1 : token;
    if (!w.empty() && cmdcmp(w.c_str(), "existence", 1)) {
        if (!*peektok_chr()) {
            required("something");
            return 6;
        }
        return 0;
    }
    struct NameTest {
        const char* word;
        int minlen;
        const char* nothing;
        int type;
    };
    static constexpr NameTest ntests[] = {
        {"names", 4, "nothing found where name expected\n", 0},
        {"matrix", 3, "nothing found where matrix name expected\n", DM_MATRIX},
        {"scalar", 3, "nothing found where scalar name expected\n", DM_SCALAR},
    };
    for (const NameTest& t : ntests) {
        if (w.empty() || !cmdcmp(w.c_str(), t.word, t.minlen)) continue;
        std::vector<std::string> names = restwords();
        if (names.empty()) {
            return errtext(7, t.nothing);
        }
        for (const std::string& n : names) {
            if (!t.type) {
                if (chkname(n.c_str(), 0)) {
                    return errorf(7, "%s invalid name\n", n.c_str());
                }
            } else if (!dmfind0(n.c_str(), t.type)) {
                return errorf(111, "%s %s not found\n", t.type == DM_MATRIX ? "matrix" : "scalar",
                              n.c_str());
            }
        }
        return 0;
    }
    static constexpr const char* quals[] = {"new",  "exact", "numeric", "string",
                                            "date", "ts",    "integer"};
    std::string qual;
    auto istest = [](const std::string& x, int* which) {
        if (x.empty()) return false;
        if (cmdcmp(x.c_str(), "variable", 1)) return *which = 1, true;
        if (cmdcmp(x.c_str(), "number", 1)) return *which = 2, true;
        if (cmdcmp(x.c_str(), "file", 1)) return *which = 3, true;
        if (cmdcmp(x.c_str(), "format", 2)) return *which = 4, true;
        return false;
    };
    int which = 0;
    if (!istest(w, &which)) {
        std::string q = w.substr(0, 9);
        bool known = false;
        for (const char* k : quals)
            if (q == k) known = true;
        gettok(prsestd);
        std::string next = tokisstr(token) ? token + 1 : token;
        if (!known || !istest(next, &which)) return error(198);
        qual = q;
    }
    std::string rest = peektok_chr();
    while (!rest.empty() && rest.back() == ' ') rest.pop_back();
    switch (which) {
    case 1: return confirmvars(qual, restwords());
    case 2: return confirmnumber(qual, unquote(rest));
    case 3: {
        char f[FNLEN];
        if (!*peektok_chr()) return confirmfile(qual, "");
        if (int rc = gettokfn(f, sizeof f)) return error(rc);
        return confirmfile(qual, f);
    }
    default: return confirmformat(qual, unquote(rest));
    }
}

// --- markers --------------------------------------------------------------------

// The marker from the present parse: 1 where an observation is in range, its
// if-expression true and its weight usable, 0 elsewhere.
static int markdata(const char* name, int zeroweight, int by) {
    if (int rc = addvar(name, 251)) return rc;
    int v = nvar;
    // a program called once per by-group marks its group only
    int32_t lo = nobs1, hi = nobs2;
    ByContext c = bycontext(pbs_sys);
    if (by && (c.kind == 2 || c.kind == 3)) {
        if (c.first > lo) lo = c.first;
        if (c.last < hi) hi = c.last;
    }
    for (int i = 1; i <= nobs; i++) {
        bool on = i >= lo && i <= hi;
        if (on && ifclause) on = xeq(&ifpgm, i) != 0;
        if (on && weclause) {
            double w = xeq(&wepgm, i);
            on = w < misval && (zeroweight || w != 0);
        }
        store(v, i, on ? 1 : 0);
        if ((i & 1023) == 0 && kvpollstd()) return 1;
    }
    i_nvar = nvar;
    return 0;
}

// Zero where any of the variables is missing, or a string is empty.
static int markoutdata(const char* marker, const int* vars, int n, int strok, int sysmissok) {
    int m = korvu_findvar(marker, 0, 1);
    if (m <= 0) return m ? -m : 111;
    std::vector<char> buf(2048);
    for (int i = 1; i <= nobs; i++) {
        if (korvu_data(m, i) == 0) continue;
        bool drop = false;
        for (int k = 0; k < n && !drop; k++) {
            int v = vars[k];
            if (typlist[v - 1] > 244) {
                double x = korvu_data(v, i);
                drop = sysmissok ? x == misval : x >= misval;
            } else {
                drop = skorvu_data(v, i, buf.data())[0] == 0;
            }
        }
        if (drop) store(m, i, 0);
        if ((i & 1023) == 0 && kvpollstd()) return 1;
    }
    return 0;
}

int markcmd(int) {
    vable = 1, vexists = 0, ifable = 0, oable = 0, wgtable = 0, wgtallowt = 15, opable = 0;
    if (int rc = parse()) return rc;
    if (lnvar != 1) return error(lnvar ? 103 : 102);
    int zero = findopt("zeroweight", 4, 0);
    int by = findopt("by", 2, 1);
    if (int rc = chkopt()) return rc;
    std::string name = newvarname[0];
    if (varlist_vr[0]) return error2(3, name.c_str());
    return arg_hooks.mark ? arg_hooks.mark(name.c_str(), zero) : markdata(name.c_str(), zero, by);
}

int markin(int) {
    vable = 1, vexists = 0, ifable = 0, oable = 0, opable = 0;
    if (int rc = parse()) return rc;
    if (lnvar != 1) return error(lnvar ? 103 : 102);
    int by = findopt("by", 2, 1);
    if (int rc = chkopt()) return rc;
    std::string name = newvarname[0];
    if (varlist_vr[0]) return error2(3, name.c_str());
    return arg_hooks.mark ? arg_hooks.mark(name.c_str(), 0) : markdata(name.c_str(), 0, by);
}

int markout(int) {
    vable = 1, rcpable = 0, opable = 0;
    if (int rc = parse()) return rc;
    int strok = findopt("strok", 5, 0);
    int sysmissok = findopt("sysmissok", 9, 0);
    if (int rc = chkopt()) return rc;
    if (typlist[varlist_vr[0] - 1] != 251) {
        return errorf(198, "%s not byte\n", varname(varlist_vr[0]));
    }
    std::vector<int> vars;
    for (int k = 2; k <= lnvar; k++) {
        const Recipe* r = realrcp(k);
        if (r && !rcpiszero(r)) return error(6101);
        int v = realvarlist(k);
        // a string variable marks out its empty cells, and only when asked
        if (isstrtype(typlist[v - 1]) && !strok) return error(109);
        vars.push_back(v);
    }
    auto fn = arg_hooks.markout ? arg_hooks.markout : markoutdata;
    return fn(varname(varlist_vr[0]), vars.data(), static_cast<int>(vars.size()), strok, sysmissok);
}

// Runs a marker command on text built here, as if typed.
static int runmark(int (*fn)(int), const std::string& text) {
    std::vector<char> line(text.begin(), text.end());
    line.push_back(0);
    TokState tok;
    borrow_gettok(&tok);
    settok(line.data());
    cmdinit();
    i_nvar = nvar;
    int rc = fn(0);
    return_gettok(&tok);
    return rc;
}

int markscmd(int) {
    gettok(prsestd);
    if (!token[0] || tokisstr(token)) return error(198);
    if (int rc = chklmname(token)) return rc;
    std::string lname = token;
    gettok(prsestd);
    int novarlist = 0, strok = 0, zero = 0, noby = 0;
    if (tokis(token, ",")) {
        noptn = 0;
        opable = 0;
        if (int rc = proption()) return rc;
        novarlist = findopt("novarlist", 5, 0);
        strok = findopt("strok", 5, 0);
        zero = findopt("zeroweight", 4, 0);
        noby = !findopt("by", 2, 1);
        if (int rc = chkopt()) return rc;
    } else if (token[0]) {
        return error(198);
    }
    char tmp[40];
    mktmpvn(tmp);
    if (int rc = macresave(("_" + lname).c_str(), tmp)) return rc;
    auto mac = [](const char* n) {
        const char* v = macptr(n);
        return std::string(v ? v : "");
    };
    std::string text = std::string(tmp) + " " + mac("_if") + " " + mac("_in");
    if (!mac("_weight").empty()) text += " [" + mac("_weight") + " " + mac("_exp") + "]";
    if (zero || noby)
        text += std::string(",") + (zero ? " zeroweight" : "") + (noby ? " noby" : "");
    int32_t keep = nvar;
    if (int rc = runmark(markcmd, text)) return rc;
    i_nvar = nvar > keep ? nvar : i_nvar;
    if (!novarlist && !mac("_varlist").empty()) {
        std::string t = std::string(tmp) + " " + mac("_varlist") + (strok ? ", strok" : "");
        if (int rc = runmark(markout, t)) return rc;
    }
    return 0;
}

// --- unabcmd --------------------------------------------------------------------

int unabcmd(int) {
    gettok(prsestd);
    if (!token[0]) return error(198);
    std::string w = tokisstr(token) ? token + 1 : token;
    gettok(prsestd);
    if (token[0]) return error(198);
    if (w != "." && chkname(w.c_str(), 0)) {
        return errorf(198, "%s is an invalid command name\n", w.c_str());
    }
    static constexpr struct {
        const char* word;
        int minlen;
    } extra[] = {{"cnreg", 3},   {"logit", 4},  {"mlogit", 4}, {"ologit", 4},
                 {"oprobit", 5}, {"probit", 4}, {"regress", 3}};
    std::string full = w;
    if (const char* b = findbuiltin(w.c_str())) {
        full = b;
    } else {
        for (const auto& e : extra)
            if (cmdcmp(w.c_str(), e.word, e.minlen)) full = e.word;
    }
    if (arg_hooks.clear_r) arg_hooks.clear_r();
    return rpostmac("cmd", full.c_str());
}

} // namespace korvu
