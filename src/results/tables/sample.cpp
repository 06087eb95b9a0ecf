// The observations a table command works on: those in range that pass the
// `if` condition and carry a weight that is neither missing nor zero.
#include <algorithm>

#include "data/area/missing.h"
#include "data/expr/expr.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/brk.h"
#include "kernel/parse/cmdparse.h"
#include "results/tables/tables_internal.h"

namespace korvu {

int tab_sample(std::vector<int>& obs, std::vector<double>& w, bool* weighted) {
    constexpr int CHUNK = 4096;
    obs.clear();
    w.clear();
    *weighted = weclause != 0;
    if (nobs2 >= nobs1) obs.reserve(static_cast<size_t>(nobs2 - nobs1 + 1));
    std::vector<double> cond(CHUNK), wt(CHUNK);
    initialize_xeq();
    for (int i0 = nobs1; i0 <= nobs2; i0 += CHUNK) {
        int i1 = std::min(nobs2, i0 + CHUNK - 1);
        if (kvpollstd()) return 1;
        if (ifclause) xeqblock(&ifpgm, i0, i1, cond.data());
        if (weclause) xeqblock(&wepgm, i0, i1, wt.data());
        for (int i = i0; i <= i1; ++i) {
            int j = i - i0;
            if (ifclause && cond[j] == 0) continue;
            if (weclause) {
                double x = wt[j];
                if (x >= misval || x == 0) continue;
                if (x < 0 && wgttype != WGT_IW) return error(402);
                if (wgttype == WGT_FW && x != static_cast<double>(static_cast<long long>(x)))
                    return error(401);
                w.push_back(x);
            }
            obs.push_back(i);
        }
    }
    // analytic weights are scaled to sum to the number of observations
    if (weclause && wgttype == WGT_AW && !w.empty()) {
        double s = 0;
        for (double x : w) s += x;
        double f = static_cast<double>(w.size()) / s;
        for (double& x : w) x *= f;
    }
    return 0;
}

} // namespace korvu
