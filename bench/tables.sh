#!/usr/bin/env bash
# tabulate and correlate against their peers, in CPU time (user + system).
# Every system makes the same data from the observation number n = 1..N:
#   g  = mod(n * 7919, 1000)                        (1,000 groups)
#   vj = mod(n * (7919 + j), 100019) / 100019 * j + n / N,   j = 1..5
# Korvu: the CPU time of a run that makes the data and runs the command ten
# times, less that of a run that only makes the data, divided by ten (each
# run the best of three, since the machine is shared).
# R (data.table's dt[, .N, by = g], table(), cor()), pandas (value_counts)
# and numpy (corrcoef): the CPU time of the command alone, best of three.
# Usage: bench/tables.sh [build-dir] [N] [--peers]. Not a test.
set -euo pipefail
build=${1:-build}
N=${2:-10000000}
peers=${3:-}
exe=$(cd "$build/bin" && pwd)/korvu-xe
[ -x "$exe" ] || { echo "no $exe: build first" >&2; exit 1; }
work=$(mktemp -d /tmp/tabbench.XXXXXX)
trap 'rm -rf "$work"' EXIT
cd "$work"
mb=$((N * 6 * 8 / 1048576 + 256))

make_do() { # $1 name, $2 command run three times (or empty)
  {
    echo "set memory ${mb}m"
    echo "set obs $N"
    echo "generate g = mod(_n * 7919, 1000)"
    echo "forvalues j = 1/5 {"
    echo "    generate double v\`j' = mod(_n * (7919 + \`j'), 100019) / 100019 * \`j' + _n / $N"
    echo "}"
    if [ -n "$2" ]; then
      echo "forvalues r = 1/10 {"
      echo "    quietly $2"
      echo "}"
    fi
  } >"$1.do"
}
cpu() { # CPU seconds of a batch run of $1.do, the best of three
  for r in 1 2 3; do
    /usr/bin/time -f "%U %S" -o "$1.time" "$exe" -q -b do "$1.do" >/dev/null
    awk '{ print $1 + $2 }' "$1.time"
  done | sort -g | head -1
}
make_do base ""
make_do tab "tabulate g"
make_do cor "correlate v1-v5"
b=$(cpu base)
t=$(cpu tab)
c=$(cpu cor)
awk -v b="$b" -v t="$t" -v c="$c" 'BEGIN {
  printf "| korvu | tabulate g | %.3f |\n", (t - b) / 10
  printf "| korvu | correlate v1-v5 | %.3f |\n", (c - b) / 10 }'

[ "$peers" = "--peers" ] || exit 0
if command -v Rscript >/dev/null; then
  Rscript -e "suppressMessages(library(data.table)); setDTthreads(1)
    N <- $N; n <- 1:N
    dt <- data.table(g = (n * 7919) %% 1000)
    m <- sapply(1:5, function(j) (n * (7919 + j)) %% 100019 / 100019 * j + n / N)
    cpu <- function(f) min(sapply(1:3, function(i) { s <- system.time(f()); s[['user.self']] + s[['sys.self']] }))
    cat('| R data.table | dt[, .N, by = g] |', cpu(function() dt[, .N, by = g]), '|\n')
    cat('| R | table(g) |', cpu(function() table(dt\$g)), '|\n')
    cat('| R | cor(m) |', cpu(function() cor(m)), '|\n')"
fi
/usr/bin/python3 - "$N" <<'PY'
import sys, time, os
os.environ.setdefault("OMP_NUM_THREADS", "1")
import numpy as np, pandas as pd
N = int(sys.argv[1])
n = np.arange(1, N + 1, dtype=np.int64)
g = pd.Series((n * 7919) % 1000)
m = np.vstack([(n * (7919 + j)) % 100019 / 100019 * j + n / N for j in range(1, 6)])
def cpu(f):
    t = []
    for _ in range(3):
        s = time.process_time(); f(); t.append(time.process_time() - s)
    return min(t)
print("| pandas | g.value_counts() | %.3f |" % cpu(lambda: g.value_counts()))
print("| numpy | corrcoef (5 x N) | %.3f |" % cpu(lambda: np.corrcoef(m)))
PY
