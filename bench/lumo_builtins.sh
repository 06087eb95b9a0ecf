#!/usr/bin/env bash
# Built-in functions of the matrix language against numpy and R on the same
# work:
#   xx     X'X by cross() and invsym() of it, X a view of N observations of
#          10 double variables (numpy: X.T @ X and inv on an N x 10 array);
#   tx     the same with X'*X in place of cross() (R: crossprod and solve);
#   solve  a 2000 x 2000 system by _lusolve_la() (numpy.linalg.solve, R solve).
# Each figure is CPU time (user + sys) of a process doing the work less that
# of the same process doing only its set-up (start-up, making the operands),
# best of 2, with OPENBLAS_NUM_THREADS=1 everywhere; the cross products are
# done R times in the process and the figure is per product. Usage:
# bench/lumo_builtins.sh [build-dir] [N] (N defaults to 10 million). Not a
# test: it prints a table for bench/RESULTS.md.
set -euo pipefail
build=${1:-build}
N=${2:-10000000}
R=10 # repetitions of the cross product in one process, against the noise of the set-up
exe=$(cd "$build/bin" && pwd)/korvu-xe
[ -x "$exe" ] || { echo "no $exe: build first" >&2; exit 1; }
py=/usr/bin/python3
export OPENBLAS_NUM_THREADS=1 OMP_NUM_THREADS=1
work=$(mktemp -d /tmp/lumobibench.XXXXXX)
trap 'rm -rf "$work"' EXIT
cd "$work"

cpu() { # command...: CPU seconds of the run (user + sys), best of 2
  local best=""
  for _ in 1 2; do
    local t
    t=$(/usr/bin/time -f '%U %S' -o cpu.txt "$@" >/dev/null 2>&1; awk '{print $1 + $2}' cpu.txt)
    if [ -z "$best" ] || awk "BEGIN{exit !($t < $best)}"; then best=$t; fi
  done
  echo "$best"
}
ksetup_xx() {
  echo "set obs $N"
  for k in 1 2 3 4 5 6 7 8 9 10; do echo "generate double x$k = uniform()"; done
}
{ ksetup_xx; echo "lumo"; echo "X = ."; echo 'kv_view(X, ., .)'; echo "end"; } > k_xx_base.do
{ ksetup_xx; echo "lumo"; echo "X = ."; echo 'kv_view(X, ., .)'; echo "for (i = 1; i <= $R; i++) {"; echo "XX = cross(X, X)"; echo "XXi = invsym(XX)"; echo "}"; echo "end"; } > k_xx.do
{ ksetup_xx; echo "lumo"; echo "X = ."; echo 'kv_view(X, ., .)'; echo "for (i = 1; i <= $R; i++) {"; echo "XX = X'*X"; echo "XXi = invsym(XX)"; echo "}"; echo "end"; } > k_tx.do
{ echo "lumo"; echo "A = uniform(2000, 2000)"; echo "b = uniform(2000, 1)"; echo "end"; } > k_solve_base.do
{ echo "lumo"; echo "A = uniform(2000, 2000)"; echo "b = uniform(2000, 1)"; echo "rc = _lusolve_la(A, b)"; echo "end"; } > k_solve.do
cat > p_xx.py <<EOF
import sys, numpy as np
X = np.random.default_rng(1).random(($N, 10))
if sys.argv[1] == "1":
    for i in range($R):
        XX = X.T @ X
        XXi = np.linalg.inv(XX)
EOF
cat > p_solve.py <<'EOF'
import sys, numpy as np
r = np.random.default_rng(1)
A = r.random((2000, 2000)); b = r.random((2000, 1))
if sys.argv[1] == "1":
    x = np.linalg.solve(A, b)
EOF
cat > r_xx.R <<EOF
a <- commandArgs(TRUE)
X <- matrix(runif($N * 10), ncol = 10)
if (a[1] == "1") for (i in 1:$R) { XX <- crossprod(X); XXi <- solve(XX) }
EOF
cat > r_solve.R <<'EOF'
a <- commandArgs(TRUE)
A <- matrix(runif(4e6), 2000); b <- runif(2000)
if (a[1] == "1") x <- solve(A, b)
EOF
d() { awk "BEGIN{printf \"%.3f\", $1 - $2}"; }
dr() { awk "BEGIN{printf \"%.3f\", ($1 - $2) / $R}"; }
kb=$(cpu "$exe" -q -b do k_xx_base.do)
kx=$(dr "$(cpu "$exe" -q -b do k_xx.do)" "$kb")
kt=$(dr "$(cpu "$exe" -q -b do k_tx.do)" "$kb")
px=$(dr "$(cpu $py p_xx.py 1)" "$(cpu $py p_xx.py 0)")
ks=$(d "$(cpu "$exe" -q -b do k_solve.do)" "$(cpu "$exe" -q -b do k_solve_base.do)")
ps=$(d "$(cpu $py p_solve.py 1)" "$(cpu $py p_solve.py 0)")
rs=NA rx=NA
command -v Rscript >/dev/null && rx=$(dr "$(cpu Rscript r_xx.R 1)" "$(cpu Rscript r_xx.R 0)")
command -v Rscript >/dev/null && rs=$(d "$(cpu Rscript r_solve.R 1)" "$(cpu Rscript r_solve.R 0)")
echo "| work | Korvu [s] | numpy [s] | R [s] | Korvu / numpy |"
echo "|---|---:|---:|---:|---:|"
echo "| X'X and invsym, view of $N x 10 | $kx | $px | $rx | $(awk "BEGIN{printf \"%.2f\", $kx / ($px > 0 ? $px : 1e-9)}") |"
echo "| X'*X and invsym, view of $N x 10 | $kt | $px | $rx | $(awk "BEGIN{printf \"%.2f\", $kt / ($px > 0 ? $px : 1e-9)}") |"
echo "| 2000 x 2000 LU solve | $ks | $ps | $rs | $(awk "BEGIN{printf \"%.2f\", $ks / ($ps > 0 ? $ps : 1e-9)}") |"
