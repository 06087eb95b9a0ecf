#!/usr/bin/env bash
# The generator and the symmetric inverse against R and numpy:
#   generate x = uniform() over N observations (R runif(N), numpy's default
#   generator .random(N));
#   matrix B = syminv(A) of a 400 x 400 positive definite A = X'X + 400 I
#   (R solve(), numpy.linalg.inv()), made once by numpy with a fixed seed and
#   read by every system from the same digits;
#   matrix C = inv(A), the general inverse by LU, beside it.
# Figures are CPU time (user + system); see below for how each side is timed.
# Usage: bench/matrix_peers.sh [build-dir] [N] (default: build 10000000);
# K=# in the environment sets Korvu's repetitions (default 10). Not a test: it
# prints a table for bench/RESULTS.md. Installs r-base-core and python3-numpy
# when missing.
set -euo pipefail
build=${1:-build}
N=${2:-10000000}
KM=400

exe=$(cd "$build/bin" && pwd)/korvu-xe
[ -x "$exe" ] || { echo "no $exe: build first" >&2; exit 1; }
py=/usr/bin/python3

need=()
for p in r-base-core python3-numpy; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || need+=("$p")
done
if [ ${#need[@]} -gt 0 ]; then
  sudo=""; [ "$(id -u)" -ne 0 ] && sudo=sudo
  $sudo apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq "${need[@]}" >/dev/null
fi

work=$(mktemp -d /tmp/matbench.XXXXXX)
trap 'rm -rf "$work"' EXIT
cd "$work"

# a.txt for R and numpy; mk.do builds the same A in Korvu row by row
"$py" - "$KM" <<'PYEOF'
import sys
import numpy as np
k = int(sys.argv[1])
rng = np.random.default_rng(20260101)
x = rng.standard_normal((k, k))
a = x.T @ x + k * np.eye(k)
np.savetxt("a.txt", a, fmt="%.17g")
with open("mk.do", "w") as f:
    f.write("set matsize %d\n" % max(k, 400))
    for i in range(k):
        f.write("matrix R%d = (%s)\n" % (i, ", ".join("%.17g" % v for v in a[i])))
    f.write("matrix A = R0\n")
    for i in range(1, k):
        f.write("matrix A = (A \\ R%d)\n" % i)
PYEOF

# Korvu is timed from outside, in CPU time (user + system): a run that makes
# the data and does the work K times, less a run that only makes the data,
# over K, best of 2 runs of each. R and numpy time the work in-process with
# their CPU clocks, best of 3.
K=${K:-10}
cpu() { # CPU seconds of a command, which must succeed
  /usr/bin/time -f "%U %S" -o t.out "$@" >/dev/null 2>&1 || {
    echo "failed: $*" >&2
    exit 1
  }
  awk '{ print $1 + $2 }' t.out
}
best2() {
  a=$(cpu "$@")
  b=$(cpu "$@")
  awk -v a="$a" -v b="$b" 'BEGIN { print (a < b ? a : b) }'
}
per() { awk -v w="$1" -v b="$2" -v k="$3" 'BEGIN { printf "%.3f", (w - b) / k }'; }
setup="set memory $((N / 10000 + 100))m
set obs $N
do mk.do"
echo "$setup" > base.do
{ echo "$setup"; for ((i = 0; i < K; i++)); do echo "generate double x = uniform()"; echo "drop x"; done; } > gen.do
{ echo "$setup"; for ((i = 0; i < K; i++)); do echo "matrix B = syminv(A)"; done; } > inv.do
{ echo "$setup"; for ((i = 0; i < K; i++)); do echo "matrix C = inv(A)"; done; } > lu.do
kb=$(best2 "$exe" -q -b do base.do)
korvu_gen=$(per "$(best2 "$exe" -q -b do gen.do)" "$kb" "$K")
korvu_inv=$(per "$(best2 "$exe" -q -b do inv.do)" "$kb" "$K")
korvu_lu=$(per "$(best2 "$exe" -q -b do lu.do)" "$kb" "$K")
# the inverse agrees with numpy's
cat > chk.do <<DO
$setup
matrix B = syminv(A)
display %21.0g el(B, 1, 1) " " %21.0g el(B, 400, 399)
DO
"$exe" -q -b do chk.do >/dev/null 2>&1 || true
kchk=$(grep -E '^ *-?[0-9.]+e?' chk.log | tail -1)

r_out=$(Rscript -e "
cpu <- function(f) { t <- system.time(f()); t[['user.self']] + t[['sys.self']] }
n <- $N; g <- Inf; for (k in 1:3) g <- min(g, cpu(function() runif(n)))
a <- as.matrix(read.table('a.txt')); s <- Inf
for (k in 1:3) s <- min(s, cpu(function() solve(a)))
cat(sprintf('%.3f', c(g, s)), '\n')")
np_out=$("$py" -c "
import time, numpy as np
n = $N; rng = np.random.default_rng(1); a = np.loadtxt('a.txt')
def best(f):
    t = []
    for _ in range(3):
        t0 = time.process_time(); f(); t.append(time.process_time() - t0)
    return min(t)
b = np.linalg.inv(a)
print('%.3f %.3f %.17g %.17g' % (best(lambda: rng.random(n)), best(lambda: np.linalg.inv(a)), b[0, 0], b[399, 398]))")

ratio() { awk -v a="$1" -v b="$2" 'BEGIN { if (b > 0) printf "%.2f", a / b }'; }
rg=$(echo "$r_out" | cut -d' ' -f1); rs=$(echo "$r_out" | cut -d' ' -f2)
ng=$(echo "$np_out" | cut -d' ' -f1); ns=$(echo "$np_out" | cut -d' ' -f2)
table="
## Generator and symmetric inverse, CPU time ($(date -u +%Y-%m-%d), load $(cut -d' ' -f1-3 /proc/loadavg))

Inverse check, elements (1,1) and (400,399): Korvu $kchk; numpy $(echo "$np_out" | cut -d' ' -f3-4)

| workload | Korvu [s] | R [s] | numpy [s] | Korvu/R | Korvu/numpy |
|---|---:|---:|---:|---:|---:|
| \`generate double x = uniform()\`, N = $N | $korvu_gen | $rg | $ng | $(ratio "$korvu_gen" "$rg") | $(ratio "$korvu_gen" "$ng") |
| \`matrix B = syminv(A)\`, $KM x $KM (sweep) | $korvu_inv | $rs | $ns | $(ratio "$korvu_inv" "$rs") | $(ratio "$korvu_inv" "$ns") |
| \`matrix C = inv(A)\`, $KM x $KM (LU) | $korvu_lu | $rs | $ns | $(ratio "$korvu_lu" "$rs") | $(ratio "$korvu_lu" "$ns") |"
echo "$table"
