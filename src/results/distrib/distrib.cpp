// Distribution functions: log gamma and its derivatives, the incomplete gamma
// and beta functions, the normal, chi-squared, t and F distributions and
// their inverses. Every function answers `.` for what it cannot compute.
#include "results/distrib/distrib.h"
#include "results/distrib/distrib_internal.h"

#include <cmath>

#include "data/area/missing.h"
#include "kernel/loop/brk.h"

namespace korvu {

int sgngam = 1;

namespace {

constexpr double kZminlong = -2147483647.0;
constexpr double kEuler = 0.57721566490153286061;
constexpr double kLnSqrt2Pi = 0.91893853320467274178;
constexpr double kSqrt2Pi = 2.5066282746310007; // square root of 2 pi
constexpr double kLnPi = 1.1447298858494001741;
constexpr double kPi = 3.14159265358979323846;
constexpr double kMachEp = 1.1102230246251565e-16;
constexpr double kMaxLog = 709.782712893384;
constexpr double kMinLog = -708.3964185322641;
constexpr int kCoreIter = 200000; // longest run of a core before it gives up

bool bad(double x) {
    return !(x < misval) || std::isnan(x);
}

// zeta(k) - 1 for k = 2, 3, ...: the coefficients of the series of log gamma,
// digamma and trigamma about 2.
constexpr double kZm1[] = {
    0.64493406684822643647,    0.2020569031595942854,     0.082323233711138191516,
    0.036927755143369926331,   0.017343061984449139715,   0.0083492773819228268398,
    0.0040773561979443393787,  0.0020083928260822144179,  0.00099457512781808533715,
    0.0004941886041194645587,  0.00024608655330804829864, 0.00012271334757848914675,
    6.1248135058704829259e-5,  3.0588236307020493552e-5,  1.5282259408651871733e-5,
    7.6371976378997622736e-6,  3.8172932649998398565e-6,  1.9082127165539389257e-6,
    9.5396203387279611315e-7,  4.7693298678780646312e-7,  2.3845050272773299e-7,
    1.1921992596531107307e-7,  5.9608189051259479612e-8,  2.9803503514652280186e-8,
    1.4901554828365041235e-8,  7.450711789835429492e-9,   3.7253340247884570548e-9,
    1.8626597235130490064e-9,  9.3132743241966818287e-10, 4.656629065033784073e-10,
    2.328311833676505492e-10,  1.1641550172700519776e-10, 5.8207720879027008892e-11,
    2.9103850444970996869e-11, 1.4551921891041984236e-11, 7.2759598350574810145e-12,
    3.6379795473786511902e-12, 1.8189896503070659476e-12, 9.0949478402638892825e-13,
    4.5474737830421540268e-13, 2.2737368458246525152e-13, 1.1368684076802278493e-13,
    5.6843419876275856093e-14, 2.8421709768893018555e-14, 1.421085482803160677e-14,
    7.1054273952108527129e-15, 3.5527136913371136733e-15, 1.7763568435791203275e-15,
    8.8817842109308159031e-16, 4.4408921031438133642e-16, 2.220446050798041984e-16,
    1.1102230251410661337e-16, 5.5511151248454812437e-17, 2.7755575621361241726e-17,
    1.3877787809725232763e-17, 6.9388939045441536974e-18, 3.4694469521659226247e-18,
    1.734723476047576572e-18,  8.6736173801199337283e-19, 4.3368086900206504875e-19,
    2.168404344997219785e-19,  1.0842021724942414063e-19};
constexpr int kNzm1 = sizeof kZm1 / sizeof kZm1[0];

// log gamma(2 + z) for |z| <= 0.5: (1 - euler) z + sum (-1)^k (zeta(k) - 1) z^k / k.
double lgam2(double z) {
    double s = 0;
    for (int k = 31; k >= 2; k--) s = s * z + ((k & 1) ? -kZm1[k - 2] : kZm1[k - 2]) / k;
    return z * ((1 - kEuler) + z * s);
}

// Stirling's correction: log gamma(x) - ((x - 0.5) log x - x + log sqrt(2 pi)), x >= 10.
double stirlcor(double x) {
    static constexpr double c[] = {1.0 / 12,    -1.0 / 360,       1.0 / 1260,
                                   -1.0 / 1680, 1.0 / 1188,       -691.0 / 360360,
                                   1.0 / 156,   -3617.0 / 122400, 43867.0 / 244188};
    double r = 1 / (x * x), s = 0;
    for (int k = 8; k >= 0; k--) s = s * r + c[k];
    return s / x;
}

// log(1 + t) - t without cancellation, t > -1.
double log1pmx(double t) {
    if (std::fabs(t) > 0.5) return std::log1p(t) - t;
    double y = t / (2 + t), y2 = y * y, s = 0;
    for (int k = 41; k >= 3; k -= 2) s = s * y2 + 1.0 / k;
    return -t * t / (2 + t) + 2 * y * y2 * s;
}

// gamma(x) for 0 < x < 171.6 by the same series and a product of factors.
double stgamma(double x) {
    double p = 1;
    while (x >= 2.5) x -= 1, p *= x;
    while (x < 1.5) p /= x, x += 1;
    return p * std::exp(lgam2(x - 2));
}

// log of gamma(a + b) / gamma(a) for a >= 10 and b >= 0.
double lgratio(double a, double b) {
    return (a - 0.5) * std::log1p(b / a) + b * std::log(a + b) - b + stirlcor(a + b) - stirlcor(a);
}

} // namespace

// ---- log gamma and its derivatives -----------------------------------------------

double stlgma(double x) {
    sgngam = 1;
    if (bad(x) || x < kZminlong) return misval;
    if (x == 1 || x == 2) return 0;
    if (x < -34) {
        double q = -x, p = std::floor(q);
        if (p == q) return misval;
        sgngam = (static_cast<long long>(std::fmod(p, 2)) == 0) ? -1 : 1;
        double z = q - p;
        if (z > 0.5) z = p + 1 - q;
        z = q * std::sin(kPi * z);
        if (z == 0) return misval;
        double r = kLnPi - std::log(std::fabs(z)) - stlgma(q);
        sgngam = (static_cast<long long>(std::fmod(p, 2)) == 0) ? -1 : 1;
        return r;
    }
    if (x < 13) {
        if (x <= 0 && x == std::floor(x)) return misval;
        if (x >= 0.5 && x < 1.5) return lgam2(x - 1) - std::log1p(x - 1); // x - 1 is exact
        double p = 1;
        while (x >= 2.5) x -= 1, p *= x;
        while (x < 1.5) p /= x, x += 1;
        if (p < 0) sgngam = -1, p = -p;
        return lgam2(x - 2) + std::log(p);
    }
    if (x > 2.556348e+305) return misval;
    return (x - 0.5) * std::log(x) - x + kLnSqrt2Pi + stirlcor(x);
}

double digamma(double x) {
    if (bad(x)) return misval;
    if (x <= 0 && x == std::floor(x)) return misval;
    if (std::fabs(x) < 0.001) // the series at 0
        return -1 / x - 0.57721566490153286 +
               x * (1.6449340668482264 - x * (1.2020569031595943 - x * 1.0823232337111382));
    if (x < 0) { // reflection, with the cotangent of a reduced argument
        double r = x - std::floor(x);
        return digamma(1 - x) - kPi / std::tan(kPi * r);
    }
    double acc = 0;
    if (x < 1) acc -= 1 / x, x += 1;
    if (x <= 2.5) { // the series about 2
        double z = x - 2, s = 0;
        for (int k = kNzm1 + 1; k >= 2; k--) s = s * z + ((k & 1) ? -kZm1[k - 2] : kZm1[k - 2]);
        return acc + (1 - kEuler) + z * s;
    }
    while (x < 10) acc -= 1 / x, x += 1;
    static constexpr double c[] = {1.0 / 12,   -1.0 / 120,     1.0 / 252,
                                   -1.0 / 240, 1.0 / 132,      -691.0 / 32760,
                                   1.0 / 12,   -3617.0 / 8160, 43867.0 / 14364};
    double r = 1 / (x * x), s = 0;
    for (int k = 8; k >= 0; k--) s = s * r + c[k];
    return acc + std::log(x) - 0.5 / x - s * r;
}

double trigamma(double x) {
    if (bad(x)) return misval;
    if (x <= 0 && x == std::floor(x)) return misval;
    if (x < 0) {
        double s = std::sin(kPi * (x - std::floor(x)));
        return kPi * kPi / (s * s) - trigamma(1 - x);
    }
    double acc = 0;
    while (x < 10) acc += 1 / (x * x), x += 1;
    static constexpr double c[] = {1.0 / 6,       -1.0 / 30, 1.0 / 42,      -1.0 / 30,    5.0 / 66,
                                   -691.0 / 2730, 7.0 / 6,   -3617.0 / 510, 43867.0 / 798};
    double r = 1 / (x * x), s = 0;
    for (int k = 8; k >= 0; k--) s = s * r + c[k];
    return acc + 1 / x + 0.5 * r + s * r / x;
}

// ---- incomplete gamma ---------------------------------------------------------

namespace {

// x^a e^-x / gamma(a + 1), or `.` when it cannot be formed.
double gamfac(double a, double x) {
    double t = (x - a) / a;
    if (a >= 10 && t > -0.5) {
        double e = a * log1pmx(t) - stirlcor(a);
        if (e < kMinLog) return 0;
        return std::exp(e) / std::sqrt(2 * kPi * a);
    }
    double lg = stlgma(a + 1);
    if (lg >= misval) return misval;
    double e = a * std::log(x) - x - lg;
    if (e < kMinLog) return 0;
    if (e > kMaxLog) return misval;
    return std::exp(e);
}

// Series core: P(a, x) = fac * sum x^n / ((a + 1) ... (a + n)).
double gamser(double a, double x) {
    double fac = gamfac(a, x);
    if (fac >= misval) return misval;
    if (fac == 0) return 0;
    double term = 1, sum = 1;
    for (int n = 1; n < kCoreIter; n++) {
        term *= x / (a + n);
        sum += term;
        if (term <= sum * 1e-17) return fac * sum;
        if (kvpollrare()) return misval;
    }
    return misval;
}

// Continued-fraction core: Q(a, x) = 1 - P(a, x), by the modified Lentz method.
double gamcf(double a, double x) {
    double fac = gamfac(a, x);
    if (fac >= misval) return misval;
    if (fac == 0) return 0;
    const double tiny = 1e-300;
    double b = x + 1 - a, c = 1 / tiny, d = 1 / b, h = d;
    for (int n = 1; n < kCoreIter; n++) {
        double an = -n * (n - a);
        b += 2;
        d = an * d + b;
        if (std::fabs(d) < tiny) d = tiny;
        c = b + an / c;
        if (std::fabs(c) < tiny) c = tiny;
        d = 1 / d;
        double del = d * c;
        h *= del;
        if (std::fabs(del - 1) < 1e-16) return fac * a * h;
        if (kvpollrare()) return misval;
    }
    return misval;
}

} // namespace

// P (upper false) or Q (upper true), with the normal approximation for very
// large arguments.
double gamboth(double a, double x, bool upper) {
    if (bad(a) || bad(x) || a <= 0 || x < 0) return misval;
    if (x == 0) return upper ? 1 : 0;
    double r = misval;
    if (!(a > 1e13 && x > 1e13)) {
        if (stlgma(a) >= misval) return misval;
        if (x < a + 1 || x < 1) {
            r = gamser(a, x);
            if (upper && r < misval) r = 1 - r;
        } else {
            r = gamcf(a, x);
            if (!upper && r < misval) r = 1 - r;
        }
    }
    if (r >= misval && a > 1000 && x > 1000 && !stopflag) {
        double z = 3 * std::sqrt(a) * (std::pow(x / a, 0.3333333333333333) - (1 - 1 / (9 * a)));
        r = stnormal(upper ? -z : z);
    }
    return r;
}

namespace {

// d/da of P by the series: sum over n of x^(a+n) e^-x / gamma(a+n+1) times
// (log x - digamma(a+n+1)); with second = true the second derivative.
double gamser_da(double a, double x, bool second) {
    double lx = std::log(x);
    double fac = gamfac(a, x);
    if (fac >= misval) return misval;
    double term = fac, s = 0;
    double ps = digamma(a + 1), tg = trigamma(a + 1);
    for (int n = 0; n < kCoreIter; n++) {
        double u = lx - ps;
        double add = second ? term * (u * u - tg) : term * u;
        s += add;
        if (n > x - a && (term == 0 || term * (u * u + std::fabs(u) + std::fabs(tg) + 1) <=
                                           std::fabs(s) * 1e-17))
            return s;
        double an = a + n + 1;
        term *= x / an;
        ps += 1 / an;
        tg -= 1 / (an * an);
        if (kvpollrare()) return misval;
    }
    return misval;
}

// A value with its first and second derivatives in a.
struct Dual2 {
    double v, d, dd;
};
Dual2 operator+(Dual2 f, Dual2 g) {
    return {f.v + g.v, f.d + g.d, f.dd + g.dd};
}
Dual2 operator*(Dual2 f, Dual2 g) {
    return {f.v * g.v, f.d * g.v + f.v * g.d, f.dd * g.v + 2 * f.d * g.d + f.v * g.dd};
}
Dual2 recip(Dual2 g) {
    double r = 1 / g.v;
    return {r, -g.d * r * r, (2 * g.d * g.d - g.v * g.dd) * r * r * r};
}

// d/da (second false) or d2/da2 of P in the upper region, from the upper
// tail: Q = e^-x x^a h / gamma(a) with h the continued fraction of gamcf,
// carried with its derivatives in a, so that the small derivatives of a P
// near 1 keep their digits.
double gamcf_da(double a, double x, bool second) {
    double q = gamcf(a, x);
    if (q >= misval) return misval;
    if (q == 0) return 0;
    const double tiny = 1e-300;
    Dual2 b{x + 1 - a, -1, 0};
    Dual2 c{1 / tiny, 0, 0};
    Dual2 d = recip(b), h = d;
    for (int n = 1; n < kCoreIter; n++) {
        Dual2 an{-n * (n - a), static_cast<double>(n), 0};
        b.v += 2;
        d = an * d + b;
        if (std::fabs(d.v) < tiny) d = {tiny, 0, 0};
        c = b + an * recip(c);
        if (std::fabs(c.v) < tiny) c = {tiny, 0, 0};
        d = recip(d);
        Dual2 del = d * c;
        h = h * del;
        if (std::fabs(del.v - 1) < 1e-16 &&
            std::fabs(del.d) <= 1e-16 * std::fabs(h.d / h.v) + 1e-300)
            break;
        if (kvpollrare()) return misval;
    }
    double l1 = std::log(x) + h.d / h.v - digamma(a);
    if (!second) return -q * l1;
    double l2 = h.dd / h.v - (h.d / h.v) * (h.d / h.v) - trigamma(a);
    return -q * (l2 + l1 * l1);
}

} // namespace

double gammap(double a, double x) {
    return gamboth(a, x, false);
}

// Modes: 1 d/dx, 2 d/da, 3 d2/da2, 4 d2/dadx, 5 the value, 6 d2/dx2.
double gammap_mode(double a, double x, int mode) {
    if (mode == 5) return gammap(a, x);
    if (bad(a) || bad(x) || a <= 0 || x < 0) return misval;
    if (mode == 2 || mode == 3) {
        if (x == 0) return 0;
        if (x >= a + 1 && x >= 1) return gamcf_da(a, x, mode == 3);
        return gamser_da(a, x, mode == 3);
    }
    // the density x^(a-1) e^-x / gamma(a) and its derivatives
    if (x == 0) {
        if (mode == 1) return a == 1 ? 1 : a > 1 ? 0 : misval;
        return misval;
    }
    double lg = stlgma(a);
    if (lg >= misval) return misval;
    double den = a >= 10 ? gamfac(a, x) * a / x : std::exp((a - 1) * std::log(x) - x - lg);
    switch (mode) {
    case 1: return den;
    case 4: return den * (std::log(x) - digamma(a));
    case 6: return den * ((a - 1) / x - 1);
    default: return misval;
    }
}
double gammap_dx(double a, double x) {
    return gammap_mode(a, x, 1);
}
double gammap_da(double a, double x) {
    return gammap_mode(a, x, 2);
}
double gammap_dada(double a, double x) {
    return gammap_mode(a, x, 3);
}
double gammap_dadx(double a, double x) {
    return gammap_mode(a, x, 4);
}
double gammap_dxdx(double a, double x) {
    return gammap_mode(a, x, 6);
}

// ---- inverses by bisection -----------------------------------------------------

// The shared bisection: bracket (unless fixed), a coarse phase to |F - p| <=
// tol, then up to 59 halvings until the midpoint moves by no more than rel of
// itself.
double bisect(const Fwd& F, double p, double lo, double hi, bool bracket, double tol, double rel) {
    auto wrong = [&](double v) { return F.tail ? v > p : v < p; };
    if (bracket) {
        for (;;) {
            double v = F.f(F.par, hi);
            if (v >= misval || stopflag) return misval;
            if (!wrong(v)) break;
            lo = hi, hi *= 2;
            if (hi > 1e300) return misval;
            kvpollrare();
        }
    }
    double mid = (lo + hi) / 2, d = 0;
    for (int n = 0;; n++) {
        if (n > 100) return misval;
        mid = (lo + hi) / 2;
        double v = F.f(F.par, mid);
        if (v >= misval || kvpollrare()) return misval;
        d = v - p;
        if (std::fabs(d) <= tol) break;
        if ((d < 0) != F.tail)
            lo = mid;
        else
            hi = mid;
    }
    // 59 halvings reach the tolerance from any bracket the coarse phase
    // leaves, except where the root lies many binary orders below it (a tiny
    // p); there the halving goes on until the tolerance is met.
    for (int n = 0; n < 1100; n++) {
        if (d == 0) break;
        if ((d < 0) != F.tail)
            lo = mid;
        else
            hi = mid;
        double next = (lo + hi) / 2;
        bool done = std::fabs(next - mid) <= mid * rel;
        mid = next;
        if (done) break;
        double v = F.f(F.par, mid);
        if (v >= misval || kvpollrare()) return misval;
        d = v - p;
    }
    return mid;
}

namespace {

double fw_gammap(const double* par, double x) {
    return gamboth(par[0], x, false);
}
double fw_gammaq(const double* par, double x) {
    return gamboth(par[0], x, true);
}
double fw_ftail(const double* par, double x) {
    return ftail(par[0], par[1], x);
}
double fw_fcumm(const double* par, double x) {
    return fcumm(par[0], par[1], x);
}
double fw_ibeta(const double* par, double x) {
    return ibeta(par[0], par[1], x);
}
double fw_biprob(const double* par, double x) {
    return biprob(par[0], par[1], x);
}

// Inverse of the upper tail Q(a, x) in x.
double invgammaq(double a, double q) {
    if (bad(a) || bad(q) || a <= 0 || q <= 0 || q > 1) return misval;
    if (q == 1) return 0;
    Fwd F{fw_gammaq, &a, true};
    return bisect(F, q, 0, 500, true, 1e-7, 1e-14);
}

} // namespace

double invgammap(double a, double p) {
    if (bad(a) || bad(p) || a <= 0 || p < 0 || p >= 1) return misval;
    if (p == 0) return 0;
    Fwd F{fw_gammap, &a, false};
    return bisect(F, p, 0, 500, true, 1e-7, 1e-14);
}

// ---- chi-squared ----------------------------------------------------------------

double chi2cumm(double df, double x) {
    if (bad(df) || bad(x) || df <= 0) return misval;
    if (x < 0) return 0;
    return gamboth(df / 2, x / 2, false);
}
double chi2tail(double df, double x) {
    if (bad(df) || bad(x) || df <= 0) return misval;
    if (x < 0) return 1;
    return gamboth(df / 2, x / 2, true);
}
double invchi2cumm(double df, double p) {
    if (bad(df) || df <= 0) return misval;
    double r = invgammap(df / 2, p);
    return r >= misval ? misval : 2 * r;
}
// The tail form bisects on the upper tail itself, so that small p keep their
// digits (1 - p would lose them).
double invchi2tail(double df, double p) {
    if (bad(df) || df <= 0) return misval;
    double r = invgammaq(df / 2, p);
    return r >= misval ? misval : 2 * r;
}

// ---- incomplete beta -----------------------------------------------------------

namespace {

// x^a (1-x)^b / beta(a, b), with xc = 1 - x given to full precision; with
// withb false the factor (1-x)^b is left out. Each power is taken from the
// smaller of x and xc, so that a value near 1 keeps its digits.
double betafac(double a, double b, double x, double xc, bool withb = true) {
    double lx = x < 0.5 ? std::log(x) : std::log1p(-xc);
    double lxc = xc < 0.5 ? std::log(xc) : std::log1p(-x);
    double t1 = a * lx, t2 = b * lxc;
    if (a + b < 171.5 && t1 > kMinLog && t2 > kMinLog && t1 < kMaxLog && t2 < kMaxLog) {
        double g = stgamma(a + b) / (stgamma(a) * stgamma(b));
        double px = x < 0.5 ? std::pow(x, a) : std::exp(t1);
        double pxc = !withb ? 1 : xc < 0.5 ? std::pow(xc, b) : std::exp(t2);
        return px * pxc * g;
    }
    double e;
    if (a >= 10 && b >= 10) {
        // (x (a+b)/a)^a ((1-x)(a+b)/b)^b sqrt(ab / (2 pi (a+b))) exp(corrections)
        double s = a + b, dd = x * s - a;
        e = a * log1pmx(dd / a) + b * log1pmx(-dd / b) + stirlcor(s) - stirlcor(a) - stirlcor(b) +
            0.5 * std::log(a * b / (2 * kPi * s));
    } else if (a >= 10 || b >= 10) { // one large: gamma(a+b)/gamma(a) from its own series
        double big = a >= 10 ? a : b, small = a >= 10 ? b : a;
        double lgs = stlgma(small);
        if (lgs >= misval) return misval;
        e = t1 + t2 + lgratio(big, small) - lgs;
    } else {
        e = t1 + t2 + stlgma(a + b) - stlgma(a) - stlgma(b);
    }
    if (!withb) e -= t2;
    if (e < kMinLog) return 0;
    if (e > kMaxLog) return misval;
    return std::exp(e);
}

// Power series: I_x(a, b) = x^a / (a B(a,b)) sum (1-b)_n x^n / (n! (a + n)) * a.
double bpser(double a, double b, double x, double xc) {
    double fac = betafac(a, b, x, xc, false); // the series carries x^a alone
    if (fac >= misval) return misval;
    if (fac == 0) return 0;
    double t = 1, s = 1 / a;
    for (int n = 1; n < kCoreIter; n++) {
        t *= (n - b) * x / n;
        double add = t / (a + n);
        s += add;
        if (std::fabs(add) <= std::fabs(s) * 1e-17) return fac * s;
        if (kvpollrare()) return misval;
    }
    return misval;
}

// The first continued fraction, for x below the mean (and at most one half),
// by the modified Lentz method.
double bcf(double a, double b, double x, double xc) {
    double fac = betafac(a, b, x, xc);
    if (fac >= misval) return misval;
    if (fac == 0) return 0;
    const double tiny = 1e-300;
    double c = 1, d = 1 - (a + b) * x / (a + 1);
    if (std::fabs(d) < tiny) d = tiny;
    d = 1 / d;
    double h = d;
    for (int m = 1; m < kCoreIter; m++) {
        double m2 = 2.0 * m;
        double aa = m * (b - m) * x / ((a + m2 - 1) * (a + m2));
        d = 1 + aa * d;
        if (std::fabs(d) < tiny) d = tiny;
        c = 1 + aa / c;
        if (std::fabs(c) < tiny) c = tiny;
        d = 1 / d;
        h *= d * c;
        aa = -(a + m) * (a + b + m) * x / ((a + m2) * (a + m2 + 1));
        d = 1 + aa * d;
        if (std::fabs(d) < tiny) d = tiny;
        c = 1 + aa / c;
        if (std::fabs(c) < tiny) c = tiny;
        d = 1 / d;
        double del = d * c;
        h *= del;
        if (std::fabs(del - 1) < kMachEp) return fac * h / a;
        if (kvpollrare()) return misval;
    }
    return misval;
}

// The second continued fraction, in z = x / (1 - x), for x above one half:
// I = x^a (1-x)^(b-1) / (a B(a,b)) / (1 + d1 z / (1 + d2 z / (1 + ...))),
// d(2m+1) = (a+m)(1-b+m) / ((a+2m)(a+2m+1)), d(2m) = m(a+b-1+m) / ((a+2m-1)(a+2m)).
// It takes x only through z, formed from the complement, so a value near 1
// keeps its digits.
double bcf2(double a, double b, double x, double xc, int* iters) {
    double fac = betafac(a, b, x, xc);
    if (fac >= misval) return misval;
    if (fac == 0) return 0;
    const double tiny = 1e-300;
    double z = x / xc;
    // modified Lentz on f = 1 + K(d_n z / 1)
    double f = 1, c = 1, d = 0;
    for (int n = 1; n < kCoreIter; n++) {
        double an;
        if (n & 1) {
            int m = (n - 1) / 2;
            an = (a + m) * (1 - b + m) / ((a + 2.0 * m) * (a + 2.0 * m + 1)) * z;
        } else {
            int m = n / 2;
            an = m * (a + b - 1 + m) / ((a + 2.0 * m - 1) * (a + 2.0 * m)) * z;
        }
        d = 1 + an * d;
        if (std::fabs(d) < tiny) d = tiny;
        c = 1 + an / c;
        if (std::fabs(c) < tiny) c = tiny;
        d = 1 / d;
        double del = c * d;
        f *= del;
        if (std::fabs(del - 1) < kMachEp) {
            if (iters) *iters = n;
            return fac / xc / a / f;
        }
        if (kvpollrare()) return misval;
    }
    return misval;
}

} // namespace

// I_x(a, b) with the complement xc = 1 - x known exactly.
double ibeta2(double a, double b, double x, double xc) {
    if (b * x <= 1 && x <= 0.95) return bpser(a, b, x, xc);
    bool flip = x > a / (a + b);
    if (flip) {
        double t = a;
        a = b, b = t;
        t = x;
        x = xc, xc = t;
    }
    double r;
    if (!flip && a * xc <= 1.5 && xc <= 0.95) { // the series of the complement
        r = bpser(b, a, xc, x);
        return r >= misval ? misval : 1 - r;
    }
    if (flip && b * x <= 1 && x <= 0.95)
        r = bpser(a, b, x, xc);
    else if (x > 0.5)
        r = bcf2(a, b, x, xc, nullptr);
    else
        r = bcf(a, b, x, xc);
    if (r >= misval) return misval;
    return flip ? 1 - r : r;
}

double ibeta(double a, double b, double x) {
    if (bad(a) || bad(b) || bad(x) || std::isinf(a) || std::isinf(b) || std::isinf(x))
        return misval;
    if (a <= 0 || b <= 0) return misval;
    if (x == 0) return 0;
    if (x == 1) return 1;
    if (x < 0 || x > 1) return misval;
    return ibeta2(a, b, x, 1 - x);
}

double invibeta(double a, double b, double p) {
    if (bad(a) || bad(b) || bad(p) || a <= 0 || b <= 0 || p < 0 || p > 1) return misval;
    if (p == 0) return 0;
    if (p == 1) return 1;
    double par[2] = {a, b};
    Fwd F{fw_ibeta, par, false};
    return bisect(F, p, 0, 1, false, 1e-6, 1e-15);
}

// ---- t and F ----------------------------------------------------------------------

double ttail(double n, double t) {
    if (bad(n) || bad(t) || n <= 0) return misval;
    double t2 = t * t;
    // ibeta(n/2, 1/2, n/(n + t^2)) with its complement t^2/(n + t^2) exact
    double x = n / (n + t2), xc = t2 / (n + t2);
    double v = t == 0 ? 1 : (std::isinf(t2) ? 0 : ibeta2(n / 2, 0.5, x, xc));
    if (v >= misval) return misval;
    return t > 0 ? v / 2 : 1 - v / 2;
}

double ftail(double n1, double n2, double f) {
    if (bad(n1) || bad(n2) || bad(f) || n1 <= 0 || n2 <= 0) return misval;
    if (f <= 0) return 1;
    double d = n2 + n1 * f;
    if (std::isinf(d)) return 0;
    return ibeta2(n2 / 2, n1 / 2, n2 / d, n1 * f / d);
}

double fcumm(double n1, double n2, double f) {
    if (bad(n1) || bad(n2) || bad(f) || n1 <= 0 || n2 <= 0) return misval;
    if (f <= 0) return 0;
    double d = n2 + n1 * f;
    if (std::isinf(d)) return 1;
    return ibeta2(n1 / 2, n2 / 2, n1 * f / d, n2 / d);
}

double invftail(double n1, double n2, double p) {
    if (bad(n1) || bad(n2) || bad(p) || n1 <= 0 || n2 <= 0 || p <= 0 || p > 1) return misval;
    if (p == 1) return 0;
    double par[2] = {n1, n2};
    Fwd F{fw_ftail, par, true};
    return bisect(F, p, 0, 500, true, 1e-6, 1e-15);
}

double invfcumm(double n1, double n2, double p) {
    if (bad(n1) || bad(n2) || bad(p) || n1 <= 0 || n2 <= 0 || p < 0 || p >= 1) return misval;
    if (p == 0) return 0;
    double par[2] = {n1, n2};
    Fwd F{fw_fcumm, par, false};
    return bisect(F, p, 0, 500, true, 1e-6, 1e-15);
}

double invttail(double n, double p) {
    if (bad(n) || bad(p) || n <= 0 || p < 0 || p > 1) return misval;
    if (p <= 0.5) {
        double f = invftail(1, n, 2 * p);
        return f >= misval ? misval : std::sqrt(f);
    }
    double f = invftail(1, n, 2 * (1 - p));
    return f >= misval ? misval : -std::sqrt(f);
}

// ---- binomial ---------------------------------------------------------------------

double biprob(double n, double k, double p) {
    if (bad(n) || bad(k) || bad(p) || n < 0 || p < 0 || p > 1) return misval;
    if (n != std::floor(n) || k != std::floor(k)) return misval;
    if (k <= 0) return 1;
    if (k > n) return 0;
    return ibeta(k, n - k + 1, p);
}

double invbiprob(double n, double k, double p) {
    if (bad(n) || bad(k) || bad(p) || n < 0 || p <= 0 || p >= 1) return misval;
    if (n != std::floor(n) || k != std::floor(k) || k < 1 || k > n) return misval;
    double par[2] = {n, k};
    Fwd F{fw_biprob, par, false};
    return bisect(F, p, 0, 1, false, 1e-6, 1e-15);
}

// ---- normal -------------------------------------------------------------------------

namespace {

// exp(-z^2 / 2) with the rounding of z^2 taken into account.
double expmhalfsq(double z) {
    double z2 = z * z;
    double e = std::fma(z, z, -z2);
    return std::exp(-0.5 * z2) * (1 - 0.5 * e);
}

// Upper tail Q(z) for z >= 3.5: the density times Mills' ratio by its
// continued fraction 1/(z + 1/(z + 2/(z + 3/(z + ...)))).
double uppertail(double z) {
    double phi = expmhalfsq(z) / kSqrt2Pi;
    if (phi == 0) return 0;
    // evaluate from the bottom with enough terms for z >= 3.5
    int n = z < 5 ? 150 : z < 8 ? 60 : 30;
    double r = z;
    for (int k = n; k >= 1; k--) r = z + k / r;
    return phi / r;
}

double lnuppertail(double z) { // log Q(z), z >= 3.5
    double z2 = z * z;
    double e = std::fma(z, z, -z2);
    int n = z < 5 ? 150 : z < 8 ? 60 : 30;
    double r = z;
    for (int k = n; k >= 1; k--) r = z + k / r;
    return -0.5 * z2 - 0.5 * e - kLnSqrt2Pi - std::log(r);
}

} // namespace

double stnormal(double z) {
    if (bad(z)) return misval;
    if (z == 0) return 0.5;
    double a = std::fabs(z);
    if (a < 2.32)
        return z < 0 ? 0.5 * std::erfc(a / std::sqrt(2.0))
                     : 0.5 + 0.5 * std::erf(a / std::sqrt(2.0));
    double q = a < 3.5 ? 0.5 * std::erfc(a / std::sqrt(2.0)) : uppertail(a);
    return z < 0 ? q : 1 - q;
}

double stlnnormal(double z) {
    if (bad(z)) return misval;
    if (z >= 0) return std::log1p(-stnormal(-z));
    if (z > -3.5) return std::log(stnormal(z));
    if (z < -1e150) return misval;
    return lnuppertail(-z);
}

double normalden(double z) {
    if (bad(z)) return misval;
    return expmhalfsq(z) / kSqrt2Pi;
}

double lnnormalden(double z) {
    if (bad(z)) return misval;
    if (std::fabs(z) > 1e150) return misval;
    double z2 = z * z;
    return -0.5 * z2 - 0.5 * std::fma(z, z, -z2) - kLnSqrt2Pi;
}

// Inverse normal by the rational approximations of AS 241 (PPND16).
double inormal(double p) {
    if (bad(p) || p <= 0 || p >= 1) return misval;
    double q = p - 0.5, r;
    if (std::fabs(q) <= 0.425) {
        r = 0.180625 - q * q;
        return q *
               (((((((2.5090809287301226727e+3 * r + 3.3430575583588128105e+4) * r +
                     6.7265770927008700853e+4) *
                        r +
                    4.5921953931549871457e+4) *
                       r +
                   1.3731693765509461125e+4) *
                      r +
                  1.9715909503065514427e+3) *
                     r +
                 1.3314166789178437745e+2) *
                    r +
                3.3871328727963666080e+0) /
               (((((((5.2264952788528545610e+3 * r + 2.8729085735721942674e+4) * r +
                     3.9307895800092710610e+4) *
                        r +
                    2.1213794301586595867e+4) *
                       r +
                   5.3941960214247511077e+3) *
                      r +
                  6.8718700749205790830e+2) *
                     r +
                 4.2313330701600911252e+1) *
                    r +
                1.0);
    }
    r = q < 0 ? p : 1 - p;
    r = std::sqrt(-std::log(r));
    double val;
    if (r <= 5) {
        r -= 1.6;
        val = (((((((7.74545014278341407640e-4 * r + 2.27238449892691845833e-2) * r +
                    2.41780725177450611770e-1) *
                       r +
                   1.27045825245236838258e+0) *
                      r +
                  3.64784832476320460504e+0) *
                     r +
                 5.76949722146069140550e+0) *
                    r +
                4.63033784615654529590e+0) *
                   r +
               1.42343711074968357734e+0) /
              (((((((1.05075007164441684324e-9 * r + 5.47593808499534494600e-4) * r +
                    1.51986665636164571966e-2) *
                       r +
                   1.48103976427480074590e-1) *
                      r +
                  6.89767334985100004550e-1) *
                     r +
                 1.67638483018380384940e+0) *
                    r +
                2.05319162663775882187e+0) *
                   r +
               1.0);
    } else {
        r -= 5;
        val = (((((((2.01033439929228813265e-7 * r + 2.71155556874348757815e-5) * r +
                    1.24266094738807843860e-3) *
                       r +
                   2.65321895265761230930e-2) *
                      r +
                  2.96560571828504891230e-1) *
                     r +
                 1.78482653991729133580e+0) *
                    r +
                5.46378491116411436990e+0) *
                   r +
               6.65790464350110377720e+0) /
              (((((((2.04426310338993978564e-15 * r + 1.42151175831644588870e-7) * r +
                    1.84631831751005468180e-5) *
                       r +
                   7.86869131145613259100e-4) *
                      r +
                  1.48753612908506148525e-2) *
                     r +
                 1.36929880922735805310e-1) *
                    r +
                5.99832206555887937690e-1) *
                   r +
               1.0);
    }
    return q < 0 ? -val : val;
}

// ---- densities ------------------------------------------------------------------------

double tden(double n, double t) {
    if (bad(n) || bad(t) || n <= 0) return misval;
    double lc = n >= 20 ? -lgratio(n / 2, 0.5) : stlgma(n / 2) - stlgma((n + 1) / 2);
    double e = -lc - 0.5 * std::log(n) - 0.5 * kLnPi - (n + 1) / 2 * std::log1p(t * t / n);
    return std::exp(e);
}

double betaden(double a, double b, double x) {
    if (bad(a) || bad(b) || bad(x) || a <= 0 || b <= 0 || x < 0 || x > 1) return misval;
    if (x == 0) return a < 1 ? misval : a == 1 ? b : 0;
    if (x == 1) return b < 1 ? misval : b == 1 ? a : 0;
    double f = betafac(a, b, x, 1 - x);
    return f >= misval ? misval : f / (x * (1 - x));
}

double fden(double n1, double n2, double f) {
    if (bad(n1) || bad(n2) || bad(f) || n1 <= 0 || n2 <= 0 || f < 0) return misval;
    if (f == 0) return n1 < 2 ? misval : n1 == 2 ? 1 : 0;
    double d = n2 + n1 * f;
    // density of x = n1 f / d is betaden(n1/2, n2/2, x); dx/df = n1 n2 / d^2
    double x = n1 * f / d, xc = n2 / d;
    double b = betafac(n1 / 2, n2 / 2, x, xc);
    if (b >= misval) return misval;
    return b / (x * xc) * n1 * n2 / (d * d);
}

double gammaden(double a, double b, double g, double x) {
    if (bad(a) || bad(b) || bad(g) || bad(x) || a <= 0 || b <= 0) return misval;
    if (x < g) return 0;
    double y = (x - g) / b;
    if (y == 0) return a < 1 ? misval : a == 1 ? 1 / b : 0;
    double d = gammap_dx(a, y);
    return d >= misval ? misval : d / b;
}

} // namespace korvu
