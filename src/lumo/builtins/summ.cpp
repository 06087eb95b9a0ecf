// Summaries: sums (plain and in double-double precision), counts of missing
// values, minima and maxima, and cross products.
#include <cmath>
#include <vector>

#include <cblas.h>

#include "lumo/builtins/bi.h"
#include "lumo/objects/mvcross.h"

namespace korvu {

// A sum carried in two doubles (the low part holds what the high part lost).
struct QSum {
    double hi = 0, lo = 0;
    void add(double x) {
        const double s = hi + x;
        const double bp = s - hi;
        lo += (hi - (s - bp)) + (x - bp);
        hi = s;
    }
    double value() const { return hi + lo; }
};

// The missing rule of sums: missing elements are skipped (missing = 0), or
// with missing = 1 any missing element makes the sum missing.
static bool missrule(int n, int k, int* rule) {
    *rule = 0;
    if (n <= k) return true;
    double x;
    if (!bi_getreal(n, k, &x)) return false;
    *rule = x != 0 && x < misval;
    return true;
}

enum { BY_ALL, BY_ROW, BY_COL };

static void sums(int n, int by, bool quad) {
    MObj* a = bi_mat(n, 0);
    int rule;
    if (!a || !missrule(n, 1, &rule)) return;
    a = bi_arg(n, 0);
    if (!bi_real(a)) return;
    const int64_t R = a->rows, C = a->cols;
    const int64_t nr = by == BY_ROW ? R : 1;
    const int64_t nc = by == BY_COL ? C : 1;
    MObj* o = bi_new(MT_REAL, nr, nc);
    if (!o) return;
    const int64_t m = nr * nc;
    double* hi = m_rel(o);
    std::vector<double> lo(static_cast<size_t>(2 * m + 1), 0.0); // low parts, then flags
    for (int64_t k = 0; k < m; k++) hi[k] = 0;
    const double* x = m_rel(a);
    for (int64_t i = 0; i < R; i++)
        for (int64_t j = 0; j < C; j++) {
            const int64_t k = by == BY_ALL ? 0 : by == BY_ROW ? i : j;
            const double v = x[i * C + j];
            if (v >= misval) {
                lo[m + k] = 1;
                continue;
            }
            if (quad) {
                const double s = hi[k] + v;
                const double bp = s - hi[k];
                lo[k] += (hi[k] - (s - bp)) + (v - bp);
                hi[k] = s;
            } else {
                hi[k] += v;
            }
        }
    for (int64_t k = 0; k < m; k++) hi[k] = rule && lo[m + k] != 0 ? misval : bi_fin(hi[k] + lo[k]);
    bi_result(n, o);
}
static void bi_sum(int n) {
    sums(n, BY_ALL, false);
}
static void bi_quadsum(int n) {
    sums(n, BY_ALL, true);
}
static void bi_rowsum(int n) {
    sums(n, BY_ROW, false);
}
static void bi_colsum(int n) {
    sums(n, BY_COL, false);
}
static void bi_quadrowsum(int n) {
    sums(n, BY_ROW, true);
}
static void bi_quadcolsum(int n) {
    sums(n, BY_COL, true);
}

static bool ismiss(const MObj* a, int64_t k) {
    switch (a->eltype) {
    case MT_REAL: return m_rel(a)[k] >= misval;
    case MT_COMPLEX: return m_rel(a)[2 * k] >= misval || m_rel(a)[2 * k + 1] >= misval;
    case MT_STRING: return m_sel(a)[k]->len == 0;
    default: return m_pel(a)[k] == nullptr;
    }
}
static void counts(int n, int by, bool wantmiss) {
    MObj* a = bi_mat(n, 0);
    if (!a) return;
    const int64_t R = a->rows, C = a->cols;
    const int64_t nr = by == BY_ROW ? R : 1, nc = by == BY_COL ? C : 1;
    MObj* o = bi_new(MT_REAL, nr, nc);
    if (!o) return;
    for (int64_t k = 0; k < nr * nc; k++) m_rel(o)[k] = 0;
    for (int64_t i = 0; i < R; i++)
        for (int64_t j = 0; j < C; j++)
            if (ismiss(a, i * C + j) == wantmiss)
                m_rel(o)[by == BY_ALL ? 0 : by == BY_ROW ? i : j] += 1;
    bi_result(n, o);
}
static void bi_missing(int n) {
    counts(n, BY_ALL, true);
}
static void bi_rowmissing(int n) {
    counts(n, BY_ROW, true);
}
static void bi_colmissing(int n) {
    counts(n, BY_COL, true);
}
static void bi_nonmissing(int n) {
    counts(n, BY_ALL, false);
}
static void bi_rownonmissing(int n) {
    counts(n, BY_ROW, false);
}
static void bi_colnonmissing(int n) {
    counts(n, BY_COL, false);
}

// all(x): every element non-zero (missing counts as non-zero); any(x).
static void allany(int n, bool all) {
    MObj* a = bi_mat(n, 0);
    if (!a || !bi_real(a)) return;
    bool r = all;
    for (int64_t i = 0; i < m_nel(a); i++) {
        const bool t = m_rel(a)[i] != 0;
        if (all && !t) r = false;
        if (!all && t) r = true;
    }
    bi_realres(n, r);
}
static void bi_all(int n) {
    allany(n, true);
}
static void bi_any(int n) {
    allany(n, false);
}
// allof(P, s), anyof(P, s): every, some element of P equal to the scalar s.
static bool eleq(const MObj* a, int64_t i, const MObj* s) {
    if (a->eltype != s->eltype) return false;
    switch (a->eltype) {
    case MT_REAL: return m_rel(a)[i] == m_rel(s)[0];
    case MT_COMPLEX: return m_rel(a)[2 * i] == m_rel(s)[0] && m_rel(a)[2 * i + 1] == m_rel(s)[1];
    case MT_STRING: {
        const SCell* x = m_sel(a)[i];
        const SCell* y = m_sel(s)[0];
        return x->len == y->len && !memcmp(x->s, y->s, static_cast<size_t>(x->len));
    }
    default: return m_pel(a)[i] == m_pel(s)[0];
    }
}
static void ofs(int n, bool all) {
    MObj* a = bi_mat(n, 0);
    MObj* s = bi_mat(n, 1);
    if (!a || !s || !bi_scalar(s)) return;
    a = bi_arg(n, 0);
    bool r = all;
    for (int64_t i = 0; i < m_nel(a); i++) {
        const bool t = eleq(a, i, s);
        if (all && !t) r = false;
        if (!all && t) r = true;
    }
    bi_realres(n, r);
}
static void bi_allof(int n) {
    ofs(n, true);
}
static void bi_anyof(int n) {
    ofs(n, false);
}

// Minima and maxima: of each row (k x 2 of min, max), of each column
// (2 x k), of everything (1 x 2); missing values are skipped unless the
// second argument asks them counted as largest.
static void minmaxes(int n, int by) {
    MObj* a = bi_mat(n, 0);
    int rule;
    if (!a || !missrule(n, 1, &rule)) return;
    a = bi_arg(n, 0);
    if (!bi_real(a)) return;
    const int64_t R = a->rows, C = a->cols;
    const int64_t groups = by == BY_ALL ? 1 : by == BY_ROW ? R : C;
    std::vector<double> lohi(static_cast<size_t>(2 * groups + 1), misval);
    double* lo = lohi.data();
    double* hi = lo + groups;
    std::vector<char> any(static_cast<size_t>(groups + 1), 0);
    for (int64_t i = 0; i < R; i++)
        for (int64_t j = 0; j < C; j++) {
            const int64_t k = by == BY_ALL ? 0 : by == BY_ROW ? i : j;
            const double v = m_rel(a)[i * C + j];
            if (v >= misval && !rule) continue;
            if (!any[k]) {
                lo[k] = hi[k] = v;
                any[k] = 1;
                continue;
            }
            if (v < lo[k]) lo[k] = v;
            if (v > hi[k]) hi[k] = v;
        }
    MObj* o = by == BY_COL ? bi_new(MT_REAL, 2, groups) : bi_new(MT_REAL, groups, 2);
    if (!o) return;
    for (int64_t k = 0; k < groups; k++) {
        if (by == BY_COL) {
            m_rel(o)[k] = lo[k];
            m_rel(o)[groups + k] = hi[k];
        } else {
            m_rel(o)[2 * k] = lo[k];
            m_rel(o)[2 * k + 1] = hi[k];
        }
    }
    bi_result(n, o);
}
static void bi_rowminmax(int n) {
    minmaxes(n, BY_ROW);
}
static void bi_colminmax(int n) {
    minmaxes(n, BY_COL);
}
static void bi_minmax(int n) {
    minmaxes(n, BY_ALL);
}
static void maxabs(int n, int by) {
    MObj* a = bi_mat(n, 0);
    if (!a || !bi_real(a)) return;
    const int64_t R = a->rows, C = a->cols;
    const int64_t groups = by == BY_ROW ? R : C;
    MObj* o = by == BY_ROW ? bi_new(MT_REAL, groups, 1) : bi_new(MT_REAL, 1, groups);
    if (!o) return;
    for (int64_t k = 0; k < groups; k++) m_rel(o)[k] = 0;
    for (int64_t i = 0; i < R; i++)
        for (int64_t j = 0; j < C; j++) {
            const double v = m_rel(a)[i * C + j];
            if (v >= misval) continue;
            double& m = m_rel(o)[by == BY_ROW ? i : j];
            if (std::fabs(v) > m) m = std::fabs(v);
        }
    bi_result(n, o);
}
static void bi_rowmaxabs(int n) {
    maxabs(n, BY_ROW);
}
static void bi_colmaxabs(int n) {
    maxabs(n, BY_COL);
}

// The fast path of cross() where X and Z are views of the dataset: read block
// by block, never gathered whole. False when the arguments are not for it.
static bool crossviews(int n) {
    MObj* x = bi_arg(n, 0);
    MObj* w = n == 3 ? bi_arg(n, 1) : nullptr;
    MObj* z = bi_arg(n, n - 1);
    if (!v_crossable(x) || !v_crossable(z) || x->rows != z->rows) return false;
    if (x->rows == 0 || x->cols == 0 || z->cols == 0) return false;
    if (w && !(w->view ? v_crossable(w) && w->cols == 1 && w->rows == x->rows
                       : !w->fcn && w->eltype == MT_REAL &&
                             (m_nel(w) == 1 || (w->cols == 1 && w->rows == x->rows))))
        return false;
    MObj* o = bi_new(MT_REAL, x->cols, z->cols);
    if (!o) return true;
    if (v_cross(x, w, z, m_rel(o))) {
        mo_freemat(o);
        m_xeqerr(1);
        return true;
    }
    bi_result(n, o);
    return true;
}

// cross(X, Z) = X'Z and cross(X, w, Z) = X'diag(w)Z, skipping the rows where
// any element of X, w or Z is missing. A 1 x 1 w weights every row alike.
static void crosses(int n, bool quad) {
    if (n != 2 && n != 3) return bi_crossx(n, false, quad);
    if (!quad && m_nviews > 0 && crossviews(n)) return;
    MObj* x = bi_mat(n, 0);
    MObj* w = n == 3 ? bi_mat(n, 1) : nullptr;
    MObj* z = bi_mat(n, n - 1);
    if (!x || (n == 3 && !w) || !z) return;
    x = bi_arg(n, 0);
    if (n == 3) w = bi_arg(n, 1);
    if (!bi_real(x) || !bi_real(z) || (w && !bi_real(w))) return;
    const int64_t N = x->rows, p = x->cols, q = z->cols;
    if (z->rows != N) return m_xeqerr(3200);
    if (w && !(m_nel(w) == 1 || (w->cols == 1 && w->rows == N))) return m_xeqerr(3200);
    // rows with a missing value drop out
    std::vector<char> bad(static_cast<size_t>(N), 0);
    bool anybad = false;
    for (int64_t i = 0; i < N; i++) {
        bool b = false;
        for (int64_t j = 0; j < p && !b; j++) b = m_rel(x)[i * p + j] >= misval;
        for (int64_t j = 0; j < q && !b; j++) b = m_rel(z)[i * q + j] >= misval;
        if (w && !b) b = m_rel(w)[m_nel(w) == 1 ? 0 : i] >= misval;
        bad[i] = b;
        anybad |= b;
    }
    MObj* o = bi_new(MT_REAL, p, q);
    if (!o) return;
    double* r = m_rel(o);
    if (!quad && !anybad && !w && N > 0 && p > 0 && q > 0) {
        cblas_dgemm(CblasRowMajor, CblasTrans, CblasNoTrans, static_cast<int>(p),
                    static_cast<int>(q), static_cast<int>(N), 1.0, m_rel(x), static_cast<int>(p),
                    m_rel(z), static_cast<int>(q), 0.0, r, static_cast<int>(q));
    } else if (!quad) {
        for (int64_t k = 0; k < p * q; k++) r[k] = 0;
        for (int64_t i = 0; i < N; i++) {
            if (bad[i]) continue;
            const double wi = w ? m_rel(w)[m_nel(w) == 1 ? 0 : i] : 1.0;
            for (int64_t a = 0; a < p; a++) {
                const double xa = m_rel(x)[i * p + a] * wi;
                for (int64_t b = 0; b < q; b++) r[a * q + b] += xa * m_rel(z)[i * q + b];
            }
        }
    } else {
        std::vector<QSum> s(static_cast<size_t>(p * q));
        for (int64_t i = 0; i < N; i++) {
            if (bad[i]) continue;
            const double wi = w ? m_rel(w)[m_nel(w) == 1 ? 0 : i] : 1.0;
            for (int64_t a = 0; a < p; a++) {
                const double xa = m_rel(x)[i * p + a] * wi;
                for (int64_t b = 0; b < q; b++) s[a * q + b].add(xa * m_rel(z)[i * q + b]);
            }
        }
        for (int64_t k = 0; k < p * q; k++) r[k] = s[k].value();
    }
    for (int64_t k = 0; k < p * q; k++) r[k] = bi_fin(r[k]);
    bi_result(n, o);
}
static void bi_cross(int n) {
    crosses(n, false);
}
static void bi_quadcross(int n) {
    crosses(n, true);
}

void bi_link_summ(MBiFn* t) {
    t[bi_index("sum")] = bi_sum;
    t[bi_index("quadsum")] = bi_quadsum;
    t[bi_index("rowsum")] = bi_rowsum;
    t[bi_index("colsum")] = bi_colsum;
    t[bi_index("quadrowsum")] = bi_quadrowsum;
    t[bi_index("quadcolsum")] = bi_quadcolsum;
    t[bi_index("rowminmax")] = bi_rowminmax;
    t[bi_index("colminmax")] = bi_colminmax;
    t[bi_index("minmax")] = bi_minmax;
    t[bi_index("rowmaxabs")] = bi_rowmaxabs;
    t[bi_index("colmaxabs")] = bi_colmaxabs;
    t[bi_index("rowmissing")] = bi_rowmissing;
    t[bi_index("colmissing")] = bi_colmissing;
    t[bi_index("missing")] = bi_missing;
    t[bi_index("rownonmissing")] = bi_rownonmissing;
    t[bi_index("colnonmissing")] = bi_colnonmissing;
    t[bi_index("nonmissing")] = bi_nonmissing;
    t[bi_index("all")] = bi_all;
    t[bi_index("any")] = bi_any;
    t[bi_index("allof")] = bi_allof;
    t[bi_index("anyof")] = bi_anyof;
    t[bi_index("cross")] = bi_cross;
    t[bi_index("quadcross")] = bi_quadcross;
}

} // namespace korvu
