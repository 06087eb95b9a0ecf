// The operators: arithmetic with the missing-value rules, comparisons,
// logic, joins, ranges, transpose, the matrix product through BLAS and the
// Kronecker product. Real and string elements; complex says it is not there.
#include <cblas.h>

#include <cfloat>
#include <cmath>
#include <cstring>
#include <vector>

#include "data/area/missing.h"
#include "lumo/vm/vmops.h"
#include "lumo/vm/xeqops.h"

namespace korvu {

// Results: a missing operand gives missing, and so does a result that is
// not finite (an infinity or not a number). Written without branches so the
// element loops vectorise.
static inline double fin(double r) {
    return std::fabs(r) <= DBL_MAX ? r : misval;
}
static inline bool miss2(double x, double y) {
    return (x >= misval) | (y >= misval);
}
static inline double arith(double x, double y, double r) {
    const bool bad = (x >= misval) | (y >= misval) | !(std::fabs(r) <= DBL_MAX);
    return bad ? misval : r;
}

struct Add {
    static constexpr int K = 0;
    static double f(double x, double y) { return arith(x, y, x + y); }
};
struct Sub {
    static constexpr int K = 1;
    static double f(double x, double y) { return arith(x, y, x - y); }
};
struct Mul {
    static constexpr int K = 2;
    static double f(double x, double y) { return arith(x, y, x * y); }
};
struct Div {
    static constexpr int K = 3;
    static double f(double x, double y) { return arith(x, y, x / y); }
};
struct Pow {
    static constexpr int K = -1;
    static double f(double x, double y) { return miss2(x, y) ? misval : fin(std::pow(x, y)); }
};
struct Eq {
    static constexpr int K = -1;
    static double f(double x, double y) { return x == y; }
};
struct Ne {
    static constexpr int K = -1;
    static double f(double x, double y) { return x != y; }
};
struct Gt {
    static constexpr int K = -1;
    static double f(double x, double y) { return x > y; }
};
struct Ge {
    static constexpr int K = -1;
    static double f(double x, double y) { return x >= y; }
};
struct Lt {
    static constexpr int K = -1;
    static double f(double x, double y) { return x < y; }
};
struct Le {
    static constexpr int K = -1;
    static double f(double x, double y) { return x <= y; }
};
struct And {
    static constexpr int K = -1;
    static double f(double x, double y) { return x != 0 && y != 0; }
};
struct Or {
    static constexpr int K = -1;
    static double f(double x, double y) { return x != 0 || y != 0; }
};

// Shapes. Plain operators: equal shapes, or one operand 1 x 1. Colon
// operators also stretch an r x 1 or a 1 x c operand over an r x c one.
bool m_shape(const MObj* a, const MObj* b, bool colon, int* R, int* C) {
    if (a->rows == b->rows && a->cols == b->cols) {
        *R = a->rows, *C = a->cols;
        return true;
    }
    if (b->rows == 1 && b->cols == 1) {
        *R = a->rows, *C = a->cols;
        return true;
    }
    if (a->rows == 1 && a->cols == 1) {
        *R = b->rows, *C = b->cols;
        return true;
    }
    if (!colon) return false;
    auto fits = [](const MObj* x, int r, int c) {
        return (x->rows == r || x->rows == 1) && (x->cols == c || x->cols == 1);
    };
    if (fits(b, a->rows, a->cols)) {
        *R = a->rows, *C = a->cols;
        return true;
    }
    if (fits(a, b->rows, b->cols)) {
        *R = b->rows, *C = b->cols;
        return true;
    }
    return false;
}

// Element loops, written so the compiler vectorises the common shapes.
template <class F>
static void ewloop(double* __restrict out, const MObj* a, const MObj* b, int R, int C) {
    const double* x = m_rel(a);
    const double* y = m_rel(b);
    const int64_t n = static_cast<int64_t>(R) * C;
    const bool afull = a->rows == R && a->cols == C, bfull = b->rows == R && b->cols == C;
    if (afull && bfull) {
        for (int64_t i = 0; i < n; i++) out[i] = F::f(x[i], y[i]);
    } else if (afull && m_nel(b) == 1) {
        const double y0 = y[0];
        for (int64_t i = 0; i < n; i++) out[i] = F::f(x[i], y0);
    } else if (bfull && m_nel(a) == 1) {
        const double x0 = x[0];
        for (int64_t i = 0; i < n; i++) out[i] = F::f(x0, y[i]);
    } else {
        for (int i = 0; i < R; i++)
            for (int j = 0; j < C; j++) {
                const double u = x[(a->rows == 1 ? 0 : i) * a->cols + (a->cols == 1 ? 0 : j)];
                const double v = y[(b->rows == 1 ? 0 : i) * b->cols + (b->cols == 1 ? 0 : j)];
                out[static_cast<int64_t>(i) * C + j] = F::f(u, v);
            }
    }
}

// Checks both operands are matrices of the same family; returns the shared
// element type or -100 with the code set.
static int family(const MObj* a, const MObj* b) {
    if (a->fcn || b->fcn) {
        m_xeqerr(3102);
        return -100;
    }
    if (a->eltype == MT_COMPLEX || b->eltype == MT_COMPLEX) {
        m_custom_xeqerr(3997, "complex values not yet available");
        return -100;
    }
    if (a->eltype != b->eltype) {
        m_xeqerr(3250);
        return -100;
    }
    return a->eltype;
}

// A real result of R x C, reusing an operand referenced only by the stack.
static MObj* realresult(MObj* a, MObj* b, int R, int C) {
    if (a->count == 1 && !a->view && a->eltype == MT_REAL && a->rows == R && a->cols == C &&
        a->level >= 0)
        return a;
    if (b->count == 1 && !b->view && b->eltype == MT_REAL && b->rows == R && b->cols == C &&
        b->level >= 0)
        return b;
    if (R == 1 && C == 1) return m_mktsmat();
    return m_mkmat("", MT_REAL, R, C);
}

template <class F> static void realbin(bool colon) {
    MObj* a = m_stak[-1];
    MObj* b = m_stak[0];
    // scalars first
    if (!a->fcn && !b->fcn && a->eltype == MT_REAL && b->eltype == MT_REAL && a->rows == 1 &&
        a->cols == 1 && b->rows == 1 && b->cols == 1) {
        const double r = F::f(m_rel(a)[0], m_rel(b)[0]);
        MObj* o = realresult(a, b, 1, 1);
        if (!o) return m_xeqerr(3900);
        m_rel(o)[0] = r;
        return ppp2(o);
    }
    if (!a->fcn && !b->fcn && (a->eltype == MT_COMPLEX || b->eltype == MT_COMPLEX)) {
        if (F::K >= 0) return m_cxbin(F::K, colon);
        return m_xeqerr(3253);
    }
    const int el = family(a, b);
    if (el == -100) return;
    if (el != MT_REAL) return m_xeqerr(el == MT_STRING ? 3251 : 3250);
    int R, C;
    if (!m_shape(a, b, colon, &R, &C)) return m_xeqerr(3200);
    MObj* o = realresult(a, b, R, C);
    if (!o) return m_xeqerr(3900);
    ewloop<F>(m_rel(o), a, b, R, C);
    ppp2(o);
}

// Strings.

static int scmp(const SCell* x, const SCell* y) {
    const int n = x->len < y->len ? x->len : y->len;
    const int c = memcmp(x->s, y->s, static_cast<size_t>(n));
    if (c) return c;
    return (x->len > y->len) - (x->len < y->len);
}

template <class G> static void strloop(MObj* a, MObj* b, int R, int C, G g) {
    for (int i = 0; i < R; i++)
        for (int j = 0; j < C; j++) {
            const SCell* u = m_sel(a)[(a->rows == 1 ? 0 : i) * a->cols + (a->cols == 1 ? 0 : j)];
            const SCell* v = m_sel(b)[(b->rows == 1 ? 0 : i) * b->cols + (b->cols == 1 ? 0 : j)];
            g(static_cast<int64_t>(i) * C + j, u, v);
        }
}

static void strplus(MObj* a, MObj* b, bool colon) {
    int R, C;
    if (!m_shape(a, b, colon, &R, &C)) return m_xeqerr(3200);
    MObj* o = m_mkmat("", MT_STRING, R, C);
    if (!o) return m_xeqerr(3900);
    bool bad = false;
    strloop(a, b, R, C, [&](int64_t k, const SCell* u, const SCell* v) {
        std::string s(u->s, static_cast<size_t>(u->len));
        s.append(v->s, static_cast<size_t>(v->len));
        SCell* c = sel_make(s.data(), s.size());
        if (!c) bad = true;
        m_sel(o)[k] = c ? c : sel_empty();
    });
    if (bad) {
        mo_freemat(o);
        return m_xeqerr(3900);
    }
    ppp2(o);
}

// Colon comparison of strings, element by element.
template <class F> static void strcolon(MObj* a, MObj* b) {
    int R, C;
    if (!m_shape(a, b, true, &R, &C)) return m_xeqerr(3200);
    MObj* o = m_mkmat("", MT_REAL, R, C);
    if (!o) return m_xeqerr(3900);
    strloop(a, b, R, C,
            [&](int64_t k, const SCell* u, const SCell* v) { m_rel(o)[k] = F::f(scmp(u, v), 0); });
    ppp2(o);
}

void mx_opplus() {
    MObj* a = m_stak[-1];
    MObj* b = m_stak[0];
    if (a->eltype == MT_STRING && b->eltype == MT_STRING && !a->fcn && !b->fcn)
        return strplus(a, b, false);
    realbin<Add>(false);
}
void mx_opcadd() {
    MObj* a = m_stak[-1];
    MObj* b = m_stak[0];
    if (a->eltype == MT_STRING && b->eltype == MT_STRING && !a->fcn && !b->fcn)
        return strplus(a, b, true);
    realbin<Add>(true);
}
void mx_opsub() {
    realbin<Sub>(false);
}
void mx_opcsub() {
    realbin<Sub>(true);
}
void mx_opcmult() {
    realbin<Mul>(true);
}
void mx_opcdiv() {
    realbin<Div>(true);
}
void mx_opcpower() {
    realbin<Pow>(true);
}

static bool scalar(const MObj* o) {
    return o->rows == 1 && o->cols == 1;
}

static void scalarerr(const MObj* o) {
    m_custom_xeqerr(3204, "%s[%d,%d] found where scalar required", m_eltname(o), o->rows, o->cols);
}

void mx_opdiv() {
    MObj* a = m_stak[-1];
    MObj* b = m_stak[0];
    if (!a->fcn && !b->fcn && (a->eltype == MT_STRING || b->eltype == MT_STRING))
        return m_xeqerr(3251);
    if (!b->fcn && !scalar(b)) return scalarerr(b);
    if (!a->fcn && !b->fcn && (a->eltype == MT_COMPLEX || b->eltype == MT_COMPLEX))
        return m_cxbin(3, false);
    realbin<Div>(false);
}

void mx_oppower() {
    MObj* a = m_stak[-1];
    MObj* b = m_stak[0];
    if (!a->fcn && !b->fcn && (a->eltype == MT_STRING || b->eltype == MT_STRING))
        return m_xeqerr(3251);
    if (!a->fcn && !scalar(a)) return scalarerr(a);
    if (!b->fcn && !scalar(b)) return scalarerr(b);
    realbin<Pow>(false);
}

// Colon comparisons and logic.
template <class F> static void colcmp() {
    MObj* a = m_stak[-1];
    MObj* b = m_stak[0];
    if (a->eltype == MT_STRING && b->eltype == MT_STRING && !a->fcn && !b->fcn)
        return strcolon<F>(a, b);
    realbin<F>(true);
}
void mx_opcee() {
    colcmp<Eq>();
}
void mx_opcne() {
    colcmp<Ne>();
}
void mx_opcgt() {
    colcmp<Gt>();
}
void mx_opcge() {
    colcmp<Ge>();
}
void mx_opclt() {
    colcmp<Lt>();
}
void mx_opcle() {
    colcmp<Le>();
}
void mx_opcand() {
    realbin<And>(true);
}
void mx_opcor() {
    realbin<Or>(true);
}

// Whole-matrix comparisons: one truth value, kept in the condition flag.
static void setcond(bool t) {
    m_condflag = t;
    ppp2(t ? m_ktrue : m_kfalse);
}

template <class F> static void wholecmp(int eqkind) {
    MObj* a = m_stak[-1];
    MObj* b = m_stak[0];
    if (!a->fcn && !b->fcn && a->eltype == MT_REAL && b->eltype == MT_REAL && scalar(a) &&
        scalar(b))
        return setcond(F::f(m_rel(a)[0], m_rel(b)[0]) != 0);
    if (a->fcn || b->fcn) return m_xeqerr(3102);
    if (a->eltype == MT_COMPLEX || b->eltype == MT_COMPLEX) {
        const bool num = (a->eltype == MT_REAL || a->eltype == MT_COMPLEX) &&
                         (b->eltype == MT_REAL || b->eltype == MT_COMPLEX);
        if (!eqkind) return m_xeqerr(num ? 3253 : 3250);
        if (!num || a->rows != b->rows || a->cols != b->cols) return setcond(eqkind == 2);
        const bool t = m_cxequal(a, b);
        return setcond(eqkind == 1 ? t : !t);
    }
    // equality of unequal shapes or types is an answer, not an error
    if (eqkind && (a->rows != b->rows || a->cols != b->cols || a->eltype != b->eltype))
        return setcond(eqkind == 2);
    if (a->eltype != b->eltype) return m_xeqerr(3250);
    int R, C;
    if (!m_shape(a, b, false, &R, &C)) return m_xeqerr(3200);
    bool all = true;
    const int64_t n = static_cast<int64_t>(R) * C;
    if (a->eltype == MT_REAL) {
        const double* x = m_rel(a);
        const double* y = m_rel(b);
        const bool as = m_nel(a) == 1 && n != 1, bs = m_nel(b) == 1 && n != 1;
        for (int64_t i = 0; i < n && all; i++) all = F::f(x[as ? 0 : i], y[bs ? 0 : i]) != 0;
    } else if (a->eltype == MT_STRING) {
        const bool as = m_nel(a) == 1 && n != 1, bs = m_nel(b) == 1 && n != 1;
        for (int64_t i = 0; i < n && all; i++)
            all = F::f(scmp(m_sel(a)[as ? 0 : i], m_sel(b)[bs ? 0 : i]), 0) != 0;
    } else if (a->eltype == MT_POINTER) {
        if (!eqkind) return m_xeqerr(3012);
        for (int64_t i = 0; i < n && all; i++) all = m_pel(a)[i] == m_pel(b)[i];
        if (eqkind == 2) all = !all;
    } else {
        return m_xeqerr(3250);
    }
    // != is true when any element differs
    if (eqkind == 2 && a->eltype != MT_POINTER) {
        bool any = false;
        if (a->eltype == MT_REAL) {
            for (int64_t i = 0; i < n && !any; i++)
                any = m_rel(a)[m_nel(a) == 1 ? 0 : i] != m_rel(b)[m_nel(b) == 1 ? 0 : i];
        } else {
            for (int64_t i = 0; i < n && !any; i++)
                any = scmp(m_sel(a)[m_nel(a) == 1 ? 0 : i], m_sel(b)[m_nel(b) == 1 ? 0 : i]) != 0;
        }
        all = any;
    }
    setcond(all);
}

void mx_opee() {
    wholecmp<Eq>(1);
}
void mx_opne() {
    wholecmp<Ne>(2);
}
void mx_opgt() {
    wholecmp<Gt>(0);
}
void mx_opge() {
    wholecmp<Ge>(0);
}
void mx_oplt() {
    wholecmp<Lt>(0);
}
void mx_ople() {
    wholecmp<Le>(0);
}

static void logic(bool isand) {
    MObj* a = m_stak[-1];
    MObj* b = m_stak[0];
    if (a->fcn || b->fcn) return m_xeqerr(3102);
    if (!scalar(a)) return scalarerr(a);
    if (!scalar(b)) return scalarerr(b);
    if (a->eltype != MT_REAL || b->eltype != MT_REAL) return m_xeqerr(3250);
    const bool x = m_rel(a)[0] != 0, y = m_rel(b)[0] != 0;
    const bool t = isand ? (x && y) : (x || y);
    ppp2(t ? m_ktrue : m_kfalse);
}
void mx_opand() {
    logic(true);
}
void mx_opor() {
    logic(false);
}

// One operand.

static MObj* unresult(MObj* a) {
    if (a->count == 1 && !a->view && a->level >= 0) return a;
    if (scalar(a)) return m_mktsmat();
    return m_mkmat("", MT_REAL, a->rows, a->cols);
}

void mx_opnot() {
    MObj* a = *m_stak;
    if (a->fcn) return m_xeqerr(3102);
    if (a->eltype != MT_REAL) return m_xeqerr(3253);
    if (scalar(a)) return ppp1(m_rel(a)[0] == 0 ? m_ktrue : m_kfalse);
    MObj* o = unresult(a);
    if (!o) return m_xeqerr(3900);
    const int64_t n = m_nel(a);
    const double* x = m_rel(a);
    double* y = m_rel(o);
    for (int64_t i = 0; i < n; i++) y[i] = x[i] == 0;
    ppp1(o);
}

void mx_opneg() {
    MObj* a = *m_stak;
    if (a->fcn) return m_xeqerr(3102);
    if (a->eltype == MT_COMPLEX) return m_cxneg();
    if (a->eltype != MT_REAL) return m_xeqerr(3251);
    MObj* o = unresult(a);
    if (!o) return m_xeqerr(3900);
    const int64_t n = m_nel(a);
    const double* x = m_rel(a);
    double* y = m_rel(o);
    for (int64_t i = 0; i < n; i++) y[i] = x[i] >= misval ? x[i] : -x[i];
    ppp1(o);
}

void mx_optrans() {
    MObj* a = *m_stak;
    if (a->fcn) return m_xeqerr(3102);
    if (a->eltype == MT_COMPLEX) return m_cxtrans();
    if (a->rows <= 1 || a->cols <= 1) {
        // a vector: the elements stay in order
        MObj* o = a;
        if (a->count != 1 || a->level < 0) {
            o = m_dupmat(a);
            if (!o) return m_xeqerr(3900);
        }
        std::swap(o->rows, o->cols);
        return ppp1(o);
    }
    MObj* o = m_mkmat("", a->eltype, a->cols, a->rows);
    if (!o) return m_xeqerr(3900);
    const int R = a->rows, C = a->cols;
    uint64_t* y = static_cast<uint64_t*>(o->data);
    const uint64_t* x = static_cast<const uint64_t*>(a->data);
    for (int i = 0; i < R; i++)
        for (int j = 0; j < C; j++)
            y[static_cast<int64_t>(j) * R + i] = x[static_cast<int64_t>(i) * C + j];
    if (a->eltype == MT_STRING)
        for (int64_t k = 0; k < m_nel(o); k++) sel_hold(m_sel(o)[k]);
    if (a->eltype == MT_POINTER)
        for (int64_t k = 0; k < m_nel(o); k++)
            if (m_pel(o)[k]) mo_hold(m_pel(o)[k]);
    ppp1(o);
}

// The matrix product. The product goes through dgemm; where an operand has
// missing values, every result element whose row of the left operand or
// column of the right one holds a missing value is missing, as the plain
// triple loop with missing propagation gives.
void mx_opmult() {
    MObj* a = m_stak[-1];
    MObj* b = m_stak[0];
    if (!a->fcn && !b->fcn && (a->eltype == MT_STRING || b->eltype == MT_STRING))
        return m_xeqerr(3251);
    if (!a->fcn && !b->fcn && (a->eltype == MT_COMPLEX || b->eltype == MT_COMPLEX))
        return m_cxmult();
    if (!a->fcn && !b->fcn && (scalar(a) || scalar(b)) && a->eltype == MT_REAL &&
        b->eltype == MT_REAL)
        return realbin<Mul>(false);
    const int el = family(a, b);
    if (el == -100) return;
    if (el != MT_REAL) return m_xeqerr(3251);
    if (a->cols != b->rows) return m_xeqerr(3200);
    const int M = a->rows, K = a->cols, N = b->cols;
    MObj* o = m_mkmat("", MT_REAL, M, N);
    if (!o) return m_xeqerr(3900);
    double* c = m_rel(o);
    if (K == 0) {
        for (int64_t i = 0; i < m_nel(o); i++) c[i] = 0;
        return ppp2(o);
    }
    const double* x = m_rel(a);
    const double* y = m_rel(b);
    // one counting pass each: values beyond 1e150 (missing values among
    // them) are the only ones that can make a missing or overflowing result
    int64_t big = 0;
    for (int64_t i = 0; i < m_nel(a); i++) big += std::fabs(x[i]) > 1e150;
    for (int64_t i = 0; i < m_nel(b); i++) big += std::fabs(y[i]) > 1e150;
    if (!big) {
        if (M > 0 && N > 0)
            cblas_dgemm(CblasRowMajor, CblasNoTrans, CblasNoTrans, M, N, K, 1.0, x, K, y, N, 0.0, c,
                        N);
        return ppp2(o);
    }
    std::vector<uint8_t> rowmiss, colmiss;
    std::vector<double> xa, yb;
    for (int64_t i = 0; i < m_nel(a); i++)
        if (x[i] >= misval) {
            rowmiss.assign(static_cast<size_t>(M), 0);
            xa.assign(x, x + m_nel(a));
            for (int64_t k = 0; k < m_nel(a); k++)
                if (xa[k] >= misval) rowmiss[k / K] = 1, xa[k] = 0;
            x = xa.data();
            break;
        }
    for (int64_t i = 0; i < m_nel(b); i++)
        if (y[i] >= misval) {
            colmiss.assign(static_cast<size_t>(N), 0);
            yb.assign(y, y + m_nel(b));
            for (int64_t k = 0; k < m_nel(b); k++)
                if (yb[k] >= misval) colmiss[k % N] = 1, yb[k] = 0;
            y = yb.data();
            break;
        }
    if (M > 0 && N > 0)
        cblas_dgemm(CblasRowMajor, CblasNoTrans, CblasNoTrans, M, N, K, 1.0, x, K, y, N, 0.0, c, N);
    const int64_t n = m_nel(o);
    for (int64_t i = 0; i < n; i++) c[i] = fin(c[i]);
    if (!rowmiss.empty() || !colmiss.empty())
        for (int i = 0; i < M; i++)
            for (int j = 0; j < N; j++)
                if ((!rowmiss.empty() && rowmiss[i]) || (!colmiss.empty() && colmiss[j]))
                    c[static_cast<int64_t>(i) * N + j] = misval;
    ppp2(o);
}

void mx_opdmult() {
    MObj* a = m_stak[-1];
    MObj* b = m_stak[0];
    if (!a->fcn && !b->fcn && (a->eltype == MT_COMPLEX || b->eltype == MT_COMPLEX))
        return m_cxkron();
    const int el = family(a, b);
    if (el == -100) return;
    if (el != MT_REAL) return m_xeqerr(3251);
    const int R = a->rows * b->rows, C = a->cols * b->cols;
    MObj* o = m_mkmat("", MT_REAL, R, C);
    if (!o) return m_xeqerr(3900);
    for (int i = 0; i < a->rows; i++)
        for (int j = 0; j < a->cols; j++) {
            const double u = m_rel(a)[static_cast<int64_t>(i) * a->cols + j];
            for (int k = 0; k < b->rows; k++)
                for (int l = 0; l < b->cols; l++)
                    m_rel(o)[static_cast<int64_t>(i * b->rows + k) * C + j * b->cols + l] =
                        Mul::f(u, m_rel(b)[static_cast<int64_t>(k) * b->cols + l]);
        }
    ppp2(o);
}

// Joins.

static void hold8(MObj* o, int64_t from, int64_t n) {
    if (o->eltype == MT_STRING)
        for (int64_t k = from; k < from + n; k++) sel_hold(m_sel(o)[k]);
    else if (o->eltype == MT_POINTER || o->eltype == MT_STRUCT)
        for (int64_t k = from; k < from + n; k++)
            if (m_pel(o)[k]) mo_hold(m_pel(o)[k]);
}

static void join(bool bycols) {
    MObj* a = m_stak[-1];
    MObj* b = m_stak[0];
    if (a->fcn || b->fcn) return m_xeqerr(3102);
    // an empty operand joins as nothing
    if (m_nel(a) == 0 && a->rows == 0 && a->cols == 0) {
        MObj* o = b;
        b->count++;
        m_pop();
        m_pop();
        *++m_stak = o;
        return;
    }
    if (m_nel(b) == 0 && b->rows == 0 && b->cols == 0) return m_pop();
    if (bycols ? a->rows != b->rows : a->cols != b->cols) return m_xeqerr(3200);
    // real joins complex as complex
    if (a->eltype == MT_COMPLEX && b->eltype == MT_REAL) {
        if (!m_cxpromote(0)) return;
        b = m_stak[0];
    } else if (a->eltype == MT_REAL && b->eltype == MT_COMPLEX) {
        if (!m_cxpromote(1)) return;
        a = m_stak[-1];
    }
    if (a->eltype != b->eltype) return m_xeqerr(3250);
    const int R = bycols ? a->rows : a->rows + b->rows;
    const int C = bycols ? a->cols + b->cols : a->cols;
    MObj* o = m_mkmat("", a->eltype, R, C);
    if (!o) return m_xeqerr(3900);
    // elements of 8 bytes, 16 for complex: w words each
    const int64_t w = a->eltype == MT_COMPLEX ? 2 : 1;
    uint64_t* y = static_cast<uint64_t*>(o->data);
    const uint64_t* p = static_cast<const uint64_t*>(a->data);
    const uint64_t* q = static_cast<const uint64_t*>(b->data);
    if (bycols) {
        for (int i = 0; i < R; i++) {
            memcpy(y + w * i * C, p + w * i * a->cols, 8u * static_cast<size_t>(w * a->cols));
            memcpy(y + w * (static_cast<int64_t>(i) * C + a->cols), q + w * i * b->cols,
                   8u * static_cast<size_t>(w * b->cols));
        }
    } else {
        memcpy(y, p, 8u * static_cast<size_t>(w * m_nel(a)));
        memcpy(y + w * m_nel(a), q, 8u * static_cast<size_t>(w * m_nel(b)));
    }
    hold8(o, 0, m_nel(o));
    ppp2(o);
}
void mx_opaddc() {
    join(true);
}
void mx_opaddr() {
    join(false);
}

// Ranges: a..b a row, a::b a column, counting down when a exceeds b.
static void range(bool row) {
    MObj* a = m_stak[-1];
    MObj* b = m_stak[0];
    if (a->fcn || b->fcn) return m_xeqerr(3102);
    if (a->eltype != MT_REAL || b->eltype != MT_REAL) return m_xeqerr(3253);
    if (!scalar(a)) return scalarerr(a);
    if (!scalar(b)) return scalarerr(b);
    const double x = m_rel(a)[0], y = m_rel(b)[0];
    if (x >= misval || y >= misval) return m_xeqerr(3351);
    const double span = std::floor(std::fabs(y - x));
    if (span >= 2147483646.0) return m_xeqerr(3900);
    const int n = static_cast<int>(span) + 1;
    MObj* o = m_mkmat("", MT_REAL, row ? 1 : n, row ? n : 1);
    if (!o) return m_xeqerr(3900);
    const double step = y >= x ? 1 : -1;
    for (int i = 0; i < n; i++) m_rel(o)[i] = x + step * i;
    ppp2(o);
}
void mx_oprowto() {
    range(true);
}
void mx_opcolto() {
    range(false);
}

} // namespace korvu
