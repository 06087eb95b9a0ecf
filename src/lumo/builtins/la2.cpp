// Linear algebra, continued: the general eigensystem, the pivoted
// Householder QR and its products, and the generalized inverse.
#include <cmath>
#include <vector>

#include <lapacke.h>

#include "lumo/builtins/bi.h"
#include "lumo/builtins/bimore.h"

namespace korvu {

static bool hasmiss(const MObj* a) {
    for (int64_t i = 0; i < m_nel(a); i++)
        if (m_rel(a)[i] >= misval) return true;
    return false;
}
static void freeall(MObj* a, MObj* b = nullptr, MObj* c = nullptr) {
    if (a) mo_freemat(a);
    if (b) mo_freemat(b);
    if (c) mo_freemat(c);
}

// _eigen_la(todo, A, X, L, rcond, nobalance): the eigensystem of a real
// square A, left as it was. L becomes the eigenvalues (complex row); X the
// right eigenvectors by column (todo 1), the left ones u with u'A = Lu'
// for the conjugate transpose (todo 2), or 0 x 0 (todo 0), each of unit length with its largest
// element real; rcond the reciprocal condition numbers of the eigenvalues (real row). Balancing is
// done unless nobalance is non-zero. Returns 0, or non-zero when the
// iteration failed (the outputs then missing).
static void bi_ueigen_la(int n) {
    int64_t todo;
    double nobal;
    if (!bi_getint(n, 0, 0, 2, &todo)) return;
    MObj* a = bi_mat(n, 1);
    if (!a) return;
    a = bi_arg(n, 1);
    MObj* x = bi_any(n, 2);
    MObj* l = bi_any(n, 3);
    MObj* rc = bi_any(n, 4);
    if (!x || !l || !rc || !bi_getreal(n, 5, &nobal)) return;
    if (a->eltype == MT_COMPLEX) return bi_zeigen_la(n, todo, a, x, l, rc, nobal != 0);
    if (!bi_real(a) || !bi_square(a)) return;
    if (hasmiss(a)) return m_xeqerr(3351);
    const int N = a->rows;
    MObj* vx = bi_new(MT_COMPLEX, todo ? N : 0, todo ? N : 0);
    MObj* vl = bi_new(MT_COMPLEX, 1, N);
    MObj* vr = bi_new(MT_REAL, 1, N);
    if (!vx || !vl || !vr) return freeall(vx, vl, vr);
    lapack_int info = 0;
    if (N > 0) {
        const size_t NN = static_cast<size_t>(N) * N;
        std::vector<double> w(m_rel(a), m_rel(a) + NN), wr(N), wi(N), lv(NN), rv(NN), scale(N),
            rce(N), rcv(N);
        lapack_int ilo, ihi;
        double abnrm;
        info = LAPACKE_dgeevx(LAPACK_ROW_MAJOR, nobal != 0 ? 'N' : 'B', 'V', 'V', 'E', N, w.data(),
                              N, wr.data(), wi.data(), lv.data(), N, rv.data(), N, &ilo, &ihi,
                              scale.data(), &abnrm, rce.data(), rcv.data());
        if (info < 0) {
            freeall(vx, vl, vr);
            return m_xeqerr(3930);
        }
        if (info > 0) {
            for (int64_t i = 0; i < 2 * m_nel(vx); i++) m_rel(vx)[i] = misval;
            for (int64_t i = 0; i < 2 * N; i++) m_rel(vl)[i] = misval;
            for (int64_t i = 0; i < N; i++) m_rel(vr)[i] = misval;
        } else {
            const std::vector<double>& v = todo == 2 ? lv : rv;
            for (int j = 0; j < N; j++) {
                m_rel(vl)[2 * j] = wr[j];
                m_rel(vl)[2 * j + 1] = wi[j];
                m_rel(vr)[j] = rce[j];
            }
            if (todo)
                for (int j = 0; j < N; j++) {
                    const bool pair = wi[j] != 0 && j + 1 < N;
                    for (int i = 0; i < N; i++) {
                        double* e = m_rel(vx) + 2 * (static_cast<int64_t>(i) * N + j);
                        const double re = v[static_cast<size_t>(i) * N + j];
                        const double im = pair ? v[static_cast<size_t>(i) * N + j + 1] : 0;
                        e[0] = re;
                        e[1] = im;
                        if (pair) {
                            e[2] = re;
                            e[3] = -im;
                        }
                    }
                    if (pair) j++;
                }
        }
    }
    if (!bi_output(x, vx)) return freeall(vl, vr);
    if (!bi_output(l, vl)) return freeall(vr);
    if (!bi_output(rc, vr)) return;
    bi_realres(n, info);
}

// _hqrdp_la(A, tau, R, p): the QR decomposition with column pivoting AP =
// QR of A (r x c). A becomes the compact factor: R on and above the
// diagonal, the Householder vectors below it; tau the k = min(r, c) scalars
// of the reflectors (row); R the k x c upper triangle; p, on entry a row
// whose non-zero elements mark the columns to put first (anything else
// frees every column), on exit the permutation: column j of AP is column
// p[j] of A. Returns 0.
static void bi_uhqrdp_la(int n) {
    MObj* a = bi_any(n, 0);
    MObj* tau = bi_any(n, 1);
    MObj* r = bi_any(n, 2);
    MObj* p = bi_any(n, 3);
    if (!a || !tau || !r || !p) return;
    if (a->view) return m_xeqerr(3103);
    if (!bi_real(a)) return;
    if (hasmiss(a)) return m_xeqerr(3351);
    const int R = a->rows, C = a->cols, K = R < C ? R : C;
    std::vector<lapack_int> jp(static_cast<size_t>(C), 0);
    if (p->eltype == MT_REAL && !p->view && m_nel(p) == C)
        for (int j = 0; j < C; j++) jp[j] = m_rel(p)[j] != 0 && m_rel(p)[j] < misval;
    MObj* t = bi_new(MT_REAL, 1, K);
    MObj* rr = bi_new(MT_REAL, K, C);
    MObj* pp = bi_new(MT_REAL, 1, C);
    if (!t || !rr || !pp) return freeall(t, rr, pp);
    if (R > 0 && C > 0) {
        const lapack_int info =
            LAPACKE_dgeqp3(LAPACK_ROW_MAJOR, R, C, m_rel(a), C, jp.data(), m_rel(t));
        if (info != 0) {
            freeall(t, rr, pp);
            return m_xeqerr(3930);
        }
    } else {
        for (int j = 0; j < C; j++) jp[j] = j + 1;
    }
    for (int i = 0; i < K; i++)
        for (int j = 0; j < C; j++)
            m_rel(rr)[static_cast<int64_t>(i) * C + j] =
                j >= i ? m_rel(a)[static_cast<int64_t>(i) * C + j] : 0;
    for (int j = 0; j < C; j++) m_rel(pp)[j] = jp[j];
    if (!bi_output(tau, t)) return freeall(rr, pp);
    if (!bi_output(r, rr)) return freeall(pp);
    if (!bi_output(p, pp)) return;
    bi_realres(n, 0);
}

// Applies Q (from the compact factor h, r x c, and tau) or Q' to b (r x m)
// in place; false with the code set.
static bool qmult(const MObj* h, const MObj* tau, MObj* b, bool trans) {
    const int R = h->rows, C = h->cols, K = static_cast<int>(m_nel(tau));
    if (K > (R < C ? R : C)) {
        m_xeqerr(3200);
        return false;
    }
    if (b->rows != R) {
        m_xeqerr(3200);
        return false;
    }
    if (K == 0 || b->cols == 0) return true;
    // the routine wants the reflectors r x K: copy them when C differs
    std::vector<double> v(static_cast<size_t>(R) * K);
    for (int i = 0; i < R; i++)
        for (int j = 0; j < K; j++)
            v[static_cast<size_t>(i) * K + j] = m_rel(h)[static_cast<int64_t>(i) * C + j];
    const lapack_int info = LAPACKE_dormqr(LAPACK_ROW_MAJOR, 'L', trans ? 'T' : 'N', R, b->cols, K,
                                           v.data(), K, m_rel(tau), m_rel(b), b->cols);
    if (info != 0) {
        m_xeqerr(3930);
        return false;
    }
    return true;
}

// _hqrdmult(H, tau, B, trans): B becomes QB, or Q'B when trans is non-zero,
// with Q the orthogonal factor held by H and tau.
static void bi_uhqrdmult(int n) {
    MObj* h = bi_mat(n, 0);
    MObj* tau = h ? bi_mat(n, 1) : nullptr;
    if (!h || !tau) return;
    h = bi_arg(n, 0);
    MObj* b = bi_any(n, 2);
    double tr;
    if (!b || !bi_getreal(n, 3, &tr)) return;
    if (b->view) return m_xeqerr(3103);
    if (!bi_real(h) || !bi_real(tau) || !bi_real(b)) return;
    if (hasmiss(h) || hasmiss(tau) || hasmiss(b)) return m_xeqerr(3351);
    if (!qmult(h, tau, b, tr != 0)) return;
    bi_voidres(n);
}

// _hqrdq1(H, tau[, k]): the first k columns of Q (k from 0 to rows(H); by
// default the number of reflectors).
static void bi_uhqrdq1(int n) {
    MObj* h = bi_mat(n, 0);
    MObj* tau = h ? bi_mat(n, 1) : nullptr;
    if (!h || !tau) return;
    h = bi_arg(n, 0);
    if (!bi_real(h) || !bi_real(tau)) return;
    if (hasmiss(h) || hasmiss(tau)) return m_xeqerr(3351);
    int64_t k = m_nel(tau);
    if (n == 3 && !bi_getint(n, 2, 0, h->rows, &k)) return;
    MObj* q = bi_new(MT_REAL, h->rows, k);
    if (!q) return;
    for (int64_t i = 0; i < m_nel(q); i++) m_rel(q)[i] = 0;
    for (int64_t j = 0; j < k; j++) m_rel(q)[j * k + j] = 1;
    if (!qmult(h, tau, q, false)) return mo_freemat(q);
    bi_result(n, q);
}

// ginvr(A[, tol]): the Moore-Penrose inverse of A (r x c) by its singular
// value decomposition, with the singular values at or below tol times
// max(r, c) times the largest times the machine epsilon taken as zero
// (tol 1 by default). A missing element makes every element missing.
static void bi_ginvr(int n) {
    MObj* a = bi_mat(n, 0);
    if (!a || !bi_real(a)) return;
    double tol = 1;
    if (n == 2) {
        if (!bi_getreal(n, 1, &tol)) return;
        if (tol >= misval || tol <= 0) tol = 1;
    }
    a = bi_arg(n, 0);
    const int R = a->rows, C = a->cols, K = R < C ? R : C;
    MObj* g = bi_new(MT_REAL, C, R);
    if (!g) return;
    if (hasmiss(a)) {
        for (int64_t i = 0; i < m_nel(g); i++) m_rel(g)[i] = misval;
        return void(bi_result(n, g));
    }
    for (int64_t i = 0; i < m_nel(g); i++) m_rel(g)[i] = 0;
    if (K > 0) {
        std::vector<double> w(m_rel(a), m_rel(a) + m_nel(a)), s(K), u(static_cast<size_t>(R) * K),
            vt(static_cast<size_t>(K) * C);
        const lapack_int info = LAPACKE_dgesdd(LAPACK_ROW_MAJOR, 'S', R, C, w.data(), C, s.data(),
                                               u.data(), K, vt.data(), C);
        if (info != 0) {
            mo_freemat(g);
            return m_xeqerr(3930);
        }
        const double cut = tol * (R > C ? R : C) * s[0] * 2.220446049250313e-16;
        // G = V diag(1/s) U'
        for (int k = 0; k < K; k++) {
            if (!(s[k] > cut)) continue;
            const double inv = 1 / s[k];
            for (int i = 0; i < C; i++) {
                const double vi = vt[static_cast<size_t>(k) * C + i] * inv;
                for (int j = 0; j < R; j++)
                    m_rel(g)[static_cast<int64_t>(i) * R + j] +=
                        vi * u[static_cast<size_t>(j) * K + k];
            }
        }
    }
    bi_result(n, g);
}

void bi_link_la2(MBiFn* t) {
    t[bi_index("_eigen_la")] = bi_ueigen_la;
    t[bi_index("_hqrdp_la")] = bi_uhqrdp_la;
    t[bi_index("_hqrdmult")] = bi_uhqrdmult;
    t[bi_index("_hqrdq1")] = bi_uhqrdq1;
    t[bi_index("ginvr")] = bi_ginvr;
}

} // namespace korvu
