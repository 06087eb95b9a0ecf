#!/usr/bin/env bash
# Data workloads against R data.table, pandas and plain numpy arrays: generate,
# replace, count if, and sort by a random key and by a key with many ties, on
# one dataset of N observations of 12 doubles that numpy makes with a fixed
# seed, so that every system works on the same values. Only the workloads are
# timed (best of 3 each), never the load. Korvu's figures are its own timing of
# each command (`set rmsg on`, to the hundredth of a second).
# Usage: bench/peers.sh [build-dir] [N...]   (default: build 1000000 10000000)
# Not a test: it prints a table per N and appends them to bench/RESULTS.md.
# Installs r-base-core, r-cran-data.table, python3-pandas and python3-numpy
# from Debian when missing. 10 million observations need about 6 GB of memory
# and 2 GB of /tmp, and a quiet machine.
set -euo pipefail
build=${1:-build}
[ $# -gt 0 ] && shift
sizes=("$@")
[ ${#sizes[@]} -gt 0 ] || sizes=(1000000 10000000)
results=$(cd "$(dirname "$0")" && pwd)/RESULTS.md
exe=$(cd "$build/bin" && pwd)/korvu-xe
[ -x "$exe" ] || { echo "no $exe: build first" >&2; exit 1; }
py=/usr/bin/python3

need=()
for p in r-base-core r-cran-data.table python3-pandas python3-numpy; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || need+=("$p")
done
if [ ${#need[@]} -gt 0 ]; then
  sudo=""; [ "$(id -u)" -ne 0 ] && sudo=sudo
  $sudo apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq "${need[@]}" >/dev/null
fi

work=$(mktemp -d /tmp/peersbench.XXXXXX)
trap 'rm -rf "$work"' EXIT
cd "$work"

# One file of key/value lines per N: "system workload seconds" for timings,
# "system n COUNT", "system first|last VALUE" for the cross checks.
section=$work/section.md
versions=$(Rscript -e 'suppressMessages(library(data.table)); cat(sprintf("R %s, data.table %s on %d thread(s)", getRversion(), packageVersion("data.table"), getDTthreads()))')
versions="$versions, $($py -c 'import numpy, pandas; print("numpy %s, pandas %s" % (numpy.__version__, pandas.__version__))')"

for N in "${sizes[@]}"; do
  rm -f ./*.dta ./*.bin ./*.do ./*.log res.txt
  load=$(cut -d' ' -f1-3 /proc/loadavg)

  # The dataset: x uniform (a random key), z uniform in (0.5, 1.5], k the
  # integers 0..99 (many ties), v4..v12 uniform. data.dta is format 113, low
  # byte first, records of 12 doubles; cols.bin is the same columns one after
  # the other for R and pandas. The reference answers come from here.
  $py - "$N" <<'PY' >> res.txt
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
x, z, kk = cols[0], cols[1], cols[2]
print("ref n", int(np.count_nonzero((x > 0.5) & (z < 1) | (kk == 3))))
print("ref first", repr(float(x.min())))
print("ref last", repr(float(x.max())))
PY

  # Korvu: the sorts come last, in a do-file of their own, each after a fresh
  # `use` so that it starts from the original order.
  mem=$((N / 4000 + 64))
  {
    printf 'set rmsg on\nset memory %sm\nuse data\n' "$mem"
    for _ in 1 2 3; do printf 'generate double y = x*2 + log(z)\ndrop y\n'; done
    for _ in 1 2 3; do printf 'replace v5 = v5*3 + 1\n'; done
    for _ in 1 2 3; do printf 'count if x > 0.5 & z < 1 | k == 3\n'; done
  } > main.do
  {
    printf 'set rmsg on\nset memory %sm\n' "$mem"
    for _ in 1 2 3; do printf 'use data, clear\nsort x\n'; done
    printf 'display %%21.17g x[1]\ndisplay %%21.17g x[_N]\n'
    for _ in 1 2 3; do printf 'use data, clear\nsort k\n'; done
  } > sort.do
  "$exe" -q -b do main.do </dev/null >/dev/null || true
  "$exe" -q -b do sort.do </dev/null >/dev/null || true
  # Pair each command echoed in the logs with its `r; t=` line; keep the best.
  $py - main.log sort.log <<'PY' >> res.txt
import re, sys
names = {"generate double y = x*2 + log(z)": "gen", "replace v5 = v5*3 + 1": "replace",
         "count if x > 0.5 & z < 1 | k == 3": "count", "sort x": "sortx", "sort k": "sortk"}
best, counts, shown = {}, [], []
for path in sys.argv[1:]:
    cmd = None
    for line in open(path, errors="replace"):
        line = line.rstrip("\n")
        if line.startswith(". "):
            cmd = line[2:].strip(); continue
        m = re.match(r"r; t=([0-9.]+)", line)
        if m:
            if cmd in names: best[names[cmd]] = min(best.get(names[cmd], 1e9), float(m.group(1)))
            cmd = None; continue
        if cmd and cmd.startswith("count if") and re.fullmatch(r"\s*[0-9,]+", line):
            counts.append(line.strip().replace(",", ""))
        if cmd and cmd.startswith("display %21.17g x[") and line.strip():
            shown.append(line.strip())
for w, t in best.items(): print("korvu", w, t)
for c in counts: print("korvu n", c)
if len(shown) == 2:
    print("korvu first", repr(float(shown[0]))); print("korvu last", repr(float(shown[1])))
PY
  # Say what stopped a do-file (a command not yet there shows as n/a).
  awk '/^r\([0-9]+\);/ && prev != "end of do-file" { sub(/;.*/, ""); print "korvu: " prev " " $0 } { prev = $0 }' \
    main.log sort.log | sort -u >&2

  # R data.table: best of 3, each after a collection; the sorts start from a
  # copy of the original order.
  Rscript - "$N" <<'R' >> res.txt
suppressMessages(library(data.table))
n <- as.integer(commandArgs(TRUE)[1])
names <- c("x", "z", "k", paste0("v", 4:12))
con <- file("cols.bin", "rb")
orig <- as.data.table(setNames(lapply(names, function(nm) readBin(con, "double", n = n, size = 8, endian = "little")), names))
close(con)
dt <- copy(orig)
now <- function() as.numeric(Sys.time())
best <- c(gen = Inf, replace = Inf, count = Inf, sortx = Inf, sortk = Inf)
for (i in 1:3) {
  invisible(gc()); t0 <- now(); dt[, y := x*2 + log(z)]; best["gen"] <- min(best["gen"], now() - t0)
  dt[, y := NULL]
}
for (i in 1:3) {
  invisible(gc()); t0 <- now(); dt[, v5 := v5*3 + 1]; best["replace"] <- min(best["replace"], now() - t0)
}
for (i in 1:3) {
  invisible(gc()); t0 <- now(); cnt <- dt[x > 0.5 & z < 1 | k == 3, .N]; best["count"] <- min(best["count"], now() - t0)
  cat("r n", cnt, "\n")
}
for (key in c("x", "k")) for (i in 1:3) {
  rm(dt); dt <- copy(orig); invisible(gc())
  t0 <- now(); setorderv(dt, key); el <- now() - t0
  w <- paste0("sort", key); best[w] <- min(best[w], el)
  if (key == "x" && i == 1) cat(sprintf("r first %.17g\nr last %.17g\n", dt$x[1], dt$x[n]))
}
for (w in names(best)) cat("r", w, best[[w]], "\n")
R

  # pandas on a frame of the 12 columns, and numpy on the bare arrays.
  $py - "$N" <<'PY' >> res.txt
import gc, sys, time, numpy as np, pandas as pd
n = int(sys.argv[1])
names = ["x", "z", "k"] + ["v%d" % j for j in range(4, 13)]
raw = np.fromfile("cols.bin", dtype="<f8").reshape(len(names), n)
df = pd.DataFrame({nm: raw[j].copy() for j, nm in enumerate(names)})
arr = {nm: raw[j].copy() for j, nm in enumerate(names)}
del raw
best = {}
def timed(system, workload, f):
    gc.collect()
    t = time.perf_counter(); r = f(); t = time.perf_counter() - t
    key = (system, workload)
    best[key] = min(best.get(key, 1e9), t)
    return r
def pd_gen(): df["y"] = df["x"] * 2 + np.log(df["z"])
def pd_replace(): df["v5"] = df["v5"] * 3 + 1
def np_gen(): arr["y"] = arr["x"] * 2 + np.log(arr["z"])
def np_replace(): arr["v5"] = arr["v5"] * 3 + 1
def np_sort(key, kind):
    idx = np.argsort(arr[key], kind=kind)
    return {nm: a[idx] for nm, a in arr.items()}
for _ in range(3):
    timed("pandas", "gen", pd_gen); del df["y"]
    timed("numpy", "gen", np_gen); del arr["y"]
for _ in range(3):
    timed("pandas", "replace", pd_replace)
    timed("numpy", "replace", np_replace)
for _ in range(3):
    c = timed("pandas", "count", lambda: int(((df.x > 0.5) & (df.z < 1) | (df.k == 3)).sum()))
    print("pandas n", c)
    x, z, k = arr["x"], arr["z"], arr["k"]
    c = timed("numpy", "count", lambda: int(np.count_nonzero((x > 0.5) & (z < 1) | (k == 3))))
    print("numpy n", c)
# df and arr keep their original order: sort_values and argsort make new ones.
for key in ("x", "k"):
    for kind, suffix in (("quicksort", ""), ("stable", "stable")):
        for _ in range(3):
            s = timed("pandas", "sort" + key + suffix, lambda: df.sort_values(key, kind=kind))
            if key == "x" and kind == "quicksort": sx = s["x"].to_numpy()
            del s
            s = timed("numpy", "sort" + key + suffix, lambda: np_sort(key, kind))
            if key == "x" and kind == "stable": nx = s["x"]
            del s
print("pandas first", repr(float(sx[0]))); print("pandas last", repr(float(sx[-1])))
print("numpy first", repr(float(nx[0]))); print("numpy last", repr(float(nx[-1])))
for (s, w), t in best.items(): print(s, w, t)
PY

  # The table, and the cross checks: the count and the ends of x after the
  # sort must agree with the reference from the generating script.
  $py - "$N" "$load" res.txt <<'PY' | tee -a "$section"
import sys
n, load, path = int(sys.argv[1]), sys.argv[2], sys.argv[3]
t, checks = {}, {}
for line in open(path):
    f = line.split()
    if len(f) != 3 or f[0] not in ("ref", "korvu", "r", "pandas", "numpy"): continue
    s, w, v = f
    if w in ("n", "first", "last"): checks.setdefault(w, []).append((s, v))
    else: t[(s, w)] = float(v)
bad = []
for w, vals in checks.items():
    ref = [v for s, v in vals if s == "ref"][0]
    for s, v in vals:
        # Korvu shows x to the digits its display width allows (%21.17g)
        if (int(v) != int(ref)) if w == "n" else abs(float(v) - float(ref)) > 1e-14 * abs(float(ref)):
            bad.append("%s %s = %s, reference %s" % (s, w, v, ref))
if bad:
    print("CROSS-CHECK FAILED at N = %d:\n  " % n + "\n  ".join(bad), file=sys.stderr)
    sys.exit(1)
who = lambda w: sorted({s for s, _ in checks.get(w, []) if s != "ref"})
def fmt(v, korvu=False):
    if v is None: return "n/a"
    if korvu and v == 0: return "<0.01"
    return "%.2f" % v if korvu else "%.3f" % v
def ratio(k, o):
    if k is None or o is None: return ""
    if k == 0: return "<%.2f" % (0.01 / o)
    return "%.2f" % (k / o)
rows = [("`generate double y = x*2 + log(z)`", "gen", "gen", "gen"),
        ("`replace v5 = v5*3 + 1`", "replace", "replace", "replace"),
        ("`count if x > 0.5 & z < 1 \\| k == 3`", "count", "count", "count"),
        ("`sort x`", "sortx", "sortx", "sortx"),
        ("`sort x`, stable pandas and numpy", "sortx", None, "sortxstable"),
        ("`sort k` (100 distinct values)", "sortk", "sortk", "sortk"),
        ("`sort k`, stable pandas and numpy", "sortk", None, "sortkstable")]
print("\n### N = %d (load average at the start: %s)\n" % (n, load))
print("| workload | Korvu [s] | R data.table [s] | pandas [s] | numpy [s] | Korvu/R | Korvu/pandas | Korvu/numpy |")
print("|---|---:|---:|---:|---:|---:|---:|---:|")
for label, kw, rw, pw in rows:
    k = t.get(("korvu", kw)); r = t.get(("r", rw)) if rw else None
    p = t.get(("pandas", pw)); q = t.get(("numpy", pw))
    print("| %s | %s | %s | %s | %s | %s | %s | %s |" % (label, fmt(k, True), fmt(r) if rw else "",
          fmt(p), fmt(q), ratio(k, r), ratio(k, p), ratio(k, q)))
cnt = [v for s, v in checks["n"] if s == "ref"][0]
print("\nCross checks passed: the count (%s) from %s; the first and last x after `sort x` from %s."
      % (cnt, ", ".join(who("n")), ", ".join(who("first"))))
def target(name, ok):
    print("- %s: %s" % (name, "n/a" if ok is None else ("met" if ok else "missed")))
def get(s, w): return t.get((s, w))
def within(w):
    k, q, r = get("korvu", w), get("numpy", w), get("r", w)
    if k is None: return None
    return k <= 1.5 * q and k < r
def ahead(w):
    k = get("korvu", w)
    if k is None: return None
    return k < get("r", w) and k < get("pandas", w)
print("\nTargets:")
target("generate within 1.5x of numpy and ahead of R", within("gen"))
target("count within 1.5x of numpy and ahead of R", within("count"))
target("sort x ahead of R setorder and pandas sort_values", ahead("sortx"))
target("sort k ahead of R setorder and pandas sort_values", ahead("sortk"))
PY
done

cat <<MD | tee -a "$results"

## Against R and pandas (\`bench/peers.sh\`), $(date +%Y-%m-%d)

One dataset of N observations of 12 doubles made by numpy with a fixed seed
(x uniform, z uniform in (0.5, 1.5], k = floor(100 u), nine more uniform), read
by Korvu from a format-113 file and by R and pandas from the raw columns;
loading is not timed. Each figure is the best of 3 runs of the workload alone.
Korvu: its own timing of each command (\`set rmsg on\`, in hundredths of a
second cut down, so 0.03 means 0.03 to 0.04; every sort after a fresh \`use\`).
R: \`dt[, y := x*2 + log(z)]\`,
\`dt[, v5 := v5*3 + 1]\`, \`dt[x > 0.5 & z < 1 | k == 3, .N]\`,
\`setorder(dt, x)\` (always a stable radix sort; each from a copy of the
original order). pandas: \`df["y"] = df["x"]*2 + np.log(df["z"])\`,
\`df["v5"] = df["v5"]*3 + 1\`, \`((df.x > 0.5) & (df.z < 1) | (df.k == 3)).sum()\`,
\`df.sort_values("x")\` (quicksort; the stable rows \`kind="stable"\`).
numpy on the bare arrays: the same expressions, \`np.count_nonzero\` for the
count, and for the sort \`np.argsort\` then a take of all 12 columns.
$versions. Machine: 2 cores, 24 GiB, Debian 12.
Targets: generate and count within 1.5x of numpy and ahead of R; sort ahead of
R \`setorder\` and pandas \`sort_values\`. Ratios are Korvu's time over the
other's: below 1 Korvu is faster.
$(cat "$section")
MD
