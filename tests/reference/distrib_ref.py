#!/usr/bin/python3
"""Reference values of the distribution functions, at 50 digits with mpmath.

Writes tests/reference/distrib_ref.inc, a C++ table included by
tests/unit/distrib_test.cpp:  { "name", {args...}, value, tolerance },
Run:  /usr/bin/python3 tests/reference/distrib_ref.py
Every value is computed from the definitions (integrals, series of mpmath),
never from the code under test.
"""
import os
import mpmath as mp

mp.mp.dps = 50
rows = []
FWD = 1e-13  # relative, forward functions
INV = 1e-12  # relative, inverses


def add(name, args, val, tol):
    val = mp.mpf(val)
    # far in a tail the value is exp(E) with |E| in the hundreds, and the
    # rounding of E alone costs about |E| units in the last place
    if tol == FWD and val != 0 and abs(val) < mp.mpf("1e-30"):
        tol = 1e-11
    if not mp.isfinite(val):
        return
    if val != 0 and (abs(val) < mp.mpf("1e-290") or abs(val) > mp.mpf("1e300")):
        return
    rows.append((name, [mp.mpf(a) for a in args], val, tol))


def P(a, x):
    return mp.gammainc(a, 0, x, regularized=True)


def Q(a, x):
    return mp.gammainc(a, x, mp.inf, regularized=True)


def I(a, b, x):
    return mp.betainc(a, b, 0, x, regularized=True)


def Ic(a, b, x):
    return mp.betainc(a, b, x, 1, regularized=True)


def Phi(z):
    return mp.ncdf(z)


# log gamma, digamma, trigamma
for x in ["1e-10", "0.001", "0.1", "0.5", "0.9", "0.999", "1.001", "1.25", "1.5", "1.9999",
          "2.0001", "2.5", "3", "7.3", "12.9", "13", "13.5", "50", "171.6", "1000", "1e5",
          "1e10", "1e100", "1e300", "-0.5", "-1.5", "-2.3", "-10.7", "-33.9", "-34.5",
          "-100.3", "-1000.7"]:
    x = mp.mpf(float(x))
    add("stlgma", [x], mp.log(abs(mp.gamma(x))), FWD)
for x in ["1e-5", "0.0009", "0.0011", "0.1", "0.5", "0.9", "1", "1.3", "1.7", "2", "2.4",
          "2.6", "5.5", "9.9", "10", "35", "1e4", "1e10", "-0.0005", "-0.5", "-1.3", "-7.6"]:
    x = mp.mpf(float(x))
    add("digamma", [x], mp.digamma(x), FWD)
    add("trigamma", [x], mp.psi(1, x), FWD)

# incomplete gamma, both tails (through chi-squared for the upper one)
for a in ["0.1", "0.5", "1", "2.5", "10", "30.5", "100", "1000", "2000"]:
    a = mp.mpf(float(a))
    for m in ["0.01", "0.1", "0.5", "0.9", "1", "1.1", "2", "5"]:
        x = mp.mpf(float(a * mp.mpf(float(m))))
        add("gammap", [a, x], P(a, x), FWD)
        add("chi2tail", [2 * a, 2 * x], Q(a, x), FWD)
        add("chi2cumm", [2 * a, 2 * x], P(a, x), FWD)
for a, x in [("0.5", "30"), ("3", "60"), ("10", "100"), ("1", "700")]:
    a, x = mp.mpf(float(a)), mp.mpf(float(x))
    add("gammap", [a, x], P(a, x), FWD)
    add("chi2tail", [2 * a, 2 * x], Q(a, x), FWD)

# derivatives of gammap
for a, x in [("0.5", "0.3"), ("2", "1"), ("2", "3"), ("5.5", "4"), ("10", "12"), ("3", "0.1")]:
    a, x = mp.mpf(float(a)), mp.mpf(float(x))
    add("gammap_dx", [a, x], mp.diff(lambda t: P(a, t), x), FWD)
    add("gammap_dxdx", [a, x], mp.diff(lambda t: P(a, t), x, 2), FWD)
    add("gammap_dadx", [a, x], mp.diff(lambda s, t: P(s, t), (a, x), (1, 1)), FWD)
    add("gammap_da", [a, x], mp.diff(lambda s: P(s, x), a), 1e-12)
    add("gammap_dada", [a, x], mp.diff(lambda s: P(s, x), a, 2), 1e-12)
# the same in the upper tail, where P is near 1 and its derivatives are small
for a, x in [("2", "10"), ("5", "30"), ("0.5", "20"), ("10", "40"), ("3", "60"), ("4", "5.5")]:
    a, x = mp.mpf(float(a)), mp.mpf(float(x))
    add("gammap_da", [a, x], mp.diff(lambda s: P(s, x), a), 1e-12)
    add("gammap_dada", [a, x], mp.diff(lambda s: P(s, x), a, 2), 1e-12)

# incomplete beta
for a in ["0.1", "0.5", "1", "2.5", "10", "50", "200", "1000"]:
    for b in ["0.1", "0.5", "1", "2.5", "10", "50", "200", "1000"]:
        for x in ["0.001", "0.1", "0.3", "0.5", "0.7", "0.9", "0.999"]:
            a_, b_, x_ = mp.mpf(float(a)), mp.mpf(float(b)), mp.mpf(float(x))
            add("ibeta", [a_, b_, x_], I(a_, b_, x_), FWD)

# t, F
for n in ["1", "2", "3", "5", "10", "30", "100", "1000"]:
    n = mp.mpf(float(n))
    for t in ["-5", "-1", "0.5", "1", "2", "5", "10", "50"]:
        t = mp.mpf(float(t))
        x = n / (n + t * t)
        v = I(n / 2, mp.mpf(0.5), x) / 2
        add("ttail", [n, t], v if t > 0 else 1 - v, FWD)
        add("tden", [n, t], mp.gamma((n + 1) / 2) / (mp.gamma(n / 2) * mp.sqrt(n * mp.pi))
            * (1 + t * t / n) ** (-(n + 1) / 2), FWD)
# many degrees of freedom: x = n / (n + t^2) lies close to 1
for n in ["1e4", "1e5", "1e6", "3.5e7"]:
    n = mp.mpf(float(n))
    for t in ["0.3", "1", "3", "5", "-2"]:
        t = mp.mpf(float(t))
        v = I(n / 2, mp.mpf(0.5), n / (n + t * t)) / 2
        add("ttail", [n, t], v if t > 0 else 1 - v, FWD)
for a, b, x in [("5e5", "0.5", "0.99999"), ("2000", "3", "0.999"), ("800", "40", "0.97")]:
    a, b, x = mp.mpf(float(a)), mp.mpf(float(b)), mp.mpf(float(x))
    add("ibeta", [a, b, x], I(a, b, x), FWD)
for n1, n2 in [(1, 1), (1, 10), (2, 3), (3, 7), (5, 100), (10, 10), (40, 2), (100, 1000)]:
    n1, n2 = mp.mpf(n1), mp.mpf(n2)
    for f in ["0.01", "0.5", "1", "2", "4.5", "10", "100"]:
        f = mp.mpf(float(f))
        d = n2 + n1 * f
        add("ftail", [n1, n2, f], Ic(n1 / 2, n2 / 2, n1 * f / d), FWD)
        add("fcumm", [n1, n2, f], I(n1 / 2, n2 / 2, n1 * f / d), FWD)
        dens = (mp.sqrt((n1 * f) ** n1 * n2 ** n2 / d ** (n1 + n2))
                / (f * mp.beta(n1 / 2, n2 / 2)))
        add("fden", [n1, n2, f], dens, FWD)

# binomial: P(k or more successes), by the sum of the probabilities
for n, k, p in [(10, 3, "0.2"), (10, 0, "0.5"), (10, 10, "0.9"), (20, 15, "0.3"),
                (100, 40, "0.5"), (1000, 10, "0.001"), (7, 4, "0.61")]:
    p = mp.mpf(float(p))
    s = mp.fsum(mp.binomial(n, j) * p ** j * (1 - p) ** (n - j) for j in range(k, n + 1))
    add("biprob", [n, k, p], s, FWD)

# normal
for z in ["-38", "-37", "-20", "-10", "-5", "-3.5", "-3.49", "-2.32", "-2.31", "-1", "-0.1",
          "0.1", "1", "2.31", "2.32", "3.49", "3.5", "5", "8"]:
    z = mp.mpf(float(z))
    add("stnormal", [z], Phi(z), FWD)
    add("normalden", [z], mp.npdf(z), FWD)
    add("lnnormalden", [z], mp.log(mp.npdf(z)), FWD)
for z in ["-1e5", "-100", "-40", "-10", "-3.6", "-3", "-0.5", "0.5", "3", "10"]:
    z = mp.mpf(float(z))
    add("stlnnormal", [z], mp.log(Phi(z)), FWD)

# densities
for a, b, x in [("2", "3", "0.4"), ("0.5", "0.5", "0.1"), ("10", "20", "0.3"),
                ("200", "300", "0.41")]:
    a, b, x = mp.mpf(float(a)), mp.mpf(float(b)), mp.mpf(float(x))
    add("betaden", [a, b, x], x ** (a - 1) * (1 - x) ** (b - 1) / mp.beta(a, b), FWD)
for a, b, g, x in [("2", "1", "0", "1.5"), ("0.7", "2", "1", "3"), ("15", "0.5", "0", "8")]:
    a, b, g, x = (mp.mpf(float(v)) for v in (a, b, g, x))
    y = (x - g)
    add("gammaden", [a, b, g, x], y ** (a - 1) * mp.exp(-y / b) / (b ** a * mp.gamma(a)), FWD)

# inverses: the root of the forward function at the target, by bisection on
# the log scale to far beyond double precision


def root(f, lo, hi, n=220):
    """x in (lo, hi), 0 < lo, with f(x) = 0 for f increasing."""
    lo, hi = mp.mpf(lo), mp.mpf(hi)
    for _ in range(n):
        mid = mp.sqrt(lo * hi)
        if f(mid) < 0:
            lo = mid
        else:
            hi = mid
    return mp.sqrt(lo * hi)


for p in ["1e-300", "1e-100", "1e-20", "1e-5", "0.01", "0.3", "0.4999999", "0.5", "0.7",
          "0.99", "0.9999999999"]:
    p = mp.mpf(float(p))
    if p > mp.mpf("1e-30"):
        z0 = mp.sqrt(2) * mp.erfinv(2 * p - 1)
    else:
        z0 = -mp.sqrt(-2 * mp.log(p) - mp.log(-2 * mp.log(p)) - mp.log(2 * mp.pi))
    add("inormal", [p], mp.findroot(lambda z: mp.log(Phi(z)) - mp.log(p), z0), INV)
for a in ["0.5", "1", "3", "10", "100", "1000"]:
    for p in ["1e-10", "0.001", "0.1", "0.5", "0.9", "0.999"]:
        a_, p_ = mp.mpf(float(a)), mp.mpf(float(p))
        x = root(lambda x: P(a_, x) - p_, "1e-200", 10 * a_ + 100)
        add("invgammap", [a_, p_], x, INV)
        add("invchi2cumm", [2 * a_, p_], 2 * x, INV)
        xq = root(lambda x: p_ - Q(a_, x), "1e-200", 10 * a_ + 100)
        add("invchi2tail", [2 * a_, p_], 2 * xq, INV)
for n in ["1", "2", "5", "10", "30", "1000"]:
    for p in ["1e-8", "0.001", "0.025", "0.3", "0.6", "0.975"]:
        n_, p_ = mp.mpf(float(n)), mp.mpf(float(p))

        def tt(t):
            x = n_ / (n_ + t * t)
            v = I(n_ / 2, mp.mpf(0.5), x) / 2
            return (v if t > 0 else 1 - v) - p_
        lo, hi = mp.mpf(-1e9), mp.mpf(1e9)
        for _ in range(400):
            mid = (lo + hi) / 2
            if tt(mid) > 0:
                lo = mid
            else:
                hi = mid
        add("invttail", [n_, p_], (lo + hi) / 2, INV)
for n1, n2 in [(1, 10), (2, 3), (5, 100), (10, 10), (40, 2)]:
    for p in ["1e-6", "0.01", "0.05", "0.5", "0.95"]:
        n1_, n2_, p_ = mp.mpf(n1), mp.mpf(n2), mp.mpf(float(p))
        ft = lambda f: Ic(n1_ / 2, n2_ / 2, n1_ * f / (n2_ + n1_ * f))
        add("invftail", [n1_, n2_, p_], root(lambda f: p_ - ft(f), "1e-100", "1e100"), INV)
        add("invfcumm", [n1_, n2_, p_], root(lambda f: 1 - ft(f) - p_, "1e-100", "1e100"), INV)
for a, b in [("0.5", "0.5"), ("2", "3"), ("10", "1"), ("50", "200"), ("0.2", "30")]:
    for p in ["1e-6", "0.01", "0.5", "0.9", "0.999"]:
        a_, b_, p_ = mp.mpf(float(a)), mp.mpf(float(b)), mp.mpf(float(p))
        x = root(lambda x: I(a_, b_, x) - p_, "1e-200", 1)
        add("invibeta", [a_, b_, p_], x, INV)
for n, k, P_ in [(10, 3, "0.2"), (20, 15, "0.5"), (100, 40, "0.9")]:
    P_ = mp.mpf(float(P_))
    f = lambda p: mp.fsum(mp.binomial(n, j) * p ** j * (1 - p) ** (n - j)
                          for j in range(k, n + 1)) - P_
    add("invbiprob", [n, k, P_], root(f, "1e-100", 1), INV)

out = os.path.join(os.path.dirname(os.path.abspath(__file__)), "distrib_ref.inc")
with open(out, "w") as fh:
    fh.write("// Written by tests/reference/distrib_ref.py (mpmath, 50 digits); do not edit.\n")
    for name, args, val, tol in rows:
        a = ", ".join(mp.nstr(x, 17, min_fixed=1, max_fixed=0) for x in args)
        fh.write('{"%s", {%s}, %s, %g},\n' % (name, a, mp.nstr(val, 20, min_fixed=1, max_fixed=0),
                                              tol))
print(len(rows), "rows to", out)
