#!/usr/bin/env bash
# CPU time of the column workloads of bench/peers.sh that go through the
# expression evaluator (generate, replace, count if), for one or two Korvu
# builds, against numpy and pandas on the same N observations of 12 doubles.
#
# Korvu: a batch run doing `use` then the workload REPS times, less a run doing
# only the `use`, over REPS; user and system CPU apart (the system time of
# `use` is page clearing that varies from run to run by more than a workload
# costs), each the best of 3. numpy and pandas: time.process_time of the
# workload in process, best of 5. Run the peers in the same minute as Korvu:
# on a shared machine the load moves every figure.
#
# Usage: bench/expr_blocks.sh N build [build-before] [REPS]
# Not a test: prints the figures to standard output.
set -euo pipefail
N=${1:-10000000}
after=$(cd "${2:-build}/bin" && pwd)/korvu-xe
before=""
if [ $# -ge 3 ] && [ -n "$3" ]; then before=$(cd "$3/bin" && pwd)/korvu-xe; fi
REPS=${4:-30}
py=/usr/bin/python3
work=$(mktemp -d /tmp/exprbench.XXXXXX)
trap 'rm -rf "$work"' EXIT
cd "$work"

$py - "$N" <<'PY'
import struct, sys, numpy as np
n = int(sys.argv[1])
rng = np.random.default_rng(20261122)
names = ["x", "z", "k"] + ["v%d" % j for j in range(4, 13)]
cols = [rng.random(n), 1.5 - rng.random(n), np.floor(rng.random(n) * 100)]
cols += [rng.random(n) for _ in range(9)]
k = len(cols)
with open("data.dta", "wb") as f:
    f.write(struct.pack("<BBBBhi", 113, 2, 1, 0, k, n) + b"peers".ljust(81, b"\0") + b"".ljust(18, b"\0"))
    f.write(bytes([255] * k))
    for nm in names: f.write(nm.encode().ljust(33, b"\0"))
    f.write(b"\0\0" * (k + 1))
    for _ in names: f.write(b"%10.0g".ljust(12, b"\0"))
    f.write(b"\0" * (33 * k + 81 * k) + b"\0" * 5)
    f.flush()
    np.column_stack(cols).astype("<f8").tofile(f)
PY

mem=$((N / 4000 + 64))
head="set memory ${mem}m
use data"
printf '%s\n' "$head" > base.do
{ printf '%s\n' "$head"; for _ in $(seq "$REPS"); do printf 'generate double y = x*2 + log(z)\ndrop y\n'; done; } > gen.do
{ printf '%s\n' "$head"; for _ in $(seq "$REPS"); do printf 'replace v5 = v5*3 + 1\n'; done; } > rep.do
{ printf '%s\n' "$head"; for _ in $(seq "$REPS"); do printf 'count if x > 0.5 & z < 1 | k == 3\n'; done; } > cnt.do

# best user and system seconds of 3 runs of a do-file
best() {
  local bu=999 bs=999 u s
  for _ in 1 2 3; do
    read -r u s < <({ /usr/bin/time -f "%U %S" "$1" -q -b do "$2" >/dev/null; } 2>&1 | tail -1)
    bu=$(awk -v a="$u" -v b="$bu" 'BEGIN { print (a < b) ? a : b }')
    bs=$(awk -v a="$s" -v b="$bs" 'BEGIN { print (a < b) ? a : b }')
  done
  echo "$bu $bs"
}
korvu() {
  local exe=$1 label=$2 BU BS U S
  read -r BU BS < <(best "$exe" base.do)
  for w in gen rep cnt; do
    read -r U S < <(best "$exe" $w.do)
    awk -v w="$w" -v l="$label" -v u="$U" -v s="$S" -v bu="$BU" -v bs="$BS" -v r="$REPS" \
      'BEGIN { printf "korvu-%s %s user %.4f sys %.4f\n", l, w, (u - bu) / r, (s - bs) / r }'
  done
}
korvu "$after" after
[ -n "$before" ] && korvu "$before" before

$py - "$N" <<'PY'
import sys, time, numpy as np, pandas as pd
n = int(sys.argv[1])
rng = np.random.default_rng(20261122)
x, z, k = rng.random(n), 1.5 - rng.random(n), np.floor(rng.random(n) * 100)
v5 = rng.random(n)
def pt(f):
    b = 1e9
    for _ in range(5):
        t0 = time.process_time(); f(); b = min(b, time.process_time() - t0)
    return b
d = {}
print("numpy gen %.4f" % pt(lambda: d.__setitem__("y", x * 2 + np.log(z))))
print("numpy rep %.4f" % pt(lambda: d.__setitem__("v5", v5 * 3 + 1)))
print("numpy cnt %.4f" % pt(lambda: int(np.count_nonzero((x > 0.5) & (z < 1) | (k == 3)))))
df = pd.DataFrame({"x": x, "z": z, "k": k, "v5": v5})
def pg(): df["y"] = df["x"] * 2 + np.log(df["z"])
print("pandas gen %.4f" % pt(pg))
print("pandas rep %.4f" % pt(lambda: df.__setitem__("v5", df["v5"] * 3 + 1)))
print("pandas cnt %.4f" % pt(lambda: int(((df.x > 0.5) & (df.z < 1) | (df.k == 3)).sum())))
print("load %s" % open("/proc/loadavg").read().strip())
PY
