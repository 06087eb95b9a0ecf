#!/usr/bin/python3
"""Reference values of the non-central distributions and the bivariate normal.

Writes tests/reference/noncentral_ref.inc for tests/unit/distrib_test.cpp:
{ "name", {args...}, value, tolerance }.  Run: /usr/bin/python3 tests/reference/noncentral_ref.py
Every value comes from a closed-form density integrated numerically with
mpmath at 40 digits (the Bessel form of the non-central chi-squared density,
the confluent hypergeometric form of the non-central beta density, the
normal density times a normal distribution function for the bivariate
normal), never from the Poisson mixtures the code sums.
"""
import os
import mpmath as mp

mp.mp.dps = 40
rows = []


def add(name, args, val, tol):
    rows.append((name, [mp.mpf(a) for a in args], mp.mpf(val), tol))


def nchi2_pdf(k, lam, x):
    if x == 0:
        return mp.mpf(0)
    return mp.e ** (-(x + lam) / 2) / 2 * (x / lam) ** (k / 4 - mp.mpf(1) / 2) * \
        mp.besseli(k / 2 - 1, mp.sqrt(lam * x))


def nchi2_cdf(k, lam, x):
    # The Poisson mixture of central chi-squared distributions, summed at 40
    # digits with mpmath's incomplete gamma far past where its terms matter;
    # where the quadrature of the Bessel-form density converges, the two must
    # agree (far in the lower tail the quadrature does not, and is skipped).
    mu = lam / 2
    top = int(mu + 60 * mp.sqrt(mu) + 100)
    s = mp.fsum(mp.e ** (-mu) * mu ** j / mp.factorial(j) *
                mp.gammainc(k / 2 + j, 0, x / 2, regularized=True) for j in range(top))
    pts = sorted(set([mp.mpf(0)] + [p for p in (k + lam - 2 * mp.sqrt(2 * (k + 2 * lam)),
                                                 k + lam, k + lam + 2 * mp.sqrt(2 * (k + 2 * lam)))
                                    if 0 < p < x] + [x]))
    q, err = mp.quad(lambda t: nchi2_pdf(k, lam, t), pts, error=True)
    if err < s * mp.mpf("1e-20"):
        assert abs(q - s) <= s * mp.mpf("1e-18"), (k, lam, x, q, s)
    return s


def nbeta_pdf(a, b, lam, x):
    return mp.e ** (-lam / 2) * x ** (a - 1) * (1 - x) ** (b - 1) / mp.beta(a, b) * \
        mp.hyp1f1(a + b, a, lam * x / 2)


def nbeta_cdf(a, b, lam, x, upper=False):
    lo, hi = (x, 1) if upper else (0, x)
    mid = [p for p in mp.linspace(lo, hi, 9)]
    return mp.quad(lambda t: nbeta_pdf(a, b, lam, t), mid)


def root(f, lo, hi):
    lo, hi = mp.mpf(lo), mp.mpf(hi)
    flo = f(lo)
    for _ in range(200):
        mid = (lo + hi) / 2
        fm = f(mid)
        if (fm > 0) == (flo > 0):
            lo, flo = mid, fm
        else:
            hi = mid
    return (lo + hi) / 2


for k, lam in [(1, 0.5), (3, 2), (10, 10), (2.5, 40), (50, 200)]:
    k_, l_ = mp.mpf(k), mp.mpf(lam)
    for x in [0.1, 1, 5, 12, 40, 100, 300]:
        x_ = mp.mpf(x)
        p = nchi2_cdf(k_, l_, x_)
        if p < mp.mpf("1e-280"):
            continue
        add("nchi2", [k_, l_, x_], p, 1e-12 if p > 1e-30 else 1e-10)
        if mp.mpf("1e-12") < p < 1 - mp.mpf("1e-6"):
            add("invnchi2", [k_, l_, p], x_, 1e-11)
            add("npnchi2", [k_, x_, p], l_, 1e-9)
for a, b, lam in [(0.5, 0.5, 1), (2, 3, 4), (5, 1.5, 20), (10, 20, 0.3), (1, 1, 60)]:
    a_, b_, l_ = mp.mpf(a), mp.mpf(b), mp.mpf(lam)
    for x in [0.01, 0.2, 0.5, 0.8, 0.99]:
        x_ = mp.mpf(x)
        p = nbeta_cdf(a_, b_, l_, x_)
        add("nibeta", [a_, b_, l_, x_], p, 1e-12)
        add("nbetaden", [a_, b_, l_, x_], nbeta_pdf(a_, b_, l_, x_), 1e-12)
        if mp.mpf("1e-12") < p < 1 - mp.mpf("1e-6"):
            add("invnibeta", [a_, b_, l_, p], x_, 1e-11)
for n1, n2, lam in [(1, 10, 2), (4, 7, 9), (10, 50, 30), (3, 2.5, 0.5)]:
    n1_, n2_, l_ = mp.mpf(n1), mp.mpf(n2), mp.mpf(lam)
    for f in [0.05, 0.5, 1, 3, 10, 60]:
        f_ = mp.mpf(f)
        d = n2_ + n1_ * f_
        x = n1_ * f_ / d
        add("nFden", [n1_, n2_, l_, f_], nbeta_pdf(n1_ / 2, n2_ / 2, l_, x) * n1_ * n2_ / d ** 2,
            1e-12)
        q = nbeta_cdf(n1_ / 2, n2_ / 2, l_, x, upper=True)
        add("nFtail", [n1_, n2_, l_, f_], q, 1e-12)
        if mp.mpf("1e-12") < q < mp.mpf("0.9999"):  # nearer 1 the tail is ill-conditioned
            add("invnFtail", [n1_, n2_, l_, q], f_, 1e-11)


def binormal(h, k, r):
    if r == 1:
        return mp.ncdf(min(h, k))
    if r == -1:
        return max(mp.mpf(0), mp.ncdf(h) + mp.ncdf(k) - 1)
    s = mp.sqrt(1 - r * r)
    g = lambda x: mp.npdf(x) * mp.ncdf((k - r * x) / s)
    pts = [-mp.inf] + sorted(p for p in (-8, -3, 0, 3, k / r if r else 0) if p < h) + [h]
    return mp.quad(g, pts)


for r in [-1, -0.99, -0.95, -0.7, -0.3, 0, 0.2, 0.5, 0.8, 0.93, 0.999, 1]:
    for h, k in [(0, 0), (1, -1), (-2, 0.5), (2.5, 3), (-3, -3), (0.3, 1.7), (-6, 2), (4, -0.5)]:
        r_, h_, k_ = mp.mpf(r), mp.mpf(h), mp.mpf(k)
        v = binormal(h_, k_, r_)
        if v < mp.mpf("1e-200"):
            continue
        # absolute 1e-15 at least: the quadrature of the method is built to that
        tol = max(1e-13, float(mp.mpf("2e-15") / v))
        add("binormal", [h_, k_, r_], v, tol)

out = os.path.join(os.path.dirname(os.path.abspath(__file__)), "noncentral_ref.inc")
with open(out, "w") as fh:
    fh.write("// Written by tests/reference/noncentral_ref.py (mpmath); do not edit.\n")
    for name, args, val, tol in rows:
        a = ", ".join(mp.nstr(x, 17, min_fixed=1, max_fixed=0) for x in args)
        fh.write('{"%s", {%s}, %s, %g},\n' % (name, a, mp.nstr(val, 20, min_fixed=1, max_fixed=0),
                                              tol))
print(len(rows), "rows to", out)
