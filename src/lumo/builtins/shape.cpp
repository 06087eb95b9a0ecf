// Shape and type: dimensions, type tests, constructors and rearrangements.
#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstring>
#include <numeric>
#include <vector>

#include "lumo/builtins/bi.h"

namespace korvu {

static void bi_rows(int n) {
    if (MObj* a = bi_any(n, 0)) bi_realres(n, a->rows);
}
static void bi_cols(int n) {
    if (MObj* a = bi_any(n, 0)) bi_realres(n, a->cols);
}
static void bi_length(int n) {
    if (MObj* a = bi_any(n, 0)) bi_realres(n, static_cast<double>(m_nel(a)));
}
static void bi_sizeof(int n) {
    if (MObj* a = bi_any(n, 0)) bi_realres(n, static_cast<double>(m_objsize(a)));
}

static const char* eltword(const MObj* o) {
    if (o->isvoid) return "void";
    switch (o->eltype) {
    case MT_REAL: return "real";
    case MT_COMPLEX: return "complex";
    case MT_STRING: return "string";
    case MT_POINTER: return "pointer";
    case MT_STRUCT: return "struct";
    default: return "transmorphic";
    }
}
static void bi_eltype(int n) {
    MObj* a = bi_arg(n, 0);
    bi_strres(n, a->fcn ? "function" : eltword(a));
}
static void bi_orgtype(int n) {
    MObj* a = bi_arg(n, 0);
    const char* w = "matrix";
    if (a->fcn)
        w = "function";
    else if (a->isvoid)
        w = "void";
    else if (a->rows == 1 && a->cols == 1)
        w = "scalar";
    else if (a->rows == 1)
        w = "rowvector";
    else if (a->cols == 1)
        w = "colvector";
    bi_strres(n, w);
}
static void istype(int n, int t) {
    MObj* a = bi_arg(n, 0);
    bi_realres(n, !a->fcn && a->eltype == t);
}
static void bi_isreal(int n) {
    istype(n, MT_REAL);
}
static void bi_isstring(int n) {
    istype(n, MT_STRING);
}
static void bi_ispointer(int n) {
    istype(n, MT_POINTER);
}
static void bi_iscomplex(int n) {
    istype(n, MT_COMPLEX);
}
static void bi_isview(int n) {
    MObj* a = bi_arg(n, 0);
    bi_realres(n, a->view != 0);
}
static void bi_isfleeting(int n) {
    MObj* a = bi_arg(n, 0);
    bi_realres(n, !strcmp(a->name, m_tname) && a->count <= 1);
}
static void bi_isrealvalues(int n) {
    MObj* a = bi_mat(n, 0);
    if (!a || !bi_numeric(a)) return;
    bool r = true;
    if (a->eltype == MT_COMPLEX)
        for (int64_t i = 0; i < m_nel(a) && r; i++)
            if (m_rel(a)[2 * i + 1] != 0 && m_rel(a)[2 * i + 1] < misval) r = false;
    bi_realres(n, r);
}
static void symtest(int n, bool conjugate) {
    MObj* a = bi_mat(n, 0);
    if (!a) return;
    if (a->rows != a->cols) return void(bi_realres(n, 0));
    const int N = a->rows;
    bool s = true;
    for (int i = 0; i < N && s; i++)
        for (int j = 0; j < i && s; j++) {
            const int64_t p = static_cast<int64_t>(i) * N + j, q = static_cast<int64_t>(j) * N + i;
            if (a->eltype == MT_REAL) {
                s = m_rel(a)[p] == m_rel(a)[q];
            } else if (a->eltype == MT_COMPLEX) {
                const double* x = m_rel(a);
                s = x[2 * p] == x[2 * q] &&
                    (conjugate ? x[2 * p + 1] == -x[2 * q + 1] : x[2 * p + 1] == x[2 * q + 1]);
            } else if (a->eltype == MT_STRING) {
                const SCell* x = m_sel(a)[p];
                const SCell* y = m_sel(a)[q];
                s = x->len == y->len && !memcmp(x->s, y->s, static_cast<size_t>(x->len));
            } else {
                s = m_pel(a)[p] == m_pel(a)[q];
            }
        }
    if (s && conjugate && a->eltype == MT_COMPLEX)
        for (int i = 0; i < N && s; i++)
            s = m_rel(a)[2 * (static_cast<int64_t>(i) * N + i) + 1] == 0;
    bi_realres(n, s);
}
static void bi_issymmetric(int n) {
    symtest(n, true);
}
static void bi_issymmetriconly(int n) {
    symtest(n, false);
}

// A copy of a in a new shape r x c holding the same elements by row.
static void reshape(int n, MObj* a, int64_t r, int64_t c) {
    MObj* o = bi_new(a->eltype, r, c);
    if (!o) return;
    const int64_t m = m_nel(a);
    const int w = a->eltype == MT_COMPLEX ? 2 : 1;
    if (a->eltype == MT_REAL || a->eltype == MT_COMPLEX) {
        if (m) memcpy(o->data, a->data, static_cast<size_t>(m * w) * 8);
    } else if (a->eltype == MT_STRING) {
        for (int64_t i = 0; i < m; i++) {
            sel_hold(m_sel(a)[i]);
            m_sel(o)[i] = m_sel(a)[i];
        }
    } else {
        for (int64_t i = 0; i < m; i++) {
            if (m_pel(a)[i]) mo_hold(m_pel(a)[i]);
            m_pel(o)[i] = m_pel(a)[i];
        }
    }
    bi_result(n, o);
}
// rowshape(x, r): r rows; colshape(x, c): c columns; by row order.
static void shapeby(int n, bool rows) {
    MObj* a = bi_mat(n, 0);
    int64_t k;
    if (!a || !bi_getint(n, 1, 0, 2147483647, &k)) return;
    a = bi_arg(n, 0);
    const int64_t m = m_nel(a);
    if (k == 0 ? m != 0 : m % k != 0) return m_xeqerr(3200);
    if (rows)
        reshape(n, a, k, k ? m / k : 0);
    else
        reshape(n, a, k ? m / k : 0, k);
}
static void bi_rowshape(int n) {
    shapeby(n, true);
}
static void bi_colshape(int n) {
    shapeby(n, false);
}

// J(r, c, value): an r x c matrix of the value.
static void bi_J(int n) {
    int64_t r, c;
    if (!bi_getint(n, 0, 0, 2147483647, &r) || !bi_getint(n, 1, 0, 2147483647, &c)) return;
    MObj* v = bi_mat(n, 2);
    if (!v) return;
    if (!bi_scalar(v)) return;
    MObj* o = bi_new(v->eltype, r, c);
    if (!o) return;
    const int64_t m = m_nel(o);
    switch (v->eltype) {
    case MT_REAL:
        for (int64_t i = 0; i < m; i++) m_rel(o)[i] = m_rel(v)[0];
        break;
    case MT_COMPLEX:
        for (int64_t i = 0; i < m; i++) {
            m_rel(o)[2 * i] = m_rel(v)[0];
            m_rel(o)[2 * i + 1] = m_rel(v)[1];
        }
        break;
    case MT_STRING:
        for (int64_t i = 0; i < m; i++) {
            sel_hold(m_sel(v)[0]);
            m_sel(o)[i] = m_sel(v)[0];
        }
        break;
    case MT_POINTER:
        for (int64_t i = 0; i < m; i++) {
            if (m_pel(v)[0]) mo_hold(m_pel(v)[0]);
            m_pel(o)[i] = m_pel(v)[0];
        }
        break;
    default: mo_freemat(o); return m_xeqerr(3255);
    }
    bi_result(n, o);
}

// I(n) or I(r, c): identity.
static void bi_I(int n) {
    int64_t r, c;
    if (!bi_getint(n, 0, 0, 2147483647, &r) || !bi_getint(n, n - 1, 0, 2147483647, &c)) return;
    MObj* o = bi_new(MT_REAL, r, c);
    if (!o) return;
    for (int64_t i = 0; i < r; i++)
        for (int64_t j = 0; j < c; j++) m_rel(o)[i * c + j] = i == j;
    bi_result(n, o);
}

// diagonal(A): the diagonal as a column.
static void bi_diagonal(int n) {
    MObj* a = bi_mat(n, 0);
    if (!a || !bi_numeric(a)) return;
    const int64_t k = a->rows < a->cols ? a->rows : a->cols;
    MObj* o = bi_new(a->eltype, k, 1);
    if (!o) return;
    const int w = a->eltype == MT_COMPLEX ? 2 : 1;
    for (int64_t i = 0; i < k; i++)
        for (int p = 0; p < w; p++) m_rel(o)[w * i + p] = m_rel(a)[w * (i * a->cols + i) + p];
    bi_result(n, o);
}

// _diag(A, v): puts v (a scalar or a vector) on the diagonal of A in place.
static void bi_udiag(int n) {
    MObj* a = bi_any(n, 0);
    MObj* v = bi_mat(n, 1);
    if (!a || !v) return;
    if (a->view) return m_xeqerr(3103);
    if (!bi_real(a) || !bi_real(v)) return;
    const int64_t k = a->rows < a->cols ? a->rows : a->cols;
    if (m_nel(v) != 1 && (!(v->rows == 1 || v->cols == 1) || m_nel(v) != k)) return m_xeqerr(3200);
    for (int64_t i = 0; i < k; i++) m_rel(a)[i * a->cols + i] = m_rel(v)[m_nel(v) == 1 ? 0 : i];
    bi_voidres(n);
}

// The transpose of a into a new object (conjugating complex elements when
// asked).
static MObj* transposed(const MObj* a, bool conj) {
    MObj* o = bi_new(a->eltype, a->cols, a->rows);
    if (!o) return nullptr;
    const int64_t R = a->rows, C = a->cols;
    for (int64_t i = 0; i < R; i++)
        for (int64_t j = 0; j < C; j++) {
            const int64_t p = i * C + j, q = j * R + i;
            switch (a->eltype) {
            case MT_REAL: m_rel(o)[q] = m_rel(a)[p]; break;
            case MT_COMPLEX:
                m_rel(o)[2 * q] = m_rel(a)[2 * p];
                m_rel(o)[2 * q + 1] = conj && m_rel(a)[2 * p + 1] < misval ? -m_rel(a)[2 * p + 1]
                                                                           : m_rel(a)[2 * p + 1];
                break;
            case MT_STRING:
                sel_hold(m_sel(a)[p]);
                m_sel(o)[q] = m_sel(a)[p];
                break;
            default:
                if (m_pel(a)[p]) mo_hold(m_pel(a)[p]);
                m_pel(o)[q] = m_pel(a)[p];
            }
        }
    return o;
}
static void transposeinplace(int n, bool conj) {
    MObj* a = bi_any(n, 0);
    if (!a) return;
    if (a->view) return m_xeqerr(3103);
    MObj* t = transposed(a, conj);
    if (!t) return;
    m_swapmat(a, t);
    mo_freemat(t);
    bi_voidres(n);
}
static void bi_utranspose(int n) {
    transposeinplace(n, true);
}
static void bi_utransposeonly(int n) {
    transposeinplace(n, false);
}
static void bi_uconj(int n) {
    MObj* a = bi_any(n, 0);
    if (!a || !bi_numeric(a)) return;
    if (a->view) return m_xeqerr(3103);
    if (a->eltype == MT_COMPLEX)
        for (int64_t i = 0; i < m_nel(a); i++)
            if (m_rel(a)[2 * i + 1] < misval) m_rel(a)[2 * i + 1] = -m_rel(a)[2 * i + 1];
    bi_voidres(n);
}
static void bi_conj(int n) {
    MObj* a = bi_mat(n, 0);
    if (!a || !bi_numeric(a)) return;
    MObj* o = m_dupmat(a);
    if (!o) return m_xeqerr(3900);
    if (o->eltype == MT_COMPLEX)
        for (int64_t i = 0; i < m_nel(o); i++)
            if (m_rel(o)[2 * i + 1] < misval) m_rel(o)[2 * i + 1] = -m_rel(o)[2 * i + 1];
    bi_result(n, o);
}
static void part(int n, int which) {
    MObj* a = bi_mat(n, 0);
    if (!a || !bi_numeric(a)) return;
    MObj* o = bi_new(MT_REAL, a->rows, a->cols);
    if (!o) return;
    for (int64_t i = 0; i < m_nel(a); i++)
        m_rel(o)[i] = a->eltype == MT_COMPLEX
                          ? m_rel(a)[2 * i + which]
                          : (which ? (m_rel(a)[i] >= misval ? misval : 0) : m_rel(a)[i]);
    bi_result(n, o);
}
static void bi_Re(int n) {
    part(n, 0);
}
static void bi_Im(int n) {
    part(n, 1);
}
// C(Z) or C(R, I): complex from real parts (and imaginary parts).
static void bi_C(int n) {
    MObj* a = bi_mat(n, 0);
    if (!a) return;
    if (n == 1) {
        if (a->eltype == MT_COMPLEX) return void(bi_result(n, m_dupmat(a)));
        if (!bi_real(a)) return;
        MObj* o = bi_new(MT_COMPLEX, a->rows, a->cols);
        if (!o) return;
        for (int64_t i = 0; i < m_nel(a); i++) {
            m_rel(o)[2 * i] = m_rel(a)[i];
            m_rel(o)[2 * i + 1] = m_rel(a)[i] >= misval ? misval : 0;
        }
        return void(bi_result(n, o));
    }
    MObj* b = bi_mat(n, 1);
    if (!b || !bi_real(a) || !bi_real(b)) return;
    a = bi_arg(n, 0);
    int R, C;
    if (!bi_cshape(a, b, &R, &C)) return;
    MObj* o = bi_new(MT_COMPLEX, R, C);
    if (!o) return;
    for (int i = 0; i < R; i++)
        for (int j = 0; j < C; j++) {
            const int64_t k = static_cast<int64_t>(i) * C + j;
            m_rel(o)[2 * k] = m_rel(a)[bi_cidx(a, i, j)];
            m_rel(o)[2 * k + 1] = m_rel(b)[bi_cidx(b, i, j)];
        }
    bi_result(n, o);
}

// swap(a, b): exchanges the contents (and the view kinds) of two objects.
static void bi_swap(int n) {
    MObj* a = bi_any(n, 0);
    MObj* b = bi_any(n, 1);
    if (!a || !b) return;
    if (a == b) return void(bi_voidres(n));
    m_swapmat(a, b);
    bi_voidres(n);
}

// select(X, v): the rows (v a column) or columns (v a row) of X where v is
// not zero.
static void bi_select(int n) {
    MObj* x = bi_mat(n, 0);
    MObj* v = bi_mat(n, 1);
    if (!x || !v || !bi_real(v)) return;
    x = bi_arg(n, 0);
    const bool byrow = v->cols == 1 && !(v->rows == 1 && x->rows == 1 && x->cols != 1);
    const int64_t len = byrow ? x->rows : x->cols;
    if (m_nel(v) != len) return m_xeqerr(3200);
    std::vector<int64_t> keep;
    for (int64_t k = 0; k < len; k++)
        if (m_rel(v)[k] != 0) keep.push_back(k);
    const int64_t R = byrow ? static_cast<int64_t>(keep.size()) : x->rows;
    const int64_t C = byrow ? x->cols : static_cast<int64_t>(keep.size());
    MObj* o = bi_new(x->eltype, R, C);
    if (!o) return;
    const int w = x->eltype == MT_COMPLEX ? 2 : 1;
    auto* q = static_cast<uint64_t*>(o->data);
    const auto* p = static_cast<const uint64_t*>(x->data);
    for (int64_t i = 0; i < R; i++)
        for (int64_t j = 0; j < C; j++) {
            const int64_t si = byrow ? keep[i] : i, sj = byrow ? j : keep[j];
            for (int c = 0; c < w; c++) q[w * (i * C + j) + c] = p[w * (si * x->cols + sj) + c];
            if (x->eltype == MT_STRING)
                sel_hold(m_sel(o)[i * C + j]);
            else if (x->eltype == MT_POINTER && m_pel(o)[i * C + j])
                mo_hold(m_pel(o)[i * C + j]);
        }
    bi_result(n, o);
}

// order(X, idx): the permutation sorting the rows of X by the columns in idx
// (negative: descending); stable.
static void bi_order(int n) {
    MObj* x = bi_mat(n, 0);
    MObj* k = bi_mat(n, 1);
    if (!x || !k || !bi_real(k)) return;
    x = bi_arg(n, 0);
    if (x->eltype != MT_REAL && x->eltype != MT_STRING) return m_xeqerr(3255);
    std::vector<int> cols;
    for (int64_t i = 0; i < m_nel(k); i++) {
        const double c = m_rel(k)[i];
        if (!(std::fabs(c) >= 1 && std::fabs(c) <= x->cols)) return m_xeqerr(3300);
        cols.push_back(static_cast<int>(c));
    }
    std::vector<int64_t> p(static_cast<size_t>(x->rows));
    std::iota(p.begin(), p.end(), 0);
    const int64_t C = x->cols;
    std::stable_sort(p.begin(), p.end(), [&](int64_t a, int64_t b) {
        for (int c : cols) {
            const int64_t j = std::abs(c) - 1;
            int cmp;
            if (x->eltype == MT_REAL) {
                const double u = m_rel(x)[a * C + j], v = m_rel(x)[b * C + j];
                cmp = u < v ? -1 : u > v ? 1 : 0;
            } else {
                cmp = strcmp(m_sel(x)[a * C + j]->s, m_sel(x)[b * C + j]->s);
            }
            if (cmp) return c > 0 ? cmp < 0 : cmp > 0;
        }
        return false;
    });
    MObj* o = bi_new(MT_REAL, x->rows, 1);
    if (!o) return;
    for (int64_t i = 0; i < x->rows; i++) m_rel(o)[i] = static_cast<double>(p[i] + 1);
    bi_result(n, o);
}

static void constant(int n, double x) {
    if (n == 1) {
        MObj* a = bi_mat(n, 0);
        if (!a) return;
    }
    bi_realres(n, x);
}
static void bi_mindouble(int n) {
    constant(n, -DBL_MAX);
}
static void bi_maxdouble(int n) {
    constant(n, 0x1.fffffffffffffp1022); // the largest below missing
}
static void bi_smallestdouble(int n) {
    constant(n, DBL_MIN);
}
static void bi_epsilon(int n) {
    double x = 1;
    if (n == 1 && !bi_getreal(n, 0, &x)) return;
    bi_realres(n, x >= misval ? misval : std::fabs(x) * DBL_EPSILON);
}
static void bi_missingof(int n) {
    MObj* a = bi_mat(n, 0);
    if (!a) return;
    if (a->eltype == MT_STRING) return void(bi_strres(n, ""));
    if (a->eltype == MT_COMPLEX) {
        MObj* o = bi_new(MT_COMPLEX, 1, 1);
        if (!o) return;
        m_rel(o)[0] = m_rel(o)[1] = misval;
        return void(bi_result(n, o));
    }
    if (a->eltype == MT_POINTER) {
        MObj* o = bi_new(MT_POINTER, 1, 1);
        if (o) bi_result(n, o);
        return;
    }
    bi_realres(n, misval);
}
static void bi_byteorder(int n) {
    const uint16_t one = 1;
    uint8_t b;
    memcpy(&b, &one, 1);
    bi_realres(n, b ? 2 : 1); // 1 hilo, 2 lohi
}

void bi_link_shape(MBiFn* t) {
    t[bi_index("rows")] = bi_rows;
    t[bi_index("cols")] = bi_cols;
    t[bi_index("length")] = bi_length;
    t[bi_index("sizeof")] = bi_sizeof;
    t[bi_index("eltype")] = bi_eltype;
    t[bi_index("orgtype")] = bi_orgtype;
    t[bi_index("isreal")] = bi_isreal;
    t[bi_index("isstring")] = bi_isstring;
    t[bi_index("ispointer")] = bi_ispointer;
    t[bi_index("iscomplex")] = bi_iscomplex;
    t[bi_index("isview")] = bi_isview;
    t[bi_index("isfleeting")] = bi_isfleeting;
    t[bi_index("isrealvalues")] = bi_isrealvalues;
    t[bi_index("issymmetric")] = bi_issymmetric;
    t[bi_index("issymmetriconly")] = bi_issymmetriconly;
    t[bi_index("rowshape")] = bi_rowshape;
    t[bi_index("colshape")] = bi_colshape;
    t[bi_index("J")] = bi_J;
    t[bi_index("I")] = bi_I;
    t[bi_index("diagonal")] = bi_diagonal;
    t[bi_index("_diag")] = bi_udiag;
    t[bi_index("_transpose")] = bi_utranspose;
    t[bi_index("_transposeonly")] = bi_utransposeonly;
    t[bi_index("_conj")] = bi_uconj;
    t[bi_index("conj")] = bi_conj;
    t[bi_index("Re")] = bi_Re;
    t[bi_index("Im")] = bi_Im;
    t[bi_index("C")] = bi_C;
    t[bi_index("swap")] = bi_swap;
    t[bi_index("select")] = bi_select;
    t[bi_index("order")] = bi_order;
    t[bi_index("mindouble")] = bi_mindouble;
    t[bi_index("maxdouble")] = bi_maxdouble;
    t[bi_index("smallestdouble")] = bi_smallestdouble;
    t[bi_index("epsilon")] = bi_epsilon;
    t[bi_index("missingof")] = bi_missingof;
    t[bi_index("byteorder")] = bi_byteorder;
}

} // namespace korvu
