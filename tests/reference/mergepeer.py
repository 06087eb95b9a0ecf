#!/usr/bin/env python3
"""Declared-match merges by korvu-xe checked against pandas.merge.

mergepeer.py EXE WORK [SEED]

Writes random master and using datasets as format-113 files (the using files
high byte first, so the byte swapping of the reader is exercised), runs
`merge id using ..., match(1:1|m:1|1:m)` in korvu-xe and saves the result,
then reads it back with its own reader and compares it, as a multiset of rows,
with pandas' outer merge of the same data: the counts of each origin, the
keys, and every value. Exits 77 when pandas is missing.
"""
import os
import random
import struct
import subprocess
import sys

try:
    import pandas as pd
except ImportError:
    print("pandas not found: skipped")
    sys.exit(77)

MISSING_D = 2.0 ** 1023
NUMCODE = {"double": 255, "long": 253, "byte": 251}


def write_dta(path, cols, order="<", sortby=None):
    """cols: list of (name, kind, values); kind double, long, byte or str<n>."""
    nvar = len(cols)
    nobs = len(cols[0][2]) if cols else 0
    out = bytearray()
    out += bytes([113, 2 if order == "<" else 1, 1, 0])
    out += struct.pack(order + "hi", nvar, nobs)
    out += b"\0" * 81 + b"\0" * 18
    codes = []
    for name, kind, _ in cols:
        codes.append(int(kind[3:]) if kind.startswith("str") else NUMCODE[kind])
    out += bytes(codes)
    for name, _, _ in cols:
        out += name.encode().ljust(33, b"\0")
    srt = [0] * (nvar + 1)
    for i, name in enumerate(sortby or []):
        srt[i] = [c[0] for c in cols].index(name) + 1
    out += b"".join(struct.pack(order + "h", s) for s in srt)
    for _, kind, _ in cols:
        f = "%9s" if kind.startswith("str") else "%10.0g"
        out += f.encode().ljust(12, b"\0")
    out += b"\0" * 33 * nvar + b"\0" * 81 * nvar
    out += struct.pack(order + "bi", 0, 0)
    for i in range(nobs):
        for (_, kind, vals), code in zip(cols, codes):
            v = vals[i]
            if code <= 244:
                out += v.encode().ljust(code, b"\0")
            elif code == 255:
                out += struct.pack(order + "d", MISSING_D if v is None else v)
            elif code == 253:
                out += struct.pack(order + "i", 2147483621 if v is None else v)
            else:
                out += struct.pack(order + "b", 101 if v is None else v)
    open(path, "wb").write(out)


def read_dta(path):
    data = open(path, "rb").read()
    assert data[0] == 113, "format %d" % data[0]
    order = "<" if data[1] == 2 else ">"
    nvar, nobs = struct.unpack(order + "hi", data[4:10])
    pos = 109
    types = list(data[pos:pos + nvar])
    pos += nvar
    names = [data[pos + 33 * i:pos + 33 * (i + 1)].split(b"\0")[0].decode() for i in range(nvar)]
    pos += 33 * nvar
    pos += 2 * (nvar + 1) + 12 * nvar + 33 * nvar + 81 * nvar
    while True:
        t = data[pos]
        (ln,) = struct.unpack(order + "i", data[pos + 1:pos + 5])
        pos += 5
        if t == 0 and ln == 0:
            break
        pos += ln
    width = {251: 1, 252: 2, 253: 4, 254: 4, 255: 8}
    cols = {n: [] for n in names}
    for _ in range(nobs):
        for n, t in zip(names, types):
            w = t if t <= 244 else width[t]
            cell = data[pos:pos + w]
            pos += w
            if t <= 244:
                cols[n].append(cell.split(b"\0")[0].decode())
                continue
            code = {251: "b", 252: "h", 253: "i", 254: "f", 255: "d"}[t]
            v = struct.unpack(order + code, cell)[0]
            lim = {251: 101, 252: 32741, 253: 2147483621, 254: 2.0 ** 127, 255: MISSING_D}[t]
            cols[n].append(None if v >= lim else v)
    return names, types, cols


def run(exe, work, dofile):
    r = subprocess.run([exe, "-q", "-b", "do", dofile], cwd=work,
                       stdin=subprocess.DEVNULL, capture_output=True)
    log = open(os.path.join(work, dofile[:-3] + ".log")).read()
    return r.returncode, log


def norm(v):
    if v is None:
        return None
    if isinstance(v, float) and v != v:
        return None
    if isinstance(v, str):
        return v
    return float(v)


def case(exe, work, rng, kind, nm, nu, keyrange):
    # keys: unique on the side the declaration requires
    def keys(n, unique):
        if unique:
            return rng.sample(range(1, keyrange + 1), n)
        return [rng.randint(1, keyrange) for _ in range(n)]
    mkeys = keys(nm, kind in ("1:1", "1:m"))
    ukeys = keys(nu, kind in ("1:1", "m:1"))

    def num(n):
        return [None if rng.random() < 0.1 else round(rng.uniform(-1e3, 1e3), 3) for _ in range(n)]
    m = [("id", "long", mkeys), ("mid", "long", list(range(1, nm + 1))),
         ("x", "double", num(nm)), ("flag", "byte", [rng.randint(0, 100) for _ in range(nm)])]
    u = [("id", "long", ukeys), ("uid", "long", list(range(1, nu + 1))),
         ("x", "double", num(nu)), ("y", "double", num(nu)),
         ("name", "str7", ["n%d" % rng.randint(0, 99999) for _ in range(nu)])]
    write_dta(os.path.join(work, "m.dta"), m, "<")
    write_dta(os.path.join(work, "u.dta"), u, ">")
    with open(os.path.join(work, "mm.do"), "w") as f:
        f.write("use m, clear\nmerge id using u, match(%s)\n" % kind)
        f.write("save out, replace\n")
    rc, log = run(exe, work, "mm.do")
    if rc != 0:
        print(log)
        return "korvu-xe failed for %s" % kind
    names, _, got = read_dta(os.path.join(work, "out.dta"))

    # pandas on the same data
    md = pd.DataFrame({n: v for n, _, v in m}).astype({"x": float})
    ud = pd.DataFrame({n: v for n, _, v in u}).astype({"x": float, "y": float})
    validate = {"1:1": "one_to_one", "m:1": "many_to_one", "1:m": "one_to_many"}[kind]
    ref = md.merge(ud, on="id", how="outer", suffixes=("", "_u"), indicator=True,
                   validate=validate)
    code = ref["_merge"].map({"left_only": 1, "right_only": 2, "both": 3}).astype(int)
    # a variable in both keeps the master's value where the master has the
    # observation (missing or not), the using value elsewhere
    x = ref["x"].where(code != 2, ref["x_u"])
    def col(series):
        return [norm(v) for v in series.tolist()]
    want = sorted(zip(col(ref["id"]), col(ref["mid"]), col(ref["uid"]), col(x), col(ref["y"]),
                      col(ref["flag"]), col(ref["name"].fillna("")), col(code)),
                  key=repr)
    have = sorted(zip(*(list(map(norm, got[n])) for n in
                        ("id", "mid", "uid", "x", "y", "flag", "name", "_merge"))), key=repr)
    counts_w = code.value_counts().to_dict()
    counts_h = pd.Series(got["_merge"]).value_counts().to_dict()
    if counts_w != counts_h:
        return "%s: counts %s, pandas %s" % (kind, counts_h, counts_w)
    if want != have:
        bad = next(i for i, (a, b) in enumerate(zip(want, have)) if a != b) if len(want) == len(have) else -1
        return "%s: rows differ (n %d vs %d) at %d: %s vs %s" % (
            kind, len(have), len(want), bad, have[bad] if bad >= 0 else "", want[bad] if bad >= 0 else "")
    # the table shown agrees with the counts
    for k in (1, 2, 3):
        n = counts_w.get(k, 0)
        if not any(line.rstrip().endswith("(_merge==%d)" % k) and (" %d " % n) in line
                   for line in log.splitlines()):
            return "%s: the table does not show %d for code %d" % (kind, n, k)
    return None


def main():
    exe, work = sys.argv[1], sys.argv[2]
    seed = int(sys.argv[3]) if len(sys.argv) > 3 else 1
    rng = random.Random(seed)
    os.makedirs(work, exist_ok=True)
    fails = []
    for kind, nm, nu, kr in (("1:1", 300, 250, 500), ("m:1", 400, 60, 80), ("1:m", 60, 400, 80),
                             ("m:1", 1, 1, 1), ("1:1", 50, 50, 50)):
        err = case(exe, work, rng, kind, nm, nu, kr)
        if err:
            fails.append(err)
    for f in fails:
        print("FAIL:", f)
    return 1 if fails else 0


if __name__ == "__main__":
    sys.exit(main())
