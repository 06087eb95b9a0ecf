#!/usr/bin/env bash
# Reading and writing a delimited text file of 1 million rows by 12 columns
# (4 integer, 6 real, 2 text), against R's data.table fread/fwrite, base R
# read.csv/write.csv and pandas read_csv/to_csv. CPU time (user + sys) of each
# operation: inside the process for R and Python (proc.time, process_time),
# and for Korvu by /usr/bin/time of a run less a run that only starts.
# Usage: bench/csv_bench.sh [build-dir] [rows]   (default: build, 1000000).
# Not a test: it prints a table to paste into bench/RESULTS.md.
set -euo pipefail
build=${1:-build}
N=${2:-1000000}
exe=$(cd "$build/bin" && pwd)/korvu-xe
work=$(mktemp -d /tmp/csvbench.XXXXXX)
trap 'rm -rf "$work"' EXIT
cd "$work"

/usr/bin/python3 - "$N" <<'PY'
import sys, numpy as np, pandas as pd
n = int(sys.argv[1])
g = np.random.default_rng(20261123)
d = pd.DataFrame({
    "id": np.arange(1, n + 1),
    "year": g.integers(1990, 2024, n),
    "count": g.integers(0, 100, n),
    "big": g.integers(-2**30, 2**30, n),
    "x1": g.normal(size=n), "x2": g.normal(10, 3, n).round(2), "x3": g.uniform(size=n),
    "x4": g.exponential(size=n), "x5": (g.normal(size=n) * 1e6).round(3), "x6": g.uniform(-1, 1, n),
    "name": np.array(["alpha", "beta", "gamma delta", "epsilon", "zeta, eta"])[g.integers(0, 5, n)],
    "code": np.char.add("C", g.integers(0, 10**6, n).astype(str)),
})
d.to_csv("big.csv", index=False)
PY
ls -l big.csv >&2

cpu() { /usr/bin/time -f '%U %S' "$@" 2>&1 >/dev/null </dev/null | tail -1 | awk '{print $1 + $2}'; }
printf 'set memory 1500m\n' > k0.do
printf 'set memory 1500m\nimport delimited big.csv, clear\n' > k1.do
printf 'set memory 1500m\nimport delimited big.csv, clear\nexport delimited using out.csv, replace\n' > k2.do
# best of three runs of each
best() { local b=""; for _ in 1 2 3; do local t; t=$(cpu "$exe" -q -b do "$1"); if [ -z "$b" ] || (( $(echo "$t < $b" | bc -l) )); then b=$t; fi; done; echo "$b"; }
k0=$(best k0.do); k1=$(best k1.do); k2=$(best k2.do)
k_read=$(echo "$k1 - $k0" | bc -l); k_write=$(echo "$k2 - $k1" | bc -l)

read -r f_read f_write < <(Rscript -e '
suppressMessages(library(data.table)); setDTthreads(1)
cpu <- function(e) { t <- proc.time(); force(e); u <- proc.time() - t; u[["user.self"]] + u[["sys.self"]] }
t0 <- proc.time(); d <- fread("big.csv"); u <- proc.time() - t0; r <- u[["user.self"]] + u[["sys.self"]]
t0 <- proc.time(); fwrite(d, "r.csv"); u <- proc.time() - t0; w <- u[["user.self"]] + u[["sys.self"]]
cat(r, w, "\n")')
read -r b_read b_write < <(Rscript -e '
t0 <- proc.time(); d <- read.csv("big.csv"); u <- proc.time() - t0; r <- u[["user.self"]] + u[["sys.self"]]
t0 <- proc.time(); write.csv(d, "b.csv", row.names = FALSE); u <- proc.time() - t0; w <- u[["user.self"]] + u[["sys.self"]]
cat(r, w, "\n")')
read -r p_read p_write < <(/usr/bin/python3 -c '
import time, pandas as pd
t = time.process_time(); d = pd.read_csv("big.csv"); r = time.process_time() - t
t = time.process_time(); d.to_csv("p.csv", index=False); w = time.process_time() - t
print(r, w)')

ratio() { echo "scale=2; $1 / $2" | bc -l; }
printf '| operation | Korvu | fread/fwrite | read.csv/write.csv | pandas |\n|---|---:|---:|---:|---:|\n'
printf '| read (s CPU) | %.2f | %.2f | %.2f | %.2f |\n' "$k_read" "$f_read" "$b_read" "$p_read"
printf '| write (s CPU) | %.2f | %.2f | %.2f | %.2f |\n' "$k_write" "$f_write" "$b_write" "$p_write"
printf '| read: peer / Korvu | 1 | %s | %s | %s |\n' "$(ratio "$f_read" "$k_read")" "$(ratio "$b_read" "$k_read")" "$(ratio "$p_read" "$k_read")"
printf '| write: peer / Korvu | 1 | %s | %s | %s |\n' "$(ratio "$f_write" "$k_write")" "$(ratio "$b_write" "$k_write")" "$(ratio "$p_write" "$k_write")"
