// Elementary functions, element by element over real matrices.
#include <cfloat>
#include <cmath>

#include "lumo/builtins/bi.h"
#include "results/distrib/distrib.h"
#include "results/rng/rng.h"

namespace korvu {

static void bi_abs(int n) {
    bi_map1(n, [](double x) { return std::fabs(x); });
}
static void bi_ln(int n) {
    bi_map1(n, [](double x) { return std::log(x); });
}
static void bi_exp(int n) {
    bi_map1(n, [](double x) { return std::exp(x); });
}
static void bi_sqrt(int n) {
    bi_map1(n, [](double x) { return std::sqrt(x); });
}
static void bi_sin(int n) {
    bi_map1(n, [](double x) { return std::sin(x); });
}
static void bi_cos(int n) {
    bi_map1(n, [](double x) { return std::cos(x); });
}
static void bi_tan(int n) {
    bi_map1(n, [](double x) { return std::tan(x); });
}
static void bi_asinr(int n) {
    bi_map1(n, [](double x) { return std::asin(x); });
}
static void bi_acosr(int n) {
    bi_map1(n, [](double x) { return std::acos(x); });
}
static void bi_atanr(int n) {
    bi_map1(n, [](double x) { return std::atan(x); });
}
static void bi_atan2(int n) {
    bi_mapn(n, 2, [](const double* v) { return std::atan2(v[0], v[1]); });
}
static void bi_lngamma(int n) {
    bi_map1(n, [](double x) { return x <= 0 && x == std::floor(x) ? misval : stlgma(x); });
}
static void bi_factorial(int n) {
    bi_map1(n, [](double x) {
        if (x < 0 || x != std::floor(x)) return misval;
        return std::round(std::exp(stlgma(x + 1)));
    });
}
static void bi_lnfactorial(int n) {
    bi_map1(n, [](double x) { return x < 0 || x != std::floor(x) ? misval : stlgma(x + 1); });
}
static void bi_trunc(int n) {
    bi_map1(n, [](double x) { return std::trunc(x); });
}
static void bi_floor(int n) {
    bi_map1(n, [](double x) { return std::floor(x); });
}
static void bi_ceil(int n) {
    bi_map1(n, [](double x) { return std::ceil(x); });
}
// round(x) to the integer, halves away from zero; round(x, u) to units of u.
static void bi_round(int n) {
    if (n == 1) return bi_map1(n, [](double x) { return std::round(x); });
    bi_mapn(n, 2, [](const double* v) {
        const double u = v[1];
        if (u == 0) return v[0];
        return std::round(v[0] / u) * u;
    });
}
// mod(x, y): x - y * floor(x / y); y 0 gives missing.
static void bi_mod(int n) {
    bi_mapn(n, 2, [](const double* v) {
        if (v[1] == 0) return misval;
        return v[0] - v[1] * std::floor(v[0] / v[1]);
    });
}
// uniform(r, c): uniform draws on (0, 1) from the main generator.
static void bi_uniform(int n) {
    int64_t r, c;
    if (!bi_getint(n, 0, 0, 2147483647, &r) || !bi_getint(n, 1, 0, 2147483647, &c)) return;
    MObj* o = bi_new(MT_REAL, r, c);
    if (!o) return;
    for (int64_t i = 0; i < m_nel(o); i++) m_rel(o)[i] = urnuni();
    bi_result(n, o);
}
static void bi_comb(int n) {
    bi_mapn(n, 2, [](const double* v) {
        const double N = v[0], k = v[1];
        if (N != std::floor(N) || k != std::floor(k) || N < 0) return misval;
        if (k < 0 || k > N) return 0.0;
        return std::round(std::exp(stlgma(N + 1) - stlgma(k + 1) - stlgma(N - k + 1)));
    });
}
static void bi_digamma(int n) {
    bi_map1(n, [](double x) { return x <= 0 && x == std::floor(x) ? misval : digamma(x); });
}
static void bi_trigamma(int n) {
    bi_map1(n, [](double x) { return x <= 0 && x == std::floor(x) ? misval : trigamma(x); });
}
// reldif(x, y) = |x - y| / (|y| + 1), with equal missing values 0.
static void bi_reldif(int n) {
    bi_mapn(
        n, 2,
        [](const double* v) {
            if (v[0] >= misval || v[1] >= misval) return v[0] == v[1] ? 0.0 : misval;
            return std::fabs(v[0] - v[1]) / (std::fabs(v[1]) + 1);
        },
        true);
}
// mreldif(X, Y): the greatest relative difference of the elements.
static void bi_mreldif(int n) {
    MObj* x = bi_mat(n, 0);
    MObj* y = bi_mat(n, 1);
    if (!x || !y || !bi_real(x) || !bi_real(y)) return;
    if (x->rows != y->rows || x->cols != y->cols) return m_xeqerr(3200);
    double m = 0;
    for (int64_t i = 0; i < m_nel(x); i++) {
        const double a = m_rel(x)[i], b = m_rel(y)[i];
        double d;
        if (a >= misval || b >= misval)
            d = a == b ? 0 : misval;
        else
            d = std::fabs(a - b) / (std::fabs(b) + 1);
        if (d > m) m = d;
    }
    bi_realres(n, m);
}
// mreldifsym(X): between X and its transpose.
static void bi_mreldifsym(int n) {
    MObj* x = bi_mat(n, 0);
    if (!x || !bi_real(x) || !bi_square(x)) return;
    double m = 0;
    const int64_t N = x->rows;
    for (int64_t i = 0; i < N; i++)
        for (int64_t j = 0; j < N; j++) {
            const double a = m_rel(x)[i * N + j], b = m_rel(x)[j * N + i];
            const double d = a >= misval || b >= misval ? (a == b ? 0 : misval)
                                                        : std::fabs(a - b) / (std::fabs(b) + 1);
            if (d > m) m = d;
        }
    bi_realres(n, m);
}

void bi_link_elem(MBiFn* t) {
    t[bi_index("abs")] = bi_abs;
    t[bi_index("exp")] = bi_exp;
    t[bi_index("ln")] = bi_ln;
    t[bi_index("sqrt")] = bi_sqrt;
    t[bi_index("sin")] = bi_sin;
    t[bi_index("cos")] = bi_cos;
    t[bi_index("tan")] = bi_tan;
    t[bi_index("asinr")] = bi_asinr;
    t[bi_index("acosr")] = bi_acosr;
    t[bi_index("atanr")] = bi_atanr;
    t[bi_index("atan2")] = bi_atan2;
    t[bi_index("lngamma")] = bi_lngamma;
    t[bi_index("factorial")] = bi_factorial;
    t[bi_index("lnfactorial")] = bi_lnfactorial;
    t[bi_index("trunc")] = bi_trunc;
    t[bi_index("round")] = bi_round;
    t[bi_index("floor")] = bi_floor;
    t[bi_index("ceil")] = bi_ceil;
    t[bi_index("mod")] = bi_mod;
    t[bi_index("comb")] = bi_comb;
    t[bi_index("uniform")] = bi_uniform;
    t[bi_index("digamma")] = bi_digamma;
    t[bi_index("trigamma")] = bi_trigamma;
    t[bi_index("reldif")] = bi_reldif;
    t[bi_index("mreldif")] = bi_mreldif;
    t[bi_index("mreldifsym")] = bi_mreldifsym;
}

} // namespace korvu
