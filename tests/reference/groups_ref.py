#!/usr/bin/python3
"""Expected values of the group commands, worked out with pandas and numpy.

Writes tests/scripts/groups/ref_*.do: each builds the same data from the
same formulas, runs a command and asserts each value pandas/numpy gives.
Run: /usr/bin/python3 tests/reference/groups_ref.py  (from the checkout top)
"""
import numpy as np
import pandas as pd

OUT = "tests/scripts/groups/"
N = 200


def data():
    n = np.arange(1, N + 1)
    df = pd.DataFrame({
        "g": (n * 13) % 7,
        "h": n % 3,
        "y": np.where(n % 17 == 0, np.nan, ((n * 37) % 101) / 7),
        "w": 1 + n % 4,
        "s": np.where(n % 5 < 2, "ab", np.where(n % 5 < 4, "c", "b d")),
    })
    return df


SETUP = """drop _all
set obs 200
generate g = mod(_n*13, 7)
generate h = mod(_n, 3)
generate double y = cond(mod(_n, 17) == 0, ., mod(_n*37, 101)/7)
generate w = 1 + mod(_n, 4)
generate str3 s = cond(mod(_n, 5) < 2, "ab", cond(mod(_n, 5) < 4, "c", "b d"))
"""


def r(x):
    return repr(float(x))


def pct(v, p):
    # the percentile rule: mean of the neighbours where n*p/100 is whole,
    # else the next order statistic (numpy's averaged inverted cdf)
    return np.percentile(v, p, method="averaged_inverted_cdf")


def check(var, cond, val, tol="1e-13"):
    if val is None or (isinstance(val, float) and np.isnan(val)):
        return f"assert missing({var}) if {cond}\n"
    return f"assert reldif({var}, {r(val)}) < {tol} if {cond}\n"


def collapse_plain():
    df = data()
    out = SETUP
    out += ("collapse (mean) mean=y (sum) sum=y (count) n=y (min) min=y (max) max=y "
            "(sd) sd=y (median) med=y (p25) p25=y (p90) p90=y (iqr) iqr=y "
            "(first) first=y (last) last=y (firstnm) fnm=y (lastnm) lnm=y, by(g)\n")
    out += "assert _N == 7\n"
    for k, grp in df.groupby("g"):
        y = grp["y"]
        v = y.dropna().to_numpy()
        c = f"g == {k}"
        out += f"assert g == {k} in {k + 1}\n"
        out += check("mean", c, y.mean())
        out += check("sum", c, y.sum())
        out += f"assert n == {y.count()} if {c}\n"
        out += check("min", c, y.min())
        out += check("max", c, y.max())
        out += check("sd", c, y.std())
        out += check("med", c, y.median())
        out += check("p25", c, pct(v, 25))
        out += check("p90", c, pct(v, 90))
        out += check("iqr", c, pct(v, 75) - pct(v, 25))
        out += check("first", c, y.iloc[0])
        out += check("last", c, y.iloc[-1])
        out += check("fnm", c, y.dropna().iloc[0])
        out += check("lnm", c, y.dropna().iloc[-1])
    return out


def collapse_two_keys_if():
    df = data()
    sub = df[df["h"] != 1]
    out = SETUP
    out += "collapse (mean) y (count) n=y if h != 1, by(s g)\n"
    res = sub.groupby(["s", "g"])["y"].agg(["mean", "count"]).reset_index()
    out += f"assert _N == {len(res)}\n"
    for i, row in res.iterrows():
        out += f'assert s == "{row["s"]}" & g == {row["g"]} in {i + 1}\n'
        out += check("y", f"_n == {i + 1}", row["mean"])
        out += f"assert n == {row['count']} in {i + 1}\n"
    return out


def collapse_weights():
    df = data()
    out = SETUP
    out += "collapse (mean) m=y (sd) sd=y (sum) s=y (count) n=y (median) med=y [fweight=w], by(g)\n"
    # frequency weights: the same as the data repeated w times
    rep = df.loc[df.index.repeat(df["w"])]
    for k, grp in rep.groupby("g"):
        y = grp["y"]
        c = f"g == {k}"
        out += check("m", c, y.mean())
        out += check("sd", c, y.std())
        out += check("s", c, y.sum())
        out += f"assert n == {y.count()} if {c}\n"
        out += check("med", c, y.median())
    out += SETUP
    out += "collapse (mean) m=y (sd) sd=y (sum) s=y [aweight=w], by(g)\n"
    for k, grp in df.dropna(subset=["y"]).groupby("g"):
        y = grp["y"].to_numpy()
        w = grp["w"].to_numpy().astype(float)
        m = np.average(y, weights=w)
        nn = len(y)
        var = np.sum(w * (y - m) ** 2) / w.sum() * nn / (nn - 1)
        c = f"g == {k}"
        out += check("m", c, m)
        out += check("sd", c, np.sqrt(var))
        out += check("s", c, m * nn)
    return out


def xgen_groups():
    df = data()
    out = SETUP
    out += "generate long obs = _n\n"
    fns = [
        ("mean", "mean(y)", df.groupby("g")["y"].transform("mean")),
        ("tot", "total(y)", df.groupby("g")["y"].transform("sum")),
        ("cnt", "count(y)", df.groupby("g")["y"].transform("count")),
        ("mn", "min(y)", df.groupby("g")["y"].transform("min")),
        ("mx", "max(y)", df.groupby("g")["y"].transform("max")),
        ("sd", "sd(y)", df.groupby("g")["y"].transform("std")),
        ("med", "median(y)", df.groupby("g")["y"].transform("median")),
        ("rk", "rank(y)", df.groupby("g")["y"].rank(method="average")),
        ("rkf", "rank(y), field", df.groupby("g")["y"].rank(method="min", ascending=False)),
        ("rkt", "rank(y), track", df.groupby("g")["y"].rank(method="min")),
        ("rku", "rank(y), unique", df.groupby("g")["y"].rank(method="first")),
        ("std", "std(y)", df.groupby("g")["y"].transform(lambda s: (s - s.mean()) / s.std())),
        ("e2", "mean(y*2 + h)", (df["y"] * 2 + df["h"]).groupby(df["g"]).transform("mean")),
    ]
    for name, call, ser in fns:
        byopt = ", by(g)" if "," not in call else " by(g)"
        out += f"xgenerate double {name} = {call}{byopt}\n"
    q = df.groupby("g")["y"].transform(lambda s: pct(s.dropna().to_numpy(), 30))
    out += "xgenerate double p30 = pctile(y), p(30) by(g)\n"
    fns.append(("p30", "", q))
    iq = df.groupby("g")["y"].transform(
        lambda s: pct(s.dropna().to_numpy(), 75) - pct(s.dropna().to_numpy(), 25))
    out += "xgenerate double iqr = iqr(y), by(g)\n"
    fns.append(("iqr", "", iq))
    # group numbers and tags over two keys, a string among them
    grp = df.groupby(["s", "h"]).ngroup() + 1
    tag = (~df.duplicated(["s", "h"])).astype(int)
    out += "xgenerate gn = group(s h)\nxgenerate tg = tag(s h)\n"
    for i in range(N):
        c = f"obs == {i + 1}"
        for name, _, ser in fns:
            out += check(name, c, ser.iloc[i])
        out += f"assert gn == {grp.iloc[i]} & tg == {tag.iloc[i]} if {c}\n"
    return out


def xgen_rows():
    df = data()
    df["z"] = np.where(df["h"] == 0, np.nan, df["g"] * 1.5)
    out = SETUP
    out += "generate double z = cond(h == 0, ., g*1.5)\n"
    out += "generate long obs = _n\n"
    cols = df[["y", "z", "w"]]
    out += "xgenerate double rm = rowmean(y z w)\n"
    out += "xgenerate double rt = rowtotal(y z w)\n"
    out += "xgenerate double rmin = rowmin(y z w)\n"
    out += "xgenerate double rmax = rowmax(y z w)\n"
    out += "xgenerate rmiss = rowmiss(y z w)\n"
    out += "xgenerate rnm = rownonmiss(y z w)\n"
    out += "xgenerate double rsd = rowsd(y z w)\n"
    out += "xgenerate ac = anycount(g h w), values(1 2)\n"
    ac = df[["g", "h", "w"]].isin([1, 2]).sum(axis=1)
    for i in range(N):
        c = f"obs == {i + 1}"
        row = cols.iloc[i]
        out += check("rm", c, row.mean())
        out += check("rt", c, row.sum())
        out += check("rmin", c, row.min())
        out += check("rmax", c, row.max())
        out += f"assert rmiss == {row.isna().sum()} & rnm == {row.count()} & ac == {ac.iloc[i]} if {c}\n"
        out += check("rsd", c, row.std(), "1e-12")
    return out


def freq_dups():
    df = data()
    out = SETUP
    out += "duplicates tag s h, generate(dup)\n"
    cnt = df.groupby(["s", "h"])["g"].transform("size") - 1
    out += "generate long obs = _n\n"
    for i in range(N):
        out += f"assert dup == {cnt.iloc[i]} if obs == {i + 1}\n"
    out += "duplicates drop s h, force\n"
    out += f"assert _N == {len(df.drop_duplicates(['s', 'h']))}\n"
    first = df.drop_duplicates(["s", "h"]).index + 1
    out += "assert obs == " + " | obs == ".join(str(x) for x in first[:3]) + " in 1/3\n"
    out += SETUP
    out += "freqdata s g, percent(pc)\n"
    vc = df.groupby(["s", "g"]).size().reset_index(name="n")
    out += f"assert _N == {len(vc)}\n"
    for i, row in vc.iterrows():
        out += f'assert s == "{row["s"]}" & g == {row["g"]} & _freq == {row["n"]} in {i + 1}\n'
        out += f"assert reldif(pc, {r(100 * row['n'] / N)}) < 1e-6 in {i + 1}\n"
    return out


def main():
    files = {
        "ref_collapse.do": collapse_plain(),
        "ref_collapse2.do": collapse_two_keys_if(),
        "ref_collapse_wt.do": collapse_weights(),
        "ref_xgen.do": xgen_groups(),
        "ref_xgen_rows.do": xgen_rows(),
        "ref_freq.do": freq_dups(),
    }
    for name, text in files.items():
        with open(OUT + name, "w") as f:
            f.write("* expected values from tests/reference/groups_ref.py (pandas, numpy)\n")
            f.write(text)
            f.write('display "test completed"\n')


if __name__ == "__main__":
    main()
