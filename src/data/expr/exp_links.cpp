// Links between the dataset and the language: what expressions read from the
// other parts of the dataset (time-series operated variables, value labels,
// the by state), and the clean-up of temporary variables at frame end.
#include <cstring>
#include <string>
#include <vector>

#include "app/link.h"
#include "data/area/dataarea.h"
#include "data/area/missing.h"
#include "data/expr/expr.h"
#include "data/formats/formats.h"
#include "data/labels/label.h"
#include "data/sort/bystate.h"
#include "data/vars/char.h"
#include "data/vars/varlist.h"
#include "data/vars/vartab.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/loop.h"
#include "kernel/macro/macro.h"
#include "kernel/parse/cmdparse.h"

namespace korvu {

struct OperatedVar {
    const Recipe* recipe;
    int var;
};
// Recipes live for one command; so do these entries, which point at them.
static std::vector<OperatedVar> operated;
static int32_t operated_clock = -1;

static int rcp_compile(const char* name) {
    if (operated_clock != sysclock) operated.clear(), operated_clock = sysclock;
    const char* dot = strrchr(name, '.');
    if (!dot) return -198;
    std::string op(name, dot), vname(dot + 1);
    if (op.size() >= 240) return -rcptoolong(op.c_str());
    Recipe r{};
    if (int rc = rcpnormalize(&r, op.c_str())) return -rc;
    int v = korvu_findvar(vname.c_str(), 1, 0);
    if (v < 0) return v;
    int rc = 0;
    const Recipe* stored = rcpinsert(&r, &rc);
    if (rc) return -rc;
    if (int irc = rcpxeqinit()) return -irc;
    operated.push_back({stored, v});
    return static_cast<int>(operated.size()) - 1;
}

static double rcp_value(int id, int obs) {
    const OperatedVar& o = operated[static_cast<size_t>(id)];
    return rcpxeq(o.recipe, o.var, obs);
}

static double by_value(int which, int) {
    int32_t n1, n2;
    switch (which) {
    case 0: return by_fcn();
    case 1: return by_lastcall();
    case 2: return by_call();
    case 3: by_fromto(&n1, &n2); return n1;
    case 4: by_fromto(&n1, &n2); return n2;
    }
    return misval;
}

// Temporary variables made since a frame began go when it ends.
static int droptmpvars(int32_t since) {
    bool any = false;
    for (int v = 1; v <= nvar && !any; v++) any = istmpvn(varname(v), since);
    if (!any) return 0;
    if (int rc = markrow_open()) return rc;
    for (int v = 1; v <= nvar; v++) {
        bool gone = istmpvn(varname(v), since);
        if (gone) char_dropvar(varname(v));
        markrow_set(v, gone);
    }
    remvar();
    i_nvar = nvar;
    return 0;
}

// The value of `=exp' and of `local x = exp`: evaluated for the first
// observation over the whole data; numbers by %18.0g with a decimal point.
static int expvalue(const char* text, char* dst, size_t n) {
    static ExpObj obj; // a compiled object is large: not on the stack
    if (int rc = compexp_text(&obj, text, text + strlen(text), 3, 0)) return rc;
    int32_t s1 = nobs1, s2 = nobs2, ss1 = nobss1, ss2 = nobss2;
    nobs1 = nobss1 = 1;
    nobs2 = nobss2 = nobs;
    char buf[kFmtBufSize > 245 ? kFmtBufSize : 245];
    const char* out = buf;
    if (obj.result_kind == 1) {
        out = sxeq(&obj, 1, buf);
    } else {
        uint8_t dp = dpcomma;
        dpcomma = 0;
        fmtnum(buf, "%18.0g", xeq(&obj, 1));
        dpcomma = dp;
        while (*out == ' ') out++;
    }
    nobs1 = s1, nobs2 = s2, nobss1 = ss1, nobss2 = ss2;
    snprintf(dst, n, "%s", out);
    return 0;
}

void link_expressions() {
    mac_hooks.expvalue = expvalue;
    mac_hooks.droptmpvars = droptmpvars;
    exphooks.rcp_compile = rcp_compile;
    exphooks.rcpxeq = rcp_value;
    exphooks.vlsearch = vlsearch;
    exphooks.byfcn = by_value;
}

} // namespace korvu
