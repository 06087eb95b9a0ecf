// The built-in functions the machine runs so far, by the index the compiler
// writes into `opbiltin`. The table grows with the library of built-ins; an
// index without a row says so when it is reached.
#include <cfloat>
#include <cmath>

#include "data/area/missing.h"
#include "lumo/vm/vmops.h"

namespace korvu {

// Replaces the n arguments by r.
static void result(int n, MObj* r) {
    r->count++;
    for (int k = 0; k < n; k++) m_pop();
    *++m_stak = r;
}

static MObj* arg(int n, int k) { // k-th of n, from 0
    return m_stak[k - n + 1];
}

static bool ismatrix(const MObj* o) {
    if (o->fcn) {
        m_xeqerr(3102);
        return false;
    }
    return true;
}

static void scalarres(int n, double x) {
    MObj* r = m_mktsmatsto(x);
    if (!r) return m_xeqerr(3900);
    result(n, r);
}

static void bi_rows(int n) {
    if (ismatrix(arg(n, 0))) scalarres(n, arg(n, 0)->rows);
}
static void bi_cols(int n) {
    if (ismatrix(arg(n, 0))) scalarres(n, arg(n, 0)->cols);
}
static void bi_length(int n) {
    if (ismatrix(arg(n, 0))) scalarres(n, static_cast<double>(m_nel(arg(n, 0))));
}

// Element by element over a real argument.
template <class F> static void realmap(int n, F f) {
    MObj* a = arg(n, 0);
    if (!ismatrix(a)) return;
    if (a->eltype != MT_REAL) return m_xeqerr(a->eltype == MT_STRING ? 3251 : 3253);
    MObj* r = m_mkmat("", MT_REAL, a->rows, a->cols);
    if (!r) return m_xeqerr(3900);
    const int64_t m = m_nel(a);
    for (int64_t i = 0; i < m; i++) {
        const double x = m_rel(a)[i];
        double y = x >= misval ? misval : f(x);
        if (!(std::fabs(y) <= DBL_MAX)) y = misval;
        m_rel(r)[i] = y;
    }
    result(n, r);
}

static void bi_abs(int n) {
    realmap(n, [](double x) { return std::fabs(x); });
}
static void bi_ln(int n) {
    realmap(n, [](double x) { return std::log(x); });
}
static void bi_exp(int n) {
    realmap(n, [](double x) { return std::exp(x); });
}
static void bi_sqrt(int n) {
    realmap(n, [](double x) { return std::sqrt(x); });
}
static void bi_floor(int n) {
    realmap(n, [](double x) { return std::floor(x); });
}
static void bi_ceil(int n) {
    realmap(n, [](double x) { return std::ceil(x); });
}

// J(r, c, value): an r x c matrix of the value.
static void bi_J(int n) {
    MObj* a = arg(n, 0);
    MObj* b = arg(n, 1);
    MObj* v = arg(n, 2);
    if (!ismatrix(a) || !ismatrix(b) || !ismatrix(v)) return;
    if (a->eltype != MT_REAL || b->eltype != MT_REAL) return m_xeqerr(3253);
    if (m_nel(a) != 1 || m_nel(b) != 1 || m_nel(v) != 1) return m_xeqerr(3204);
    const double r = m_rel(a)[0], c = m_rel(b)[0];
    if (!(r >= 0 && c >= 0 && r < 2147483647.0 && c < 2147483647.0)) return m_xeqerr(3300);
    if (v->eltype != MT_REAL && v->eltype != MT_STRING) return m_xeqerr(3255);
    MObj* o = m_mkmat("", v->eltype, static_cast<int>(r), static_cast<int>(c));
    if (!o) return m_xeqerr(3900);
    const int64_t m = m_nel(o);
    if (v->eltype == MT_REAL) {
        for (int64_t i = 0; i < m; i++) m_rel(o)[i] = m_rel(v)[0];
    } else {
        SCell* s = m_sel(v)[0];
        for (int64_t i = 0; i < m; i++) {
            sel_hold(s);
            m_sel(o)[i] = s;
        }
    }
    result(n, o);
}

// I(n) or I(r, c): identity.
static void bi_I(int n) {
    MObj* a = arg(n, 0);
    MObj* b = arg(n, n - 1);
    if (!ismatrix(a) || !ismatrix(b)) return;
    if (a->eltype != MT_REAL || b->eltype != MT_REAL) return m_xeqerr(3253);
    if (m_nel(a) != 1 || m_nel(b) != 1) return m_xeqerr(3204);
    const double r = m_rel(a)[0], c = m_rel(b)[0];
    if (!(r >= 0 && c >= 0 && r < 2147483647.0 && c < 2147483647.0)) return m_xeqerr(3300);
    MObj* o = m_mkmat("", MT_REAL, static_cast<int>(r), static_cast<int>(c));
    if (!o) return m_xeqerr(3900);
    for (int i = 0; i < o->rows; i++)
        for (int j = 0; j < o->cols; j++) m_rel(o)[static_cast<int64_t>(i) * o->cols + j] = i == j;
    result(n, o);
}

// sum(x): the sum of the non-missing elements.
static void bi_sum(int n) {
    MObj* a = arg(n, 0);
    if (!ismatrix(a)) return;
    if (a->eltype != MT_REAL) return m_xeqerr(3253);
    double s = 0;
    for (int64_t i = 0; i < m_nel(a); i++)
        if (m_rel(a)[i] < misval) s += m_rel(a)[i];
    scalarres(n, std::fabs(s) <= DBL_MAX ? s : misval);
}

static void bi_strlen(int n) {
    MObj* a = arg(n, 0);
    if (!ismatrix(a)) return;
    if (a->eltype != MT_STRING) return m_xeqerr(3250);
    MObj* o = m_mkmat("", MT_REAL, a->rows, a->cols);
    if (!o) return m_xeqerr(3900);
    for (int64_t i = 0; i < m_nel(a); i++) m_rel(o)[i] = m_sel(a)[i]->len;
    result(n, o);
}

// mod(x, y): x - y * floor(x / y), scalar y.
static void bi_mod(int n) {
    MObj* a = arg(n, 0);
    MObj* b = arg(n, 1);
    if (!ismatrix(a) || !ismatrix(b)) return;
    if (a->eltype != MT_REAL || b->eltype != MT_REAL) return m_xeqerr(3253);
    if (m_nel(b) != 1) return m_xeqerr(3204);
    const double y = m_rel(b)[0];
    MObj* o = m_mkmat("", MT_REAL, a->rows, a->cols);
    if (!o) return m_xeqerr(3900);
    for (int64_t i = 0; i < m_nel(a); i++) {
        const double x = m_rel(a)[i];
        double r = x >= misval || y >= misval ? misval : x - y * std::floor(x / y);
        if (!(std::fabs(r) <= DBL_MAX)) r = misval;
        m_rel(o)[i] = r;
    }
    result(n, o);
}

struct MBiRow {
    int index;
    MBiFn fn;
};
static const MBiRow m_bixeq[] = {
    {1, bi_rows},    {2, bi_cols},   {3, bi_length}, {12, bi_abs}, {14, bi_ln},
    {15, bi_exp},    {16, bi_sqrt},  {24, bi_J},     {25, bi_I},   {26, bi_sum},
    {27, bi_strlen}, {37, bi_floor}, {38, bi_ceil},  {39, bi_mod},
};

MBiFn m_bifn(int index) {
    for (const MBiRow& r : m_bixeq)
        if (r.index == index) return r.fn;
    return nullptr;
}

} // namespace korvu
