// Simulation helpers: Halton sequences and the GHK simulator of
// multivariate normal probabilities.
#include <cmath>
#include <cstdint>
#include <vector>

#include "lumo/builtins/bi.h"
#include "results/distrib/distrib.h"

namespace korvu {

namespace {

// The radical inverse of k in base b: the digits of k mirrored about the
// point.
double radinv(uint64_t k, uint64_t b) {
    double x = 0, f = 1.0 / static_cast<double>(b), bf = f;
    while (k) {
        x += static_cast<double>(k % b) * f;
        k /= b;
        f *= bf;
    }
    return x;
}

// The index k with radinv(k, b) == u, when u is a point of the sequence
// (to rounding); false otherwise.
bool halton_index(double u, uint64_t b, uint64_t* k) {
    uint64_t idx = 0, place = 1;
    double r = u;
    const double db = static_cast<double>(b);
    for (int d = 0; d < 64 && r > 1e-15; d++) {
        double t = r * db;
        double dig = std::floor(t + 1e-9);
        if (dig >= db) dig = db - 1;
        r = t - dig;
        if (r < 0) r = 0;
        if (place > (UINT64_MAX / b) / 2) return false;
        idx += static_cast<uint64_t>(dig) * place;
        place *= b;
    }
    if (std::fabs(radinv(idx, b) - u) > 1e-12) return false;
    *k = idx;
    return true;
}

// The point after x in the sequence of base b, by adding 1/b with the carry
// running to the right (for a start that is not a point of the sequence).
double halton_next(double x, double b) {
    const double r = 1 - x - 1e-12;
    double h = 1 / b;
    if (h < r) return x + h;
    double hh;
    do {
        hh = h;
        h /= b;
    } while (h >= r);
    return x + hh + h - 1;
}

} // namespace

// ghalton(n, base, u): the n points of the Halton sequence of the base (an
// integer from 2) that follow the start u in [0, 1), as a column; with u 0
// they are the radical inverses of 1, 2, ..., n.
static void bi_ghalton(int n) {
    int64_t cnt, base;
    double u;
    if (!bi_getint(n, 0, 0, 2147483647, &cnt) || !bi_getint(n, 1, 2, 1000000000, &base) ||
        !bi_getreal(n, 2, &u))
        return;
    if (!(u >= 0 && u < 1)) return m_xeqerr(3300);
    MObj* r = bi_new(MT_REAL, cnt, 1);
    if (!r) return;
    double* y = m_rel(r);
    const uint64_t b = static_cast<uint64_t>(base);
    uint64_t k;
    if (halton_index(u, b, &k)) {
        for (int64_t i = 0; i < cnt; i++) y[i] = radinv(k + 1 + static_cast<uint64_t>(i), b);
    } else {
        double x = u;
        for (int64_t i = 0; i < cnt; i++) y[i] = x = halton_next(x, static_cast<double>(b));
    }
    bi_result(n, r);
}

// _ghk(x, V, U, p): p becomes the probability that a normal vector with
// mean 0 and variance V (d x d, positive definite) lies at or below x (d
// elements; a missing element is no bound) by the GHK simulator over the
// draws of U: one row a draw of at least d - 1 uniforms in (0, 1). Returns
// 0, or 506 when V is not positive definite (p then missing).
static void bi_ughk(int n) {
    MObj* x = bi_mat(n, 0);
    MObj* V = x ? bi_mat(n, 1) : nullptr;
    MObj* U = V ? bi_mat(n, 2) : nullptr;
    if (!U) return;
    x = bi_arg(n, 0), V = bi_arg(n, 1), U = bi_arg(n, 2);
    MObj* p = bi_any(n, 3);
    if (!p || !bi_real(x) || !bi_real(V) || !bi_real(U) || !bi_vector(x) || !bi_square(V)) return;
    const int d = static_cast<int>(m_nel(x));
    if (V->rows != d || (d > 1 && U->cols < d - 1)) return m_xeqerr(3200);
    const double* xv = m_rel(x);
    const double* vv = m_rel(V);
    const double* uv = m_rel(U);
    for (int64_t i = 0; i < m_nel(V); i++)
        if (vv[i] >= misval) return m_xeqerr(3351);
    const int R = U->rows;
    if (d > 1)
        for (int i = 0; i < R; i++)
            for (int j = 0; j < d - 1; j++) {
                const double w = uv[static_cast<int64_t>(i) * U->cols + j];
                if (!(w > 0 && w < 1)) return m_xeqerr(3300);
            }
    MObj* res = bi_new(MT_REAL, 1, 1);
    if (!res) return;
    // the lower Cholesky factor
    std::vector<double> L(static_cast<size_t>(d) * d, 0.0);
    int rc = 0;
    for (int j = 0; j < d && !rc; j++) {
        for (int i = j; i < d; i++) {
            double s = vv[static_cast<size_t>(i) * d + j];
            for (int k = 0; k < j; k++)
                s -= L[static_cast<size_t>(i) * d + k] * L[static_cast<size_t>(j) * d + k];
            if (i == j) {
                if (!(s > 0)) {
                    rc = 506;
                    break;
                }
                L[static_cast<size_t>(j) * d + j] = std::sqrt(s);
            } else {
                L[static_cast<size_t>(i) * d + j] = s / L[static_cast<size_t>(j) * d + j];
            }
        }
    }
    double prob = misval;
    if (!rc && d == 0) prob = 1;
    if (!rc && d > 0 && (R > 0 || d == 1)) {
        std::vector<double> e(static_cast<size_t>(d));
        const int draws = d == 1 ? 1 : R;
        double s = 0;
        for (int r = 0; r < draws; r++) {
            double pr = 1;
            for (int j = 0; j < d; j++) {
                double mu = 0;
                for (int k = 0; k < j; k++) mu += L[static_cast<size_t>(j) * d + k] * e[k];
                const double ljj = L[static_cast<size_t>(j) * d + j];
                const double c = xv[j] >= misval ? 1 : stnormal((xv[j] - mu) / ljj);
                pr *= c;
                if (j + 1 < d) {
                    const double w = uv[static_cast<int64_t>(r) * U->cols + j] * c;
                    e[j] = w > 0 ? inormal(w) : -40.0;
                }
            }
            s += pr;
        }
        prob = s / draws;
    }
    m_rel(res)[0] = prob;
    if (!bi_output(p, res)) return;
    bi_realres(n, rc);
}

void bi_link_sim(MBiFn* t) {
    t[bi_index("ghalton")] = bi_ghalton;
    t[bi_index("_ghk")] = bi_ughk;
}

} // namespace korvu
