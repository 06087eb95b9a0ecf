#!/usr/bin/env bash
# The generator and the symmetric inverse against R and numpy:
#   generate x = uniform() over N observations (R runif(N), numpy's default
#   generator .random(N));
#   matrix B = syminv(A) of a 400 x 400 positive definite A = X'X + 400 I
#   (R solve(), numpy.linalg.inv()), made once by numpy with a fixed seed and
#   read by every system from the same digits.
# Only the work is timed, best of 3; Korvu's figures are its own timing of
# each command (`set rmsg on`). Usage: bench/matrix_peers.sh [build-dir] [N]
# (default: build 10000000). Not a test: it prints a table and appends it to
# bench/RESULTS.md. Installs r-base-core and python3-numpy when missing.
set -euo pipefail
build=${1:-build}
N=${2:-10000000}
K=400
results=$(cd "$(dirname "$0")" && pwd)/RESULTS.md
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
"$py" - "$K" <<'PYEOF'
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

{
  echo "set memory $(( N / 10000 + 100 ))m"
  echo "set obs $N"
  echo "do mk.do"
  echo "set rmsg on"
  for k in 1 2 3; do
    echo "generate double x = uniform()"
    echo "drop x"
  done
  for k in 1 2 3; do echo "matrix B = syminv(A)"; done
} > bench.do
"$exe" -b do bench.do >/dev/null 2>&1 || true
# the rmsg line after each timed command: "r; t=0.12 ..."
best() {
  awk -v cmd="$1" 'index($0, cmd) == 1 { getline; if ($0 ~ /t=/) { sub(/.*t=/, ""); sub(/ .*/, ""); print } }' bench.log |
    sort -g | head -1
}
korvu_gen=$(best ". generate double x = uniform()")
korvu_inv=$(best ". matrix B = syminv(A)")

r_out=$(Rscript -e "
n <- $N; g <- Inf; for (k in 1:3) g <- min(g, system.time(x <- runif(n))[['elapsed']])
a <- as.matrix(read.table('a.txt')); s <- Inf
for (k in 1:3) s <- min(s, system.time(b <- solve(a))[['elapsed']])
cat(g, s, '\n')")
np_out=$("$py" -c "
import time, numpy as np
n = $N; rng = np.random.default_rng(1); a = np.loadtxt('a.txt')
def best(f):
    t = []
    for _ in range(3):
        t0 = time.perf_counter(); f(); t.append(time.perf_counter() - t0)
    return min(t)
print(best(lambda: rng.random(n)), best(lambda: np.linalg.inv(a)))")

table="
## Generator and symmetric inverse ($(date -u +%Y-%m-%d), load $(cut -d' ' -f1-3 /proc/loadavg))

| workload | Korvu | R | numpy |
|---|---|---|---|
| uniform, N = $N | ${korvu_gen:-?} | $(echo "$r_out" | cut -d' ' -f1) | $(echo "$np_out" | cut -d' ' -f1) |
| inverse $K x $K | ${korvu_inv:-?} | $(echo "$r_out" | cut -d' ' -f2) | $(echo "$np_out" | cut -d' ' -f2) |"
echo "$table"
echo "$table" >> "$results"
