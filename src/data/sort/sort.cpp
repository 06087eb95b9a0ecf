// The sort. The order of ties is part of the result: data already in order
// keep it, reversed data are turned round, and anything else is shuffled by
// the seeded observation generator before a quicksort that skips runs equal
// to its pivot. The work is done on the keys decoded once into a contiguous
// array of (key, position) elements: the same comparisons and the same swaps
// as on the observations themselves, so the permutation is the same, and it
// is written back to mapj at the end.
#include "data/sort/sort.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "data/area/dataarea.h"
#include "data/area/storage.h"
#include "data/vars/vartab.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/brk.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/options.h"

namespace korvu {

// --- the observation generator -------------------------------------------------

static uint32_t seed_state = 1001;
static int32_t rnd_n1 = 1, rnd_width = 0;

uint32_t sortseed() {
    return seed_state;
}
void setsortseed(uint32_t s) {
    seed_state = s;
}
void srndobs(int32_t n1, int32_t n2) {
    rnd_n1 = n1;
    rnd_width = n2 - n1;
}
int32_t rndobs() {
    constexpr uint32_t M = 2147483647u;
    seed_state = (((seed_state * 3433u) & M) + ((seed_state * 65536u) & M)) & M;
    double u = seed_state / 2147483646.0;
    return static_cast<int32_t>(std::trunc(u * rnd_width + 0.5)) + rnd_n1;
}

void exch(int32_t i, int32_t j) {
    std::swap(mapj[i - 1], mapj[j - 1]);
    mapjperm = 1;
    if (mapjspan < nobs) mapjspan = nobs;
}

// --- the declared order ---------------------------------------------------------

void reset_sort(int k) {
    if (srtlist) srtlist[k] = 0;
}

void chksort_var(int v) {
    for (int k = 0; srtlist && srtlist[k]; k++)
        if (srtlist[k] == v) {
            reset_sort(k);
            return;
        }
}

void chksort() {
    for (int k = 0; srtlist && srtlist[k]; k++)
        for (int j = 0; j < lnvar; j++)
            if (srtlist[k] == varlist_vr[j]) {
                reset_sort(k);
                return;
            }
}

// --- keys -----------------------------------------------------------------------

namespace {

// Columns of the keys after the first, by position in the range.
struct Rest {
    struct Col {
        int width; // 0 numeric, else string width
        std::vector<double> num;
        std::vector<const char*> str;
    };
    std::vector<Col> cols;
    bool stable = false;
};

inline int cmpnum(double a, double b) {
    return a < b ? -1 : (a > b ? 1 : 0);
}
// strcmp of two cells of one string variable (padded with zero bytes, not
// always terminated).
inline int cmpcell(const char* a, const char* b, int w) {
    for (int k = 0; k < w; k++) {
        unsigned char x = static_cast<unsigned char>(a[k]), y = static_cast<unsigned char>(b[k]);
        if (x != y) return x < y ? -1 : 1;
        if (!x) return 0;
    }
    return 0;
}

inline int cmprest(const Rest& r, int32_t p, int32_t q) {
    for (const Rest::Col& c : r.cols) {
        int d = c.width ? cmpcell(c.str[p], c.str[q], c.width) : cmpnum(c.num[p], c.num[q]);
        if (d) return d;
    }
    if (r.stable) return p < q ? -1 : (p > q ? 1 : 0);
    return 0;
}

// The element sorted: the first key and the position in the range.
struct NumE {
    double k;
    int32_t pos;
};
struct StrE {
    uint64_t pre; // the first 8 bytes, big-endian, zero after the end of the text
    const char* k;
    int32_t pos;
};

// The prefix key of a string cell: unsigned comparison of prefixes is strcmp
// over the first 8 bytes.
inline uint64_t strprefix(const char* p, int w) {
    uint64_t r = 0;
    int k = 0;
    for (; k < 8 && k < w && p[k]; k++) r = (r << 8) | static_cast<unsigned char>(p[k]);
    return k ? r << (8 * (8 - k)) : 0;
}

struct NumOnly {
    int operator()(const NumE& a, const NumE& b) const { return cmpnum(a.k, b.k); }
};
struct NumMore {
    const Rest* r;
    int operator()(const NumE& a, const NumE& b) const {
        int d = cmpnum(a.k, b.k);
        return d ? d : cmprest(*r, a.pos, b.pos);
    }
};
struct NumStable {
    int operator()(const NumE& a, const NumE& b) const {
        int d = cmpnum(a.k, b.k);
        return d ? d : (a.pos < b.pos ? -1 : (a.pos > b.pos ? 1 : 0));
    }
};
struct StrMore {
    const Rest* r;
    int width;
    int operator()(const StrE& a, const StrE& b) const {
        int d;
        if (a.pre != b.pre)
            d = a.pre < b.pre ? -1 : 1;
        else if (width <= 8 || (a.pre & 0xff) == 0)
            d = 0; // both texts end within the prefix
        else
            d = cmpcell(a.k + 8, b.k + 8, width - 8);
        return d ? d : cmprest(*r, a.pos, b.pos);
    }
};

// Work arrays of the sort are kept from one sort to the next: fresh memory
// costs the kernel a page clearing that would take about as long as the sort.
struct Arena {
    std::unique_ptr<char[]> p;
    size_t cap = 0;
};
Arena arenas[4];
enum { A_ELEMS, A_RADIX1, A_RADIX2, A_MAPJ };
template <class T> T* arena(int k, size_t n) {
    size_t b = n * sizeof(T);
    if (arenas[k].cap < b) {
        arenas[k].p.reset();
        arenas[k].p.reset(new char[b]);
        arenas[k].cap = b;
    }
    return reinterpret_cast<T*>(arenas[k].p.get());
}

// A span of elements: the range lo..hi of observations, element q standing
// for the observation now at lo + q.
template <class E> struct Elems {
    E* a;
    int64_t n;
    E& operator[](int64_t q) { return a[q]; }
    const E& operator[](int64_t q) const { return a[q]; }
};

// Writes the order of the elements back to observations lo..hi.
template <class E> void apply_order(const Elems<E>& a, int32_t lo) {
    size_t n = static_cast<size_t>(a.n);
    int32_t* old = arena<int32_t>(A_MAPJ, n);
    std::memcpy(old, mapj + lo - 1, n * 4);
    int32_t* out = mapj + lo - 1;
    for (size_t q = 0; q < n; q++) {
        if (q + 16 < n) __builtin_prefetch(&old[a[q + 16].pos]);
        out[q] = old[a[q].pos];
    }
    mapj_changed();
}

// The quicksort on a[lo..hi] (0-based), pivot at hi. Partitions are
// independent, so a stack of them in place of recursion leaves the result
// unchanged. 1 on a break.
template <class E, class Cmp> int quicksort(E* a, int64_t lo0, int64_t hi0, Cmp cmp) {
    std::vector<std::pair<int64_t, int64_t>> todo;
    todo.emplace_back(lo0, hi0);
    while (!todo.empty()) {
        auto [lo, hi] = todo.back();
        todo.pop_back();
        if (lo >= hi) continue;
        if (kvpollstd()) return 1;
        int64_t i = lo - 1, j = hi;
        int last;
        for (;;) {
            do last = cmp(a[++i], a[hi]);
            while (last < 0);
            do --j;
            while (j > i && cmp(a[j], a[hi]) > 0);
            if (i >= j) break;
            std::swap(a[i], a[j]);
        }
        if (last == 0 && i != hi) {
            // skip the run equal to the pivot
            int64_t k = i + 1;
            while (k < hi && cmp(a[k], a[hi]) == 0) k++;
            std::swap(a[k], a[hi]);
            int64_t m = i - 1;
            while (m > lo && cmp(a[m], a[i]) == 0) m--;
            todo.emplace_back(lo, m);
            todo.emplace_back(k + 1, hi);
        } else {
            std::swap(a[i], a[hi]);
            todo.emplace_back(lo, i - 1);
            todo.emplace_back(i + 1, hi);
        }
    }
    return 0;
}

// The pre-shuffle: n swaps of rndobs() with rndobs(). The pairs are drawn a
// batch ahead so that their cells can be fetched while earlier swaps run;
// the swaps themselves are done in the order drawn.
template <class E> void shuffle(Elems<E> a, int32_t lo, int32_t hi) {
    srndobs(lo, hi);
    constexpr int B = 64;
    int32_t x[B], y[B];
    for (int64_t c = 0; c < a.n; c += B) {
        int m = static_cast<int>(a.n - c < B ? a.n - c : B);
        for (int k = 0; k < m; k++) {
            x[k] = rndobs() - lo;
            y[k] = rndobs() - lo;
            __builtin_prefetch(&a[x[k]], 1);
            __builtin_prefetch(&a[y[k]], 1);
        }
        for (int k = 0; k < m; k++) std::swap(a[x[k]], a[y[k]]);
    }
}

// The generator's state after the pre-shuffle of n observations, without
// the shuffle: 2n draws.
void skip_shuffle(int32_t lo, int32_t hi, int64_t n) {
    srndobs(lo, hi);
    constexpr uint32_t M = 2147483647u;
    uint32_t s = sortseed();
    for (int64_t c = 0; c < 2 * n; c++) s = (((s * 3433u) & M) + ((s * 65536u) & M)) & M;
    setsortseed(s);
}

// Keys as unsigned integers in the order of the doubles (-0 made +0); false
// when a key is not a number, which the exact comparison alone can order.
struct RadixE {
    uint64_t k;
    int32_t pos;
};
inline bool radixkey(double x, uint64_t* out) {
    if (x != x) return false;
    if (x == 0) x = 0;
    uint64_t b;
    std::memcpy(&b, &x, 8);
    *out = (b >> 63) ? ~b : b | 0x8000000000000000ULL;
    return true;
}

// Least-significant-digit radix sort, 11 bits a pass; stable, so elements
// equal in key stay in the order given. Passes whose digit is the same for
// every element are skipped. On success only the positions of a are
// rewritten, in sorted order. false, a untouched, when a key is not a number
// or, with notie, when two keys are equal.
bool radixsort(Elems<NumE> a, bool notie) {
    size_t n = static_cast<size_t>(a.n);
    RadixE* x = arena<RadixE>(A_RADIX1, n);
    RadixE* y = arena<RadixE>(A_RADIX2, n);
    constexpr int BITS = 11, PASSES = 6, NB = 1 << BITS;
    std::vector<uint32_t> hist(static_cast<size_t>(PASSES) * NB, 0);
    for (size_t q = 0; q < n; q++) {
        if (!radixkey(a[q].k, &x[q].k)) return false;
        x[q].pos = a[q].pos;
        uint64_t k = x[q].k;
        for (int p = 0; p < PASSES; p++) hist[p * NB + ((k >> (p * BITS)) & (NB - 1))]++;
    }
    for (int p = 0; p < PASSES; p++) {
        uint32_t* h = &hist[static_cast<size_t>(p) * NB];
        bool trivial = false;
        for (int d = 0; d < NB; d++)
            if (h[d]) {
                trivial = h[d] == n;
                break;
            }
        if (trivial) continue;
        uint32_t sum = 0;
        for (int d = 0; d < NB; d++) {
            uint32_t c = h[d];
            h[d] = sum;
            sum += c;
        }
        int shift = p * BITS;
        for (size_t q = 0; q < n; q++) y[h[(x[q].k >> shift) & (NB - 1)]++] = x[q];
        std::swap(x, y);
    }
    if (notie)
        for (size_t q = 1; q < n; q++)
            if (x[q - 1].k == x[q].k) return false;
    for (size_t q = 0; q < n; q++) a[q].pos = x[q].pos;
    return true;
}

// Puts elements sorted by some other means back in their first order.
template <class E> void unsort(Elems<E> a) {
    std::vector<E> b(static_cast<size_t>(a.n));
    for (int64_t q = 0; q < a.n; q++) b[a[q].pos] = a[q];
    std::copy(b.begin(), b.end(), a.a);
}

// True when a sample of the keys already has two equal: then the data have
// ties and only the full algorithm gives their order.
template <class E, class Cmp> bool sample_ties(const Elems<E>& a, Cmp cmp) {
    size_t n = static_cast<size_t>(a.n), m = n < 4096 ? n : 4096;
    std::vector<E> s(m);
    for (size_t q = 0; q < m; q++) s[q] = a[static_cast<int64_t>(q * n / m)];
    std::sort(s.begin(), s.end(), [&](const E& u, const E& v) { return cmp(u, v) < 0; });
    for (size_t q = 1; q < m; q++)
        if (cmp(s[q - 1], s[q]) == 0) return true;
    return false;
}

// The sort of observations lo..hi over elements already decoded, in the
// order of the observations. Returns 0 or 1 (break).
//
// When no two elements tie, every correct sort gives the same order, so the
// order is found by a faster sort and only the generator is advanced as the
// pre-shuffle would have advanced it. With ties the pre-shuffle and the
// quicksort run as they are. `unique` tells that the keys cannot tie.
template <class E, class Cmp>
int sortrange(Elems<E> a, int32_t lo, int32_t hi, Cmp cmp, bool unique) {
    int64_t n = a.n;
    // the monotone check
    int64_t q = 0;
    while (q + 1 < n && cmp(a[q], a[q + 1]) == 0) {
        if ((q & 0xffff) == 0 && kvpollstd()) return 1;
        q++;
    }
    if (q + 1 >= n) return 0; // all equal
    int s = cmp(a[q], a[q + 1]);
    bool monotone = true;
    for (q++; q + 1 < n; q++) {
        if ((q & 0xffff) == 0 && kvpollstd()) return 1;
        int d = cmp(a[q], a[q + 1]);
        if (d && d != s) {
            monotone = false;
            break;
        }
    }
    if (monotone) {
        if (s < 0) return 0; // ascending already: nothing moves
        updata = 1;
        for (int64_t k = 0; k < n / 2; k++)
            exch(lo + static_cast<int32_t>(k), hi - static_cast<int32_t>(k));
        return 0;
    }
    updata = 1;
    if (unique || !sample_ties(a, cmp)) {
        bool sorted;
        if constexpr (std::is_same_v<E, NumE> && !std::is_same_v<Cmp, NumMore>) {
            sorted = radixsort(a, !unique);
        } else {
            std::sort(a.a, a.a + n, [&](const E& u, const E& v) { return cmp(u, v) < 0; });
            sorted = true;
            if (!unique)
                for (int64_t k = 1; k < n && sorted; k++) sorted = cmp(a[k - 1], a[k]) != 0;
            if (!sorted) unsort(a);
        }
        if (sorted) {
            skip_shuffle(lo, hi, n);
            apply_order(a, lo);
            return 0;
        }
    }
    shuffle(a, lo, hi);
    int rc = quicksort(a.a, 0, n - 1, cmp);
    apply_order(a, lo);
    return rc;
}

Rest::Col column(int v, int32_t lo, int32_t hi) {
    Rest::Col c;
    int t = typlist[v - 1];
    size_t n = static_cast<size_t>(hi - lo + 1);
    if (isstrtype(t)) {
        c.width = t;
        c.str.resize(n);
        for (int32_t i = lo; i <= hi; i++)
            c.str[i - lo] = reinterpret_cast<const char*>(dtaptr(v, i));
    } else {
        c.width = 0;
        c.num.resize(n);
        const uint8_t* col = colptr(v) + static_cast<int64_t>(lo - 1) * bytlenc(t);
        for (size_t q = 0; q < n; q++) c.num[q] = decode_cell(col + q * bytlenc(t), t);
    }
    return c;
}

} // namespace

// Sorts lo..hi on the keys; srtlist is left empty.
static int sortkeys(const int32_t* keys, int nk, bool stable, int32_t lo, int32_t hi) {
    colsync(); // the keys are read straight from their columns
    size_t n = static_cast<size_t>(hi - lo + 1);
    Rest rest;
    rest.stable = stable;
    for (int k = 1; k < nk; k++) rest.cols.push_back(column(keys[k], lo, hi));
    int v = keys[0];
    int t = typlist[v - 1];
    if (isstrtype(t)) {
        Elems<StrE> a{arena<StrE>(A_ELEMS, n), static_cast<int64_t>(n)};
        for (int32_t i = lo; i <= hi; i++) {
            const char* p = reinterpret_cast<const char*>(dtaptr(v, i));
            a[i - lo] = {strprefix(p, t), p, i - lo};
        }
        return sortrange(a, lo, hi, StrMore{&rest, t}, stable);
    }
    Elems<NumE> a{arena<NumE>(A_ELEMS, n), static_cast<int64_t>(n)};
    const uint8_t* col = colptr(v) + static_cast<int64_t>(lo - 1) * bytlenc(t);
    for (size_t q = 0; q < n; q++)
        a[q] = {decode_cell(col + q * bytlenc(t), t), static_cast<int32_t>(q)};
    if (nk > 1) return sortrange(a, lo, hi, NumMore{&rest}, stable);
    if (stable) return sortrange(a, lo, hi, NumStable{}, true);
    return sortrange(a, lo, hi, NumOnly{}, false);
}

void setsrtlist(int n) {
    int k = 0;
    for (; k < n && k < maxmaxvar; k++) srtlist[k] = static_cast<int16_t>(varlist_vr[k]);
    srtlist[k] = 0;
}

int syssort(int stable) {
    int32_t lo = nobs1, hi = nobs2;
    int nk = lnvar;
    bool work = stable && hi > lo;
    // the observation number as a last key takes a place in the list
    if (work && nk + 1 >= maxmaxvar + 1) return error(103);
    if (srtlist) srtlist[0] = 0;
    int rc = hi > lo && nk > 0 ? sortkeys(varlist_vr, nk, work, lo, hi) : 0;
    // every column follows the new order now, so that the next loop over
    // observations reads them in order (after a break too)
    colsync();
    if (rc) return rc;
    if (lo == 1 && hi == nobs && nk > 0) setsrtlist(nk);
    return 0;
}

int syssort_vars(const int32_t* vars, int n) {
    for (int k = 0; k < n; k++) varlist_vr[k] = vars[k];
    lnvar = n;
    nobs1 = 1;
    nobs2 = nobs;
    return syssort(0);
}

// --- ranking through an index -------------------------------------------------------

namespace {
inline int32_t idata(int idx, int32_t i) {
    int32_t r;
    std::memcpy(&r, dtaptr(idx, i), 4);
    return r;
}
inline void istore(int idx, int32_t i, int32_t r) {
    std::memcpy(dtaptr(idx, i), &r, 4);
}
// Compares the observations that two index cells name, over one or two keys.
struct IdxCmp {
    int v, w;
    int operator()(int32_t a, int32_t b) const {
        for (int key : {v, w}) {
            if (!key) break;
            int t = typlist[key - 1];
            int d = isstrtype(t) ? cmpcell(reinterpret_cast<const char*>(dtaptr(key, a)),
                                           reinterpret_cast<const char*>(dtaptr(key, b)), t)
                                 : cmpnum(korvu_data(key, a), korvu_data(key, b));
            if (d) return d;
        }
        return 0;
    }
};

// Orders idx[1..n] by v, then w; ties free. The quicksort of the sort itself
// runs on the observation numbers the index holds.
void rank(int v, int w, int idx, int32_t n) {
    if (!w && srtlist[0] == v) return; // the data are in this order already
    IdxCmp cmp{v, w};
    std::vector<int32_t> a(static_cast<size_t>(n));
    for (int32_t i = 1; i <= n; i++) a[i - 1] = idata(idx, i);
    bool ordered = true;
    for (int32_t i = 1; i < n && ordered; i++) ordered = cmp(a[i - 1], a[i]) <= 0;
    if (ordered) return;
    quicksort(a.data(), 0, n - 1, cmp);
    for (int32_t i = 1; i <= n; i++) istore(idx, i, a[i - 1]);
}
} // namespace

void sortvar0(int v, int idx, int32_t n) {
    rank(v, 0, idx, n);
}
void sortvar1(int v, int w, int idx, int32_t n) {
    rank(v, w, idx, n);
}

int32_t sortvar(int v, int idx, int32_t n1, int32_t n2, const uint8_t* sel) {
    if (typlist[idx - 1] != KV_LONG) return -109;
    std::vector<int32_t> front, back;
    bool str = isstrtype(typlist[v - 1]);
    for (int32_t i = 1; i <= nobs; i++) {
        bool on = i >= n1 && i <= n2 && (!sel || sel[i - 1]);
        if (on && !str) on = korvu_data(v, i) < misval;
        (on ? front : back).push_back(i);
    }
    int32_t k = 1;
    for (int32_t i : front) istore(idx, k++, i);
    for (int32_t i : back) istore(idx, k++, i);
    int32_t n = static_cast<int32_t>(front.size());
    sortvar0(v, idx, n);
    return n;
}

} // namespace korvu
