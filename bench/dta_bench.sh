#!/usr/bin/env bash
# save and use of 10 million observations of 12 double variables (960 MB of
# data), against R (saveRDS/readRDS, uncompressed) and Python (pandas pickle).
# Usage: bench/dta_bench.sh [build-dir]   (default: build). Not a test: it
# appends its table to bench/RESULTS.md. It needs about 4 GB of memory and 5 GB of /tmp, and a quiet machine.
set -euo pipefail
build=${1:-build}
results=$(cd "$(dirname "$0")" && pwd)/RESULTS.md
exe=$(cd "$build/bin" && pwd)/korvu-xe
work=$(mktemp -d /tmp/dtabench.XXXXXX)
trap 'rm -rf "$work"' EXIT
cd "$work"
N=10000000 K=12

if ! /usr/bin/python3 -c 'import pandas' 2>/dev/null; then
  apt-get install -y python3-pandas >/dev/null
fi

# The input file, laid out directly: format 113, low byte first.
/usr/bin/python3 - "$N" "$K" <<'PY'
import struct, sys, array
n, k = int(sys.argv[1]), int(sys.argv[2])
with open("big.dta", "wb") as f:
    f.write(struct.pack("<BBBBhi", 113, 2, 1, 0, k, n) + b"bench".ljust(81, b"\0") + b"".ljust(18, b"\0"))
    f.write(bytes([255] * k))
    for j in range(k): f.write(("v%d" % j).encode().ljust(33, b"\0"))
    f.write(b"\0\0" * (k + 1))
    for j in range(k): f.write(b"%10.0g".ljust(12, b"\0"))
    f.write(b"\0" * (33 * k + 81 * k) + b"\0" * 5)
    block = 100000
    rec = array.array("d", [0.0] * (k * block))
    for start in range(0, n, block):
        for i in range(block):
            base = (start + i) * 0.001
            for j in range(k): rec[i * k + j] = base + j
        f.write(rec.tobytes())
PY

now() { date +%s.%N; }
secs() { echo "$2 - $1" | bc -l; }
run_do() { "$exe" -q -b do "$1" </dev/null >/dev/null; }

# Korvu's own timing of each command (set rmsg on), best of two rounds.
printf 'set rmsg on\nset memory 1200m\nuse big\nsave out, replace\nuse big, clear\nsave out, replace\n' > us.do
run_do us.do
times=$(grep -oE '^r; t=[0-9.]+' us.log | sed 's/r; t=//')
pick() { echo "$times" | sed -n "$1p"; }
best() { if (( $(echo "$1 < $2" | bc -l) )); then echo "$1"; else echo "$2"; fi; }
k_use=$(best "$(pick 3)" "$(pick 5)")
k_save=$(best "$(pick 4)" "$(pick 6)")

read -r r_save r_use < <(Rscript -e "
n <- $N; d <- as.data.frame(lapply(0:($K-1), function(j) (0:(n-1)) * 0.001 + j))
t <- system.time(saveRDS(d, 'r.rds', compress = FALSE))[['elapsed']]
rm(d); invisible(gc())
u <- system.time(d <- readRDS('r.rds'))[['elapsed']]
cat(t, u, '\n')")

read -r p_save p_use < <(/usr/bin/python3 - "$N" "$K" <<'PY'
import sys, time, numpy as np, pandas as pd
n, k = int(sys.argv[1]), int(sys.argv[2])
d = pd.DataFrame({"v%d" % j: np.arange(n) * 0.001 + j for j in range(k)})
t = time.perf_counter(); d.to_pickle("p.pkl", compression=None); s = time.perf_counter() - t
del d
t = time.perf_counter(); d = pd.read_pickle("p.pkl", compression=None); u = time.perf_counter() - t
print(s, u)
PY
)

ratio() { echo "scale=2; $1 / $2" | bc -l; }
cat <<MD | tee -a "$results"

## Dataset file (\`bench/dta_bench.sh\`), $(date +%Y-%m-%d)

\`save\` and \`use\` of $N observations of $K doubles (960 MB). Korvu's figures
are its own timing of each command (\`set rmsg on\`), best of two rounds. R: \`saveRDS(compress = FALSE)\` and
\`readRDS\`; Python: pandas \`to_pickle\`/\`read_pickle\` without compression.
Load average at the start: $(cut -d' ' -f1-3 /proc/loadavg).

| | save [s] | use/read [s] | Korvu save ratio | Korvu use ratio |
|---|---:|---:|---:|---:|
| Korvu | $(printf %.2f "$k_save") | $(printf %.2f "$k_use") | 1 | 1 |
| R | $(printf %.2f "$r_save") | $(printf %.2f "$r_use") | $(ratio "$k_save" "$r_save") | $(ratio "$k_use" "$r_use") |
| Python pandas | $(printf %.2f "$p_save") | $(printf %.2f "$p_use") | $(ratio "$k_save" "$p_save") | $(ratio "$k_use" "$p_use") |
MD
