// The non-central chi-squared, beta and F distributions, as Poisson mixtures
// of their central forms, and the bivariate normal distribution function.
//
// A mixture sum starts at the Poisson mode and walks both ways. In each
// direction the weights fall at least geometrically once past the mode, so the
// rest of the sum is bounded by the last term times rho / (1 - rho), where rho
// bounds the ratio of successive terms; the walk stops when that bound is
// below a part in 1e17 of the sum so far.
#include <cmath>

#include "data/area/missing.h"
#include "kernel/loop/brk.h"
#include "results/distrib/distrib.h"
#include "results/distrib/distrib_internal.h"

namespace korvu {

namespace {

constexpr double kTwoPi = 6.283185307179586477;
constexpr double kEps = 1e-17;
constexpr long kMaxTerms = 4000000;

bool bad(double x) {
    return !(x < misval) || std::isnan(x);
}

double poisw(double mu, double j) { // e^-mu mu^j / j!
    return std::exp(-mu + j * std::log(mu) - stlgma(j + 1));
}

// How the central terms v(j) behave, for the bound on the rest of the sum.
enum class Terms {
    falling, // a distribution function, decreasing in j and at most 1
    rising,  // its complement, increasing in j and at most 1
};

// sum over j of poisw(mu, j) v(j), for v one of the monotone kinds above.
template <class V> double mixture(double mu, Terms kind, V v) {
    if (mu == 0) return v(0.0);
    double j0 = std::floor(mu), sum = 0;
    long n = 0;
    for (double j = j0;; j++) { // upward from the mode
        double w = poisw(mu, j), t = v(j);
        if (t >= misval) return misval;
        sum += w * t;
        double rho = mu / (j + 1);
        if (rho < 1) {
            double rest = w * rho / (1 - rho) * (kind == Terms::falling ? t : 1);
            if (rest <= kEps * sum || w == 0) break;
        }
        if (++n > kMaxTerms || kvpollrare()) return misval;
    }
    for (double j = j0 - 1; j >= 0; j--) { // downward
        double w = poisw(mu, j), t = v(j);
        if (t >= misval) return misval;
        sum += w * t;
        double rho = j / mu;
        double rest = w * rho / (1 - rho) * (kind == Terms::rising ? t : 1);
        if (rest <= kEps * sum || w == 0) break;
        if (++n > kMaxTerms || kvpollrare()) return misval;
    }
    return sum;
}

// The non-central beta density as a mixture of central densities; the terms
// fall geometrically once the ratio bound of the two directions is below 1.
double nbetadens(double a, double b, double mu, double x) {
    auto t = [&](double j) { return betaden(a + j, b, x); };
    if (mu == 0) return t(0);
    double j0 = std::floor(mu), sum = 0;
    long n = 0;
    for (double j = j0;; j++) {
        double w = poisw(mu, j), v = t(j);
        if (v >= misval) return misval;
        sum += w * v;
        double rho = mu / (j + 1) * x * (a + b + j) / (a + j);
        if (rho < 1 && (w * v * rho / (1 - rho) <= kEps * sum || w == 0)) break;
        if (++n > kMaxTerms || kvpollrare()) return misval;
    }
    for (double j = j0 - 1; j >= 0; j--) {
        double w = poisw(mu, j), v = t(j);
        if (v >= misval) return misval;
        sum += w * v;
        double rho = j / mu * (a + j - 1) / ((a + b + j - 1) * x);
        if (rho < 1 && (w * v * rho / (1 - rho) <= kEps * sum || w == 0)) break;
        if (++n > kMaxTerms || kvpollrare()) return misval;
    }
    return sum;
}

double nibeta2(double a, double b, double nc, double x, double xc, bool upper) {
    double mu = nc / 2;
    if (upper) return mixture(mu, Terms::rising, [&](double j) { return ibeta2(b, a + j, xc, x); });
    return mixture(mu, Terms::falling, [&](double j) { return ibeta2(a + j, b, x, xc); });
}

double nchi2both(double df, double nc, double x, bool upper) {
    return mixture(nc / 2, upper ? Terms::rising : Terms::falling,
                   [&](double j) { return gamboth(df / 2 + j, x / 2, upper); });
}

// par: df, nc
double fw_nchi2_x(const double* par, double x) {
    return nchi2both(par[0], par[1], x, false);
}
// par: df, x; in the non-centrality, decreasing
double fw_nchi2_nc(const double* par, double nc) {
    return nchi2both(par[0], nc, par[1], false);
}
// par: a, b, nc
double fw_nibeta(const double* par, double x) {
    return nibeta2(par[0], par[1], par[2], x, 1 - x, false);
}
// par: n1, n2, nc
double fw_nftail(const double* par, double f) {
    return nFtail(par[0], par[1], par[2], f);
}

} // namespace

double nchi2(double df, double nc, double x) {
    if (bad(df) || bad(nc) || bad(x) || df <= 0 || nc < 0) return misval;
    if (x <= 0) return 0;
    return nchi2both(df, nc, x, false);
}

double invnchi2(double df, double nc, double p) {
    if (bad(df) || bad(nc) || bad(p) || df <= 0 || nc < 0 || p < 0 || p >= 1) return misval;
    if (p == 0) return 0;
    double par[2] = {df, nc};
    Fwd F{fw_nchi2_x, par, false};
    return bisect(F, p, 0, df + nc + 1, true, 1e-6, 1e-15);
}

double npnchi2(double df, double x, double p) {
    if (bad(df) || bad(x) || bad(p) || df <= 0 || x < 0 || p <= 0 || p >= 1) return misval;
    double p0 = chi2cumm(df, x); // the largest value any non-centrality reaches
    if (p0 >= misval || p > p0) return misval;
    if (p == p0) return 0;
    double par[2] = {df, x};
    Fwd F{fw_nchi2_nc, par, true};
    return bisect(F, p, 0, x + 10, true, 1e-6, 1e-15);
}

double nibeta(double a, double b, double nc, double x) {
    if (bad(a) || bad(b) || bad(nc) || bad(x) || a <= 0 || b <= 0 || nc < 0) return misval;
    if (x < 0 || x > 1) return misval;
    if (x == 0) return 0;
    if (x == 1) return 1;
    return nibeta2(a, b, nc, x, 1 - x, false);
}

double invnibeta(double a, double b, double nc, double p) {
    if (bad(a) || bad(b) || bad(nc) || bad(p) || a <= 0 || b <= 0 || nc < 0 || p < 0 || p > 1)
        return misval;
    if (p == 0) return 0;
    if (p == 1) return 1;
    double par[3] = {a, b, nc};
    Fwd F{fw_nibeta, par, false};
    return bisect(F, p, 0, 1, false, 1e-6, 1e-15);
}

double nbetaden(double a, double b, double nc, double x) {
    if (bad(a) || bad(b) || bad(nc) || bad(x) || a <= 0 || b <= 0 || nc < 0) return misval;
    if (x < 0 || x > 1) return misval;
    return nbetadens(a, b, nc / 2, x);
}

double nFden(double n1, double n2, double nc, double f) {
    if (bad(n1) || bad(n2) || bad(nc) || bad(f) || n1 <= 0 || n2 <= 0 || nc < 0 || f < 0)
        return misval;
    if (nc == 0) return fden(n1, n2, f);
    if (f == 0) return n1 < 2 ? misval : n1 == 2 ? std::exp(-nc / 2) : 0;
    double d = n2 + n1 * f;
    if (std::isinf(d)) return 0;
    // the density of n1 f / d is the non-central beta's; dx/df = n1 n2 / d^2
    double b = nbetadens(n1 / 2, n2 / 2, nc / 2, n1 * f / d);
    return b >= misval ? misval : b * n1 * n2 / (d * d);
}

double nFtail(double n1, double n2, double nc, double f) {
    if (bad(n1) || bad(n2) || bad(nc) || bad(f) || n1 <= 0 || n2 <= 0 || nc < 0) return misval;
    if (f <= 0) return 1;
    double d = n2 + n1 * f;
    if (std::isinf(d)) return 0;
    return nibeta2(n1 / 2, n2 / 2, nc, n1 * f / d, n2 / d, true);
}

double invnFtail(double n1, double n2, double nc, double p) {
    if (bad(n1) || bad(n2) || bad(nc) || bad(p) || n1 <= 0 || n2 <= 0 || nc < 0 || p <= 0 || p > 1)
        return misval;
    if (p == 1) return 0;
    double par[3] = {n1, n2, nc};
    Fwd F{fw_nftail, par, true};
    return bisect(F, p, 0, 10 + nc, true, 1e-6, 1e-15);
}

// ---- the bivariate normal ----------------------------------------------------------

namespace {

// Gauss-Legendre nodes and weights on [-1, 1] for n points, found once by
// Newton's method on the Legendre polynomial.
struct GaussLegendre {
    double x[20], w[20];
    int n;
};

GaussLegendre makegl(int n) {
    GaussLegendre g{};
    g.n = n;
    for (int i = 0; i < n; i++) {
        double z = std::cos(3.14159265358979323846 * (i + 0.75) / (n + 0.5)), dp = 0;
        for (int it = 0; it < 100; it++) {
            double p0 = 1, p1 = 0;
            for (int k = 1; k <= n; k++) {
                double p2 = p1;
                p1 = p0;
                p0 = ((2 * k - 1) * z * p1 - (k - 1) * p2) / k;
            }
            dp = n * (z * p0 - p1) / (z * z - 1);
            double dz = p0 / dp;
            z -= dz;
            if (std::fabs(dz) < 1e-17) break;
        }
        g.x[i] = z;
        g.w[i] = 2 / ((1 - z * z) * dp * dp);
    }
    return g;
}

const GaussLegendre& rule(double r) {
    static const GaussLegendre g6 = makegl(6), g12 = makegl(12), g20 = makegl(20);
    r = std::fabs(r);
    return r < 0.3 ? g6 : r < 0.75 ? g12 : g20;
}

// P(X > h, Y > k) for standard normals with correlation r: for moderate r
// the integral over the correlation of the density (Plackett's identity),
// and for |r| near 1 the integral in the form that keeps its accuracy there,
// both by Gauss-Legendre quadrature.
double bvnupper(double h, double k, double r) {
    const GaussLegendre& g = rule(r);
    double hk = h * k, bvn = 0;
    if (std::fabs(r) < 0.925) {
        double hs = (h * h + k * k) / 2, asr = std::asin(r);
        for (int i = 0; i < g.n; i++) {
            double sn = std::sin(asr * (g.x[i] + 1) / 2);
            bvn += g.w[i] * std::exp((sn * hk - hs) / (1 - sn * sn));
        }
        return bvn * asr / (2 * kTwoPi) + stnormal(-h) * stnormal(-k);
    }
    if (r < 0) {
        k = -k;
        hk = -hk;
    }
    if (std::fabs(r) < 1) {
        double as = (1 - r) * (1 + r), a = std::sqrt(as), bs = (h - k) * (h - k);
        double c = (4 - hk) / 8, d = (12 - hk) / 16;
        bvn = a * std::exp(-(bs / as + hk) / 2) *
              (1 - c * (bs - as) * (1 - d * bs / 5) / 3 + c * d * as * as / 5);
        if (hk > -160) {
            double b = std::sqrt(bs);
            bvn -= std::exp(-hk / 2) * std::sqrt(kTwoPi) * stnormal(-b / a) * b *
                   (1 - c * bs * (1 - d * bs / 5) / 3);
        }
        a /= 2;
        for (int i = 0; i < g.n; i++) {
            double xs = a * (g.x[i] + 1);
            xs *= xs;
            double rs = std::sqrt(1 - xs), asr = -(bs / xs + hk) / 2;
            if (asr > -100)
                bvn += a * g.w[i] * std::exp(asr) *
                       (std::exp(-hk * xs / (2 * (1 + rs) * (1 + rs))) / rs -
                        (1 + c * xs * (1 + d * xs)));
        }
        bvn = -bvn / kTwoPi;
    }
    if (r > 0) return bvn + stnormal(-std::fmax(h, k));
    bvn = -bvn;
    if (k > h) bvn += h < 0 ? stnormal(k) - stnormal(h) : stnormal(-h) - stnormal(-k);
    return bvn;
}

} // namespace

double binormal(double h, double k, double r) {
    if (bad(h) || bad(k) || bad(r) || r < -1 || r > 1) return misval;
    double v = bvnupper(-h, -k, r);
    return v < 0 ? 0 : v > 1 ? 1 : v;
}

} // namespace korvu
