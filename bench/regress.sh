#!/usr/bin/env bash
# regress against its peers: `regress y x1-x10` on N observations (default 10
# million) of doubles made by every system from the observation number
# n = 1..N (no random numbers):
#   xj = mod(n * (7919 + j), 100019) / 100019 * j     j = 1..10
#   y  = 1 + x1 - x2 + ... - x10 + mod(n * 104729, 1009) / 1009
#   g  = mod(n, 1000)                                  (clusters)
# Each figure is CPU time (user + system) of the fit alone: for Korvu the
# process time of a run that makes the data and fits R + 1 times less that of
# a run that makes the data and fits once, over R; for the others the process
# time around the call. Usage: bench/regress.sh [build-dir] [N] [R] [--korvu]
# (--korvu: Korvu's figures only)
# Not a test: needs memory (about 1.2 GB for Korvu, more for R) and time.
set -euo pipefail
build=${1:-build}
N=${2:-10000000}
R=${3:-3}
only=${4:-}
exe=$(cd "$build/bin" && pwd)/korvu-xe
[ -x "$exe" ] || { echo "no $exe: build first" >&2; exit 1; }
work=$(mktemp -d /tmp/regbench.XXXXXX)
trap 'rm -rf "$work"' EXIT
cd "$work"
mb=$(( N * 14 * 8 / 1048576 + 64 ))
cat > gen.do <<DO
set memory ${mb}m
set obs $N
forvalues j = 1/10 {
    generate double x\`j' = mod(_n * (7919 + \`j'), 100019) / 100019 * \`j'
}
generate double y = 1 + x1 - x2 + x3 - x4 + x5 - x6 + x7 - x8 + x9 - x10 + mod(_n * 104729, 1009) / 1009
generate double g = mod(_n, 1000)
DO
cpu() { /usr/bin/time -f "%U %S" "$exe" -q -b do "$1" 2>&1 >/dev/null | tail -1 | awk '{print $1 + $2}'; }
korvu() {
  { cat gen.do; echo "quietly $1"; } > one.do
  { cat gen.do; for r in $(seq "$R") 0; do echo "quietly $1"; done; } > run.do
  b=$(cpu one.do)
  t=$(cpu run.do)
  awk -v t="$t" -v b="$b" -v r="$R" -v w="$1" 'BEGIN { printf "| korvu | %s | %.3f |\n", w, (t - b) / r }'
}
korvu "regress y x1-x10"
korvu "regress y x1-x10, robust"
korvu "regress y x1-x10, cluster(g)"
korvu "matrix accum A = y x1-x10"
[ "$only" = "--korvu" ] && exit 0

if command -v Rscript >/dev/null; then
  Rscript -e "n <- 1:$N; d <- data.frame(row.names = NULL, n = n)
    for (j in 1:10) d[[paste0('x', j)]] <- (n * (7919 + j)) %% 100019 / 100019 * j
    d\$y <- 1 + with(d, x1 - x2 + x3 - x4 + x5 - x6 + x7 - x8 + x9 - x10) + (n * 104729) %% 1009 / 1009
    d\$n <- NULL
    X <- cbind(1, as.matrix(d[paste0('x', 1:10)])); y <- d\$y
    cpu <- function(f) { t <- system.time(f()); t[['user.self']] + t[['sys.self']] }
    cat(sprintf('| R | lm.fit(X, y) | %.3f |\n', cpu(function() lm.fit(X, y))))
    cat(sprintf('| R | lm(y ~ .) | %.3f |\n', cpu(function() lm(y ~ ., data = d))))
    cat(sprintf('| R | crossprod(X) | %.3f |\n', cpu(function() crossprod(X))))"
fi
if /usr/bin/python3 -c "import statsmodels, numpy" 2>/dev/null; then
  /usr/bin/python3 - "$N" <<'PY'
import sys, time
import numpy as np
import statsmodels.api as sm
N = int(sys.argv[1])
n = np.arange(1, N + 1, dtype=np.int64)
X = np.empty((N, 11))
X[:, 0] = 1
for j in range(1, 11):
    X[:, j] = (n * (7919 + j)) % 100019 / 100019 * j
s = np.array([1, -1] * 5, dtype=float)
y = 1 + X[:, 1:] @ s + (n * 104729) % 1009 / 1009
g = n % 1000
def cpu(f):
    t = time.process_time(); f(); return time.process_time() - t
print("| statsmodels | OLS().fit() | %.3f |" % cpu(lambda: sm.OLS(y, X).fit()))
print("| statsmodels | fit(cov_type='HC1') | %.3f |" % cpu(lambda: sm.OLS(y, X).fit(cov_type="HC1")))
print("| statsmodels | fit(cov_type='cluster') | %.3f |" % cpu(
    lambda: sm.OLS(y, X).fit(cov_type="cluster", cov_kwds={"groups": g})))
print("| numpy | lstsq(X, y) | %.3f |" % cpu(lambda: np.linalg.lstsq(X, y, rcond=None)))
print("| numpy | X.T @ X | %.3f |" % cpu(lambda: X.T @ X))
PY
fi
if command -v gretlcli >/dev/null; then
  cat > g.inp <<INP
nulldata $N --preserve
series n = index
loop j=1..10 --quiet
  series x\$j = ((n * (7919 + j)) % 100019) / 100019 * j
endloop
series y = 1 + x1 - x2 + x3 - x4 + x5 - x6 + x7 - x8 + x9 - x10 + ((n * 104729) % 1009) / 1009
set stopwatch
ols y const x1 x2 x3 x4 x5 x6 x7 x8 x9 x10 --quiet
printf "| gretl | ols | %.3f |\n", \$stopwatch
INP
  gretlcli -b g.inp 2>/dev/null | grep '^| gretl'
fi
