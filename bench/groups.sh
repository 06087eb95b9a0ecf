#!/usr/bin/env bash
# Group statistics against their peers, in CPU time (user + system).
# Every system makes the same data from the observation number n = 1..N:
#   g = mod(n * 7919, G)   with G = 1,000 or 1,000,000 groups
#   y = mod(n * 7927, 100003) / 100003
# The work: the group mean of y by g as a new dataset (collapse; data.table's
# dt[, mean(y), by = g]; pandas groupby().mean()), the group mean as a new
# variable (xgenerate; dt[, m := mean(y), by = g]; groupby().transform), and a
# one-way table of g with 1,000 groups (tabulate g; dt[, .N, by = g];
# value_counts).
# Korvu: the CPU time of the process between the data being made and the
# work being done (three times where the work can be repeated), read from
# /proc by a shell the do-file starts (10 ms steps), best of three runs. R
# data.table (one and two threads) and pandas: the CPU time of the work
# alone, best of three inside the process.
# Usage: bench/groups.sh [build-dir] [N] [--peers]. Not a test.
set -euo pipefail
build=${1:-build}
N=${2:-10000000}
peers=${3:-}
exe=$(cd "$build/bin" && pwd)/korvu-xe
[ -x "$exe" ] || { echo "no $exe: build first" >&2; exit 1; }
work=$(mktemp -d /tmp/grpbench.XXXXXX)
trap 'rm -rf "$work"' EXIT
cd "$work"
mb=$((N * 4 * 8 / 1048576 + 256))
# The CPU seconds (user + system) Korvu's process has used so far, appended to
# cpu.txt: the do-file calls it before and after the work, so that making the
# data (whose cost varies much from run to run on a virtual machine, with the
# clearing of fresh pages) is left out.
cat >cpu.sh <<'SH'
p=$$
while [ "$p" -gt 1 ] && case "$(readlink /proc/$p/exe)" in */korvu-xe) false ;; *) true ;; esac; do
  p=$(awk '{ print $4 }' /proc/$p/stat)
done
awk '{ printf "%.2f\n", ($14 + $15) / 100 }' /proc/$p/stat >>cpu.txt
SH

make_do() { # $1 name, $2 groups, $3 times, $4 command, $5 command after it
  {
    echo "set memory ${mb}m"
    echo "set obs $N"
    echo "generate long g = mod(_n * 7919, $2)"
    echo "generate double y = mod(_n * 7927, 100003) / 100003"
    echo "shell sh cpu.sh"
    echo "forvalues r = 1/$3 {"
    echo "    quietly $4"
    [ -n "$5" ] && echo "    $5"
    echo "}"
    echo "shell sh cpu.sh"
  } >"$1.do"
}
cpu() { # $1 name, $2 times: CPU seconds of the work once, the best of three runs
  for r in 1 2 3; do
    rm -f cpu.txt
    "$exe" -q -b do "$1.do" >/dev/null
    awk -v n="$2" 'NR == 1 { a = $1 } NR == 2 { printf "%.3f\n", ($1 - a) / n }' cpu.txt
  done | sort -g | head -1
}
for G in 1000 1000000; do
  make_do col$G $G 1 "collapse (mean) y, by(g)" ""
  make_do gen$G $G 3 "xgenerate double m = mean(y), by(g)" "drop m"
  echo "| korvu | $G | collapse (mean) y, by(g) | $(cpu col$G 1) |"
  echo "| korvu | $G | xgenerate double m = mean(y), by(g) | $(cpu gen$G 3) |"
done
make_do tab1000 1000 3 "tabulate g" ""
echo "| korvu | 1000 | tabulate g | $(cpu tab1000 3) |"

[ "$peers" = "--peers" ] || exit 0
if command -v Rscript >/dev/null; then
  # The key as R integers (as Korvu's long g and pandas' int64 g); the same
  # work on a double key (what mod() of a double gives in R) once more at
  # G = 1,000, and everything with one and with two threads. CPU time of the
  # process (user + system, all threads), the data made beforehand.
  Rscript -e "suppressMessages(library(data.table))
    N <- $N; n <- 1:N
    cpu <- function(f) min(sapply(1:3, function(i) { s <- system.time(f()); s[['user.self']] + s[['sys.self']] }))
    for (th in c(1, 2)) {
      setDTthreads(th)
      for (G in c(1000, 1000000)) {
        dt <- data.table(g = as.integer((n * 7919) %% G), y = (n * 7927) %% 100003 / 100003)
        a <- cpu(function() dt[, mean(y), by = g])
        b <- cpu(function() dt[, m := mean(y), by = g])
        cat(sprintf('| R data.table, %d thread(s) | %d | dt[, mean(y), by = g] | %.3f |\\n', th, G, a))
        cat(sprintf('| R data.table, %d thread(s) | %d | dt[, m := mean(y), by = g] | %.3f |\\n', th, G, b))
        if (G == 1000) {
          cat(sprintf('| R data.table, %d thread(s) | %d | dt[, .N, by = g] | %.3f |\\n', th, G,
                      cpu(function() dt[, .N, by = g])))
          dd <- data.table(g = (n * 7919) %% G, y = (n * 7927) %% 100003 / 100003)
          cat(sprintf('| R data.table, %d thread(s), double key | %d | dt[, mean(y), by = g] | %.3f |\\n',
                      th, G, cpu(function() dd[, mean(y), by = g])))
          rm(dd)
        }
      }
    }"
fi
/usr/bin/python3 - "$N" <<'EOF'
import sys, time
import numpy as np, pandas as pd
N = int(sys.argv[1])
n = np.arange(1, N + 1, dtype=np.int64)
def cpu(f):
    best = None
    for _ in range(3):
        t = time.process_time(); f(); t = time.process_time() - t
        best = t if best is None else min(best, t)
    return best
for G in (1000, 1000000):
    df = pd.DataFrame({"g": (n * 7919) % G, "y": (n * 7927) % 100003 / 100003})
    a = cpu(lambda: df.groupby("g")["y"].mean())
    def tr():
        df["m"] = df.groupby("g")["y"].transform("mean")
    b = cpu(tr)
    print(f"| pandas | {G} | df.groupby('g')['y'].mean() | {a:.3f} |")
    print(f"| pandas | {G} | df.groupby('g')['y'].transform('mean') | {b:.3f} |")
    if G == 1000:
        print(f"| pandas | {G} | df['g'].value_counts() | {cpu(lambda: df['g'].value_counts()):.3f} |")
EOF
