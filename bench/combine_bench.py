#!/usr/bin/env python3
"""merge, append, preserve/restore against R data.table and pandas.

Usage: /usr/bin/python3 bench/combine_bench.py [build-dir] [N] [--write]

- merge one-to-one of two datasets of N observations on one integer key;
- merge many-to-one of N observations onto a lookup of 100,000 rows;
- append of two files of N observations;
- preserve and restore of 2N observations by 12 doubles.
N defaults to 5,000,000. Each side's figure is CPU time (user + system) of
the operation alone: for Korvu the CPU time of a run that loads the data and
does the operation less that of a run that only loads the data; for R and
pandas the process CPU time around the operation, on data already in memory.
Not a test. With --write the table is appended to bench/RESULTS.md.
"""
import os
import resource
import shutil
import struct
import subprocess
import sys
import tempfile

import numpy as np

here = os.path.dirname(os.path.abspath(__file__))
args = [a for a in sys.argv[1:] if not a.startswith("--")]
build = args[0] if args else os.path.join(here, "..", "build")
N = int(args[1]) if len(args) > 1 else 5000000
L = 100000
exe = os.path.abspath(os.path.join(build, "bin", "korvu-xe"))
work = tempfile.mkdtemp(prefix="combbench.")
os.chdir(work)


def write_dta(path, cols, sortkey=True):
    """cols: list of (name, numpy array of int32 or float64)."""
    n = len(cols[0][1])
    k = len(cols)
    with open(path, "wb") as f:
        f.write(struct.pack("<BBBBhi", 113, 2, 1, 0, k, n) + b"".ljust(81, b"\0") + b"".ljust(18, b"\0"))
        f.write(bytes([253 if a.dtype == np.int32 else 255 for _, a in cols]))
        for name, _ in cols:
            f.write(name.encode().ljust(33, b"\0"))
        srt = [1 if sortkey else 0] + [0] * k
        f.write(struct.pack("<%dh" % (k + 1), *srt))
        for _, a in cols:
            f.write((b"%12.0g" if a.dtype == np.int32 else b"%10.0g").ljust(12, b"\0"))
        f.write(b"\0" * (33 * k + 81 * k) + b"\0" * 5)
        rec = np.dtype([(name, "<i4" if a.dtype == np.int32 else "<f8") for name, a in cols])
        block = 1000000
        for s in range(0, n, block):
            r = np.empty(min(block, n - s), dtype=rec)
            for name, a in cols:
                r[name] = a[s:s + block]
            f.write(r.tobytes())


rng = np.random.default_rng(1)
ids = np.arange(1, N + 1, dtype=np.int32)
x = rng.standard_normal(N)
y = rng.standard_normal(N)
mkey = np.sort(rng.integers(1, L + 1, N).astype(np.int32))
lk = np.arange(1, L + 1, dtype=np.int32)
lz = rng.standard_normal(L)
write_dta("m11.dta", [("id", ids), ("x", x)])
write_dta("u11.dta", [("id", ids), ("y", y)])
write_dta("mm1.dta", [("id", mkey), ("x", x)])
write_dta("lk.dta", [("id", lk), ("z", lz)])
write_dta("a1.dta", [("id", ids), ("x", x), ("y", y)], sortkey=False)
big = [("v%d" % j, rng.standard_normal(2 * N)) for j in range(12)]
write_dta("big.dta", big, sortkey=False)
del big


def child_cpu():
    r = resource.getrusage(resource.RUSAGE_CHILDREN)
    return r.ru_utime + r.ru_stime


def korvu(lines):
    with open("b.do", "w") as f:
        f.write("set memory %dm\n" % (max(400, 2 * N * 12 * 8 * 2 // 1000000 + 200)))
        f.write("\n".join(lines) + "\n")
    t = child_cpu()
    subprocess.run([exe, "-q", "-b", "do", "b.do"], stdin=subprocess.DEVNULL, check=True,
                   stdout=subprocess.DEVNULL)
    c = child_cpu() - t
    log = open("b.log").read()
    if "r(" in log.split("end of do-file")[-1] or "\nr(" in log:
        raise SystemExit("korvu-xe failed:\n" + log[-2000:])
    return c


def korvu_op(load, op):
    base = min(korvu(load) for _ in range(2))
    full = min(korvu(load + op) for _ in range(2))
    return max(full - base, 0.0)


res = {}
res["merge 1:1"] = [korvu_op(["use m11"], ["merge id using u11"])]
res["merge 1:1, match()"] = [korvu_op(["use m11"], ["merge id using u11, match(1:1)"])]
res["merge m:1"] = [korvu_op(["use mm1"], ["merge id using lk"])]
res["merge m:1, match()"] = [korvu_op(["use mm1"], ["merge id using lk, match(m:1)"])]
res["append"] = [korvu_op(["use a1"], ["append using a1"])]
res["preserve+restore"] = [korvu_op(["use big"], ["preserve", "replace v0 = 1 in 1", "restore"])
                           - korvu_op(["use big"], ["replace v0 = 1 in 1"])]

# pandas, on data in memory
import pandas as pd
import time

def pcpu(f, reps=2):
    best = None
    for _ in range(reps):
        t = time.process_time()
        f()
        c = time.process_time() - t
        best = c if best is None else min(best, c)
    return best

m11 = pd.DataFrame({"id": ids, "x": x})
u11 = pd.DataFrame({"id": ids, "y": y})
mm1 = pd.DataFrame({"id": mkey, "x": x})
lkd = pd.DataFrame({"id": lk, "z": lz})
a1 = pd.DataFrame({"id": ids, "x": x, "y": y})
p = {}
p["merge 1:1"] = pcpu(lambda: m11.merge(u11, on="id", how="outer", indicator=True))
p["merge 1:1, match()"] = pcpu(lambda: m11.merge(u11, on="id", how="outer", indicator=True,
                                                 validate="one_to_one"))
p["merge m:1"] = pcpu(lambda: mm1.merge(lkd, on="id", how="outer", indicator=True))
p["merge m:1, match()"] = pcpu(lambda: mm1.merge(lkd, on="id", how="outer", indicator=True,
                                                 validate="many_to_one"))
p["append"] = pcpu(lambda: pd.concat([a1, a1], ignore_index=True))
bigd = pd.DataFrame({"v%d" % j: rng.standard_normal(2 * N) for j in range(12)})
p["preserve+restore"] = pcpu(lambda: bigd.copy(deep=True))
del bigd, m11, u11, mm1, lkd, a1
for k in res:
    res[k].append(p[k])

# R data.table, on data in memory
rscript = r"""
suppressMessages(library(data.table))
n <- %d; L <- %d
set.seed(1)
cpu <- function(e) { t <- proc.time(); force(e); d <- proc.time() - t; d[["user.self"]] + d[["sys.self"]] }
best <- function(f) min(cpu(f()), cpu(f()))
m11 <- data.table(id = 1:n, x = rnorm(n)); u11 <- data.table(id = 1:n, y = rnorm(n))
setkey(m11, id); setkey(u11, id)
mm1 <- data.table(id = sort(sample.int(L, n, TRUE)), x = rnorm(n)); lk <- data.table(id = 1:L, z = rnorm(L))
a1 <- data.table(id = 1:n, x = rnorm(n), y = rnorm(n))
big <- as.data.table(lapply(1:12, function(j) rnorm(2 * n)))
r <- c(best(function() merge(m11, u11, by = "id", all = TRUE)),
       best(function() merge(m11, u11, by = "id", all = TRUE)),
       best(function() merge(mm1, lk, by = "id", all = TRUE)),
       best(function() merge(mm1, lk, by = "id", all = TRUE)),
       best(function() rbindlist(list(a1, a1))),
       best(function() copy(big)))
cat(r, "\n")
""" % (N, L)
out = subprocess.run(["Rscript", "-e", rscript], capture_output=True, text=True, check=True)
rv = [float(v) for v in out.stdout.split()]
for k, v in zip(res, rv):
    res[k].append(v)

with open("/proc/loadavg") as f:
    load = " ".join(f.read().split()[:3])
lines = ["", "## Merge, append, preserve (`bench/combine_bench.py`), %s" % time.strftime("%Y-%m-%d"), "",
         "N = %d observations (the lookup of the many-to-one merge: %d rows; preserve and restore:" % (N, L),
         "%d by 12 doubles). CPU time (user + system) of the operation alone, best of two: Korvu's" % (2 * N),
         "is a run that loads the data and does it less a run that only loads the data, so it",
         "includes reading the using file; pandas (`merge(how=\"outer\", indicator=True)`, `concat`,",
         "`copy()`) and R data.table (`merge(all = TRUE)` on keyed tables, `rbindlist`, `copy`)",
         "work on data already in memory. Load average at the end: %s." % load, "",
         "| operation | Korvu [s] | pandas [s] | R data.table [s] | Korvu / pandas | Korvu / R |",
         "|---|---:|---:|---:|---:|---:|"]
for k, (kv, pv, rv_) in res.items():
    lines.append("| %s | %.2f | %.2f | %.2f | %.2f | %.2f |" % (k, kv, pv, rv_, kv / pv if pv else 0,
                                                              kv / rv_ if rv_ else 0))
text = "\n".join(lines) + "\n"
print(text)
if "--write" in sys.argv:
    with open(os.path.join(here, "RESULTS.md"), "a") as f:
        f.write(text)
shutil.rmtree(work, ignore_errors=True)
