#!/usr/bin/env bash
# summarize against its peers, in CPU time (user + system), on N observations
# of 12 doubles. Every system makes the same values from the observation
# number n = 1..N (no random numbers needed):
#   x  = mod(n * 7919, 100003) / 100003 + 1e6
#   vj = mod(n * (7919 + j), 100019) / 100019 * j,   j = 2..12
# Workloads: `summarize x` against R mean and sd, numpy mean, std, min and
# max, pandas describe, gretl summary; `summarize` of all 12 the same way;
# `summarize x, detail` (percentiles) against R summary and pandas describe,
# which also find quartiles.
# Korvu and gretl are timed from outside: the CPU time of a run that makes the
# data and does the work K times, less that of a run that only makes the data,
# over K (best of 2 of each; ONE=1 in the environment: one of each). R and Python time the work in-process with their
# CPU clocks (system.time user + system, time.process_time), best of 3.
# Usage: bench/summarize.sh [build-dir] [N] [K]; prints a markdown table.
# Not a test; needs a quiet machine for steady figures.
set -euo pipefail
build=${1:-build}
N=${2:-10000000}
K=${3:-10}
exe=$(cd "$build/bin" && pwd)/korvu-xe
[ -x "$exe" ] || { echo "no $exe: build first" >&2; exit 1; }
work=$(mktemp -d /tmp/sumbench.XXXXXX)
trap 'rm -rf "$work"' EXIT
cd "$work"
mb=$((N * 12 * 8 * 3 / 2 / 1048576 + 64))

cpu() { # CPU seconds of a command, which must succeed
  /usr/bin/time -f "%U %S" -o t.out "$@" >/dev/null 2>&1 || {
    echo "failed: $*" >&2
    exit 1
  }
  awk '{ print $1 + $2 }' t.out
}
best2() { # best of two runs (one with ONE=1 in the environment)
  a=$(cpu "$@")
  [ "${ONE:-0}" = 1 ] && { echo "$a"; return; }
  b=$(cpu "$@")
  awk -v a="$a" -v b="$b" 'BEGIN { print (a < b ? a : b) }'
}
per() { awk -v w="$1" -v b="$2" -v k="$3" 'BEGIN { printf "%.3f", (w - b) / k }'; }

# ---- Korvu ----
setup="set memory ${mb}m
set obs $N
generate double x = mod(_n * 7919, 100003) / 100003 + 1e6
forvalues j = 2/12 {
    generate double v\`j' = mod(_n * (7919 + \`j'), 100019) / 100019 * \`j'
}"
korvu_run() { # name, command
  { echo "$setup"; for ((i = 0; i < K; i++)); do echo "quietly $2"; done; } > "$1.do"
  best2 "$exe" -q -b do "$1.do"
}
echo "$setup" > base.do
kb=$(best2 "$exe" -q -b do base.do)
k1=$(per "$(korvu_run one 'summarize x')" "$kb" "$K")
k12=$(per "$(korvu_run all 'summarize')" "$kb" "$K")
kd=$(per "$(korvu_run det 'summarize x, detail')" "$kb" "$K")
kd12=$(per "$(korvu_run det12 'summarize, detail')" "$kb" "$K")
# a check that all made the same data
cat > chk.do <<DO
$setup
quietly summarize x
display %20.10f r(mean) " " %20.10f r(sd)
DO
"$exe" -q -b do chk.do >/dev/null 2>&1 || true
kchk=$(grep -E '^ *[0-9]' chk.log | tail -1 | awk '{ printf "%.6f %.6f", $1, $2 }')

# ---- R ----
rout=$(Rscript -e "n <- 1:$N; d <- data.frame(x = (n * 7919) %% 100003 / 100003 + 1e6)
  for (j in 2:12) d[[paste0('v', j)]] <- (n * (7919 + j)) %% 100019 / 100019 * j
  b <- function(f) min(sapply(1:3, function(i) { t <- system.time(f()); t[['user.self']] + t[['sys.self']] }))
  four <- function(v) c(mean(v), sd(v), min(v), max(v))
  cat(sprintf('%.3f', c(b(function() four(d\$x)), b(function() lapply(d, four)),
      b(function() summary(d\$x)), b(function() summary(d)))),
      sprintf('%.6f %.6f', mean(d\$x), sd(d\$x)), '\n')")
read -r r1 r12 rs1 rs12 rm rsd <<<"$rout"

# ---- numpy and pandas ----
pout=$(/usr/bin/python3 - "$N" <<'PY'
import sys, time
import numpy as np, pandas as pd
N = int(sys.argv[1])
n = np.arange(1, N + 1, dtype=np.int64)
d = pd.DataFrame({"x": (n * 7919) % 100003 / 100003 + 1e6})
for j in range(2, 13):
    d["v%d" % j] = (n * (7919 + j)) % 100019 / 100019 * j
cols = [d[c].to_numpy() for c in d.columns]
def best(f):
    t = []
    for _ in range(3):
        s = time.process_time(); f(); t.append(time.process_time() - s)
    return min(t)
four = lambda v: (v.mean(), v.std(ddof=1), v.min(), v.max())
x = cols[0]
print("%.3f %.3f %.3f %.3f %.6f %.6f" % (
    best(lambda: four(x)), best(lambda: [four(c) for c in cols]),
    best(lambda: d["x"].describe()), best(lambda: d.describe()), x.mean(), x.std(ddof=1)))
PY
)
read -r n1 n12 p1 p12 pm psd <<<"$pout"

# ---- gretl ----
g1=""; g12=""
if command -v gretlcli >/dev/null; then
  gsetup="nulldata $N --preserve
series x = (index * 7919) % 100003 / 100003 + 1e6
loop j = 2..12 --quiet
  series v\$j = (index * (7919 + j)) % 100019 / 100019 * j
endloop"
  gretl_run() {
    { echo "$gsetup"; for ((i = 0; i < K; i++)); do echo "$2"; done; } > "$1.inp"
    best2 gretlcli -b "$1.inp"
  }
  echo "$gsetup" > gbase.inp
  gb=$(best2 gretlcli -b gbase.inp)
  g1=$(per "$(gretl_run gone 'summary x --simple')" "$gb" "$K")
  g12=$(per "$(gretl_run gall 'summary --simple')" "$gb" "$K")
fi

ratio() { awk -v a="$1" -v b="$2" 'BEGIN { if (b > 0) printf "%.2f", a / b; else print "" }'; }
cat <<TAB
N = $N, K = $K; load average at the end: $(cut -d' ' -f1-3 /proc/loadavg)
Mean and sd of x: korvu $kchk; R $rm $rsd; numpy $pm $psd

| workload | Korvu [s] | R [s] | numpy [s] | pandas describe [s] | gretl summary [s] | Korvu/R | Korvu/numpy | Korvu/gretl |
|---|---:|---:|---:|---:|---:|---:|---:|---:|
| \`summarize x\` (R mean, sd, min, max) | $k1 | $r1 | $n1 | $p1 | $g1 | $(ratio "$k1" "$r1") | $(ratio "$k1" "$n1") | $(ratio "$k1" "$g1") |
| \`summarize\`, 12 variables | $k12 | $r12 | $n12 | $p12 | $g12 | $(ratio "$k12" "$r12") | $(ratio "$k12" "$n12") | $(ratio "$k12" "$g12") |
| \`summarize x, detail\` (R summary) | $kd | $rs1 |  | $p1 |  | $(ratio "$kd" "$rs1") |  |  |
| \`summarize, detail\`, 12 variables (R summary) | $kd12 | $rs12 |  | $p12 |  | $(ratio "$kd12" "$rs12") |  |  |
TAB
