// Finding groups: one pass over the key columns with a direct table (one
// numeric key holding integers of a modest range) or an open-addressing hash
// of the keys' bytes; the groups are then renumbered in key order by sorting
// their first observations, which costs in the number of groups only.
#include <algorithm>
#include <cmath>
#include <cstring>

#include "data/area/dataarea.h"
#include "data/area/missing.h"
#include "data/area/storage.h"
#include "data/groups/groups.h"
#include "kernel/loop/brk.h"

namespace korvu {

namespace {

constexpr int32_t POLL = 65536; // observations between polls of the break key

inline uint64_t mix64(uint64_t x) {
    x ^= x >> 33;
    x *= 0xff51afd7ed558ccdULL;
    x ^= x >> 33;
    x *= 0xc4ceb9fe1a85ec53ULL;
    x ^= x >> 33;
    return x;
}

inline uint64_t keybits(double d) {
    if (d == 0) d = 0; // -0 and 0 are one value
    uint64_t b;
    std::memcpy(&b, &d, 8);
    return b;
}

inline uint64_t hashbytes(const uint8_t* p, int w) {
    uint64_t h = 0x9e3779b97f4a7c15ULL ^ static_cast<uint64_t>(w);
    int k = 0;
    for (; k + 8 <= w; k += 8) {
        uint64_t c;
        std::memcpy(&c, p + k, 8);
        h = mix64(h ^ c) + 0x9e3779b97f4a7c15ULL;
    }
    if (k < w) {
        uint64_t c = 0;
        std::memcpy(&c, p + k, static_cast<size_t>(w - k));
        h = mix64(h ^ c);
    }
    return h;
}

inline int cmpd(double a, double b) {
    return a < b ? -1 : (a > b ? 1 : 0);
}

// A growable open-addressing table of group numbers.
struct Table {
    std::vector<int32_t> slot;
    uint64_t mask = 0;
    void init(uint64_t n) {
        uint64_t s = 1024;
        while (s < n * 2) s <<= 1;
        slot.assign(s, -1);
        mask = s - 1;
    }
};

// Numbers the groups by first appearance (gid), filling rep; returns the
// count. Key of item k: bits[k] for one numeric key, else row k of rows.
int32_t hash_numeric(const double* x, int64_t n, const uint8_t* take, std::vector<int32_t>& gid,
                     std::vector<int32_t>& rep, int32_t n1, int nomiss) {
    Table t;
    t.init(1024);
    std::vector<uint64_t> repbits;
    for (int64_t k = 0; k < n; k++) {
        if ((k & (POLL - 1)) == 0 && kvpollstd()) return -1;
        if ((take && !take[k]) || (nomiss && x[k] >= misval)) {
            gid[k] = -1;
            continue;
        }
        uint64_t b = keybits(x[k]);
        uint64_t h = mix64(b) & t.mask;
        for (;;) {
            int32_t s = t.slot[h];
            if (s < 0) {
                s = static_cast<int32_t>(rep.size());
                t.slot[h] = s;
                rep.push_back(static_cast<int32_t>(k) + n1);
                repbits.push_back(b);
                gid[k] = s;
                if (rep.size() * 2 > t.slot.size()) { // grow
                    Table u;
                    u.init(rep.size() * 2);
                    for (size_t q = 0; q < repbits.size(); q++) {
                        uint64_t hh = mix64(repbits[q]) & u.mask;
                        while (u.slot[hh] >= 0) hh = (hh + 1) & u.mask;
                        u.slot[hh] = static_cast<int32_t>(q);
                    }
                    t = std::move(u);
                }
                break;
            }
            if (repbits[s] == b) {
                gid[k] = s;
                break;
            }
            h = (h + 1) & t.mask;
        }
    }
    return static_cast<int32_t>(rep.size());
}

int32_t hash_rows(const std::vector<uint8_t>& rows, int w, const std::vector<uint8_t>& miss,
                  const uint8_t* take, std::vector<int32_t>& gid, std::vector<int32_t>& rep,
                  int32_t n1, int nomiss) {
    int64_t n = static_cast<int64_t>(gid.size());
    Table t;
    t.init(1024);
    std::vector<uint64_t> rephash;
    std::vector<int64_t> repk;
    for (int64_t k = 0; k < n; k++) {
        if ((k & (POLL - 1)) == 0 && kvpollstd()) return -1;
        if ((take && !take[k]) || (nomiss && miss[k])) {
            gid[k] = -1;
            continue;
        }
        const uint8_t* r = rows.data() + k * w;
        uint64_t hv = hashbytes(r, w);
        uint64_t h = hv & t.mask;
        for (;;) {
            int32_t s = t.slot[h];
            if (s < 0) {
                s = static_cast<int32_t>(rep.size());
                t.slot[h] = s;
                rep.push_back(static_cast<int32_t>(k) + n1);
                rephash.push_back(hv);
                repk.push_back(k);
                gid[k] = s;
                if (rep.size() * 2 > t.slot.size()) {
                    Table u;
                    u.init(rep.size() * 2);
                    for (size_t q = 0; q < rephash.size(); q++) {
                        uint64_t hh = rephash[q] & u.mask;
                        while (u.slot[hh] >= 0) hh = (hh + 1) & u.mask;
                        u.slot[hh] = static_cast<int32_t>(q);
                    }
                    t = std::move(u);
                }
                break;
            }
            if (rephash[s] == hv && !std::memcmp(rows.data() + repk[s] * w, r, w)) {
                gid[k] = s;
                break;
            }
            h = (h + 1) & t.mask;
        }
    }
    return static_cast<int32_t>(rep.size());
}

// Integers of a modest range go through a direct table: -1 when the key's
// values are not such, else 0 or 1 (break) with the groups numbered.
template <class Get>
int dense_groups(Get get, int64_t n, const uint8_t* take, int nomiss, int flags, int32_t n1,
                 Groups* g, int32_t* ngout, bool* ordered) {
    double lo = 0, hi = -1;
    if (n <= 0) return -1;
    for (int64_t k = 0; k < n; k++) {
        if (take && !take[k]) continue;
        double v = get(k);
        if (v >= misval && nomiss) continue;
        if (v >= misval || v != std::floor(v)) return -1;
        if (hi < lo)
            lo = hi = v;
        else if (v < lo)
            lo = v;
        else if (v > hi)
            hi = v;
    }
    double range = hi - lo + 1;
    if (!(hi >= lo) || range > std::max<double>(2.0 * static_cast<double>(n), 65536.0) ||
        range >= 1e9)
        return -1;
    size_t R = static_cast<size_t>(range);
    std::vector<int32_t> slot(R, -1);
    int32_t ng = 0;
    int32_t* gid = g->gid.data();
    if (flags & GRP_ORDER) {
        for (int64_t k = 0; k < n; k++) {
            if (take && !take[k]) continue;
            double v = get(k);
            if (v >= misval) continue;
            size_t s = static_cast<size_t>(v - lo);
            if (slot[s] < 0) slot[s] = static_cast<int32_t>(k) + n1;
        }
        for (size_t s = 0; s < R; s++)
            if (slot[s] >= 0) {
                g->rep.push_back(slot[s]);
                slot[s] = ng++;
            }
        for (int64_t k = 0; k < n; k++) {
            if ((k & (POLL - 1)) == 0 && kvpollstd()) return 1;
            if (take && !take[k]) continue;
            double v = get(k);
            if (v >= misval) continue;
            gid[k] = slot[static_cast<size_t>(v - lo)];
        }
        *ordered = true;
    } else {
        for (int64_t k = 0; k < n; k++) {
            if ((k & (POLL - 1)) == 0 && kvpollstd()) return 1;
            if (take && !take[k]) continue;
            double v = get(k);
            if (v >= misval) continue;
            size_t s = static_cast<size_t>(v - lo);
            if (slot[s] < 0) {
                slot[s] = ng++;
                g->rep.push_back(static_cast<int32_t>(k) + n1);
            }
            gid[k] = slot[s];
        }
    }
    *ngout = ng;
    return 0;
}

} // namespace

double* grp_scratch(int k, size_t n) {
    static std::vector<double> buf[8];
    std::vector<double>& b = buf[k & 7];
    if (b.size() < n) {
        b.clear();
        b.shrink_to_fit();
        b.resize(n);
    }
    return b.data();
}

const double* groups_values(int v, int32_t n1, int32_t n2, int k) {
    int t;
    const uint8_t* base = static_cast<const uint8_t*>(colbase(v, &t));
    if (t == KV_DOUBLE) return reinterpret_cast<const double*>(base) + (n1 - 1);
    double* x = grp_scratch(k, static_cast<size_t>(std::max(0, n2 - n1 + 1)));
    groups_column(v, n1, n2, x);
    return x;
}

void groups_column(int v, int32_t n1, int32_t n2, double* out) {
    int t;
    const uint8_t* base = static_cast<const uint8_t*>(colbase(v, &t));
    int64_t n = n2 - n1 + 1;
    if (n <= 0) return;
    const uint8_t* p = base + static_cast<int64_t>(n1 - 1) * bytlenc(t);
    switch (t) {
    case KV_DOUBLE: std::memcpy(out, p, static_cast<size_t>(n) * 8); return;
    case KV_LONG:
        for (int64_t k = 0; k < n; k++) {
            int32_t c;
            std::memcpy(&c, p + 4 * k, 4);
            out[k] = kvdouble_of_kvlong(c);
        }
        return;
    default: {
        int w = bytlenc(t);
        for (int64_t k = 0; k < n; k++) out[k] = decode_cell(p + k * w, t);
    }
    }
}

int groups_cmpobs(const int32_t* keys, int nk, int32_t i, int32_t j) {
    for (int q = 0; q < nk; q++) {
        int v = keys[q], t = typlist[v - 1];
        int d;
        if (isstrtype(t)) {
            const char* a = reinterpret_cast<const char*>(dtaptr(v, i));
            const char* b = reinterpret_cast<const char*>(dtaptr(v, j));
            d = strncmp(a, b, static_cast<size_t>(t));
            d = d < 0 ? -1 : (d > 0 ? 1 : 0);
        } else {
            d = cmpd(korvu_data(v, i), korvu_data(v, j));
        }
        if (d) return d;
    }
    return 0;
}

int groups_make(Groups* g, const int32_t* keys, int nk, int32_t n1, int32_t n2, const uint8_t* take,
                int flags) {
    colsync();
    g->n1 = n1, g->n2 = n2;
    int64_t n = n2 >= n1 ? static_cast<int64_t>(n2 - n1 + 1) : 0;
    g->gid.assign(static_cast<size_t>(n), -1);
    g->rep.clear();
    g->size.clear();
    g->start.clear();
    g->members.clear();
    g->ngroups = 0;
    const int nomiss = flags & GRP_NOMISS;
    int32_t ng = 0;
    bool ordered = false; // groups already numbered in key order
    if (nk == 0) {
        // one group of everything taken
        for (int64_t k = 0; k < n; k++)
            if (!take || take[k]) {
                if (g->rep.empty()) g->rep.push_back(static_cast<int32_t>(k) + n1);
                g->gid[k] = 0;
            }
        ng = g->rep.empty() ? 0 : 1;
        ordered = true;
    } else if (nk == 1 && !isstrtype(typlist[keys[0] - 1])) {
        int t;
        const uint8_t* base = static_cast<const uint8_t*>(colbase(keys[0], &t));
        int rc = -1;
        if (t == KV_LONG) {
            const int32_t* c = reinterpret_cast<const int32_t*>(base) + (n1 - 1);
            rc = dense_groups([c](int64_t k) { return kvdouble_of_kvlong(c[k]); }, n, take, nomiss,
                              flags, n1, g, &ng, &ordered);
        } else if (t == KV_DOUBLE) {
            const double* c = reinterpret_cast<const double*>(base) + (n1 - 1);
            rc = dense_groups([c](int64_t k) { return c[k]; }, n, take, nomiss, flags, n1, g, &ng,
                              &ordered);
        } else {
            const double* c = groups_values(keys[0], n1, n2, 0);
            rc = dense_groups([c](int64_t k) { return c[k]; }, n, take, nomiss, flags, n1, g, &ng,
                              &ordered);
        }
        if (rc > 0) return rc;
        if (rc < 0) {
            const double* x = groups_values(keys[0], n1, n2, 0);
            ng = hash_numeric(x, n, take, g->gid, g->rep, n1, nomiss);
            if (ng < 0) return 1;
        }
    } else {
        // rows of the keys' bytes: numbers as the bits of their double,
        // strings as their bytes up to the end of the text, zero-filled
        int w = 0;
        for (int q = 0; q < nk; q++) {
            int t = typlist[keys[q] - 1];
            w += isstrtype(t) ? t : 8;
        }
        std::vector<uint8_t> rows(static_cast<size_t>(n) * static_cast<size_t>(w), 0);
        std::vector<uint8_t> miss(nomiss ? static_cast<size_t>(n) : 0, 0);
        std::vector<double> x;
        int off = 0;
        for (int q = 0; q < nk; q++) {
            int v = keys[q], t = typlist[v - 1];
            if (isstrtype(t)) {
                int ct;
                const uint8_t* base = static_cast<const uint8_t*>(colbase(v, &ct));
                const uint8_t* p = base + static_cast<int64_t>(n1 - 1) * t;
                for (int64_t k = 0; k < n; k++) {
                    const uint8_t* c = p + k * t;
                    size_t len = strnlen(reinterpret_cast<const char*>(c), static_cast<size_t>(t));
                    std::memcpy(rows.data() + k * w + off, c, len);
                    if (nomiss && len == 0) miss[k] = 1;
                }
                off += t;
            } else {
                x.resize(static_cast<size_t>(n));
                groups_column(v, n1, n2, x.data());
                for (int64_t k = 0; k < n; k++) {
                    uint64_t b = keybits(x[k]);
                    std::memcpy(rows.data() + k * w + off, &b, 8);
                    if (nomiss && x[k] >= misval) miss[k] = 1;
                }
                off += 8;
            }
        }
        ng = hash_rows(rows, w, miss, take, g->gid, g->rep, n1, nomiss);
        if (ng < 0) return 1;
    }
    g->ngroups = ng;
    if ((flags & GRP_ORDER) && !ordered && ng > 1) {
        // renumber in key order: sort the groups' first observations
        std::vector<int32_t> perm(static_cast<size_t>(ng));
        for (int32_t s = 0; s < ng; s++) perm[s] = s;
        std::sort(perm.begin(), perm.end(), [&](int32_t a, int32_t b) {
            return groups_cmpobs(keys, nk, g->rep[a], g->rep[b]) < 0;
        });
        std::vector<int32_t> rank(static_cast<size_t>(ng)), rep2(static_cast<size_t>(ng));
        for (int32_t s = 0; s < ng; s++) rank[perm[s]] = s, rep2[s] = g->rep[perm[s]];
        g->rep.swap(rep2);
        for (int64_t k = 0; k < n; k++)
            if (g->gid[k] >= 0) g->gid[k] = rank[g->gid[k]];
    }
    g->size.assign(static_cast<size_t>(ng), 0);
    for (int64_t k = 0; k < n; k++)
        if (g->gid[k] >= 0) g->size[g->gid[k]]++;
    if (flags & GRP_MEMBERS) {
        g->start.assign(static_cast<size_t>(ng) + 1, 0);
        for (int32_t s = 0; s < ng; s++) g->start[s + 1] = g->start[s] + g->size[s];
        g->members.resize(static_cast<size_t>(g->start[ng]));
        std::vector<int32_t> fill(g->start.begin(), g->start.end() - 1);
        for (int64_t k = 0; k < n; k++)
            if (g->gid[k] >= 0) g->members[fill[g->gid[k]]++] = static_cast<int32_t>(k) + n1;
    }
    return 0;
}

} // namespace korvu
