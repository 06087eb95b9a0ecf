// Complex elements: 16 bytes, the real part first. Arithmetic where either
// operand is complex promotes the real one; a missing part makes the element
// missing (both parts the missing value), and so does a result that is not
// finite.
#include <cfloat>
#include <cmath>
#include <complex>
#include <cstdint>
#include <cstring>

#include "data/area/missing.h"
#include "lumo/vm/vmops.h"
#include "lumo/vm/xeqops.h"

namespace korvu {

using cx = std::complex<double>;

static const cx cxmiss(misval, misval);

static inline bool cxbad(cx z) {
    return z.real() >= misval || z.imag() >= misval || !(std::fabs(z.real()) <= DBL_MAX) ||
           !(std::fabs(z.imag()) <= DBL_MAX);
}

// Element k (linear, with the stretching of an r x 1, 1 x c or 1 x 1
// operand over R x C) as a complex number.
static inline cx elat(const MObj* o, int i, int j) {
    const int64_t k = static_cast<int64_t>(o->rows == 1 ? 0 : i) * o->cols + (o->cols == 1 ? 0 : j);
    if (o->eltype == MT_COMPLEX) return cx(m_rel(o)[2 * k], m_rel(o)[2 * k + 1]);
    const double x = m_rel(o)[k];
    return x >= misval ? cxmiss : cx(x, 0);
}

static inline void put(MObj* o, int64_t k, cx z) {
    if (cxbad(z)) z = cxmiss;
    m_rel(o)[2 * k] = z.real();
    m_rel(o)[2 * k + 1] = z.imag();
}

static bool numeric(const MObj* o) {
    return !o->fcn && (o->eltype == MT_REAL || o->eltype == MT_COMPLEX);
}

// Element-wise: kind 0 add, 1 subtract, 2 multiply, 3 divide.
void m_cxbin(int kind, bool colon) {
    MObj* a = m_stak[-1];
    MObj* b = m_stak[0];
    if (!numeric(a) || !numeric(b)) return m_xeqerr(a->fcn || b->fcn ? 3102 : 3250);
    int R, C;
    if (!m_shape(a, b, colon, &R, &C)) return m_xeqerr(3200);
    MObj* o = m_mkmat("", MT_COMPLEX, R, C);
    if (!o) return m_xeqerr(3900);
    for (int i = 0; i < R; i++)
        for (int j = 0; j < C; j++) {
            const cx x = elat(a, i, j), y = elat(b, i, j);
            cx z;
            if (x == cxmiss || y == cxmiss)
                z = cxmiss;
            else
                switch (kind) {
                case 0: z = x + y; break;
                case 1: z = x - y; break;
                case 2: z = x * y; break;
                default: z = x / y; break;
                }
            put(o, static_cast<int64_t>(i) * C + j, z);
        }
    ppp2(o);
}

// The matrix product, a scaling when one side is 1 x 1.
void m_cxmult() {
    MObj* a = m_stak[-1];
    MObj* b = m_stak[0];
    if (!numeric(a) || !numeric(b)) return m_xeqerr(a->fcn || b->fcn ? 3102 : 3251);
    if (m_nel(a) == 1 || m_nel(b) == 1) return m_cxbin(2, false);
    if (a->cols != b->rows) return m_xeqerr(3200);
    MObj* o = m_mkmat("", MT_COMPLEX, a->rows, b->cols);
    if (!o) return m_xeqerr(3900);
    for (int i = 0; i < a->rows; i++)
        for (int j = 0; j < b->cols; j++) {
            cx s = 0;
            bool miss = false;
            for (int k = 0; k < a->cols && !miss; k++) {
                const cx x = elat(a, i, k), y = elat(b, k, j);
                if (x == cxmiss || y == cxmiss)
                    miss = true;
                else
                    s += x * y;
            }
            put(o, static_cast<int64_t>(i) * b->cols + j, miss ? cxmiss : s);
        }
    ppp2(o);
}

// The Kronecker product: block (i, j) is a[i, j] times b.
void m_cxkron() {
    MObj* a = m_stak[-1];
    MObj* b = m_stak[0];
    if (!numeric(a) || !numeric(b)) return m_xeqerr(a->fcn || b->fcn ? 3102 : 3251);
    const int64_t R = static_cast<int64_t>(a->rows) * b->rows;
    const int64_t C = static_cast<int64_t>(a->cols) * b->cols;
    if (R > INT32_MAX || C > INT32_MAX) return m_xeqerr(3900);
    MObj* o = m_mkmat("", MT_COMPLEX, static_cast<int>(R), static_cast<int>(C));
    if (!o) return m_xeqerr(3900);
    for (int i = 0; i < a->rows; i++)
        for (int j = 0; j < a->cols; j++) {
            const cx u = elat(a, i, j);
            for (int k = 0; k < b->rows; k++)
                for (int l = 0; l < b->cols; l++) {
                    const cx v = elat(b, k, l);
                    const int64_t at = (static_cast<int64_t>(i) * b->rows + k) * C +
                                       static_cast<int64_t>(j) * b->cols + l;
                    put(o, at, u == cxmiss || v == cxmiss ? cxmiss : u * v);
                }
        }
    ppp2(o);
}

void m_cxneg() {
    MObj* a = *m_stak;
    MObj* o = m_mkmat("", MT_COMPLEX, a->rows, a->cols);
    if (!o) return m_xeqerr(3900);
    for (int64_t k = 0; k < m_nel(a); k++) {
        const cx x(m_rel(a)[2 * k], m_rel(a)[2 * k + 1]);
        put(o, k, x == cxmiss ? cxmiss : -x);
    }
    ppp1(o);
}

// The transpose conjugates.
void m_cxtrans() {
    MObj* a = *m_stak;
    MObj* o = m_mkmat("", MT_COMPLEX, a->cols, a->rows);
    if (!o) return m_xeqerr(3900);
    for (int i = 0; i < a->rows; i++)
        for (int j = 0; j < a->cols; j++) {
            const int64_t k = static_cast<int64_t>(i) * a->cols + j;
            const cx x(m_rel(a)[2 * k], m_rel(a)[2 * k + 1]);
            put(o, static_cast<int64_t>(j) * a->rows + i, x == cxmiss ? cxmiss : std::conj(x));
        }
    ppp1(o);
}

// Whole-matrix equality of shapes that agree.
bool m_cxequal(const MObj* a, const MObj* b) {
    for (int i = 0; i < a->rows; i++)
        for (int j = 0; j < a->cols; j++)
            if (elat(a, i, j) != elat(b, i, j)) return false;
    return true;
}

// The real operand at stack depth k (0 the top) becomes complex.
bool m_cxpromote(int k) {
    MObj* a = m_stak[-k];
    MObj* o = m_mkmat("", MT_COMPLEX, a->rows, a->cols);
    if (!o) {
        m_xeqerr(3900);
        return false;
    }
    for (int64_t i = 0; i < m_nel(a); i++) {
        const double x = m_rel(a)[i];
        m_rel(o)[2 * i] = x;
        m_rel(o)[2 * i + 1] = x >= misval ? misval : 0;
    }
    o->count++;
    m_stak[-k] = o;
    mo_release(a);
    return true;
}

void mx_opcomplex() {
    double y;
    memcpy(&y, m_rt.ops + m_rt.pc[1], sizeof y);
    MObj* o = m_mkmat("", MT_COMPLEX, 1, 1);
    if (!o) return m_xeqerr(3900);
    m_rel(o)[0] = 0;
    m_rel(o)[1] = y;
    if (m_push(o)) m_rt.pc++;
}

} // namespace korvu
