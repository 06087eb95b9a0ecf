// Statistics by group: moments in one pass over the observations in dataset
// order (compensated sums, weighted updates of mean and squared deviations),
// order statistics from each group's members gathered into one scratch
// buffer sized by the largest group.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>

#include "data/area/missing.h"
#include "data/groups/groups.h"
#include "data/groups/groups_internal.h"
#include "kernel/loop/brk.h"
#include "kernel/parse/cmdparse.h"

namespace korvu {

int gstat_word(const char* w, GStatReq* out) {
    static const struct {
        const char* word;
        int stat;
    } words[] = {
        {"mean", GS_MEAN},     {"sum", GS_SUM},         {"rawsum", GS_RAWSUM},
        {"count", GS_COUNT},   {"min", GS_MIN},         {"max", GS_MAX},
        {"sd", GS_SD},         {"iqr", GS_IQR},         {"first", GS_FIRST},
        {"last", GS_LAST},     {"firstnm", GS_FIRSTNM}, {"lastnm", GS_LASTNM},
        {"semean", GS_SEMEAN}, {"nmissing", GS_NMISS},  {"nobs", GS_TOTALOBS},
    };
    out->p = 0;
    for (const auto& r : words)
        if (!std::strcmp(w, r.word)) {
            out->stat = r.stat;
            return r.stat;
        }
    if (!std::strcmp(w, "median")) {
        out->stat = GS_PCTILE, out->p = 50;
        return GS_PCTILE;
    }
    if (w[0] == 'p' && w[1] >= '0' && w[1] <= '9') {
        char* end;
        long p = std::strtol(w + 1, &end, 10);
        if (*end || p < 1 || p > 99) return -1;
        out->stat = GS_PCTILE, out->p = static_cast<double>(p);
        return GS_PCTILE;
    }
    return -1;
}

double gpctile(double* v, int64_t n, double p) {
    if (n <= 0) return misval;
    if (p <= 0) return *std::min_element(v, v + n);
    if (p >= 100) return *std::max_element(v, v + n);
    // the mean of the two neighbouring order statistics where n*p/100 is
    // whole, the next one otherwise
    double P = static_cast<double>(n) * p / 100.0;
    double fl = std::floor(P);
    int64_t i = static_cast<int64_t>(fl);
    if (P == fl) {
        std::nth_element(v, v + i - 1, v + n);
        double a = v[i - 1];
        double b = *std::min_element(v + i, v + n);
        return (a + b) / 2;
    }
    std::nth_element(v, v + i, v + n);
    return v[i];
}

double gpctile_w(double* v, double* w, int64_t n, double p) {
    if (n <= 0) return misval;
    double W = 0;
    for (int64_t k = 0; k < n; k++) W += w[k];
    double target = W * p / 100.0;
    double cum = 0;
    for (int64_t k = 0; k < n; k++) {
        cum += w[k];
        if (cum > target) return v[k];
        if (cum == target) return k + 1 < n ? (v[k] + v[k + 1]) / 2 : v[k];
    }
    return v[n - 1];
}

int group_stat(const Groups& g, const GStatReq& r, const double* x, const double* w, int wkind,
               double* out) {
    const int32_t G = g.ngroups;
    const int64_t n = static_cast<int64_t>(g.gid.size());
    const int32_t* gid = g.gid.data();
    constexpr int64_t POLL = 65536;
    auto poll = [](int64_t k) { return (k & (POLL - 1)) == 0 && kvpollstd(); };
    switch (r.stat) {
    case GS_MEAN:
    case GS_SUM:
    case GS_RAWSUM:
    case GS_COUNT: {
        std::vector<GsAcc> acc(static_cast<size_t>(G), GsAcc{0, 0, 0, 0});
        const bool wt = w && r.stat != GS_RAWSUM;
        for (int64_t k = 0; k < n; k++) {
            if (poll(k)) return 1;
            int32_t q = gid[k];
            if (q < 0 || x[k] >= misval) continue;
            gs_add(acc[q], x[k], wt ? w[k] : 1.0);
        }
        for (int32_t q = 0; q < G; q++) out[q] = gs_value(acc[q], r.stat, wt, wkind);
        return 0;
    }
    case GS_NMISS:
    case GS_TOTALOBS: {
        std::fill(out, out + G, 0.0);
        for (int64_t k = 0; k < n; k++) {
            int32_t q = gid[k];
            if (q < 0) continue;
            if (r.stat == GS_TOTALOBS || x[k] >= misval) out[q] += 1;
        }
        return 0;
    }
    case GS_MIN:
    case GS_MAX: {
        const bool mx = r.stat == GS_MAX;
        std::fill(out, out + G, misval);
        std::vector<uint8_t> seen(G, 0);
        for (int64_t k = 0; k < n; k++) {
            if (poll(k)) return 1;
            int32_t q = gid[k];
            if (q < 0 || x[k] >= misval) continue;
            if (!seen[q] || (mx ? x[k] > out[q] : x[k] < out[q])) out[q] = x[k], seen[q] = 1;
        }
        return 0;
    }
    case GS_SD:
    case GS_SEMEAN: {
        // weighted running mean and sum of squared deviations
        std::vector<double> W(G, 0.0), m(G, 0.0), M2(G, 0.0), c(G, 0.0);
        for (int64_t k = 0; k < n; k++) {
            if (poll(k)) return 1;
            int32_t q = gid[k];
            if (q < 0 || x[k] >= misval) continue;
            double wk = w ? w[k] : 1.0;
            W[q] += wk;
            double d = x[k] - m[q];
            m[q] += d * wk / W[q];
            M2[q] += wk * d * (x[k] - m[q]);
            c[q] += 1;
        }
        for (int32_t q = 0; q < G; q++) {
            double var, N;
            if (!w || wkind == WGT_FW) {
                N = W[q];
                var = N > 1 ? M2[q] / (N - 1) : misval;
            } else {
                N = c[q];
                var = c[q] > 1 ? M2[q] / W[q] * c[q] / (c[q] - 1) : misval;
            }
            if (var >= misval) {
                out[q] = misval;
                continue;
            }
            double sd = std::sqrt(std::max(0.0, var));
            out[q] = r.stat == GS_SD ? sd : sd / std::sqrt(N);
        }
        return 0;
    }
    case GS_FIRST:
    case GS_LAST:
    case GS_FIRSTNM:
    case GS_LASTNM: {
        const bool last = r.stat == GS_LAST || r.stat == GS_LASTNM;
        const bool nm = r.stat == GS_FIRSTNM || r.stat == GS_LASTNM;
        std::fill(out, out + G, misval);
        std::vector<uint8_t> seen(G, 0);
        for (int64_t k = 0; k < n; k++) {
            int32_t q = gid[k];
            if (q < 0 || (nm && x[k] >= misval)) continue;
            if (last || !seen[q]) out[q] = x[k], seen[q] = 1;
        }
        return 0;
    }
    case GS_PCTILE:
    case GS_IQR:
    case GS_MODE: {
        if (g.start.empty() && G > 0) return 9999;
        int32_t big = 0;
        for (int32_t q = 0; q < G; q++) big = std::max(big, g.size[q]);
        std::vector<double> v(static_cast<size_t>(big)), vw(w ? static_cast<size_t>(big) : 0);
        std::vector<int32_t> idx(w ? static_cast<size_t>(big) : 0);
        std::vector<double> tv(w ? static_cast<size_t>(big) : 0);
        for (int32_t q = 0; q < G; q++) {
            if (kvpollstd()) return 1;
            int64_t m = 0;
            for (int32_t a = g.start[q]; a < g.start[q + 1]; a++) {
                int64_t k = g.members[a] - g.n1;
                if (x[k] >= misval) continue;
                if (w) vw[m] = w[k];
                v[m++] = x[k];
            }
            if (!m) {
                out[q] = misval;
                continue;
            }
            if (r.stat == GS_MODE) {
                std::sort(v.begin(), v.begin() + m);
                double best = v[0];
                int64_t bestn = 0, ties = 0;
                for (int64_t a = 0; a < m;) {
                    int64_t b = a;
                    while (b < m && v[b] == v[a]) b++;
                    if (b - a > bestn)
                        bestn = b - a, best = v[a], ties = 0;
                    else if (b - a == bestn) {
                        ties++;
                        if (r.p == 2) best = v[a];
                    }
                    a = b;
                }
                out[q] = ties && r.p == 0 ? misval : best;
                continue;
            }
            if (!w) {
                if (r.stat == GS_PCTILE)
                    out[q] = gpctile(v.data(), m, r.p);
                else {
                    double a = gpctile(v.data(), m, 75);
                    double b = gpctile(v.data(), m, 25);
                    out[q] = a - b;
                }
            } else {
                for (int64_t a = 0; a < m; a++) idx[a] = static_cast<int32_t>(a);
                std::sort(idx.begin(), idx.begin() + m,
                          [&](int32_t a, int32_t b) { return v[a] < v[b]; });
                for (int64_t a = 0; a < m; a++) tv[a] = v[idx[a]];
                std::vector<double>& sw = v; // reuse: weights in value order
                for (int64_t a = 0; a < m; a++) sw[a] = vw[idx[a]];
                if (r.stat == GS_PCTILE)
                    out[q] = gpctile_w(tv.data(), sw.data(), m, r.p);
                else
                    out[q] = gpctile_w(tv.data(), sw.data(), m, 75) -
                             gpctile_w(tv.data(), sw.data(), m, 25);
            }
        }
        return 0;
    }
    }
    return 9999;
}

} // namespace korvu
