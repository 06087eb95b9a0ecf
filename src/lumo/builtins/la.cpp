// Linear algebra. The decompositions go to LAPACK in row-major storage; a
// routine that reports an illegal argument or an internal failure gives
// 3930. Singular or indefinite inputs are results, not failures: the
// functions fill their outputs with missing values or return a status.
#include <cmath>
#include <cstring>
#include <vector>

#include <lapacke.h>

#include "lumo/builtins/bi.h"
#include "results/matrix/matrix.h"

namespace korvu {

static bool anymiss(const MObj* a) {
    for (int64_t i = 0; i < m_nel(a); i++)
        if (m_rel(a)[i] >= misval) return true;
    return false;
}
static void fillmiss(MObj* a) {
    for (int64_t i = 0; i < m_nel(a); i++) m_rel(a)[i] = misval;
}
// The argument for an in-place routine: a real matrix that is not a view.
static MObj* inplace(int n, int k) {
    MObj* a = bi_any(n, k);
    if (!a) return nullptr;
    if (a->view) {
        m_xeqerr(3103);
        return nullptr;
    }
    if (!bi_real(a)) return nullptr;
    return a;
}
// Stores a new real matrix into an output argument (replacing it).
static bool lapackok(lapack_int info) {
    if (info < 0) {
        m_xeqerr(3930);
        return false;
    }
    return true;
}

// The symmetric generalized inverse of a, in place, by sweeping (the
// regression's inverter); a missing element makes everything missing. The
// positions of order (from 0, ended by -1) are swept first, in their order.
static void invsymin(MObj* a, const int* order) {
    const int N = a->rows;
    if (anymiss(a)) return fillmiss(a);
    if (N == 0) return;
    // the lower triangle is read, as the sweeper works on the upper
    double* x = m_rel(a);
    for (int i = 0; i < N; i++)
        for (int j = 0; j < i; j++)
            x[static_cast<int64_t>(j) * N + i] = x[static_cast<int64_t>(i) * N + j];
    if (matrinfs(x, N, 0, N - 1, order, -1)) m_xeqerr(1);
}
// The order argument k of a matrix of N rows: a real vector of distinct
// positions 1 to N (3300 otherwise), into ord from 0, ended by -1.
static bool getorder(int n, int k, int N, std::vector<int>* ord) {
    ord->assign(1, -1);
    if (n <= k) return true;
    MObj* o = bi_mat(n, k);
    if (!o || !bi_real(o)) return false;
    if (m_nel(o) > 0 && !bi_vector(o)) return false;
    std::vector<char> seen(static_cast<size_t>(N) + 1, 0);
    ord->clear();
    for (int64_t i = 0; i < m_nel(o); i++) {
        const double v = m_rel(o)[i];
        if (!(v >= 1 && v <= N) || v != static_cast<double>(static_cast<int>(v)) ||
            seen[static_cast<size_t>(v)]) {
            m_custom_xeqerr(3300, "order must hold distinct positions 1 to %d", N);
            return false;
        }
        seen[static_cast<size_t>(v)] = 1;
        ord->push_back(static_cast<int>(v) - 1);
    }
    ord->push_back(-1);
    return true;
}
// invsym(A[, order]): the generalized inverse of the symmetric A, sweeping
// the positions of order first.
static void bi_invsym(int n) {
    MObj* a = bi_mat(n, 0);
    if (!a || !bi_real(a) || !bi_square(a)) return;
    std::vector<int> ord;
    if (!getorder(n, 1, a->rows, &ord)) return;
    a = bi_arg(n, 0);
    MObj* o = m_dupmat(a);
    if (!o) return m_xeqerr(3900);
    invsymin(o, ord.data());
    if (m_xrc) return mo_freemat(o);
    bi_result(n, o);
}
static void bi_uinvsym(int n) {
    MObj* a = inplace(n, 0);
    if (!a || !bi_square(a)) return;
    std::vector<int> ord;
    if (!getorder(n, 1, a->rows, &ord)) return;
    invsymin(a, ord.data());
    if (!m_xrc) bi_voidres(n);
}

// _cholesky(A): A becomes its lower triangular factor L with A = LL'; not
// positive definite (or with missing values): all missing.
static void bi_ucholesky(int n) {
    MObj* a = inplace(n, 0);
    if (!a || !bi_square(a)) return;
    const int N = a->rows;
    if (anymiss(a)) {
        fillmiss(a);
        return void(bi_voidres(n));
    }
    if (N > 0) {
        const lapack_int info = LAPACKE_dpotrf(LAPACK_ROW_MAJOR, 'L', N, m_rel(a), N);
        if (!lapackok(info)) return;
        if (info > 0)
            fillmiss(a);
        else
            for (int i = 0; i < N; i++)
                for (int j = i + 1; j < N; j++) m_rel(a)[static_cast<int64_t>(i) * N + j] = 0;
    }
    bi_voidres(n);
}

// _lud2_la(A, L, p): A (r x c) factored as PA = LU: A becomes U
// (min(r,c) x c), L the unit lower factor (r x min(r,c)), p the pivots as a
// permutation column: row i of PA is row p[i] of A.
static void bi_ulud2_la(int n) {
    MObj* a = inplace(n, 0);
    MObj* L = bi_any(n, 1);
    MObj* p = bi_any(n, 2);
    if (!a || !L || !p) return;
    const int R = a->rows, C = a->cols, K = R < C ? R : C;
    if (anymiss(a)) return m_xeqerr(3351);
    std::vector<lapack_int> ipiv(static_cast<size_t>(K) + 1);
    if (R > 0 && C > 0) {
        const lapack_int info = LAPACKE_dgetrf(LAPACK_ROW_MAJOR, R, C, m_rel(a), C, ipiv.data());
        if (!lapackok(info)) return;
    }
    MObj* l = bi_new(MT_REAL, R, K);
    MObj* u = bi_new(MT_REAL, K, C);
    MObj* q = bi_new(MT_REAL, R, 1);
    if (!l || !u || !q) {
        if (l) mo_freemat(l);
        if (u) mo_freemat(u);
        if (q) mo_freemat(q);
        return;
    }
    const double* x = m_rel(a);
    for (int i = 0; i < R; i++)
        for (int j = 0; j < K; j++)
            m_rel(l)[static_cast<int64_t>(i) * K + j] = i == j  ? 1
                                                        : i > j ? x[static_cast<int64_t>(i) * C + j]
                                                                : 0;
    for (int i = 0; i < K; i++)
        for (int j = 0; j < C; j++)
            m_rel(u)[static_cast<int64_t>(i) * C + j] =
                j >= i ? x[static_cast<int64_t>(i) * C + j] : 0;
    std::vector<int> perm(static_cast<size_t>(R));
    for (int i = 0; i < R; i++) perm[i] = i;
    for (int i = 0; i < K; i++) std::swap(perm[i], perm[ipiv[i] - 1]);
    for (int i = 0; i < R; i++) m_rel(q)[i] = perm[i] + 1;
    bi_output(L, l);
    bi_output(p, q);
    m_swapmat(a, u);
    mo_freemat(u);
    bi_voidres(n);
}

// The reciprocal condition number estimate of a factored square matrix, to
// call a near-singular one singular.
static bool singular(const double* lu, int N, double anorm, double tol) {
    for (int i = 0; i < N; i++)
        if (lu[static_cast<int64_t>(i) * N + i] == 0) return true;
    double rcond = 0;
    if (LAPACKE_dgecon(LAPACK_COL_MAJOR, '1', N, lu, N, anorm, &rcond) != 0) return true;
    return rcond < tol;
}
// The largest row sum: the 1-norm of the transpose the routines see.
static double norminf(const MObj* a) {
    double m = 0;
    for (int i = 0; i < a->rows; i++) {
        double s = 0;
        for (int j = 0; j < a->cols; j++)
            s += std::fabs(m_rel(a)[static_cast<int64_t>(i) * a->cols + j]);
        if (s > m) m = s;
    }
    return m;
}
static bool gettol(int n, int k, double* tol) {
    *tol = 2.220446049250313e-16;
    if (n <= k) return true;
    double t;
    if (!bi_getreal(n, k, &t)) return false;
    if (t < misval && t > 0) *tol = t * 2.220446049250313e-16;
    return true;
}

// _luinv_la(A[, tol]): A becomes its inverse; returns 0, or the number of
// the first zero pivot when A is singular (A then all missing).
static void bi_uluinv_la(int n) {
    MObj* a = inplace(n, 0);
    double tol;
    if (!a || !bi_square(a) || !gettol(n, 1, &tol)) return;
    const int N = a->rows;
    if (anymiss(a)) {
        fillmiss(a);
        return void(bi_realres(n, misval));
    }
    if (N == 0) return void(bi_realres(n, 0));
    // The rows of A read by columns are A': its inverse, read back by rows,
    // is the inverse of A, with no copy either way.
    std::vector<lapack_int> ipiv(static_cast<size_t>(N));
    const double anorm = norminf(a);
    lapack_int info = LAPACKE_dgetrf(LAPACK_COL_MAJOR, N, N, m_rel(a), N, ipiv.data());
    if (!lapackok(info)) return;
    if (info > 0 || singular(m_rel(a), N, anorm, tol)) {
        fillmiss(a);
        return void(bi_realres(n, info > 0 ? info : 1));
    }
    info = LAPACKE_dgetri(LAPACK_COL_MAJOR, N, m_rel(a), N, ipiv.data());
    if (!lapackok(info)) return;
    bi_realres(n, 0);
}

// _lusolve_la(A, B[, tol]): B becomes the solution X of AX = B and A is
// overwritten by factors; returns 0, or non-zero when A is singular (B then all missing).
static void bi_ulusolve_la(int n) {
    MObj* a = inplace(n, 0);
    MObj* b = inplace(n, 1);
    double tol;
    if (!a || !b || !bi_square(a) || !gettol(n, 2, &tol)) return;
    if (a == b) return m_xeqerr(3002);
    const int N = a->rows, K = b->cols;
    if (b->rows != N) return m_xeqerr(3200);
    if (anymiss(a) || anymiss(b)) {
        fillmiss(b);
        return void(bi_realres(n, misval));
    }
    if (N == 0 || K == 0) return void(bi_realres(n, 0));
    // A by rows is A' by columns: factor that in place and solve with the
    // transpose; B goes by columns (a copy only when it has several).
    std::vector<lapack_int> ipiv(static_cast<size_t>(N));
    const double anorm = norminf(a);
    lapack_int info = LAPACKE_dgetrf(LAPACK_COL_MAJOR, N, N, m_rel(a), N, ipiv.data());
    if (!lapackok(info)) return;
    if (info > 0 || singular(m_rel(a), N, anorm, tol)) {
        fillmiss(b);
        return void(bi_realres(n, info > 0 ? info : 1));
    }
    if (K == 1) {
        info = LAPACKE_dgetrs(LAPACK_COL_MAJOR, 'T', N, 1, m_rel(a), N, ipiv.data(), m_rel(b), N);
    } else {
        std::vector<double> bc(static_cast<size_t>(N) * K);
        for (int i = 0; i < N; i++)
            for (int j = 0; j < K; j++)
                bc[static_cast<size_t>(j) * N + i] = m_rel(b)[static_cast<int64_t>(i) * K + j];
        info = LAPACKE_dgetrs(LAPACK_COL_MAJOR, 'T', N, K, m_rel(a), N, ipiv.data(), bc.data(), N);
        for (int i = 0; i < N; i++)
            for (int j = 0; j < K; j++)
                m_rel(b)[static_cast<int64_t>(i) * K + j] = bc[static_cast<size_t>(j) * N + i];
    }
    if (!lapackok(info)) return;
    bi_realres(n, 0);
}

// _svd_la(A, s, Vt): A (r x c) becomes U (r x k), s the k singular values
// as a column in decreasing order, Vt (k x c); k = min(r, c). Returns 0, or
// non-zero when the iteration did not converge (the outputs missing).
static void bi_usvd_la(int n) {
    MObj* a = inplace(n, 0);
    MObj* s = bi_any(n, 1);
    MObj* vt = bi_any(n, 2);
    if (!a || !s || !vt) return;
    if (anymiss(a)) return m_xeqerr(3351);
    const int R = a->rows, C = a->cols, K = R < C ? R : C;
    MObj* u = bi_new(MT_REAL, R, K);
    MObj* w = bi_new(MT_REAL, K, 1);
    MObj* v = bi_new(MT_REAL, K, C);
    if (!u || !w || !v) {
        if (u) mo_freemat(u);
        if (w) mo_freemat(w);
        if (v) mo_freemat(v);
        return;
    }
    lapack_int info = 0;
    if (K > 0) {
        info = LAPACKE_dgesdd(LAPACK_ROW_MAJOR, 'S', R, C, m_rel(a), C, m_rel(w), m_rel(u), K,
                              m_rel(v), C);
        if (info < 0) {
            mo_freemat(u);
            mo_freemat(w);
            mo_freemat(v);
            return m_xeqerr(3930);
        }
        if (info > 0) {
            fillmiss(u);
            fillmiss(w);
            fillmiss(v);
        }
    }
    bi_output(s, w);
    bi_output(vt, v);
    m_swapmat(a, u);
    mo_freemat(u);
    bi_realres(n, info);
}

// _svd_2(A, s): the singular values only, as a column; A is left as it was.
static void bi_usvd_2(int n) {
    MObj* a = bi_mat(n, 0);
    MObj* s = bi_any(n, 1);
    if (!a || !s || !bi_real(a)) return;
    if (anymiss(a)) return m_xeqerr(3351);
    const int R = a->rows, C = a->cols, K = R < C ? R : C;
    MObj* c = m_dupmat(a);
    MObj* w = bi_new(MT_REAL, K, 1);
    if (!c || !w) {
        if (c) mo_freemat(c);
        if (w) mo_freemat(w);
        return m_xeqerr(3900);
    }
    lapack_int info = 0;
    if (K > 0) {
        info = LAPACKE_dgesdd(LAPACK_ROW_MAJOR, 'N', R, C, m_rel(c), C, m_rel(w), nullptr, R,
                              nullptr, C);
        if (info < 0) {
            mo_freemat(c);
            mo_freemat(w);
            return m_xeqerr(3930);
        }
        if (info > 0) fillmiss(w);
    }
    mo_freemat(c);
    bi_output(s, w);
    bi_realres(n, info);
}

// _symeigen_la(A, L): A (symmetric, lower triangle read) becomes its
// eigenvectors by column, L the eigenvalues as a row in decreasing order.
static void bi_usymeigen_la(int n) {
    MObj* a = inplace(n, 0);
    MObj* l = bi_any(n, 1);
    if (!a || !l || !bi_square(a)) return;
    if (anymiss(a)) return m_xeqerr(3351);
    const int N = a->rows;
    MObj* w = bi_new(MT_REAL, 1, N);
    if (!w) return;
    lapack_int info = 0;
    if (N > 0) {
        std::vector<double> vals(static_cast<size_t>(N));
        info = LAPACKE_dsyevd(LAPACK_ROW_MAJOR, 'V', 'L', N, m_rel(a), N, vals.data());
        if (info < 0) {
            mo_freemat(w);
            return m_xeqerr(3930);
        }
        if (info > 0) {
            fillmiss(a);
            fillmiss(w);
        } else {
            // decreasing order: reverse the columns
            double* x = m_rel(a);
            for (int i = 0; i < N; i++)
                for (int j = 0; j < N / 2; j++)
                    std::swap(x[static_cast<int64_t>(i) * N + j],
                              x[static_cast<int64_t>(i) * N + N - 1 - j]);
            for (int j = 0; j < N; j++) m_rel(w)[j] = vals[static_cast<size_t>(N - 1 - j)];
        }
    }
    bi_output(l, w);
    bi_realres(n, info);
}

// _makesymmetric(A): the lower triangle copied to the upper.
static void bi_umakesymmetric(int n) {
    MObj* a = inplace(n, 0);
    if (!a || !bi_square(a)) return;
    const int N = a->rows;
    for (int i = 0; i < N; i++)
        for (int j = 0; j < i; j++)
            m_rel(a)[static_cast<int64_t>(j) * N + i] = m_rel(a)[static_cast<int64_t>(i) * N + j];
    bi_voidres(n);
}
// _editmissing(A, v): missing elements become v.
static void bi_ueditmissing(int n) {
    MObj* a = inplace(n, 0);
    double v;
    if (!a || !bi_getreal(n, 1, &v)) return;
    for (int64_t i = 0; i < m_nel(a); i++)
        if (m_rel(a)[i] >= misval) m_rel(a)[i] = v;
    bi_voidres(n);
}
// _editvalue(A, from, to): elements equal to from become to.
static void bi_ueditvalue(int n) {
    MObj* a = inplace(n, 0);
    double f, t;
    if (!a || !bi_getreal(n, 1, &f) || !bi_getreal(n, 2, &t)) return;
    for (int64_t i = 0; i < m_nel(a); i++)
        if (m_rel(a)[i] == f) m_rel(a)[i] = t;
    bi_voidres(n);
}
// _fillmissing(A): every element missing.
static void bi_ufillmissing(int n) {
    MObj* a = inplace(n, 0);
    if (!a) return;
    fillmiss(a);
    bi_voidres(n);
}

void bi_link_la(MBiFn* t) {
    t[bi_index("invsym")] = bi_invsym;
    t[bi_index("_invsym")] = bi_uinvsym;
    t[bi_index("_cholesky")] = bi_ucholesky;
    t[bi_index("_lud2_la")] = bi_ulud2_la;
    t[bi_index("_luinv_la")] = bi_uluinv_la;
    t[bi_index("_lusolve_la")] = bi_ulusolve_la;
    t[bi_index("_svd_la")] = bi_usvd_la;
    t[bi_index("_svd_2")] = bi_usvd_2;
    t[bi_index("_symeigen_la")] = bi_usymeigen_la;
    t[bi_index("_makesymmetric")] = bi_umakesymmetric;
    t[bi_index("_editmissing")] = bi_ueditmissing;
    t[bi_index("_editvalue")] = bi_ueditvalue;
    t[bi_index("_fillmissing")] = bi_ufillmissing;
}

} // namespace korvu
