#!/usr/bin/env bash
# summarize against its peers: `summarize x` (one variable) and `summarize`
# of all 12 variables, on N observations of 12 doubles. Every system makes the
# same values from the observation number n = 1..N (no random numbers needed):
#   x  = mod(n * 7919, 100003) / 100003 + 1e6
#   vj = mod(n * (7919 + j), 100019) / 100019 * j,   j = 2..12
# Korvu times each command itself (`set rmsg on`); the loops report the total
# of three runs, shown here divided by three.
# Usage: bench/summarize.sh [build-dir] [N] [--peers]
#   --peers also times R (mean and sd of x, summary of all), pandas describe,
#   numpy mean and std, and gretl's summary, when they are installed. Needs a
#   quiet machine; not a test.
set -euo pipefail
build=${1:-build}
N=${2:-1000000}
peers=${3:-}
exe=$(cd "$build/bin" && pwd)/korvu-xe
[ -x "$exe" ] || { echo "no $exe: build first" >&2; exit 1; }
work=$(mktemp -d /tmp/sumbench.XXXXXX)
trap 'rm -rf "$work"' EXIT
cd "$work"
mb=$(( N * 12 * 8 / 1048576 + 64 ))

cat > bench.do <<DO
set memory ${mb}m
set obs $N
generate double x = mod(_n * 7919, 100003) / 100003 + 1e6
forvalues j = 2/12 {
    generate double v\`j' = mod(_n * (7919 + \`j'), 100019) / 100019 * \`j'
}
set rmsg on
forvalues r = 1/3 {
    quietly summarize x
}
forvalues r = 1/3 {
    quietly summarize
}
forvalues r = 1/3 {
    quietly summarize x, detail
}
set rmsg off
DO
"$exe" -q -b do bench.do
grep -E "^r; t=" bench.log | sed -n '2,4p' | awk '
  BEGIN { split("summarize x|summarize (12 variables)|summarize x, detail", w, "|") }
  { split($2, a, "="); printf "| korvu | %s | %.3f |\n", w[NR], a[2] / 3 }'

[ "$peers" = "--peers" ] || exit 0
if command -v Rscript >/dev/null; then
  Rscript -e "n <- 1:$N; d <- data.frame(x = (n * 7919) %% 100003 / 100003 + 1e6)
    for (j in 2:12) d[[paste0('v', j)]] <- (n * (7919 + j)) %% 100019 / 100019 * j
    b <- function(f) min(sapply(1:3, function(i) system.time(f())[['elapsed']]))
    cat('| R | mean, sd of x |', b(function() { mean(d\$x); sd(d\$x) }), '|\n')
    cat('| R | summary (12 variables) |', b(function() summary(d)), '|\n')"
fi
if python3 -c "import pandas, numpy" 2>/dev/null; then
  python3 - "$N" <<'PY'
import sys, time
import numpy as np, pandas as pd
N = int(sys.argv[1])
n = np.arange(1, N + 1, dtype=np.int64)
d = pd.DataFrame({"x": (n * 7919) % 100003 / 100003 + 1e6})
for j in range(2, 13):
    d["v%d" % j] = (n * (7919 + j)) % 100019 / 100019 * j
def best(f):
    t = []
    for _ in range(3):
        s = time.perf_counter(); f(); t.append(time.perf_counter() - s)
    return min(t)
x = d["x"].to_numpy()
print("| pandas | describe x | %.3f |" % best(lambda: d["x"].describe()))
print("| pandas | describe (12 variables) | %.3f |" % best(lambda: d.describe()))
print("| numpy | mean, std of x | %.3f |" % best(lambda: (x.mean(), x.std(ddof=1))))
PY
fi
if command -v gretlcli >/dev/null; then
  cat > b.inp <<INP
nulldata $N --preserve
series x = (index * 7919) % 100003 / 100003 + 1e6
loop j = 2..12 --quiet
  series v\$j = (index * (7919 + j)) % 100019 / 100019 * j
endloop
set stopwatch
summary x --simple
printf "| gretl | summary x | %.3f |\n", \$stopwatch
summary --simple
printf "| gretl | summary (12 variables) | %.3f |\n", \$stopwatch
INP
  gretlcli -b b.inp | grep '^|'
fi
