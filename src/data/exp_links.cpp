// Links between the dataset and the language: what expressions read from the
// other parts of the dataset (time-series operated variables, value labels,
// the by state), and the clean-up of temporary variables at frame end.
#include <cstring>
#include <string>
#include <vector>

#include "data/char.h"
#include "data/dataarea.h"
#include "data/expr.h"
#include "data/label.h"
#include "data/varlist.h"
#include "data/vartab.h"
#include "kernel/cmdparse.h"
#include "kernel/errors.h"
#include "kernel/loop.h"
#include "kernel/macro.h"

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

static double by_value(int which, int obs) {
    switch (which) {
    case 0: return byvar ? 1 : 0;
    case 1: return lastby ? 1 : 0;
    case 3: return nobs1;
    case 4: return nobs2;
    }
    return byvar;
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

void link_expressions() {
    mac_hooks.droptmpvars = droptmpvars;
    exphooks.rcp_compile = rcp_compile;
    exphooks.rcpxeq = rcp_value;
    exphooks.vlsearch = vlsearch;
    exphooks.byfcn = by_value;
}

} // namespace korvu
