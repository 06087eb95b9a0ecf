#!/usr/bin/env bash
# Delimited text against pandas: a file pandas writes (random doubles, wide
# integers, text with delimiters, quotes and line breaks, missing values)
# is read by import delimited and written again by export delimited and by
# outsheet; pandas reads both back and finds every value identical to its
# own frame. Also the types chosen, as pandas sees the ranges.
set -u
exe=$1 work=$2
py=/usr/bin/python3
$py -c 'import pandas, numpy' 2>/dev/null || exit 77
rm -rf "$work" && mkdir -p "$work" && cd "$work" || exit 2
fail() { echo "FAIL: $*"; exit 1; }

$py - <<'PY' || fail "pandas could not write the input"
import numpy as np, pandas as pd
g = np.random.default_rng(7)
n = 3000
bits = g.integers(0, 2**63, n, dtype=np.uint64) | (g.integers(0, 2, n, dtype=np.uint64) << np.uint64(63))
x = bits.view(np.float64)
x[~np.isfinite(x) | (np.abs(x) > 8.98846567431158e307)] = 0.5
words = np.array(["plain", "with, comma", 'say "hi"', "two\nlines", "", "semi;colon", "caf\u00e9"])
d = pd.DataFrame({
    "x": x,
    "small": g.integers(-127, 101, n),
    "wide": g.integers(-2147483647, 2147483621, n),
    "f": g.integers(-1000, 1000, n) / 8.0,
    "s": words[g.integers(0, len(words), n)],
})
d.loc[g.integers(0, n, 50), "x"] = np.nan
d.loc[[0, 1], "small"] = [-127, 100]
d.to_csv("in.csv", index=False)
d.to_pickle("ref.pkl")
PY

cat > t.do <<'EOF2'
import delimited in.csv, clear
local t : type small
assert "`t'" == "byte"
local t : type wide
assert "`t'" == "long"
local t : type f
assert "`t'" == "float"
local t : type x
assert "`t'" == "double"
export delimited using out1.csv
outsheet using out2.csv, comma
EOF2
"$exe" -q -b do t.do </dev/null || fail "korvu run: $(tail -5 t.log)"

$py - <<'PY' || fail "values differ"
import numpy as np, pandas as pd, sys
ref = pd.read_pickle("ref.pkl")
for f in ("out1.csv", "out2.csv"):
    # pandas parses exactly only with the round-trip parser
    d = pd.read_csv(f, keep_default_na=False, na_values={"x": [""]}, float_precision="round_trip")
    assert list(d.columns) == list(ref.columns), (f, list(d.columns))
    for c in ("x", "small", "wide", "f"):
        a, b = ref[c].to_numpy(dtype=float), d[c].to_numpy(dtype=float)
        same = (a == b) | (np.isnan(a) & np.isnan(b))
        assert same.all(), (f, c, np.flatnonzero(~same)[:5])
    assert (ref["s"].fillna("") == d["s"]).all(), (f, "s")
PY
exit 0
