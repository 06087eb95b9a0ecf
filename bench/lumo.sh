#!/usr/bin/env bash
# The matrix language's machine against C with OpenBLAS, R and numpy on the
# same work:
#   loop   a scalar loop of 10 million additions inside a function;
#   update 1 million element updates of a vector of 1000;
#   mult   a 2000 x 2000 matrix product (dgemm from C, %*% in R, @ in numpy);
#   colon  element-wise :* and :+ on 10 million elements.
# Each figure is CPU time (user + sys) of a process doing the work less that
# of the same process doing only its set-up (start-up, making the operands),
# best of 2, with OPENBLAS_NUM_THREADS=1 everywhere so the product is compared
# thread for thread. Usage: bench/lumo.sh [build-dir]. Not a test: it prints
# a table for bench/RESULTS.md.
set -euo pipefail
build=${1:-build}
exe=$(cd "$build/bin" && pwd)/korvu-xe
[ -x "$exe" ] || { echo "no $exe: build first" >&2; exit 1; }
py=/usr/bin/python3
export OPENBLAS_NUM_THREADS=1 OMP_NUM_THREADS=1
work=$(mktemp -d /tmp/lumobench.XXXXXX)
trap 'rm -rf "$work"' EXIT
cd "$work"

# --- Korvu: one do-file per case, with and without the timed statement ---
cat > fns.do <<'EOF'
lumo
real scalar addloop(real scalar n) {
    real scalar i, s
    s = 0
    for (i = 1; i <= n; i++) s = s + i
    return(s)
}
real vector upd(real scalar n) {
    real scalar i, k
    real vector v
    v = J(1, 1000, 0)
    k = 1
    for (i = 1; i <= n; i++) {
        v[k] = i
        if (++k > 1000) k = 1
    }
    return(v)
}
end
EOF
kcase() { # name, set-up statements, work statements
  { echo "do fns.do"; echo "lumo"; printf '%s\n' "$2"; echo "end"; } > "k_$1_base.do"
  { echo "do fns.do"; echo "lumo"; printf '%s\n' "$2" "$3"; echo "end"; } > "k_$1.do"
}
kcase loop "n = 1e7" "s = addloop(n)"
kcase update "n = 1e6" "v = upd(n)"
kcase mult "A = J(2000, 2000, 0.5); B = J(2000, 2000, 0.25)" "C = A * B"
kcase colon "x = J(1, 1e7, 1.5)" "y = x :* x; z = x :+ x"

# --- C: dgemm called directly ---
cat > mult.c <<'EOF'
#include <cblas.h>
#include <stdlib.h>
int main(int argc, char** argv) {
    int n = 2000, work = argc > 1;
    double *a = malloc(sizeof(double) * n * n), *b = malloc(sizeof(double) * n * n),
           *c = malloc(sizeof(double) * n * n);
    for (long i = 0; i < (long)n * n; i++) a[i] = 0.5, b[i] = 0.25;
    if (work)
        cblas_dgemm(CblasRowMajor, CblasNoTrans, CblasNoTrans, n, n, n, 1.0, a, n, b, n, 0.0,
                    c, n);
    return c[0] == 123.0;
}
EOF
gcc -O2 -o mult mult.c -lopenblas

# --- R and numpy ---
cat > r_loop.R <<'EOF'
args <- commandArgs(TRUE); n <- 1e7
if (length(args)) { s <- 0; for (i in 1:n) s <- s + i }
EOF
cat > r_update.R <<'EOF'
args <- commandArgs(TRUE); n <- 1e6; v <- numeric(1000)
if (length(args)) { k <- 1; for (i in 1:n) { v[k] <- i; k <- k + 1; if (k > 1000) k <- 1 } }
EOF
cat > r_mult.R <<'EOF'
args <- commandArgs(TRUE); A <- matrix(0.5, 2000, 2000); B <- matrix(0.25, 2000, 2000)
if (length(args)) C <- A %*% B
EOF
cat > r_colon.R <<'EOF'
args <- commandArgs(TRUE); x <- rep(1.5, 1e7)
if (length(args)) { y <- x * x; z <- x + x }
EOF
cat > p_loop.py <<'EOF'
import sys
n = 10**7
if len(sys.argv) > 1:
    s = 0.0
    for i in range(1, n + 1):
        s = s + i
EOF
cat > p_update.py <<'EOF'
import sys
import numpy as np
v = np.zeros(1000)
if len(sys.argv) > 1:
    k = 0
    for i in range(1, 10**6 + 1):
        v[k] = i
        k += 1
        if k == 1000:
            k = 0
EOF
cat > p_mult.py <<'EOF'
import sys
import numpy as np
A = np.full((2000, 2000), 0.5); B = np.full((2000, 2000), 0.25)
if len(sys.argv) > 1:
    C = A @ B
EOF
cat > p_colon.py <<'EOF'
import sys
import numpy as np
x = np.full(10**7, 1.5)
if len(sys.argv) > 1:
    y = x * x; z = x + x
EOF

"$py" - "$exe" <<'PYEOF'
import os, resource, subprocess, sys
exe = sys.argv[1]
def cpu(cmd):
    best = None
    for _ in range(2):
        r0 = resource.getrusage(resource.RUSAGE_CHILDREN)
        subprocess.run(cmd, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=True)
        r1 = resource.getrusage(resource.RUSAGE_CHILDREN)
        t = (r1.ru_utime - r0.ru_utime) + (r1.ru_stime - r0.ru_stime)
        best = t if best is None else min(best, t)
    return best
def work(full, base):
    return max(cpu(full) - cpu(base), 0.0)
rows = []
for case in ["loop", "update", "mult", "colon"]:
    k = work([exe, "-q", "-b", "do", f"k_{case}.do"], [exe, "-q", "-b", "do", f"k_{case}_base.do"])
    r = work(["Rscript", f"r_{case}.R", "x"], ["Rscript", f"r_{case}.R"])
    p = work(["/usr/bin/python3", f"p_{case}.py", "x"], ["/usr/bin/python3", f"p_{case}.py"])
    c = work(["./mult", "x"], ["./mult"]) if case == "mult" else None
    rows.append((case, k, c, r, p))
print("| work | Korvu | C (OpenBLAS) | R | numpy/Python | Korvu / C | Korvu / R | Korvu / numpy |")
print("|---|---:|---:|---:|---:|---:|---:|---:|")
def f(x): return "" if x is None else "%.3f" % x
def q(a, b): return "" if b is None or b <= 0 else "%.2f" % (a / b)
for case, k, c, r, p in rows:
    print(f"| {case} | {f(k)} | {f(c)} | {f(r)} | {f(p)} | {q(k, c)} | {q(k, r)} | {q(k, p)} |")
PYEOF
