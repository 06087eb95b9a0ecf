// The direct table of one numeric key holding whole numbers of a small
// range: group statistics read the key's column and the variable together in
// one pass, the group being the key's value less the smallest, so that no
// group number is written for any observation.
#include <algorithm>
#include <cmath>
#include <vector>

#include "data/area/dataarea.h"
#include "data/area/missing.h"
#include "data/area/storage.h"
#include "data/groups/groups.h"
#include "data/groups/groups_internal.h"
#include "kernel/loop/brk.h"
#include "kernel/parse/cmdparse.h"

namespace korvu {

namespace {

constexpr int64_t POLL = 65536; // observations between polls of the break key

// The smallest and largest values of a key column over the observations
// taken; false when a value is not whole. *miss tells whether a missing value
// was met.
template <class T>
int scan_key(const T* c, T mis, int64_t n, const uint8_t* take, double* lo, double* hi,
             bool* miss) {
    bool any = false;
    T mn = 0, mx = 0;
    for (int64_t k0 = 0; k0 < n; k0 += POLL) {
        if (kvpollstd()) return 1;
        const int64_t k1 = std::min(n, k0 + POLL);
        for (int64_t k = k0; k < k1; k++) {
            if (take && !take[k]) continue;
            T v = c[k];
            if (v >= mis) {
                *miss = true;
                continue;
            }
            if (!any) {
                mn = mx = v, any = true;
                continue;
            }
            if (v < mn) mn = v;
            if (v > mx) mx = v;
        }
    }
    if (!any) return -1;
    *lo = static_cast<double>(mn), *hi = static_cast<double>(mx);
    return 0;
}

// Calls body(k, slot) for every observation taken whose key is not missing.
template <class T, class Body>
int visit_key(const T* c, T mis, int64_t n, int64_t ilo, bool hasmiss, const uint8_t* take,
              Body& body) {
    for (int64_t k0 = 0; k0 < n; k0 += POLL) {
        if (kvpollstd()) return 1;
        const int64_t k1 = std::min(n, k0 + POLL);
        if (!take && !hasmiss) {
            for (int64_t k = k0; k < k1; k++) body(k, static_cast<int64_t>(c[k]) - ilo);
            continue;
        }
        for (int64_t k = k0; k < k1; k++) {
            if (take && !take[k]) continue;
            T v = c[k];
            if (hasmiss && v >= mis) continue;
            body(k, static_cast<int64_t>(v) - ilo);
        }
    }
    return 0;
}

template <class Body> int visit(const GDirect& d, const uint8_t* take, Body& body) {
    const int64_t n = d.n2 - d.n1 + 1;
    const int64_t ilo = static_cast<int64_t>(d.lo);
    switch (d.ktype) {
    case KV_BYTE:
        return visit_key(static_cast<const int8_t*>(d.base), bytemis, n, ilo, d.hasmiss, take,
                         body);
    case KV_INT:
        return visit_key(static_cast<const int16_t*>(d.base), intmis, n, ilo, d.hasmiss, take,
                         body);
    case KV_LONG:
        return visit_key(static_cast<const int32_t*>(d.base), longmis, n, ilo, d.hasmiss, take,
                         body);
    default:
        return visit_key(static_cast<const double*>(d.base), misval, n, ilo, d.hasmiss, take, body);
    }
}

} // namespace

bool gdirect_stat_ok(int stat) {
    return stat == GS_MEAN || stat == GS_SUM || stat == GS_RAWSUM || stat == GS_COUNT ||
           stat == GS_TOTALOBS;
}

int gdirect_make(GDirect* d, int key, int32_t n1, int32_t n2, const uint8_t* take, bool skipmiss) {
    *d = GDirect{};
    d->n1 = n1, d->n2 = n2;
    const int64_t n = n2 >= n1 ? n2 - n1 + 1 : 0;
    if (n <= 0 || isstrtype(typlist[key - 1])) return -1;
    colsync();
    int t;
    const uint8_t* base = static_cast<const uint8_t*>(colbase(key, &t));
    double lo = 0, hi = -1;
    bool miss = false;
    int rc;
    switch (t) {
    case KV_BYTE:
        d->base = reinterpret_cast<const int8_t*>(base) + (n1 - 1);
        rc = scan_key(static_cast<const int8_t*>(d->base), bytemis, n, take, &lo, &hi, &miss);
        break;
    case KV_INT:
        d->base = reinterpret_cast<const int16_t*>(base) + (n1 - 1);
        rc = scan_key(static_cast<const int16_t*>(d->base), intmis, n, take, &lo, &hi, &miss);
        break;
    case KV_LONG:
        d->base = reinterpret_cast<const int32_t*>(base) + (n1 - 1);
        rc = scan_key(static_cast<const int32_t*>(d->base), longmis, n, take, &lo, &hi, &miss);
        break;
    default: {
        const double* c = t == KV_DOUBLE ? reinterpret_cast<const double*>(base) + (n1 - 1)
                                         : groups_values(key, n1, n2, 0);
        d->decoded = t != KV_DOUBLE;
        t = KV_DOUBLE;
        d->base = c;
        rc = scan_key(c, misval, n, take, &lo, &hi, &miss);
        if (rc) break;
        // whole numbers only: checked on the values taken
        for (int64_t k = 0; k < n; k++) {
            if (take && !take[k]) continue;
            if (c[k] < misval && c[k] != std::floor(c[k])) return -1;
        }
    }
    }
    if (rc) return rc;
    if (miss && !skipmiss) return -1;
    const double span = hi - lo + 1;
    // no more slots than a group number per eight observations would cost,
    // and at least 65,536
    if (!(span >= 1) || span > std::max(65536.0, static_cast<double>(n) / 8) || span > 1e8)
        return -1;
    d->key = key;
    d->ktype = t;
    d->lo = lo;
    d->span = static_cast<int32_t>(span);
    d->hasmiss = miss;
    return 0;
}

int gdirect_stat(const GDirect& d, const GStatReq& r, const double* x, const double* w, int wkind,
                 const uint8_t* take, double* out, int32_t* first) {
    if (!gdirect_stat_ok(r.stat)) return 9999;
    const size_t S = static_cast<size_t>(d.span);
    const int32_t n1 = d.n1;
    if (first) std::fill(first, first + S, -1);
    if (r.stat == GS_TOTALOBS) {
        std::fill(out, out + S, 0.0);
        auto body = [&](int64_t k, int64_t s) {
            if (first && first[s] < 0) first[s] = static_cast<int32_t>(k) + n1;
            out[s] += 1;
        };
        return visit(d, take, body);
    }
    static std::vector<GsAcc> accbuf; // kept across commands: no fresh pages
    if (accbuf.size() < S) accbuf.resize(S);
    GsAcc* acc = accbuf.data();
    std::fill(acc, acc + S, GsAcc{0, 0, 0, 0});
    const bool wt = w && r.stat != GS_RAWSUM;
    // the same compensated sum, in the same order, as group_stat
    auto add = [acc](int64_t s, double xk, double wk) { gs_add(acc[s], xk, wk); };
    int rc;
    if (first) {
        auto body = [&](int64_t k, int64_t s) {
            if (first[s] < 0) first[s] = static_cast<int32_t>(k) + n1;
            if (x[k] < misval) add(s, x[k], wt ? w[k] : 1.0);
        };
        rc = visit(d, take, body);
    } else if (wt) {
        auto body = [&](int64_t k, int64_t s) {
            if (x[k] < misval) add(s, x[k], w[k]);
        };
        rc = visit(d, take, body);
    } else {
        auto body = [&](int64_t k, int64_t s) {
            if (x[k] < misval) add(s, x[k], 1.0);
        };
        rc = visit(d, take, body);
    }
    if (rc) return rc;
    for (size_t q = 0; q < S; q++) out[q] = gs_value(acc[q], r.stat, wt, wkind);
    return 0;
}

int gdirect_fill(const GDirect& dd, const double* gv, const uint8_t* take, int v, int64_t* nmiss) {
    const int64_t n = dd.n2 - dd.n1 + 1;
    // adding v may have moved the columns: the key's cells are found again
    GDirect d = dd;
    if (!d.decoded) {
        int kt;
        const uint8_t* kb = static_cast<const uint8_t*>(colbase(d.key, &kt));
        d.base = kb + static_cast<int64_t>(d.n1 - 1) * bytlenc(kt);
    }
    int t;
    uint8_t* base = static_cast<uint8_t*>(colbase_w(v, &t));
    const int cw = bytlenc(t);
    uint8_t* p = base + static_cast<int64_t>(d.n1 - 1) * cw;
    int64_t miss = 0;
    int64_t done = 0; // observations written so far
    if (t == KV_DOUBLE) {
        double* c = reinterpret_cast<double*>(p);
        auto body = [&](int64_t k, int64_t s) {
            for (; done < k; done++) c[done] = misval, miss++; // left out
            double y = gv[s];
            c[k] = y;
            miss += y >= misval;
            done = k + 1;
        };
        if (int rc = visit(d, take, body)) return rc;
        for (; done < n; done++) c[done] = misval, miss++;
    } else {
        auto body = [&](int64_t k, int64_t s) {
            for (; done < k; done++) encode_cell(p + done * cw, t, misval), miss++;
            double y = gv[s];
            encode_cell(p + k * cw, t, y);
            miss += y >= misval;
            done = k + 1;
        };
        if (int rc = visit(d, take, body)) return rc;
        for (; done < n; done++) encode_cell(p + done * cw, t, misval), miss++;
    }
    *nmiss = miss;
    return 0;
}

} // namespace korvu
