#!/usr/bin/env bash
# CPU time (user + system) of the data workloads of bench/peers.sh, for one
# or two Korvu builds and for numpy, pandas and R data.table, on the same
# N observations of 12 doubles. A loaded machine stretches wall-clock times;
# CPU time is the fairer measure there.
#
# Korvu: each workload runs R (3) or 2R times in a batch do-file after `use`; its CPU
# time is that of the whole run less the run without the workload, over R.
# The sorts each follow a fresh `use` (less R plain `use`s). "gen after sort"
# is `generate` right after `sort x`, less the sort: column work on sorted
# data. `save` and `use` are timed the same way. numpy and pandas: in-process
# CPU time (time.process_time) of each operation, best of 3; R: user + system
# from proc.time(), best of 3.
#
# Usage: bench/columns.sh N build [build-before]   (e.g. 10000000 build ../main/build)
# Not a test: prints a table (markdown) to standard output.
set -euo pipefail
N=${1:-10000000}
after=$(cd "${2:-build}/bin" && pwd)/korvu-xe
before=""
[ $# -ge 3 ] && before=$(cd "$3/bin" && pwd)/korvu-xe
py=/usr/bin/python3
work=$(mktemp -d /tmp/colbench.XXXXXX)
trap 'rm -rf "$work"' EXIT
cd "$work"

$py - "$N" <<'PY'
import struct, sys, numpy as np
n = int(sys.argv[1])
rng = np.random.default_rng(20261122)
names = ["x", "z", "k"] + ["v%d" % j for j in range(4, 13)]
cols = [rng.random(n), 1.5 - rng.random(n), np.floor(rng.random(n) * 100)]
cols += [rng.random(n) for _ in range(9)]
k = len(cols)
with open("data.dta", "wb") as f:
    f.write(struct.pack("<BBBBhi", 113, 2, 1, 0, k, n) + b"peers".ljust(81, b"\0") + b"".ljust(18, b"\0"))
    f.write(bytes([255] * k))
    for nm in names: f.write(nm.encode().ljust(33, b"\0"))
    f.write(b"\0\0" * (k + 1))
    for _ in names: f.write(b"%10.0g".ljust(12, b"\0"))
    f.write(b"\0" * (33 * k + 81 * k) + b"\0" * 5)
    f.flush()
    np.column_stack(cols).astype("<f8").tofile(f)
with open("cols.bin", "wb") as f:
    for c in cols: c.astype("<f8").tofile(f)
PY

$py - "$N" "$after" "$before" <<'PY'
import os, re, resource, subprocess, sys, time
import numpy as np, pandas as pd
n, after, before = int(sys.argv[1]), sys.argv[2], sys.argv[3]
R = 3
mem = "set memory %dm\n" % (n // 4000 + 64)
gen, rep, cnt = "generate double y = x*2 + log(z)\ndrop y\n", "replace v5 = v5*3 + 1\n", \
    "count if x > 0.5 & z < 1 | k == 3\n"

def cpu(exe, body):
    open("b.do", "w").write(mem + body)
    r0 = resource.getrusage(resource.RUSAGE_CHILDREN)
    subprocess.run([exe, "-q", "-b", "do", "b.do"], stdin=subprocess.DEVNULL,
                   stdout=subprocess.DEVNULL, check=False)
    r1 = resource.getrusage(resource.RUSAGE_CHILDREN)
    log = open("b.log").read()
    if re.search(r"^r\(\d+\);", log, re.M):
        print("korvu stopped:", log[-300:], file=sys.stderr)
    return (r1.ru_utime - r0.ru_utime) + (r1.ru_stime - r0.ru_stime)

def best(f, k=2):
    return min(f() for _ in range(k))

def korvu(exe):
    t = {}
    base = best(lambda: cpu(exe, "use data\n"))
    Q = 2 * R  # the short workloads run more often
    t["gen"] = (best(lambda: cpu(exe, "use data\n" + gen * Q)) - base) / Q
    t["replace"] = (best(lambda: cpu(exe, "use data\n" + rep * Q)) - base) / Q
    t["count"] = (best(lambda: cpu(exe, "use data\n" + cnt * Q)) - base) / Q
    uses = best(lambda: cpu(exe, "use data, clear\n" * R))
    t["use"] = (uses - base) / (R - 1)
    t["sortx"] = (best(lambda: cpu(exe, "use data, clear\nsort x\n" * R)) - uses) / R
    t["sortk"] = (best(lambda: cpu(exe, "use data, clear\nsort k\n" * R)) - uses) / R
    sortgen = best(lambda: cpu(exe, ("use data, clear\nsort x\n" + gen) * R))
    t["gensorted"] = (sortgen - uses) / R - t["sortx"]
    t["save"] = (best(lambda: cpu(exe, "use data\n" + "save out, replace\n" * R)) - base) / R
    return t

res = {"after": korvu(after)}
if before: res["before"] = korvu(before)

names = ["x", "z", "k"] + ["v%d" % j for j in range(4, 13)]
raw = np.fromfile("cols.bin", dtype="<f8").reshape(len(names), n)
df = pd.DataFrame({nm: raw[j].copy() for j, nm in enumerate(names)})
arr = {nm: raw[j].copy() for j, nm in enumerate(names)}
del raw
def pt(f):
    b = 1e9
    for _ in range(3):
        t0 = time.process_time(); f(); b = min(b, time.process_time() - t0)
    return b
def pd_gen(): df["y"] = df["x"] * 2 + np.log(df["z"])
def np_gen(): arr["y"] = arr["x"] * 2 + np.log(arr["z"])
x, z, kk = arr["x"], arr["z"], arr["k"]
res["pandas"] = {"gen": pt(pd_gen),
                 "replace": pt(lambda: df.__setitem__("v5", df["v5"] * 3 + 1)),
                 "count": pt(lambda: int(((df.x > 0.5) & (df.z < 1) | (df.k == 3)).sum())),
                 "sortx": pt(lambda: df.sort_values("x")), "sortk": pt(lambda: df.sort_values("k"))}
def np_sort(key):
    idx = np.argsort(arr[key]); return {nm: a[idx] for nm, a in arr.items()}
res["numpy"] = {"gen": pt(np_gen),
                "replace": pt(lambda: arr.__setitem__("v5", arr["v5"] * 3 + 1)),
                "count": pt(lambda: int(np.count_nonzero((x > 0.5) & (z < 1) | (kk == 3)))),
                "sortx": pt(lambda: np_sort("x")), "sortk": pt(lambda: np_sort("k"))}
del df, arr
rscript = r'''
suppressMessages(library(data.table))
n <- as.integer(commandArgs(TRUE)[1])
names <- c("x", "z", "k", paste0("v", 4:12))
con <- file("cols.bin", "rb")
orig <- as.data.table(setNames(lapply(names, function(nm) readBin(con, "double", n = n, size = 8, endian = "little")), names))
close(con)
dt <- copy(orig)
cpu <- function(f) { b <- Inf; for (i in 1:3) { invisible(gc()); t0 <- proc.time(); f(); t1 <- proc.time() - t0; b <- min(b, t1[["user.self"]] + t1[["sys.self"]]) }; b }
cat("gen", cpu(function() { dt[, y := x*2 + log(z)]; dt[, y := NULL] }), "\n")
cat("replace", cpu(function() dt[, v5 := v5*3 + 1]), "\n")
cat("count", cpu(function() dt[x > 0.5 & z < 1 | k == 3, .N]), "\n")
for (key in c("x", "k")) { b <- Inf; for (i in 1:3) { rm(dt); dt <- copy(orig); invisible(gc()); t0 <- proc.time(); setorderv(dt, key); t1 <- proc.time() - t0; b <- min(b, t1[["user.self"]] + t1[["sys.self"]]) }; cat(paste0("sort", key), b, "\n") }
'''
open("b.R", "w").write(rscript)
try:
    out = subprocess.run(["Rscript", "b.R", str(n)], capture_output=True, text=True).stdout
    res["R"] = {l.split()[0]: float(l.split()[1]) for l in out.splitlines() if len(l.split()) == 2}
except FileNotFoundError:
    pass

rows = [("`generate double y = x*2 + log(z)`", "gen"), ("`replace v5 = v5*3 + 1`", "replace"),
        ("`count if x > 0.5 & z < 1 \\| k == 3`", "count"), ("`sort x`", "sortx"),
        ("`sort k` (100 distinct values)", "sortk"),
        ("`generate` right after `sort x`", "gensorted"), ("`use` (960 MB at 10M)", "use"),
        ("`save`", "save")]
cols = [c for c in ("before", "after", "R", "pandas", "numpy") if c in res]
head = {"before": "Korvu before", "after": "Korvu after", "R": "R data.table", "pandas": "pandas",
        "numpy": "numpy"}
print("\n### N = %d, CPU seconds (user + system)\n" % n)
print("| workload | " + " | ".join(head[c] for c in cols) + " | after/numpy | after/pandas | after/R |")
print("|---|" + "---:|" * (len(cols) + 3))
for label, w in rows:
    cells = ["%.3f" % res[c][w] if w in res[c] else "" for c in cols]
    a = res["after"][w]
    ratio = lambda c: "%.2f" % (a / res[c][w]) if c in res and w in res[c] and res[c][w] > 0 else ""
    print("| %s | %s | %s | %s | %s |" % (label, " | ".join(cells), ratio("numpy"), ratio("pandas"), ratio("R")))
PY
