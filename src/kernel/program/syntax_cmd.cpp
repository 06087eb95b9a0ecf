// `syntax`: a template states the grammar of a program's command; the text
// of `0' is read by it through `parse` and its parts land in local macros.
// The old `parse` command shares the second step, with the descriptor taken
// from the locals varlist, if, in, exp, weight, using and options.
#include <algorithm>
#include <cctype>
#include <climits>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "data/area/dataarea.h"
#include "data/area/storage.h"
#include "data/expr/expr.h"
#include "data/formats/formats.h"
#include "data/vars/varlist.h"
#include "data/vars/vartab.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/brk.h"
#include "kernel/loop/limits.h"
#include "kernel/loop/loop.h"
#include "kernel/macro/macro.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/gettok.h"
#include "kernel/parse/options.h"
#include "kernel/program/argparse.h"
#include "output/redirect.h"
#include "output/spout.h"

namespace korvu {

namespace {

enum Kind {
    OK_ONOFF = 1,
    OK_STRING,
    OK_INT,
    OK_REAL,
    OK_STAR,
    OK_NUMLIST,
    OK_VARLIST,
    OK_PASSTHRU,
    OK_NAME,
    OK_CILEVEL
};

enum Head {
    H_NONE,
    H_VARLIST,
    H_VARNAME,
    H_NEWVARLIST,
    H_NEWVARNAME,
    H_ANYTHING,
    H_NAME,
    H_NAMELIST
};

struct OptDecl {
    std::string name; // lower case, without a leading "no" of a no-form
    int minlen = 0;
    int kind = OK_ONOFF;
    bool noform = false, required = false, asis = false;
    std::string dflt;
    int nlflags = 0, nmin = 0, nmax = 0;
    NumRange range;
    bool haverange = false;
    bool vnumeric = false, vstring = false, vts = false, single = false, local = false;
};

struct Desc {
    int head = H_NONE;
    bool headopt = false;
    int hmin = 0, hmax = 0; // 0: no bound
    int dflt = 0;           // empty list: 0 all, 1 none, 2 empty
    bool numeric = false, string = false, ts = false, generate = false;
    bool equalok = false, everything = false, local = false;
    std::string headmac = "varlist", id;
    // 0 not allowed, 1 optional, 2 required; np: stored without the keyword
    int ifs = 0, ins = 0, exps = 0, usings = 0;
    bool ifnp = false, innp = false, expnp = false, usingnp = false, weightnp = false;
    int wmask = 0, wdflt = 0;
    std::vector<OptDecl> opts;
    bool star = false;
    std::string starmac = "options";
};

int bad() {
    return error(197);
}

std::string lower(std::string s) {
    for (char& c : s) c = static_cast<char>(tolower(static_cast<unsigned char>(c)));
    return s;
}

void skipblanks(const std::string& s, size_t& i) {
    while (i < s.size() && s[i] == ' ') i++;
}

// The template and the words of the data are read by the tokenizer, on a
// private copy of the text, the caller's tokenizer state put back after.
struct TokOn {
    TokState saved;
    std::string copy;
    std::vector<char> buf;
    explicit TokOn(const std::string& s, size_t from = 0) : copy(s), buf(macrolen) {
        borrow_gettok(&saved);
        settok(copy.data() + std::min(from, copy.size()));
    }
    ~TokOn() { return_gettok(&saved); }
    // The next word as written (quotes kept), parenthesised parts whole; an
    // empty string at the end.
    std::string next(const char* delims) {
        gettoklong(buf.data(), delims, 2);
        if (!buf[0]) return std::string();
        return std::string(lwheretok(), static_cast<size_t>(wheretok() - lwheretok()));
    }
    size_t at() { return static_cast<size_t>(wheretok() - copy.data()); }
};

// The end of the bracket group starting at s[i] (quotes and nesting
// honoured), npos when it is not closed.
size_t closing(const std::string& s, size_t i) {
    std::string copy = s;
    int err;
    char* e = pbrackets(copy.data() + i, &err);
    return err ? std::string::npos : static_cast<size_t>(e - copy.data()) - 1;
}

// A word with any parenthesised part: up to a blank, bracket or comma; empty
// when a parenthesis is not closed.
std::string readword(const std::string& s, size_t& i) {
    TokOn t(s, i);
    std::string w = t.next(" [],");
    i = t.at();
    for (size_t p = w.find('('); p != std::string::npos; p = w.find('(', closing(w, p) + 1))
        if (closing(w, p) == std::string::npos) return std::string();
    return w;
}

// The blank-separated words, strings and parenthesised parts kept whole.
std::vector<std::string> words(const std::string& s) {
    std::vector<std::string> w;
    TokOn t(s);
    for (std::string x; !(x = t.next(" ")).empty();) w.push_back(x);
    return w;
}

// "key=#" into v; false when the word is not of that key.
bool keyint(const std::string& w, const char* key, int* v) {
    size_t n = strlen(key);
    if (w.compare(0, n, key) || w.size() <= n || w[n] != '=') return false;
    char* end;
    long x = strtol(w.c_str() + n + 1, &end, 10);
    if (*end || end == w.c_str() + n + 1) return false;
    *v = static_cast<int>(x);
    return true;
}

int readhead(Desc& d, const std::string& text, bool optional) {
    size_t p = text.find('(');
    std::string w = text.substr(0, p);
    std::string args;
    if (p != std::string::npos) {
        if (text.back() != ')') return bad();
        args = text.substr(p + 1, text.size() - p - 2);
    }
    static constexpr const char* heads[] = {"",           "varlist",  "varname", "newvarlist",
                                            "newvarname", "anything", "name",    "namelist"};
    d.head = H_NONE;
    for (int h = 1; h <= H_NAMELIST; h++)
        if (w == heads[h]) d.head = h;
    if (d.head == H_NONE) return bad();
    d.headopt = optional;
    if (d.head == H_VARNAME || d.head == H_NEWVARNAME || d.head == H_NAME) d.hmax = 1;
    if (d.head == H_ANYTHING) d.headmac = "anything";
    if (d.head == H_NAME || d.head == H_NAMELIST) d.headmac = "namelist";
    bool names = d.head >= H_ANYTHING;
    for (const std::string& a : words(args)) {
        int v;
        if (keyint(a, "min", &v)) {
            d.hmin = v;
        } else if (keyint(a, "max", &v)) {
            d.hmax = v;
        } else if (names && !a.compare(0, 5, "name=")) {
            d.headmac = a.substr(5);
            if (chkmacname(("_" + d.headmac).c_str())) return bad();
        } else if (names && !a.compare(0, 3, "id=")) {
            d.id = a.substr(3);
            if (d.id.size() >= 2 && d.id.front() == '"' && d.id.back() == '"')
                d.id = d.id.substr(1, d.id.size() - 2);
        } else if (names && a == "equalok") {
            d.equalok = true;
        } else if (names && a == "everything") {
            d.everything = true;
        } else if (names && a == "local") {
            d.local = true;
        } else if (!names && (a == "numeric" || a == "string" || a == "ts" || a == "generate" ||
                              a == "existing" || a == "new" || a == "required" || a == "optional" ||
                              a == "none")) {
            if (a == "numeric") d.numeric = true;
            if (a == "string") d.string = true;
            if (a == "ts") d.ts = true;
            if (a == "generate") d.generate = true;
            if (a == "required") d.headopt = false;
            if (a == "optional") d.headopt = true;
            if (a == "none") d.dflt = 1;
        } else if (!names && !a.compare(0, 8, "default=")) {
            std::string k = a.substr(8);
            if (k == "all")
                d.dflt = 0;
            else if (k == "none")
                d.dflt = 1;
            else if (k == "empty")
                d.dflt = 2;
            else
                return bad();
        } else {
            return bad();
        }
    }
    return 0;
}

int weightword(std::string w) {
    if (w == "aweight" || w == "aw") return WGT_AW;
    if (w == "fweight" || w == "fw") return WGT_FW;
    if (w == "pweight" || w == "pw") return WGT_PW;
    if (w == "iweight" || w == "iw") return WGT_IW;
    return 0;
}

// One element before the comma: the head, if, in, =exp, using or weights.
int readelement(Desc& d, const std::string& text, bool optional, bool first) {
    std::vector<std::string> w = words(text);
    if (w.empty()) return bad();
    std::string a = w[0];
    bool np = a.size() > 1 && a.back() == '/';
    std::string base = np ? a.substr(0, a.size() - 1) : a;
    if (weightword(base) || (w.size() > 1 && weightword(w[0]))) {
        if (d.wmask) return bad();
        for (size_t k = 0; k < w.size(); k++) {
            std::string x = w[k];
            if (k + 1 == w.size() && x.size() > 1 && x.back() == '/') {
                d.weightnp = true;
                x.pop_back();
            }
            int m = weightword(x);
            if (!m) return bad();
            if (!d.wmask) d.wdflt = m;
            d.wmask |= m;
        }
        return 0;
    }
    if (w.size() != 1) return bad();
    int lvl = optional ? 1 : 2;
    if (base == "if") {
        if (d.ifs) return bad();
        d.ifs = lvl, d.ifnp = np;
    } else if (base == "in") {
        if (d.ins) return bad();
        d.ins = lvl, d.innp = np;
    } else if (base == "using") {
        if (d.usings) return bad();
        d.usings = lvl, d.usingnp = np;
    } else if (a == "=exp" || a == "=/exp") {
        if (d.exps) return bad();
        d.exps = lvl, d.expnp = a == "=/exp";
    } else {
        if (!first || d.head != H_NONE) return bad();
        return readhead(d, a, optional);
    }
    return 0;
}

int readoption(Desc& d, const std::string& text, bool required) {
    if (text == "*") {
        if (d.star) return bad();
        d.star = true;
        return 0;
    }
    if (d.star) return bad(); // the star stands last
    OptDecl o;
    o.required = required;
    size_t p = text.find('(');
    std::string nm = text.substr(0, p);
    std::string args;
    if (p != std::string::npos) {
        if (text.back() != ')') return bad();
        args = text.substr(p + 1, text.size() - p - 2);
    }
    if (nm.empty()) return bad();
    for (char c : nm)
        if (!isalnum(static_cast<unsigned char>(c)) && c != '_') return bad();
    if (nm.size() > 2 && nm[0] == 'n' && nm[1] == 'o' &&
        isupper(static_cast<unsigned char>(nm[2])) && p == std::string::npos) {
        o.noform = true;
        nm = nm.substr(2);
    }
    int upper = 0;
    while (upper < static_cast<int>(nm.size()) && isupper(static_cast<unsigned char>(nm[upper])))
        upper++;
    o.name = lower(nm);
    o.minlen = upper ? upper : static_cast<int>(nm.size());
    if (o.name.size() > 31) return bad();
    if (p == std::string::npos) {
        o.kind = OK_ONOFF;
    } else {
        std::vector<std::string> w = words(args);
        if (w.empty()) return bad();
        std::string k = w[0];
        size_t i = 1;
        if (k == "string") {
            o.kind = OK_STRING;
            for (; i < w.size(); i++)
                if (w[i] == "asis")
                    o.asis = true;
                else
                    return bad();
        } else if (k == "integer" || k == "real") {
            o.kind = k == "integer" ? OK_INT : OK_REAL;
            o.dflt = "0";
            if (i < w.size()) {
                double v;
                if (cnvstoz(w[i].c_str(), &v)) return bad();
                if (o.kind == OK_INT && v != static_cast<int>(v)) return bad();
                o.dflt = w[i++];
            }
            if (i < w.size()) return bad();
        } else if (k == "numlist") {
            o.kind = OK_NUMLIST;
            for (; i < w.size(); i++) {
                const std::string& a = w[i];
                int v;
                double x;
                if (a == "ascending")
                    o.nlflags |= NL_ASC;
                else if (a == "descending")
                    o.nlflags |= NL_DESC;
                else if (a == "integer")
                    o.nlflags |= NL_INT;
                else if (a == "missingokay")
                    o.nlflags |= NL_MISS;
                else if (a == "sort")
                    o.nlflags |= NL_SORT;
                else if (keyint(a, "min", &v))
                    o.nmin = v;
                else if (keyint(a, "max", &v))
                    o.nmax = v;
                else if ((a[0] == '>' || a[0] == '<') && a.size() > 1) {
                    bool eq = a[1] == '=';
                    if (cnvstoz(a.c_str() + (eq ? 2 : 1), &x)) return bad();
                    if (!o.haverange) o.range = NumRange{-1e300, 1e300};
                    o.haverange = true;
                    if (a[0] == '>')
                        o.range.lo = x, o.range.loopen = !eq;
                    else
                        o.range.hi = x, o.range.hiopen = !eq;
                } else {
                    return bad();
                }
            }
        } else if (k == "varlist" || k == "varname") {
            o.kind = OK_VARLIST;
            o.single = k == "varname";
            for (; i < w.size(); i++) {
                int v;
                if (w[i] == "numeric")
                    o.vnumeric = true;
                else if (w[i] == "string")
                    o.vstring = true;
                else if (w[i] == "ts")
                    o.vts = true;
                else if (keyint(w[i], "min", &v))
                    o.nmin = v;
                else if (keyint(w[i], "max", &v))
                    o.nmax = v;
                else
                    return bad();
            }
        } else if (k == "passthru" || k == "cilevel") {
            o.kind = k == "passthru" ? OK_PASSTHRU : OK_CILEVEL;
            if (i < w.size()) return bad();
        } else if (k == "name" || k == "namelist") {
            o.kind = OK_NAME;
            o.single = k == "name";
            for (; i < w.size(); i++) {
                int v;
                if (w[i] == "local")
                    o.local = true;
                else if (keyint(w[i], "min", &v))
                    o.nmin = v;
                else if (keyint(w[i], "max", &v))
                    o.nmax = v;
                else
                    return bad();
            }
        } else {
            return bad();
        }
    }
    for (const OptDecl& x : d.opts)
        if (x.name == o.name) return bad();
    if (static_cast<int>(d.opts.size()) >= MAXOPT) return bad();
    d.opts.push_back(o);
    return 0;
}

// Options from s[i] on; depth counts brackets, outside of which an option is
// required.
int readoptions(Desc& d, const std::string& s, size_t i, int base) {
    int depth = base;
    for (;;) {
        skipblanks(s, i);
        if (i >= s.size()) break;
        char c = s[i];
        if (c == '[') {
            depth++, i++;
            continue;
        }
        if (c == ']') {
            if (--depth < base) return bad();
            i++;
            continue;
        }
        if (c == ',') {
            i++;
            continue;
        }
        std::string w = readword(s, i);
        if (w.empty()) return bad();
        if (int rc = readoption(d, w, depth == 0)) return rc;
    }
    return depth != base ? bad() : 0;
}

int readtemplate(Desc& d, const std::string& s) {
    size_t i = 0;
    bool first = true;
    for (;;) {
        skipblanks(s, i);
        if (i >= s.size()) return 0;
        if (s[i] == ',') return readoptions(d, s, i + 1, 0);
        if (s[i] == '[') {
            size_t e = closing(s, i);
            if (e == std::string::npos) return bad();
            std::string inner = s.substr(i + 1, e - i - 1);
            size_t j = 0;
            skipblanks(inner, j);
            if (j < inner.size() && inner[j] == ',') {
                // "[, options]": all of them optional; nothing may follow
                size_t k = e + 1;
                skipblanks(s, k);
                if (k < s.size()) return bad();
                return readoptions(d, inner, j + 1, 1);
            }
            if (int rc = readelement(d, inner, true, first)) return rc;
            i = e + 1;
        } else {
            std::string w = readword(s, i);
            if (w.empty()) return bad();
            if (int rc = readelement(d, w, false, first)) return rc;
        }
        first = false;
    }
}

// --- the data step ---------------------------------------------------------------

// Spans of the data text, found by walking its tokens at the top level.
struct Spans {
    std::string iftext, exptext, wkind, wexp;
};

bool endsexp(const char* t) {
    return tokis(t, "in") || tokis(t, "using") || tokis(t, ",") || tokis(t, "if");
}

void findspans(const std::string& text, Spans& sp) {
    std::string copy = text;
    TokState saved;
    borrow_gettok(&saved);
    settok(copy.data());
    int depth = 0;
    const char* start = nullptr;
    int what = 0; // 1 if, 2 =exp, 3 weight
    auto close = [&](const char* at) {
        if (!start) return;
        std::string t(start, at);
        while (!t.empty() && t.back() == ' ') t.pop_back();
        size_t b = t.find_first_not_of(' ');
        t = b == std::string::npos ? std::string() : t.substr(b);
        if (what == 1) sp.iftext = t;
        if (what == 2) sp.exptext = t;
        if (what == 3) sp.wexp = t;
        start = nullptr, what = 0;
    };
    for (;;) {
        gettok(prsestd);
        char* at = lwheretok();
        if (!token[0]) {
            close(copy.data() + copy.size());
            break;
        }
        if (tokisstr(token)) continue;
        if (what == 3) {
            if (tokis(token, "[") || tokis(token, "(")) depth++;
            if ((tokis(token, "]") || tokis(token, ")")) && --depth == 0) close(at);
            continue;
        }
        bool wbracket = depth == 0 && (at == copy.data() || at[-1] == ' ');
        if (tokis(token, "(") || (tokis(token, "[") && !wbracket))
            depth++;
        else if (tokis(token, ")") || tokis(token, "]"))
            depth--;
        if (depth) continue;
        if (tokis(token, "[") && (!start || what != 3)) {
            close(at);
            gettok(prsestd);
            sp.wkind = token;
            if (gtokis('=')) break;
            start = wheretok(), what = 3, depth = 1;
            continue;
        }
        if (start && endsexp(token) && !(what == 1 && tokis(token, "if"))) close(at);
        if (tokis(token, "if") && !start) {
            start = wheretok(), what = 1;
        } else if (tokis(token, "=") && !start) {
            start = wheretok(), what = 2;
        }
    }
    return_gettok(&saved);
}

int store(const std::string& mac, const std::string& value) {
    return macresave(("_" + mac).c_str(), value.c_str());
}

int optmsg(const OptDecl& o, const char* what) {
    return errorf(198, "option %s%s%s", o.name.c_str(), o.kind != OK_ONOFF ? "()" : "", what);
}

int countmsg(const std::string& name, bool few, const char* kind) {
    return errorf(few ? 102 : 103, " %s:  too %s %s specified\n", name.c_str(),
                  few ? "few" : "many", kind);
}

std::string trimmed(std::string s) {
    while (!s.empty() && s.back() == ' ') s.pop_back();
    size_t b = s.find_first_not_of(' ');
    return b == std::string::npos ? std::string() : s.substr(b);
}

// The raw text of the anything/name head: up to the first word that begins
// another part of the command.
size_t headend(const Desc& d, const std::string& text) {
    std::string copy = text;
    TokState saved;
    borrow_gettok(&saved);
    settok(copy.data());
    size_t end = copy.size();
    int depth = 0;
    for (;;) {
        gettok(prsestd);
        if (!token[0]) break;
        size_t at = static_cast<size_t>(lwheretok() - copy.data());
        if (tokisstr(token)) continue;
        if (tokis(token, "(")) depth++;
        if (tokis(token, ")")) depth--;
        if (depth) continue;
        bool stop = tokis(token, ",");
        if (!d.everything && (tokis(token, "if") || tokis(token, "in") || tokis(token, "using")))
            stop = true;
        if (!d.everything && d.wmask && tokis(token, "[") && (at == 0 || copy[at - 1] == ' '))
            stop = true;
        if (!d.equalok && tokis(token, "=")) stop = true;
        if (stop) {
            end = at;
            break;
        }
    }
    return_gettok(&saved);
    return end;
}

int checknames(const std::vector<std::string>& names, bool local, int report = 1) {
    for (const std::string& n : names) {
        if (local) {
            if (int rc = chklmname(n.c_str())) return rc;
            if (chkmacname(("_" + n).c_str())) return report ? error2(1, n.c_str()) : 198;
        } else if (chkname(n.c_str(), report)) {
            return 198;
        }
    }
    return 0;
}

// Item k (from 1) of the list by its full name, operators included.
std::string itemname(int k) {
    int v = realvarlist(k);
    const Recipe* r = realrcp(k);
    if (!r || rcpiszero(r)) return varname(v);
    char buf[200];
    return rcpvarname(buf, r, varname(v));
}

// Variables of the wrong kind for a list declared numeric or string.
int typecheck(bool numeric, bool string) {
    if (!numeric && !string) return 0;
    for (int k = 1; k <= lnvar; k++) {
        int v = realvarlist(k);
        bool isnum = typlist[v - 1] > 244;
        if ((numeric && !isnum) || (string && isnum)) {
            return errorf(109, "%s:  %s variable not allowed\n", varname(v),
                          isnum ? "numeric" : "string");
        }
    }
    return 0;
}

// A varlist inside an option: a nested parse, with the option table of the
// outer command kept aside.
int optvarlist(const OptDecl& o, const std::string& arg, std::string& out) {
    int32_t sv_noptn = noptn, sv_last = lastopt;
    char* sv_list[MAXOPT];
    uint8_t sv_avbl[MAXOPT];
    memcpy(sv_list, optlist, sizeof sv_list);
    memcpy(sv_avbl, optavbl, sizeof sv_avbl);
    CmdState cs;
    save_cmd_state(&cs);
    TokState tok;
    borrow_gettok(&tok);
    std::string copy = arg;
    settok(copy.data());
    cmdinit();
    vable = 1, vexists = 1, rcpable = o.vts ? 0 : 3, opable = 3, ifable = 3, oable = 3;
    InfBuf* inf = redirtoinf();
    int rc = parse1();
    if (inf) inf = redirtoinf_close();
    if (!rc) {
        for (int k = 1; k <= lnvar; k++) {
            if (!out.empty()) out += ' ';
            out += itemname(k);
        }
    }
    return_gettok(&tok);
    restore_cmd_state(&cs);
    noptn = sv_noptn, lastopt = sv_last;
    memcpy(optlist, sv_list, sizeof sv_list);
    memcpy(optavbl, sv_avbl, sizeof sv_avbl);
    if (rc) {
        errsayf("in option %s()\n", o.name.c_str());
        if (inf)
            for (const std::string& l : inf->lines) errsayf("%s\n", l.c_str());
    }
    delete inf;
    if (rc) return rc;
    int n = lnvar;
    if (int trc = typecheck(o.vnumeric, o.vstring)) return trc;
    if ((o.single && n != 1) || (o.nmin && n < o.nmin) || (o.nmax && n > o.nmax)) {
        return errorf(198, "option %s() does not contain a valid %s\n", o.name.c_str(),
                      o.single ? "varname" : "varlist");
    }
    return 0;
}

int takeoption(OptDecl& o) {
    std::string mac = o.name;
    macerase(("_" + mac).c_str());
    lastopt = 0;
    std::string value;
    bool present = false;
    auto doubt = [&]() { return lastopt && (optavbl[lastopt - 1] & 1) == 0; };
    switch (o.kind) {
    case OK_ONOFF: {
        int r = findopt(o.name.c_str(), o.minlen, -1);
        if (r == -1) break;
        if ((r == 1) == o.noform) {
            // the other form than the template's: leave it to chkopt
            if (lastopt) optavbl[lastopt - 1] = 0;
            break;
        }
        present = true;
        value = o.noform ? "no" + o.name : o.name;
        break;
    }
    case OK_STRING: {
        std::vector<char> buf(macrolen);
        if (o.asis)
            findargasis(o.name.c_str(), o.minlen, buf.data(), macrolen);
        else
            findargn(o.name.c_str(), o.minlen, buf.data(), macrolen, macrolen);
        if (doubt()) return optmsg(o, " invalid\n");
        present = lastopt != 0;
        value = buf.data();
        break;
    }
    case OK_INT: {
        int v = findopta(o.name.c_str(), o.minlen, INT_MIN);
        if (doubt()) return optmsg(o, " invalid\n");
        present = lastopt != 0;
        value = present ? std::to_string(v) : o.dflt;
        break;
    }
    case OK_REAL:
    case OK_CILEVEL: {
        double v;
        int n = findoptv(o.name.c_str(), o.minlen, &v, 1, 0);
        if (doubt()) return optmsg(o, " invalid\n");
        present = n == 1;
        if (o.kind == OK_CILEVEL) {
            if (!present) v = dflt_cilevel;
            if (int rc = chkcilevel(v)) return rc;
            value = numtext(v);
        } else if (present) {
            value = trimmed(safereforms("%9.0g", v));
            for (char& c : value)
                if (c == ',') c = '.';
        } else {
            double dv = 0;
            cnvstoz(o.dflt.c_str(), &dv);
            value = trimmed(safereforms("%9.0g", dv));
        }
        break;
    }
    case OK_NUMLIST: {
        std::vector<char> buf(macrolen);
        // the raw text: a split at each sign would part "-1" into two words
        findargasis(o.name.c_str(), o.minlen, buf.data(), macrolen);
        if (doubt()) return optmsg(o, " invalid\n");
        present = lastopt != 0;
        if (present) {
            if (int rc = makemacnumlist(buf.data(), nullptr, o.nmin, o.nmax, o.nlflags,
                                        o.haverange ? &o.range : nullptr, 1600, &value))
                return rc;
        }
        break;
    }
    case OK_VARLIST:
    case OK_PASSTHRU: {
        std::vector<char> buf(macrolen);
        findargasis(o.name.c_str(), o.minlen, buf.data(), macrolen);
        if (doubt()) return optmsg(o, " invalid\n");
        present = lastopt != 0;
        if (!present) break;
        if (o.kind == OK_PASSTHRU) {
            value.assign(optlist[lastopt - 1], wheretok());
            value = trimmed(value);
        } else if (int rc = optvarlist(o, buf.data(), value)) {
            return rc;
        }
        break;
    }
    case OK_NAME: {
        std::vector<char> buf(macrolen);
        findargn(o.name.c_str(), o.minlen, buf.data(), macrolen, macrolen);
        if (doubt()) return optmsg(o, " invalid\n");
        present = lastopt != 0;
        if (!present) break;
        std::vector<std::string> n = words(buf.data());
        int cnt = static_cast<int>(n.size());
        if ((o.single && cnt != 1) || (o.nmin && cnt < o.nmin) || (o.nmax && cnt > o.nmax) ||
            checknames(n, o.local, 0))
            return optmsg(o, " invalid\n");
        value = buf.data();
        break;
    }
    default: break;
    }
    if (!present && o.required) return optmsg(o, " required\n");
    return value.empty() ? 0 : store(mac, value);
}

// The text of each option no one took, in the order typed.
std::string leftover() {
    std::string out;
    for (int k = 0; k < noptn; k++) {
        if (optavbl[k] & 1) continue;
        settok(optlist[k]);
        gettok(prseopt);
        TokPos at;
        stattok(&at);
        gettok(prseopt);
        if (tokis(token, "(")) {
            if (moveto_opt_arg_end()) continue;
        } else {
            resettok(&at);
        }
        std::string t(optlist[k], wheretok());
        if (!out.empty()) out += ' ';
        out += trimmed(t);
        optavbl[k] |= 1;
    }
    return out;
}

// Adds the n names of a new-variable list, numbers missing and strings empty;
// on failure none of them is kept.
int addnewvars(int n, bool string) {
    const int32_t before = nvar;
    static const char empty[KV_STRMAX + 1] = {};
    for (int k = 0; k < n; k++) {
        int code = newvartype[k] ? newvartype[k] : (string ? 1 : 254);
        if (int rc = addvar(newvarname[k], code)) {
            nvar = before;
            return rc;
        }
        for (int32_t i = 1; i <= nobs; i++) {
            if (kvpollstd()) {
                nvar = before;
                return 1;
            }
            if (isnumtype(typlist[nvar - 1]))
                korvu::store(nvar, i, misval);
            else
                sstore(nvar, i, empty);
        }
    }
    i_nvar = nvar;
    return 0;
}

int readdata(Desc& d, const std::string& text) {
    // the macros of the parts are erased first, so nothing stale survives
    if (d.head != H_NONE) macerase(("_" + d.headmac).c_str());
    for (const char* m : {"_if", "_in", "_exp", "_weight", "_using"}) macerase(m);
    if (d.head == H_NEWVARLIST || d.head == H_NEWVARNAME) macerase("_typlist");

    std::vector<char> buf(macrolen + 2);
    snprintf(buf.data(), buf.size(), "%s", text.c_str());
    std::string headtext;
    size_t from = 0;
    bool names = d.head >= H_ANYTHING;
    if (names) {
        from = headend(d, buf.data());
        headtext = trimmed(std::string(buf.data(), from));
        std::vector<std::string> n = words(headtext);
        int cnt = static_cast<int>(n.size());
        if (!cnt && !d.headopt) {
            if (d.head == H_ANYTHING) return required(d.id.empty() ? "something" : d.id.c_str());
            return errorf(100, "nothing found where %s expected\n",
                          d.id.empty() ? "name" : d.id.c_str());
        }
        if (d.head != H_ANYTHING) {
            if (int rc = checknames(n, d.local)) return rc;
        }
        if (cnt && d.hmin && cnt < d.hmin)
            return countmsg(d.head == H_ANYTHING ? "anything" : d.headmac, true, "names");
        if (d.hmax && cnt > d.hmax)
            return countmsg(d.head == H_ANYTHING ? "anything" : d.headmac, false, "names");
    }
    Spans sp;
    findspans(buf.data() + from, sp);

    settok(buf.data() + from);
    cmdinit();
    bool isvar = d.head != H_NONE && !names;
    bool isnew = d.head == H_NEWVARLIST || d.head == H_NEWVARNAME;
    vable = isvar ? (d.headopt ? 0 : 1) : 3;
    vexists = isnew ? 0 : 1;
    rcpable = d.ts ? 0 : 3;
    ifable = d.ifs ? 0 : 3;
    oable = d.ins == 2 ? 1 : (d.ins ? 0 : 3);
    uable = d.usings == 2 ? 1 : (d.usings ? 0 : 3);
    wable = d.exps == 2 ? 1 : (d.exps ? 0 : 3);
    wgtable = d.wmask ? 0 : 3;
    wgtallowt = static_cast<uint8_t>(d.wmask);
    opable = d.opts.empty() && !d.star ? 3 : 0;
    if (d.exps == 2 && d.wmask) return error(198);
    int32_t sv_byvar = byvar;
    if (int rc = parse()) return rc;
    byvar = sv_byvar;

    if (isvar) {
        int n = lnvar;
        const char* kind = "variables";
        if (n == 0 && d.headopt) {
            // the empty list by its default
        } else {
            if (d.hmin && n < d.hmin) return countmsg(d.headmac, true, kind);
            if (d.hmax && n > d.hmax) return countmsg(d.headmac, false, kind);
        }
        if (!isnew)
            if (int rc = typecheck(d.numeric, d.string)) return rc;
        std::string list, types;
        if (!(n == 0 && d.headopt && d.dflt != 0)) {
            for (int k = 0; k < n; k++) {
                if (k) list += ' ', types += ' ';
                if (!isnew) {
                    list += itemname(k + 1);
                    continue;
                }
                if (varlist_vr[k]) return error2(3, newvarname[k]);
                list += newvarname[k];
                int code = newvartype[k] ? newvartype[k] : (d.string ? 1 : 254);
                types += typename_of(code);
            }
        }
        if (isnew) {
            // the new variables are made now, missing or empty, and stay for
            // the program
            if (int rc = addnewvars(n, d.string)) return rc;
        }
        if (int rc = store(d.headmac, list)) return rc;
        if (isnew)
            if (int rc = store("typlist", types)) return rc;
    } else if (names) {
        if (int rc = store(d.headmac, headtext)) return rc;
    }
    if (d.ifs == 2 && !ifclause) {
        return errtext(100, "if exp required\n");
    }
    if (ifclause)
        if (int rc = store("if", d.ifnp ? sp.iftext : "if " + sp.iftext)) return rc;
    if (orange && d.ins) {
        char b[64];
        snprintf(b, sizeof b, "%s%d/%d", d.innp ? "" : "in ", nobs1, nobs2);
        if (int rc = store("in", b)) return rc;
    }
    if (filesp[0] && d.usings) {
        std::string f = filesp;
        if (!d.usingnp) f = vernum > 599 ? "using `\"" + f + "\"'" : "using " + f;
        if (int rc = store("using", f)) return rc;
    }
    if (weclause && d.exps && !wgttype && sp.wkind.empty()) {
        if (int rc = store("exp", d.expnp ? sp.exptext : "= " + sp.exptext)) return rc;
    }
    if (weclause && !sp.wkind.empty() && d.wmask) {
        wgtdflt(d.wdflt);
        static constexpr const char* wname[] = {"", "aweight", "fweight", "",       "pweight",
                                                "", "",        "",        "iweight"};
        if (int rc = store("weight", wgttype >= 0 && wgttype <= 8 ? wname[wgttype] : "")) return rc;
        if (int rc = store("exp", d.weightnp ? sp.wexp : "= " + sp.wexp)) return rc;
    }
    for (OptDecl& o : d.opts)
        if (int rc = takeoption(o)) return rc;
    if (d.star) {
        macerase(("_" + d.starmac).c_str());
        std::string rest = leftover();
        if (!rest.empty())
            if (int rc = store(d.starmac, rest)) return rc;
    }
    int rc = chkopt();
    kvpollstd();
    return rc;
}

// The old descriptor words: "req"/"opt", "ex"/"new", "min(#)", "max(#)",
// "none", "noprefix", weight kinds.
int descfrommacros(Desc& d) {
    auto get = [](const char* n) {
        const char* v = macptr(n);
        return std::string(v ? v : "");
    };
    std::string v = get("_varlist");
    if (!v.empty()) {
        d.head = v.find("new") != std::string::npos ? H_NEWVARLIST : H_VARLIST;
        d.headopt = v.find("req") == std::string::npos;
        int x;
        size_t p;
        if ((p = v.find("min(")) != std::string::npos && sscanf(v.c_str() + p, "min(%d)", &x) == 1)
            d.hmin = x;
        if ((p = v.find("max(")) != std::string::npos && sscanf(v.c_str() + p, "max(%d)", &x) == 1)
            d.hmax = x;
        if (v.find("none") != std::string::npos) d.dflt = 1;
    }
    auto part = [&](const char* n, int& lvl, bool& np) {
        std::string t = get(n);
        if (t.empty()) return;
        lvl = t.find("req") != std::string::npos ? 2 : 1;
        np = t.find("noprefix") != std::string::npos;
    };
    part("_if", d.ifs, d.ifnp);
    part("_in", d.ins, d.innp);
    part("_exp", d.exps, d.expnp);
    part("_using", d.usings, d.usingnp);
    std::string w = get("_weight");
    for (const std::string& x : words(w)) {
        if (x == "noprefix") {
            d.weightnp = true;
            continue;
        }
        int m = weightword(x);
        if (!m) return bad();
        if (!d.wmask) d.wdflt = m;
        d.wmask |= m;
    }
    std::string o = get("_options");
    if (!o.empty()) return readoptions(d, o, 0, 1);
    return 0;
}

// Splits text into "_1", "_2", ... by the delimiters; quotes mark strings.
int splitinto(const std::string& text, const std::string& delims) {
    for (int k = 1;; k++) {
        std::string n = "_" + std::to_string(k);
        if (!macptr(n.c_str())) break;
        macerase(n.c_str());
    }
    size_t i = 0;
    int k = 0;
    while (i < text.size()) {
        while (i < text.size() && text[i] == ' ') i++;
        if (i >= text.size()) break;
        std::string w;
        if (text[i] == '`' && i + 1 < text.size() && text[i + 1] == '"') {
            int depth;
            std::string copy = text.substr(i);
            char* e = pcompoundquotes(copy.data(), &depth);
            if (depth) return unmatchedquote();
            size_t len = static_cast<size_t>(e - copy.data());
            w = copy.substr(2, len - 4);
            i += len;
        } else if (text[i] == '"') {
            size_t e = text.find('"', i + 1);
            if (e == std::string::npos) return unmatchedquote();
            w = text.substr(i + 1, e - i - 1);
            i = e + 1;
        } else if (delims.find(text[i]) != std::string::npos) {
            w = text.substr(i, 1);
            i++;
        } else {
            // a blank ends a word only when it is one of the delimiters
            bool blank = delims.find(' ') != std::string::npos;
            size_t b = i;
            while (i < text.size() && (!blank || text[i] != ' ') &&
                   delims.find(text[i]) == std::string::npos) {
                if (text[i] == '"' || (text[i] == '`' && i + 1 < text.size() && text[i + 1] == '"'))
                    break;
                i++;
            }
            w = text.substr(b, i - b);
            while (!w.empty() && w.back() == ' ') w.pop_back();
        }
        std::string n = "_" + std::to_string(++k);
        int rc = w.empty() ? macsave0(n.c_str()) : macresave(n.c_str(), w.c_str());
        if (rc) return rc;
    }
    return 0;
}

// Text and a parse() option: `"text"' or bare text to the comma.
int textandparse(std::string& text, std::string& delims, bool* quoted) {
    *quoted = false;
    char* p = peektok_chr();
    if (*p == '"' || (p[0] == '`' && p[1] == '"')) {
        gettok(prsestd);
        char *s, *e, *nx;
        if (parse_quoted_string(nullptr, &s, &e, &nx)) return unmatchedquote();
        text.assign(s, e);
        *quoted = true;
    } else {
        char* comma = strchr(p, ',');
        text.assign(p, comma ? comma : p + strlen(p));
        if (std::count(text.begin(), text.end(), '"') % 2) return unmatchedquote();
        settok(comma ? comma : p + strlen(p));
    }
    delims = " ";
    gettok(prsestd);
    if (tokis(token, ",")) {
        noptn = 0;
        opable = 0;
        if (int rc = proption()) return rc;
        std::vector<char> buf(600);
        findargasis("parse", 1, buf.data(), 600);
        std::string d = buf.data();
        if (d.size() >= 2 && d.front() == '"' && d.back() == '"') d = d.substr(1, d.size() - 2);
        if (d.size() > 79) return error(198);
        if (!d.empty()) delims = d;
        if (int rc = chkopt()) return rc;
    } else if (token[0]) {
        return error(198);
    }
    return 0;
}

} // namespace

int kvsyntax(int) {
    Desc d;
    std::string tmpl = wheretok();
    if (int rc = readtemplate(d, tmpl)) return rc;
    const char* z = macptr("_0");
    return readdata(d, z ? z : "");
}

int kvparse(int) {
    char* p = peektok_chr();
    bool nostring = !*p;
    if (nostring && vernum < 600) return error(198);
    if (!nostring) {
        noptn = 0;
        std::string text, delims;
        bool quoted;
        if (int rc = textandparse(text, delims, &quoted)) return rc;
        // with parse() the text is split; without, it is read by the descriptors
        if (noptn || delims != " ") return splitinto(text, delims);
        Desc d;
        if (int rc = descfrommacros(d)) return rc;
        return readdata(d, text);
    }
    Desc d;
    if (int rc = descfrommacros(d)) return rc;
    const char* z = macptr("_0");
    return readdata(d, z ? z : "");
}

int kvtoken(int) {
    std::string text, delims;
    bool quoted;
    if (int rc = textandparse(text, delims, &quoted)) return rc;
    return splitinto(text, delims);
}

} // namespace korvu
