// The observations a table command works on: those in range that pass the
// `if` condition and carry a weight that is neither missing nor zero.
#include <algorithm>
#include <cmath>

#include "data/area/missing.h"
#include "data/expr/expr.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/brk.h"
#include "kernel/parse/cmdparse.h"
#include "results/tables/tables_internal.h"

namespace korvu {

int tab_sample(Sample* s) {
    constexpr int CHUNK = 4096;
    *s = Sample{};
    s->i0 = nobs1, s->i1 = nobs2;
    s->weighted = weclause != 0;
    s->all = !ifclause && !weclause;
    if (s->all) return 0;
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
                if (wgttype == WGT_FW && x != std::floor(x)) return error(401);
                s->w.push_back(x);
            }
            s->obs.push_back(i);
        }
    }
    // analytic weights are scaled to sum to the number of observations
    if (weclause && wgttype == WGT_AW && !s->w.empty()) {
        double sum = 0;
        for (double x : s->w) sum += x;
        double f = static_cast<double>(s->w.size()) / sum;
        for (double& x : s->w) x *= f;
    }
    return 0;
}

} // namespace korvu
