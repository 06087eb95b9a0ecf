#include "data/vars/varlist.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "app/link.h"
#include "data/area/dataarea.h"
#include "data/area/storage.h"
#include "data/vars/vartab.h"
#include "kernel/dict/dict.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/brk.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/gettok.h"
#include "kernel/parse/options.h"
#include "output/spout.h"

namespace korvu {

const char* (*charget_hook)(const char* obj, const char* name) = nullptr;
int (*charset_hook)(const char* obj, const char* name, const char* value) = nullptr;
void (*post_rmacro)(const char* name, const char* value) = nullptr;

static std::vector<char> newname_store;
static std::vector<uint8_t> newtype_store;
char (*newvarname)[33] = nullptr;
uint8_t* newvartype = nullptr;

Recipe recipeheap[RECIPEHEAP];
int32_t recipeheap_next = 0;
int32_t rcp_tvar = 0, rcp_ivar = 0;

static int invalidvarlist() {
    return errtext(198, "invalid varlist\n");
}

// ---------------------------------------------------------------------------
// Recipes
// ---------------------------------------------------------------------------
bool rcpiszero(const Recipe* r) {
    return !r || (r->lag == 0 && r->dorder == 0 && r->nseas == 0);
}

void rcpheapreset() {
    recipeheap_next = 0;
}

int rcpnormalize(Recipe* r, const char* text, int quiet) {
    *r = Recipe{};
    std::string t;
    for (const char* p = text; *p; p++)
        if (*p != '.' && *p != ' ') t += *p;
    size_t k = 0;
    while (k < t.size()) {
        char c = static_cast<char>(toupper(static_cast<unsigned char>(t[k++])));
        long n = 1;
        bool have = false;
        size_t s = k;
        while (k < t.size() && isdigit(static_cast<unsigned char>(t[k]))) k++;
        if (k > s) {
            if (k - s > 6) return quiet ? 198 : rcpinvalid(text);
            n = strtol(t.c_str() + s, nullptr, 10);
            have = true;
        }
        (void)have;
        switch (c) {
        case 'L': r->lag += static_cast<int32_t>(n); break;
        case 'F': r->lag -= static_cast<int32_t>(n); break;
        case 'D':
            r->dorder += static_cast<int32_t>(n);
            if (r->dorder > 20) return quiet ? 198 : rcpdtoobig(text);
            break;
        case 'S':
            if (r->nseas >= 8) return quiet ? 198 : rcpinvalid(text);
            r->seas[r->nseas++] = static_cast<int32_t>(n);
            break;
        default: return quiet ? 198 : rcpinvalid(text);
        }
    }
    return 0;
}

char* rcpstr(char* buf, const Recipe* r, int dot) {
    int n = 0;
    buf[0] = 0;
    if (r->lag) n += snprintf(buf + n, 120 - n, "%c%d", r->lag > 0 ? 'L' : 'F', abs(r->lag));
    if (r->dorder) n += snprintf(buf + n, 120 - n, "D%d", r->dorder);
    for (int k = 0; k < r->nseas; k++) n += snprintf(buf + n, 120 - n, "S%d", r->seas[k]);
    if (dot) snprintf(buf + n, 120 - n, ".");
    return buf;
}

char* rcpvarname(char* buf, const Recipe* r, const char* name) {
    rcpstr(buf, r, 1);
    size_t n = strlen(buf);
    snprintf(buf + n, 160 - n, "%s", name);
    return buf;
}

Recipe* rcpinsert(const Recipe* r, int* rc) {
    *rc = 0;
    for (int k = 0; k < recipeheap_next; k++)
        if (!memcmp(&recipeheap[k], r, sizeof(Recipe))) return &recipeheap[k];
    if (recipeheap_next >= RECIPEHEAP) {
        errsay("too many time-series operators\n");
        *rc = 1000;
        return nullptr;
    }
    recipeheap[recipeheap_next] = *r;
    return &recipeheap[recipeheap_next++];
}

int rcpxeqinit() {
    const char* t = charget_hook ? charget_hook("_dta", "_TStvar") : nullptr;
    rcp_tvar = rcp_ivar = 0;
    if (!t || !*t) {
        return errtext(111, "time variable not set\n");
    }
    if (!(rcp_tvar = sysfindvar(t))) return varnotfound(t);
    const char* p = charget_hook("_dta", "_TSpanel");
    if (p && *p && !(rcp_ivar = sysfindvar(p))) return varnotfound(p);
    bool ok =
        rcp_ivar ? (srtlist[0] == rcp_ivar && srtlist[1] == rcp_tvar) : (srtlist[0] == rcp_tvar);
    return ok ? 0 : error(5);
}

// The observation of the same panel whose time is t(i) - lag; 0 for none.
// The data are sorted by panel and time, so the walk goes one way only.
static int rcpneighbour(int i, int lag) {
    if (lag == 0) return i;
    const double t = korvu_data(rcp_tvar, i);
    if (t >= misval) return 0;
    const double target = t - lag;
    const double pan = rcp_ivar ? korvu_data(rcp_ivar, i) : 0;
    auto cmp = [&](int j) { // key of j against (pan, target)
        double pj = rcp_ivar ? korvu_data(rcp_ivar, j) : 0;
        if (pj != pan) return pj < pan ? -1 : 1;
        double tj = korvu_data(rcp_tvar, j);
        return tj < target ? -1 : (tj > target ? 1 : 0);
    };
    long j = static_cast<long>(i) - lag;
    if (j < 1) j = 1;
    if (j > nobs) j = nobs;
    int c = cmp(static_cast<int>(j));
    if (c < 0) {
        while (c < 0 && j < nobs) c = cmp(static_cast<int>(++j));
    } else if (c > 0) {
        while (c > 0 && j > 1) c = cmp(static_cast<int>(--j));
    }
    return c == 0 ? static_cast<int>(j) : 0;
}

// Seasonal parts first (the last stored outermost), then the differences.
static double rcpdiff(const Recipe* r, int nseas, int d, int v, int i) {
    int step;
    if (nseas > 0) {
        step = r->seas[nseas - 1];
        nseas--;
    } else if (d > 0) {
        step = 1;
        d--;
    } else {
        return korvu_data(v, i);
    }
    double a = rcpdiff(r, nseas, d, v, i);
    if (a >= misval) return misval;
    int j = rcpneighbour(i, step);
    if (!j) return misval;
    double b = rcpdiff(r, nseas, d, v, j);
    if (b >= misval) return misval;
    return a - b;
}

double rcpxeq(const Recipe* r, int v, int obs) {
    if (rcpiszero(r)) return korvu_data(v, obs);
    int i = rcpneighbour(obs, r->lag);
    if (!i) return misval;
    return rcpdiff(r, r->nseas, r->dorder, v, i);
}

int rcptype(int code, const Recipe* r) {
    if (!r || (r->dorder == 0 && r->nseas == 0)) return code;
    if (code == KV_BYTE || code == KV_INT) return KV_FLOAT;
    if (code == KV_LONG) return KV_DOUBLE;
    return code;
}

int realvarlist(int i) {
    return varlist_rcp[i - 1].recipe ? static_cast<int>(varlist_rcp[i - 1].var) : varlist_vr[i - 1];
}

Recipe* realrcp(int i) {
    return static_cast<Recipe*>(varlist_rcp[i - 1].recipe);
}

double rkorvu_data(int item, int obs) {
    return rcpxeq(realrcp(item), realvarlist(item), obs);
}

static std::vector<int32_t> fixed_vars;

int rcpfixvarlist() {
    fixed_vars.clear();
    for (int k = 1; k <= lnvar; k++) {
        Recipe* r = realrcp(k);
        if (!r) continue;
        if (stopflag) return 1;
        int src = realvarlist(k);
        int v = addwrkvar(rcptype(typlist[src - 1], r), 0);
        if (v < 0) return -v;
        fixed_vars.push_back(v);
        memcpy(fmtname(v), fmtname(src), FMTLEN1);
        for (int i = 1; i <= nobs; i++)
            store(v, i, i >= nobs1 && i <= nobs2 ? rcpxeq(r, src, i) : misval);
        varlist_vr[k - 1] = v;
    }
    return 0;
}

void rcpfixdrop() {
    if (fixed_vars.empty()) return;
    if (!markrow_open()) {
        for (int32_t v : fixed_vars)
            if (v <= nvar) markrow_set(v, true);
        remvar();
    }
    fixed_vars.clear();
}

// ---------------------------------------------------------------------------
// The list
// ---------------------------------------------------------------------------
static void ensure_newstore() {
    size_t n = static_cast<size_t>(maxmaxvar) + 1;
    if (newtype_store.size() < n) {
        newname_store.assign(n * 33, 0);
        newtype_store.assign(n, 0);
    }
    newvarname = reinterpret_cast<char(*)[33]>(newname_store.data());
    newvartype = newtype_store.data();
}

static int additem(int v, Recipe* r) {
    if (lnvar >= maxmaxvar) {
        return errtext(103, "too many variables specified\n");
    }
    varlist_vr[lnvar] = v;
    if (varlist_rcp) varlist_rcp[lnvar] = VarRcp{r, v};
    lnvar++;
    return 0;
}

void allvarlist() {
    lnvar = 0;
    for (int v = 1; v <= nvar; v++)
        if (!ispatexempt(v)) additem(v, nullptr);
}

static int addnew(const char* name, int type) {
    if (lnvar >= maxmaxvar) {
        return errtext(103, "too many variables specified\n");
    }
    if (int rc = chkname(name, 1)) return rc;
    snprintf(newvarname[lnvar], 33, "%s", name);
    newvartype[lnvar] = static_cast<uint8_t>(type);
    varlist_vr[lnvar] = sysfindvar(name);
    if (varlist_rcp) varlist_rcp[lnvar] = VarRcp{nullptr, varlist_vr[lnvar]};
    lnvar++;
    return 0;
}

// A storage-type word: its code, or 0.
int cvtype(const char* t) {
    static constexpr struct {
        const char* w;
        int code;
    } words[] = {{"byte", KV_BYTE},
                 {"int", KV_INT},
                 {"long", KV_LONG},
                 {"float", KV_FLOAT},
                 {"double", KV_DOUBLE}};
    for (const auto& w : words)
        if (!strcmp(t, w.w)) return w.code;
    if (!strncmp(t, "str", 3) && t[3] >= '1' && t[3] <= '9' && strlen(t) <= 6 &&
        strspn(t + 3, "0123456789") == strlen(t + 3)) {
        int n = atoi(t + 3);
        return n <= KV_STRMAX ? n : -1;
    }
    return 0;
}

// Splits "x12" into stem "x" and number 12; false without trailing digits.
static bool stemnum(const std::string& s, std::string* stem, long* num) {
    size_t k = s.size();
    while (k > 0 && isdigit(static_cast<unsigned char>(s[k - 1]))) k--;
    if (k == s.size() || s.size() - k > 9) return false;
    *stem = s.substr(0, k);
    *num = strtol(s.c_str() + k, nullptr, 10);
    return true;
}

// Variables a pattern with * ? (or ~, one only) names, in dataset order.
static int expandpattern(const char* t, std::vector<int>* out) {
    if (strchr(t, '~')) {
        int v = genfindvar(t);
        if (v < 0) return -v;
        out->push_back(v);
        return 0;
    }
    size_t before = out->size();
    for (int v = 1; v <= nvar; v++)
        if (!ispatexempt(v) && wildmatch(t, varname(v))) out->push_back(v);
    if (out->size() == before) return varnotfound(t);
    return 0;
}

static bool iswild(const char* t) {
    return strpbrk(t, "*?~") != nullptr;
}

// One name or pattern, then an optional `-` and the end of a range.
static int existingitem(const char* t, const char* delims, std::vector<int>* out) {
    if (iswild(t)) {
        if (int rc = expandpattern(t, out)) return rc;
        TokPos at;
        stattok(&at);
        gettok(delims);
        bool range = !tokisstr(token) && tokis(token, "-");
        resettok(&at);
        return range ? invalidvarlist() : 0; // a pattern cannot start a range
    }
    int a = genfindvar(t);
    if (a < 0) return -a;
    TokPos at;
    stattok(&at);
    gettok(delims);
    if (!tokisstr(token) && tokis(token, "-")) {
        gettok(delims);
        if (!token[0] || tokisstr(token) || iskeyorb(token)) return invalidvarlist();
        int b = genfindvar(token);
        if (b < 0) return -b;
        if (b < a) {
            return errtext(198, "Variables out of order\n");
        }
        for (int v = a; v <= b; v++) out->push_back(v);
        return 0;
    }
    resettok(&at);
    out->push_back(a);
    return 0;
}

// One item `op.var` for variable v.
static int rcpitem(const std::string& op, int v) {
    if (op.size() >= 240) {
        rcptoolong(op.c_str());
        return 198;
    }
    Recipe r;
    if (int rc = rcpnormalize(&r, op.c_str())) return rc;
    if (rcpiszero(&r)) return additem(v, nullptr);
    if (isstrtype(typlist[v - 1])) {
        return errorf(109, "%s:  may not use time-series operators on string variables\n",
                      varname(v));
    }
    int rc;
    Recipe* p = rcpinsert(&r, &rc);
    if (!p) return rc;
    return additem(v, p);
}

static bool isopletters(const char* t) {
    if (!*t) return false;
    for (const char* p = t; *p; p++)
        if (!isalnum(static_cast<unsigned char>(*p))) return false;
    return strchr("LlFfDdSs", t[0]) != nullptr;
}

// After "L(": the numbers up to ")" each make an operator text.
static int opnumlist(const std::string& letters, std::vector<std::string>* ops) {
    gettok("(");
    for (;;) {
        gettok(prsenum);
        if (tokis(token, ")")) break;
        double a, b;
        if (!token[0] || tokisstr(token) || cnvstoz(token, &a) || a != static_cast<long>(a) ||
            a < 0 || a > 1e6) {
            return errtext(198, "numlist in operator invalid\n");
        }
        b = a;
        TokPos at;
        stattok(&at);
        gettok(prsenum);
        if (tokis(token, "/")) {
            gettok(prsenum);
            if (cnvstoz(token, &b) || b != static_cast<long>(b) || b < a || b > 1e6) {
                return errtext(198, "numlist in operator invalid\n");
            }
        } else {
            resettok(&at);
        }
        for (long k = static_cast<long>(a); k <= static_cast<long>(b); k++)
            ops->push_back(letters + std::to_string(k));
        if (ops->size() > 1000) {
            return errtext(198, "numlist in operator invalid\n");
        }
    }
    if (ops->empty()) {
        return errtext(198, "numlist in operator invalid\n");
    }
    return 0;
}

// After an operator part: ".x", or "." and "(x y ...)". Every operator is
// applied to every variable, the operators varying fastest.
static int opvars(const std::vector<std::string>& ops, const char* delims, const std::string& rest,
                  bool groupnext) {
    std::vector<int> vars;
    std::vector<std::string> subops; // a further operator in the variable part
    if (groupnext) {
        gettok(delims); // "("
        for (;;) {
            gettok(delims);
            if (tokis(token, ")")) break;
            if (!token[0] || tokisstr(token) || iskeyorb(token) || tokis(token, "("))
                return invalidvarlist();
            if (strchr(token, '.')) return invalidvarlist();
            if (int rc = existingitem(token, delims, &vars)) return rc;
        }
    } else {
        std::string name = rest;
        std::string extra;
        size_t dot = name.rfind('.');
        if (dot != std::string::npos) {
            extra = name.substr(0, dot);
            name = name.substr(dot + 1);
        }
        if (name.empty()) return invalidvarlist();
        if (iswild(name.c_str())) {
            if (int rc = expandpattern(name.c_str(), &vars)) return rc;
        } else {
            int v = genfindvar(name.c_str());
            if (v < 0) return -v;
            vars.push_back(v);
        }
        for (const auto& op : ops) subops.push_back(extra.empty() ? op : op + extra);
    }
    const std::vector<std::string>& use = subops.empty() ? ops : subops;
    for (int v : vars)
        for (const auto& op : use)
            if (int rc = rcpitem(op, v)) return rc;
    return 0;
}

static int newlist(const char* delims) {
    ensure_newstore();
    int ptype = 0;
    bool group = false;
    for (;;) {
        gettok(delims);
        if (tokisstr(token) || iskeyorb(token)) {
            ungettok();
            break;
        }
        std::string t = token;
        if (t == ")" && group) {
            group = false;
            ptype = 0;
            continue;
        }
        if (t == "_all") return notalow("_all");
        if (int code = cvtype(t.c_str())) {
            if (code < 0 || group || ptype) return invalidvarlist();
            ptype = code;
            if (gettok_next_char() == '(') {
                gettok(delims);
                group = true;
            }
            continue;
        }
        TokPos at;
        stattok(&at);
        gettok(delims);
        if (!tokisstr(token) && tokis(token, "-")) {
            gettok(delims);
            std::string e = token, s1, s2;
            long a, b;
            if (!stemnum(t, &s1, &a) || !stemnum(e, &s2, &b) || s1 != s2 || s1.empty())
                return invalidvarlist();
            if (b < a) {
                return errtext(198, "Variables out of order\n");
            }
            if (b - a >= maxmaxvar) return error(103);
            for (long k = a; k <= b; k++) {
                char nm[48];
                snprintf(nm, sizeof nm, "%s%ld", s1.c_str(), k);
                if (int rc = addnew(nm, ptype)) return rc;
            }
        } else {
            resettok(&at);
            if (int rc = addnew(t.c_str(), ptype)) return rc;
        }
        if (!group) ptype = 0;
    }
    if (group || ptype) return invalidvarlist();
    return 0;
}

int ssvlist(const char* delims, int isnew) {
    lnvar = 0;
    nblist = 0;
    rcpheapreset();
    if (isnew) return newlist(delims);
    bool ingroup = false;
    for (;;) {
        gettok(delims);
        if (tokisstr(token) || iskeyorb(token)) {
            ungettok();
            break;
        }
        std::string t = token;
        if (t == "(") {
            if (ingroup || nblist >= 5) return invalidvarlist();
            ingroup = true;
            continue;
        }
        if (t == ")") {
            if (!ingroup) return invalidvarlist();
            ingroup = false;
            blist[nblist++] = lnvar;
            continue;
        }
        if (t == "_all") {
            if (nvar == 0) {
                return errtext(111, "no variables defined\n");
            }
            for (int v = 1; v <= nvar; v++)
                if (!ispatexempt(v))
                    if (int rc = additem(v, nullptr)) return rc;
            continue;
        }
        if (gettok_next_char() == '(' && isopletters(t.c_str())) { // L(1/3).x
            std::vector<std::string> ops;
            if (int rc = opnumlist(t, &ops)) return rc;
            if (gettok_next_char() != '.') return invalidvarlist();
            gettok(delims);
            std::string rest = token;
            if (rest == "." && gettok_next_char() == '(') {
                if (int rc = opvars(ops, delims, "", true)) return rc;
            } else {
                if (rest.size() < 2 || rest[0] != '.') return invalidvarlist();
                if (int rc = opvars(ops, delims, rest.substr(1), false)) return rc;
            }
            continue;
        }
        size_t dot = t.rfind('.');
        if (dot != std::string::npos) {
            if (dot == 0) return invalidvarlist();
            std::vector<std::string> ops{t.substr(0, dot)};
            if (dot + 1 == t.size()) { // L.(x y)
                if (gettok_next_char() != '(') return invalidvarlist();
                if (int rc = opvars(ops, delims, "", true)) return rc;
            } else {
                if (int rc = opvars(ops, delims, t.substr(dot + 1), false)) return rc;
            }
            continue;
        }
        std::vector<int> vars;
        if (int rc = existingitem(t.c_str(), delims, &vars)) return rc;
        for (int v : vars)
            if (int rc = additem(v, nullptr)) return rc;
    }
    if (ingroup) return invalidvarlist();
    if (recipeheap_next)
        if (int rc = rcpxeqinit()) return rc;
    return 0;
}

// ---------------------------------------------------------------------------
// The copy for by-groups: nblist, blist, lnvar, then the numbers and recipes
// ---------------------------------------------------------------------------
int savevlist() {
    size_t n = static_cast<size_t>(lnvar);
    std::vector<char> blob(4 * 7 + n * 4 + n * sizeof(VarRcp));
    char* p = blob.data();
    memcpy(p, &nblist, 4);
    memcpy(p + 4, blist, 20);
    memcpy(p + 24, &lnvar, 4);
    memcpy(p + 28, varlist_vr, n * 4);
    if (varlist_rcp) memcpy(p + 28 + n * 4, varlist_rcp, n * sizeof(VarRcp));
    return dmsave("symbol", DM_VARLIST, 0, blob.data(), blob.size()) ? 0 : 950;
}

int loadvlist() {
    const char* p = static_cast<const char*>(dmfind("symbol", DM_VARLIST, nullptr));
    if (!p) return 111;
    memcpy(&nblist, p, 4);
    memcpy(blist, p + 4, 20);
    memcpy(&lnvar, p + 24, 4);
    size_t n = static_cast<size_t>(lnvar);
    memcpy(varlist_vr, p + 28, n * 4);
    if (varlist_rcp) memcpy(varlist_rcp, p + 28 + n * 4, n * sizeof(VarRcp));
    return 0;
}

void rmvlist() {
    if (void* p = dmfind("symbol", DM_VARLIST, nullptr)) dmrm(p);
}

// ---------------------------------------------------------------------------
// Display of operator names
// ---------------------------------------------------------------------------
char* tsabvar(const char* name, int width) {
    static char out[80];
    const char* dot = strrchr(name, '.');
    if (!dot) return abvar(name, width);
    std::string op(name, dot - name), var(dot + 1);
    Recipe r;
    char buf[160];
    uint8_t sf = sysflag;
    sysflag = 1;
    int bad = rcpnormalize(&r, op.c_str(), 1);
    sysflag = sf;
    if (!bad)
        op = rcpstr(buf, &r, 0);
    else if (op.size() >= 20)
        op = op.substr(0, 18) + ".";
    int rest = width - static_cast<int>(op.size()) - 1;
    if (rest < 5) {
        if (width < 8) width = 8;
        rest = width - static_cast<int>(op.size()) - 1;
        if (rest < 5) {
            op = op.substr(0, width - 6 > 1 ? width - 6 : 1);
            rest = width - static_cast<int>(op.size()) - 1;
        }
    }
    snprintf(out, sizeof out, "%s.%s", op.c_str(), abvar(var.c_str(), rest));
    return out;
}

// ---------------------------------------------------------------------------
// tsrevar varlist [, substitute list]
// ---------------------------------------------------------------------------
int revar(int) {
    vable = 1;
    ifable = 3;
    oable = 3;
    opable = 0;
    if (int rc = parse()) return rc;
    int list = findopt("list", 4, 0);
    int subst = findopt("substitute", 3, 0);
    if (int rc = chkopt()) return rc;
    if (list && subst) {
        return errtext(198, "options list and substitute may not be combined\n");
    }
    std::string out;
    std::vector<int> seen;
    int n = lnvar;
    std::vector<VarRcp> items(varlist_rcp, varlist_rcp + n);
    std::vector<int32_t> nums(varlist_vr, varlist_vr + n);
    for (int k = 0; k < n; k++) {
        Recipe* r = static_cast<Recipe*>(items[k].recipe);
        int src = r ? static_cast<int>(items[k].var) : nums[k];
        std::string word;
        if (list || !r) {
            bool dup = false;
            for (int s : seen) dup |= s == src;
            if (list && dup) continue;
            seen.push_back(src);
            word = varname(src);
        } else {
            char expr[200];
            rcpvarname(expr, r, varname(src));
            int found = 0;
            if (charget_hook)
                for (int v = 1; v <= nvar && !found; v++) {
                    const char* c = varname(v);
                    if (c[0] == '_' && c[1] == '_') {
                        const char* m = charget_hook(c, "tsrevar");
                        if (m && !strcmp(m, expr)) found = v;
                    }
                }
            if (!found) {
                int v = addwrkvar(rcptype(typlist[src - 1], r), 0);
                if (v < 0) return error(-v);
                memcpy(fmtname(v), fmtname(src), FMTLEN1);
                for (int i = 1; i <= nobs; i++) store(v, i, rcpxeq(r, src, i));
                if (charset_hook) charset_hook(varname(v), "tsrevar", expr);
                found = v;
            }
            word = varname(found);
        }
        if (!out.empty()) out += ' ';
        out += word;
    }
    i_nvar = nvar; // the new variables stay for the caller
    if (post_rmacro) post_rmacro("varlist", out.c_str());
    return 0;
}

} // namespace korvu

namespace korvu {

// The varlist of an option, `findvlist`: read without disturbing the list,
// recipes and tokenizer of the command being parsed.
static int optvlist(const char* text, int* dst, int maxvars, int* count) {
    const int32_t svn = lnvar, svnb = nblist, svnext = recipeheap_next;
    int32_t svb[5];
    memcpy(svb, blist, sizeof svb);
    std::vector<int32_t> svvr(varlist_vr, varlist_vr + svn);
    std::vector<VarRcp> svrcp;
    if (varlist_rcp) svrcp.assign(varlist_rcp, varlist_rcp + svn);
    std::vector<Recipe> svheap(recipeheap, recipeheap + RECIPEHEAP);
    TokState st;
    borrow_gettok(&st);
    std::string buf = text;
    settok(buf.data());
    int rc = ssvlist(prsestd2, 0);
    if (!rc) {
        gettok(prsestd2);
        if (token[0]) rc = invalidvarlist();
    }
    if (!rc && lnvar > maxvars) rc = error(103);
    if (!rc) {
        for (int k = 0; k < lnvar; k++) dst[k] = realvarlist(k + 1);
        *count = lnvar;
    }
    return_gettok(&st);
    lnvar = svn, nblist = svnb, recipeheap_next = svnext;
    memcpy(blist, svb, sizeof svb);
    std::copy(svvr.begin(), svvr.end(), varlist_vr);
    if (varlist_rcp) std::copy(svrcp.begin(), svrcp.end(), varlist_rcp);
    std::copy(svheap.begin(), svheap.end(), recipeheap);
    return rc;
}

void link_varlists() {
    findvlist_hook = optvlist;
}

} // namespace korvu
