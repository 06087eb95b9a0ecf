// drop, keep, rename, order, move, format, set obs, set varabbrev.
#include "data/vars/varcmds.h"

#include <algorithm>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "data/area/dataarea.h"
#include "data/area/storage.h"
#include "data/formats/formats.h"
#include "data/select/generate.h"
#include "data/vars/char.h"
#include "data/vars/varlist.h"
#include "data/vars/vartab.h"
#include "kernel/errors/errors.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/gettok.h"
#include "kernel/parse/options.h"
#include "output/spout.h"

namespace korvu {

// The end of the line, naming a word left over.
static int endofline_named() {
    gettok(prsestd);
    if (!token[0]) return 0;
    return errorf(198, "'%s' invalid\n", tokisstr(token) ? token + 1 : token);
}

// ---------------------------------------------------------------------------
// drop and keep
// ---------------------------------------------------------------------------
int drop(int keep) {
    TokPos at;
    stattok(&at);
    gettok(prsestd);
    if (!tokisstr(token) && (tokis(token, "if") || tokis(token, "in"))) {
        resettok(&at);
        return stdelete(keep);
    }
    if (!keep && !tokisstr(token) && tokis(token, "_all")) {
        gettok(prsestd);
        if (!token[0]) {
            drop_all(0);
            i_nvar = nvar;
            return 0;
        }
    }
    resettok(&at);
    vable = 1;
    byable = 3;
    ifable = 0;
    oable = 0;
    if (int rc = parse()) return rc;
    if (ifclause || orange) return error(198);
    if (nvar == 0) return 0;
    std::vector<int32_t> list(varlist_vr, varlist_vr + lnvar);
    if (int rc = markrow_open()) return dataarea_error(rc);
    std::vector<char> gone(nvar + 1, keep != 0);
    for (int32_t v : list) gone[v] = keep == 0;
    // characteristics and variable labels go with their variables
    for (int v = 1; v <= nvar; v++)
        if (gone[v]) char_dropvar(varname(v));
    for (int v = 1; v <= nvar; v++) markrow_set(v, gone[v]);
    remvar();
    i_nvar = nvar;
    updata = 1;
    return 0;
}

// ---------------------------------------------------------------------------
// rename old new
// ---------------------------------------------------------------------------
int renamecmd(int) {
    gettok(prsestd2);
    if (!token[0] || tokisstr(token)) return error(198);
    std::string oldn = token;
    gettok(prsestd);
    if (!token[0] || tokisstr(token)) return error(198);
    std::string newn = token;
    if (int rc = endofline_named()) return rc;
    int v = korvu_findvar(oldn.c_str(), 1, 0);
    if (v < 0) return -v;
    if (!strcmp(varname(v), newn.c_str())) return 0;
    if (int rc = chkname(newn.c_str(), 1)) return rc;
    if (int rc = chkreserved(newn.c_str())) return rc;
    if (sysfindvar(newn.c_str())) return error2(3, newn.c_str());
    char_rename(varname(v), newn.c_str());
    snprintf(varname(v), NAMELEN1, "%s", newn.c_str());
    updata = 1;
    return 0;
}

// ---------------------------------------------------------------------------
// order varlist [, first last before(var) after(var) alphabetic]: the listed
// variables first (or last, or before or after another), in the order given
// or in alphabetical order
// ---------------------------------------------------------------------------
int ordercmd(int) {
    vable = 1;
    ifable = 3;
    oable = 3;
    opable = 0;
    if (int rc = parse()) return rc;
    std::vector<std::string> names;
    for (int k = 0; k < lnvar; k++) {
        std::string n = varname(varlist_vr[k]);
        if (std::find(names.begin(), names.end(), n) == names.end()) names.push_back(n);
    }
    int last = findopt("last", 4, 0);
    int first = findopt("first", 5, 0);
    int alpha = findopt("alphabetic", 5, 0);
    int bv[2], av[2];
    int nb = findvlist("before", 3, bv, 2);
    int na = findvlist("after", 3, av, 2);
    if (int rc = chkopt()) return rc;
    if (first + last + (nb > 0) + (na > 0) > 1)
        return errtext(198, "only one of first, last, before() and after() may be given\n");
    if (nb > 1 || na > 1) return errtext(103, "before() and after() take one variable\n");
    std::string anchor = nb ? varname(bv[0]) : (na ? varname(av[0]) : "");
    if (!anchor.empty() && std::find(names.begin(), names.end(), anchor) != names.end())
        return errorf(198, "%s is in the varlist; it cannot be the place they go to\n",
                      anchor.c_str());
    if (alpha) std::sort(names.begin(), names.end());
    std::vector<std::string> rest, target;
    for (int v = 1; v <= nvar; v++)
        if (std::find(names.begin(), names.end(), varname(v)) == names.end())
            rest.emplace_back(varname(v));
    if (last) {
        target = rest;
        target.insert(target.end(), names.begin(), names.end());
    } else if (!anchor.empty()) {
        for (const auto& r : rest) {
            if (r == anchor && nb) target.insert(target.end(), names.begin(), names.end());
            target.push_back(r);
            if (r == anchor && na) target.insert(target.end(), names.begin(), names.end());
        }
    } else {
        target = names;
        target.insert(target.end(), rest.begin(), rest.end());
    }
    for (size_t k = 0; k < target.size(); k++) {
        int v = sysfindvar(target[k].c_str());
        if (v != static_cast<int>(k) + 1) movevar(v, static_cast<int>(k) + 1);
    }
    updata = 1;
    return 0;
}

// ---------------------------------------------------------------------------
// move a b: variable a to the position of b
// ---------------------------------------------------------------------------
int mvvar(int a, int b, int) {
    if (a < 1 || b < 1 || a > nvar || b > nvar) return 901;
    movevar(a, b);
    updata = 1;
    return 0;
}

int stmove(int) {
    vable = 1;
    ifable = 3;
    oable = 3;
    if (int rc = parse()) return rc;
    if (lnvar < 2) return error(102);
    if (lnvar > 2) return error(103);
    if (int rc = mvvar(varlist_vr[0], varlist_vr[1], 0)) return error(rc);
    return 0;
}

// ---------------------------------------------------------------------------
// format
// ---------------------------------------------------------------------------
// The format text at the tokenizer: up to the next blank.
static bool readfmt(std::string* out) {
    char* p = peektok_chr();
    if (*p != '%') return false;
    char* e = p;
    while (*e && *e != ' ') e++;
    out->assign(p, e);
    settok(e);
    return true;
}

int formatcmd(int) {
    std::string fmt;
    bool fmtfirst = readfmt(&fmt);
    if (fmtfirst && nvar == 0) return error(111);
    int rc = ssvlist(prsestd2, 0);
    if (rc) return rc;
    std::vector<int32_t> list(varlist_vr, varlist_vr + lnvar);
    if (!fmtfirst && !readfmt(&fmt)) {
        if (int r2 = endofline_named()) return r2;
        if (list.empty()) {
            allvarlist();
            list.assign(varlist_vr, varlist_vr + lnvar);
        }
        c_outlev = 0;
        for (int32_t v : list) {
            char line[80];
            snprintf(line, sizeof line, "  %-15s %s\n", abvar(varname(v), 15), fmtname(v));
            spout21(line);
        }
        return 0;
    }
    if (int r2 = endofline_named()) return r2;
    if (list.empty()) return required("varlist");
    for (int32_t v : list) { // all or nothing
        char slot[FMTLEN1];
        FmtDesc d;
        if (setvarfmt(slot, fmt.c_str(), typlist[v - 1])) {
            bool isstr = isstrtype(typlist[v - 1]);
            if (!chkfmt(fmt.c_str(), isstr ? 11 : 2, &d))
                return errorf(120, "%s:  format %s not allowed for %s variable\n", varname(v),
                              fmt.c_str(), isstr ? "string" : "numeric");
            return errorf(120, "%s invalid %%format\n", fmt.c_str());
        }
    }
    for (int32_t v : list) setvarfmt(fmtname(v), fmt.c_str(), typlist[v - 1]);
    return 0;
}

// ---------------------------------------------------------------------------
// set obs #
// ---------------------------------------------------------------------------
int set_obs() {
    gettok(prsenum);
    double x;
    if (!token[0] || tokisstr(token) || cnvstoz(token, &x) || x != std::floor(x) || x < 0)
        return errtext(198, "set obs requires a nonnegative whole number of observations\n");
    if (int rc = endofline_named()) return rc;
    // a count past what the observation table can number never fits
    if (x > 2147483646.0) return dataarea_error(901);
    const int32_t n = static_cast<int32_t>(x);
    if (n < nobs) {
        return errorf(198, "observations must be %d or more: set obs does not drop observations\n",
                      nobs);
    }
    if (n == nobs) return 0;
    if (n > maxobs) {
        int rc = repartobs(n - maxobs);
        if (rc || n > maxobs) return dataarea_error(901);
    }
    // one record of missing values and empty strings, copied into each new slot
    const int32_t w = usedwidth();
    std::vector<uint8_t> blank(static_cast<size_t>(w) + 1, 0);
    for (int v = 1; v <= nvar; v++)
        if (isnumtype(typlist[v - 1]))
            encode_cell(blank.data() + mapi[v - 1], typlist[v - 1], misval);
    for (int v = 1; v <= nvar; v++) {
        const int cw = cellwidth(v);
        const uint8_t* cell = blank.data() + mapi[v - 1];
        for (int32_t i = nobs + 1; i <= n; i++) memcpy(dtaptr(v, i), cell, cw);
    }
    nobs = n;
    updata = 1;
    return 0;
}

// ---------------------------------------------------------------------------
// set varabbrev on|off
// ---------------------------------------------------------------------------
int set_varabbrev() {
    gettok(prsestd);
    int on;
    if (tokis(token, "on"))
        on = 1;
    else if (tokis(token, "off"))
        on = 0;
    else
        return errtext(198, "set varabbrev on or off\n");
    gettok(prsestd);
    if (tokis(token, ",")) { // permanently: no preference store for it yet
        gettok(prsestd);
        if (!cmdcmp(token, "permanently", 4)) return error(198);
        gettok(prsestd);
    }
    if (token[0]) return error(198);
    korvu_varabbrev = static_cast<uint8_t>(on);
    return 0;
}

} // namespace korvu
