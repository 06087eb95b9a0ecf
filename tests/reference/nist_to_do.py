#!/usr/bin/env python3
"""Writes the script tests of the NIST StRD linear regression data sets.

The files in tests/reference/nist/ are the data sets of the NIST Statistical
Reference Datasets (StRD), linear regression section, National Institute of
Standards and Technology, https://www.itl.nist.gov/div898/strd/ : the data and
the certified values (15 significant digits) as published. Each test enters
the data, fits the model and checks the estimates, standard errors, residual
standard deviation, R-squared and the sums of squares against the certified
values to the number of digits given per data set.

Run from the top of the checkout: /usr/bin/python3 tests/reference/nist_to_do.py
"""
import os
import re

HERE = os.path.dirname(os.path.abspath(__file__))
OUT = os.path.join(HERE, "..", "scripts", "regress")

# data set: (regressors as powers of x or columns, constant?, digits asked)
SETS = {
    "Norris": ("poly", 1, True, 12),
    "Pontius": ("poly", 2, True, 11),
    "NoInt1": ("poly", 1, False, 12),
    "NoInt2": ("poly", 1, False, 12),
    "Longley": ("cols", 6, True, 10),
    "Wampler1": ("poly", 5, True, 10),
    "Wampler2": ("poly", 5, True, 11),
    "Wampler3": ("poly", 5, True, 10),
    "Wampler4": ("poly", 5, True, 8),
    "Wampler5": ("poly", 5, True, 6),
}


def parse(name):
    lines = open(os.path.join(HERE, "nist", name + ".dat")).read().splitlines()
    est = {}
    for ln in lines:
        m = re.match(r"\s+B(\d+)\s+(\S+)\s+(\S+)\s*$", ln)
        if m and "Parameter" not in ln:
            est[int(m.group(1))] = (m.group(2), m.group(3))
    def value(label):
        for i, ln in enumerate(lines):
            if label in ln:
                toks = ln.split()
                return toks[-1] if re.match(r"^[-+.0-9Ee]+$", toks[-1]) else lines[i + 1].split()[-1]
        return None
    rsd = value("Standard Deviation   ")
    r2 = value("R-Squared")
    ss = {}
    for ln in lines:
        t = ln.split()
        if t and t[0] in ("Regression", "Residual") and len(t) >= 4 and re.match(r"^\d+$", t[1]):
            ss[t[0]] = (t[1], t[2])
    start = next(i for i, ln in enumerate(lines) if ln.startswith("Data:") and "Response" not in ln)
    cols = lines[start].split()[1:]
    data = [ln.split() for ln in lines[start + 1:] if ln.strip()]
    return est, rsd, r2, ss, cols, data


def write(name):
    kind, deg, cons, digits = SETS[name]
    est, rsd, r2, ss, cols, data = parse(name)
    tol = "1e-%d" % digits
    out = []
    out.append("* NIST StRD linear regression, data set %s: the certified values of the" % name)
    out.append("* National Institute of Standards and Technology's Statistical Reference")
    out.append("* Datasets (tests/reference/nist/%s.dat), checked to %d digits." % (name, digits))
    out.append("* Written by tests/reference/nist_to_do.py.")
    out.append("drop _all")
    out.append("input " + " ".join("double " + c for c in cols))
    for row in data:
        out.append(" ".join(row))
    out.append("end")
    if kind == "poly":
        regs = ["x"]
        for p in range(2, deg + 1):
            out.append("generate double x%d = x^%d" % (p, p))
            regs.append("x%d" % p)
    else:
        regs = cols[1:]
    out.append("regress y %s%s" % (" ".join(regs), "" if cons else ", noconstant"))
    names = (["_cons"] if cons else []) + regs
    first = 0 if cons else 1
    def check(expr, cert):
        c = float(cert)
        if c == 0:
            out.append("assert abs(%s) < %s" % (expr, tol))
        else:
            out.append("assert abs((%s - %s) / %s) < %s" % (expr, cert, cert, tol))
    for i, nm in enumerate(names):
        b, se = est[first + i]
        check("_b[%s]" % nm, b)
        check("_se[%s]" % nm, se)
    check("e(rmse)", rsd)
    check("e(r2)", r2)
    check("e(mss)", ss["Regression"][1])
    check("e(rss)", ss["Residual"][1])
    out.append("assert e(df_m) == %s & e(df_r) == %s" % (ss["Regression"][0], ss["Residual"][0]))
    out.append("assert e(N) == %d" % len(data))
    out.append('display "test completed"')
    path = os.path.join(OUT, "nist_%s.do" % name.lower())
    with open(path, "w") as f:
        f.write("\n".join(out) + "\n")


if __name__ == "__main__":
    for n in SETS:
        write(n)
