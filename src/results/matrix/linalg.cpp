// The sweep inverter that the estimators share, and the decompositions,
// which call LAPACK.
#include <lapacke.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <vector>

#include "data/area/missing.h"
#include "kernel/loop/brk.h"
#include "output/spout.h"
#include "results/matrix/matrix.h"
#include "results/settings.h"

namespace korvu {

uint8_t korvu_debug = 0;

// One sweep step on position p of the upper triangle of the block
// [first..last] (stride s): rows i at or below columns j. The swept part
// holds minus the inverse, which the caller turns round at the end.
static void sweepstep(double* a, int s, int first, int last, int p) {
    auto at = [&](int i, int j) -> double& {
        return i <= j ? a[static_cast<size_t>(i) * s + j] : a[static_cast<size_t>(j) * s + i];
    };
    double d = at(p, p);
    for (int i = first; i <= last; i++) {
        if (i == p) continue;
        double bi = at(i, p) / d;
        if (bi == 0.0) continue;
        for (int j = i; j <= last; j++) {
            if (j == p) continue;
            at(i, j) -= bi * at(p, j);
        }
    }
    for (int j = first; j <= last; j++)
        if (j != p) at(p, j) /= d;
    at(p, p) = -1.0 / d;
}

int matrinfs(double* a, int s, int first, int last, const int* order, int last_sweep) {
    int n = last - first + 1;
    diag0cnt = 0;
    if (n <= 0) return 0;
    auto at = [&](int i, int j) -> double& {
        return i <= j ? a[static_cast<size_t>(i) * s + j] : a[static_cast<size_t>(j) * s + i];
    };
    std::vector<double> tol(n);
    std::vector<uint8_t> state(n, 0);
    const double tol0 = matrind.tol_0, tol1 = matrind.tol_1;
    for (int i = first; i <= last; i++) {
        if (at(i, i) < 0) at(i, i) = 0;
        double dg = at(i, i);
        double t = dg == 0 ? tol1 : tol1 * dg;
        tol[i - first] = t < tol0 ? tol0 : t;
        if (kvpollrare()) return 1;
    }
    int nforced = 0;
    if (order)
        while (order[nforced] >= 0) nforced++;
    bool haslast = last_sweep >= first && last_sweep <= last;
    for (int step = 0; step < n; step++) {
        if (kvpollrare()) return 1;
        int p;
        if (matrind.tol_r == 0) {
            p = first + step;
        } else if (step < nforced) {
            p = order[step];
        } else {
            // the position to sweep last is kept out of the search till then
            bool hold = haslast && step < n - 1 && state[last_sweep - first] == 0;
            if (hold) state[last_sweep - first] = 1;
            p = -1;
            for (int i = first; i <= last; i++)
                if (state[i - first] == 0 && (p < 0 || at(i, i) > at(p, p))) p = i;
            if (hold) state[last_sweep - first] = 0;
            if (p < 0) p = hold ? last_sweep : first;
        }
        if (p < first || p > last || state[p - first] != 0) continue;
        bool dropped = tol[p - first] > at(p, p);
        if (korvu_debug) {
            spoutf("*%2d %12.5e %12.5e%s\n", p, at(p, p), tol[p - first], dropped ? "*" : "");
        }
        if (dropped) {
            state[p - first] = 2;
            for (int k = first; k <= last; k++) at(p, k) = 0;
            continue;
        }
        sweepstep(a, s, first, last, p);
        state[p - first] = 1;
    }
    // turn the swept part round and mirror the upper triangle
    for (int i = first; i <= last; i++)
        for (int j = i; j <= last; j++) {
            double v = -at(i, j);
            if (v == 0.0) v = 0.0; // no negative zeros
            a[static_cast<size_t>(i) * s + j] = v;
            a[static_cast<size_t>(j) * s + i] = v;
        }
    for (int i = first; i <= last; i++)
        if (state[i - first] != 1) diag0cnt++;
    return 0;
}

int matrinf(double* a, int first, int last, const int* order, int last_sweep) {
    extern int32_t matsize;
    return matrinfs(a, matsize, first, last, order, last_sweep);
}

int matrin(double* a, int first, int last, int last_sweep) {
    return matrinf(a, first, last, nullptr, last_sweep);
}

void sweepone(double* a, int n, int p) {
    // on a full symmetric matrix: both halves kept
    sweepstep(a, n, 0, n - 1, p);
    for (int i = 0; i < n; i++)
        for (int j = i + 1; j < n; j++)
            a[static_cast<size_t>(j) * n + i] = a[static_cast<size_t>(i) * n + j];
}

int mfnsinv2(double* a, int n) {
    if (n == 0) return 0;
    std::vector<lapack_int> piv(n);
    lapack_int info = LAPACKE_dgetrf(LAPACK_ROW_MAJOR, n, n, a, n, piv.data());
    if (info == 0) info = LAPACKE_dgetri(LAPACK_ROW_MAJOR, n, a, n, piv.data());
    if (info != 0) {
        for (size_t k = 0; k < static_cast<size_t>(n) * n; k++) a[k] = misval;
        return 1;
    }
    return 0;
}

double matdet(const double* a0, int n) {
    if (n == 0) return 1.0;
    std::vector<double> a(a0, a0 + static_cast<size_t>(n) * n);
    std::vector<lapack_int> piv(n);
    lapack_int info = LAPACKE_dgetrf(LAPACK_ROW_MAJOR, n, n, a.data(), n, piv.data());
    if (info < 0) return misval;
    double d = 1.0;
    for (int i = 0; i < n; i++) {
        d *= a[static_cast<size_t>(i) * n + i];
        if (piv[i] != i + 1) d = -d;
    }
    return d;
}

int stsqrt(double* a, int n) {
    // a = L L' by the square-root recurrences, row by row
    for (int i = 0; i < n; i++) {
        for (int j = 0; j <= i; j++) {
            double sum = a[static_cast<size_t>(i) * n + j];
            for (int k = 0; k < j; k++)
                sum -= a[static_cast<size_t>(i) * n + k] * a[static_cast<size_t>(j) * n + k];
            if (i == j) {
                if (!(sum > 0)) return 506;
                a[static_cast<size_t>(i) * n + i] = std::sqrt(sum);
            } else {
                a[static_cast<size_t>(i) * n + j] = sum / a[static_cast<size_t>(j) * n + j];
            }
        }
        for (int j = i + 1; j < n; j++) a[static_cast<size_t>(i) * n + j] = 0;
    }
    return 0;
}

int symeigen(const double* a0, int n, double* values, double* vectors) {
    if (n == 0) return 0;
    std::memcpy(vectors, a0, sizeof(double) * n * n);
    std::vector<double> w(n);
    lapack_int info = LAPACKE_dsyev(LAPACK_ROW_MAJOR, 'V', 'L', n, vectors, n, w.data());
    if (info != 0) return 430;
    // descending order: reverse the columns
    for (int k = 0; k < n; k++) values[k] = w[n - 1 - k];
    for (int i = 0; i < n; i++)
        for (int k = 0; k < n / 2; k++)
            std::swap(vectors[static_cast<size_t>(i) * n + k],
                      vectors[static_cast<size_t>(i) * n + n - 1 - k]);
    return 0;
}

int matsvdc(const double* a0, int r, int c, double* u, double* w, double* v) {
    // thin decomposition with r >= c: a = U diag(w) V'
    std::vector<double> a(a0, a0 + static_cast<size_t>(r) * c);
    std::vector<double> vt(static_cast<size_t>(c) * c);
    lapack_int info =
        LAPACKE_dgesdd(LAPACK_ROW_MAJOR, 'S', r, c, a.data(), c, w, u, c, vt.data(), c);
    if (info != 0) return 430;
    for (int i = 0; i < c; i++)
        for (int j = 0; j < c; j++)
            v[static_cast<size_t>(i) * c + j] = vt[static_cast<size_t>(j) * c + i];
    return 0;
}

int geigenvals(const double* a0, int n, double* re, double* im) {
    if (n == 0) return 0;
    std::vector<double> a(a0, a0 + static_cast<size_t>(n) * n);
    lapack_int info =
        LAPACKE_dgeev(LAPACK_ROW_MAJOR, 'N', 'N', n, a.data(), n, re, im, nullptr, 1, nullptr, 1);
    return info != 0 ? 430 : 0;
}

} // namespace korvu
