#!/usr/bin/env bash
# The newer dataset-file formats against another package's writer and reader
# (pandas, where installed, else skip), and R's foreign where installed:
# files of formats 114, 117, 118 and 119 written by the peer open with the
# values it was given; `save, version(118)` and the default 113 open in the
# peer with the values Korvu was given; long names, long strings and long
# strings stored apart are made to fit, with notes; a later release and a
# cut-off file are refused without touching the data in memory.
set -u
exe=$1 work=$2
here=$(cd "$(dirname "$0")" && pwd)
py=/usr/bin/python3
rm -rf "$work" && mkdir -p "$work" && cd "$work" || exit 2
fail() { echo "FAIL: $*"; exit 1; }
[ -x $py ] && $py -c 'import pandas' 2>/dev/null || { echo "skip: no pandas"; exit 77; }
export PYTHONPATH=$here/../reference
run() { # do-file; a clean log ending in the marker
  "$exe" -q -b do "$1" </dev/null >/dev/null 2>&1
  local rc=$?
  grep -q '^r([0-9]*);' "${1%.do}.log" && fail "$1: $(grep -B3 '^r(' "${1%.do}.log" | head -20)"
  [ $rc = 0 ] || fail "$1 exit $rc"
  grep -q '^test completed' "${1%.do}.log" || fail "$1 did not complete"
}

# 1. The peer writes; Korvu reads. The expected values are the literals
#    handed to the peer; the do-file is generated from the same literals.
$py - <<'PY' || fail "peer could not write"
import numpy as np, pandas as pd, dta_peer as P
d = [1.5, -2.25, float("nan"), 1e300, 0.1]
f = np.array([0.5, -1.25, 3.0, float("nan"), 1024.0], dtype=np.float32)
b = np.array([1, -5, 100, 0, -100], dtype=np.int8)
i = np.array([300, -32000, 0, 1, 2], dtype=np.int16)
l = np.array([100000, -2000000000, 0, 7, 8], dtype=np.int32)
s = ["a", "b c", "", "xyz", "q"]
u = ["é", "日本語", "", "ß", "z"]
cat = pd.Categorical(["lo", "hi", "lo", "mid", "hi"], categories=["lo", "mid", "hi"])
out = open("peer_read.do", "w")
def frame(utf):
    df = pd.DataFrame({"d": d, "f": f, "b": b, "i": i, "l": l, "s": s, "cat": cat})
    if utf:
        df["u"] = u
    return df
labels = {"d": "the d", "s": "some text"}
for v in (114, 117, 118, 119):
    df = frame(v >= 118)
    P.write(df, f"p{v}.dta", v, variable_labels=labels, data_label=f"made as {v}")
    kinds = [(v, f"p{v}")]
    if v in (117, 118, 119):
        strl = ["s", "u"] if v >= 118 else ["s"]
        P.write(df, f"p{v}l.dta", v, convert_strl=strl)
        kinds.append((v, f"p{v}l"))
    for ver, name in kinds:
        out.write(f"use {name}, clear\nassert _N == 5\n")
        for k in range(5):
            dv = "." if d[k] != d[k] else repr(d[k])
            out.write(f"assert d == {dv} in {k+1}\n")
            fv = "." if f[k] != f[k] else f"float({float(f[k])!r})"
            out.write(f"assert f == {fv} in {k+1}\n")
            out.write(f"assert b == {int(b[k])} in {k+1}\n")
            out.write(f"assert i == {int(i[k])} in {k+1}\n")
            out.write(f"assert l == {int(l[k])} in {k+1}\n")
            out.write(f'assert s == "{s[k]}" in {k+1}\n')
            out.write(f"assert cat == {cat.codes[k]} in {k+1}\n")
            if ver >= 118:
                out.write(f'assert u == "{u[k]}" in {k+1}\n')
        out.write('local t : type d\nassert "`t\'" == "double"\n')
        out.write('local t : type f\nassert "`t\'" == "float"\n')
        out.write('local t : type b\nassert "`t\'" == "byte"\n')
        out.write('local t : type i\nassert "`t\'" == "int"\n')
        out.write('local t : type l\nassert "`t\'" == "long"\n')
        out.write('local t : value label cat\nassert "`t\'" == "cat"\n')
        for code, text in enumerate(["lo", "mid", "hi"]):
            out.write(f'local t : label cat {code}\nassert "`t\'" == "{text}"\n')
        if not name.endswith("l"):
            out.write('local t : variable label d\nassert "`t\'" == "the d"\n')
            out.write(f'local t : data label\nassert "`t\'" == "made as {ver}"\n')
out.write('display "test completed"\n')
PY
run peer_read.do

# 2. Korvu writes 118 (and the default 113); the peer reads.
cat > k_write.do <<'DO'
set obs 4
generate double d = _n + 0.25
replace d = .a in 2
replace d = . in 3
generate byte b = _n
generate int i = -300 * _n
generate long l = 100000 * _n
generate float f = _n / 4
generate str8 s = "ab" + string(_n)
replace s = "" in 3
replace s = "日本" in 4
label define yn 1 "yes" 2 "no"
label values b yn
label variable d "a double"
label data "my data"
sort l
save k118, version(118)
save k113
* Korvu's own reading of what it wrote
use k118, clear
assert d == 1.25 in 1
assert d == .a in 2
assert d == . in 3
assert s == "日本" in 4
assert l == 400000 in 4
local t : label yn 2
assert "`t'" == "no"
display "test completed"
DO
run k_write.do
[ "$(head -c 41 k118.dta)" = "<korvu_dta><header><release>118</release>" ] || fail "k118.dta opening"
$py - <<'PY' || fail "the peer reads Korvu's files otherwise"
import math, dta_peer as P
for f in ("k118.dta", "k113.dta"):
    df = P.read(f, convert_categoricals=False)
    assert list(df.columns) == ["d", "b", "i", "l", "f", "s"], df.columns
    assert df.d[0] == 1.25 and math.isnan(df.d[1]) and math.isnan(df.d[2]) and df.d[3] == 4.25
    assert list(df.b) == [1, 2, 3, 4]
    assert list(df.i) == [-300, -600, -900, -1200]
    assert list(df.l) == [100000, 200000, 300000, 400000]
    assert list(df.f) == [0.25, 0.5, 0.75, 1.0]
    if f == "k118.dta":
        assert list(df.s) == ["ab1", "ab2", "", "日本"], list(df.s)
    mv = P.read(f, convert_missing=True)
    assert str(mv.d[1]) == ".a" and str(mv.d[2]) == ".", (mv.d[1], mv.d[2])
    it = P.reader(f)
    assert it.value_labels() == {"yn": {1: "yes", 2: "no"}}, it.value_labels()
    assert it.variable_labels()["d"] == "a double"
    assert it.data_label == "my data"
print("peer ok")
PY

# 3. Long names, long strings, long strings stored apart, written by hand in
#    the high-byte-first order; the peer's strL writer for the same data.
$py - <<'PY' || fail "could not make the hand-built file"
import struct, numpy as np, pandas as pd, dta_peer as P
E = ">"
def fx(t, n):
    t = t.encode()
    return t + b"\0" * (n - len(t))
names = ["a_name_that_is_much_longer_than_thirty_two", "my var", "txt", "sl"]
types = [65526, 65530, 250, 32768]
K, N = len(names), 2
long1 = "x" * 243 + "é" + "y" * 5    # 250 bytes; cut at 243, inside the é
strl = ["q" * 300, "short"]
b = b"<xyz_dta><header><release>118</release><byteorder>MSF</byteorder>"
b += b"<K>" + struct.pack(E + "H", K) + b"</K><N>" + struct.pack(E + "Q", N) + b"</N>"
b += b"<label>" + struct.pack(E + "H", 4) + b"hand</label><timestamp>\x00</timestamp></header>"
b += b"<map>" + b"\0" * 112 + b"</map>"
b += b"<variable_types>" + b"".join(struct.pack(E + "H", t) for t in types) + b"</variable_types>"
b += b"<varnames>" + b"".join(fx(n, 129) for n in names) + b"</varnames>"
b += b"<sortlist>" + b"\0" * 2 * (K + 1) + b"</sortlist>"
b += b"<formats>" + b"".join(fx(x, 57) for x in ["%10.0g", "%8.0g", "%250s", "%9s"]) + b"</formats>"
b += b"<value_label_names>" + fx("", 129) + fx("ab", 129) + fx("", 129) * 2 + b"</value_label_names>"
b += b"<variable_labels>" + fx("L" * 100, 321) + fx("", 321) * 3 + b"</variable_labels>"
b += b"<characteristics></characteristics><data>"
for r in range(N):
    b += struct.pack(E + "d", [2.5, -1.0][r]) + struct.pack(E + "b", [1, 2][r])
    s = [long1, "short"][r].encode()
    b += s + b"\0" * (250 - len(s))
    b += struct.pack(E + "H", 4) + (r + 1).to_bytes(6, "big")   # v=4, o=r+1
b += b"</data><strls>"
for r in range(N):
    t = strl[r].encode() + b"\0"
    b += b"GSO" + struct.pack(E + "IQ", 4, r + 1) + bytes([130]) + struct.pack(E + "I", len(t)) + t
b += b"</strls><value_labels>"
tab = struct.pack(E + "ii", 2, 4) + struct.pack(E + "ii", 0, 2) + struct.pack(E + "ii", 1, 2) + b"A\0B\0"
b += b"<lbl>" + struct.pack(E + "i", len(tab)) + fx("ab", 129) + b"\0\0\0" + tab + b"</lbl>"
b += b"</value_labels></xyz_dta>"
open("hand118.dta", "wb").write(b)
# a later release, and a file cut short inside the data
open("later.dta", "wb").write(b.replace(b"<release>118", b"<release>121"))
open("cut.dta", "wb").write(b[: b.index(b"<data>") + 20])
open("hand.do", "w").write(f"""use hand118
describe
assert _N == 2
assert a_name_that_is_much_longer_than_ == 2.5 in 1
assert my_var == 2 in 2
local t : label ab 2
assert "`t'" == "B"
local t : type txt
assert "`t'" == "str244"
assert txt == "{'x' * 243}" in 1
assert txt == "short" in 2
local t : type sl
assert "`t'" == "str244"
assert sl == "{'q' * 244}" in 1
assert sl == "short" in 2
local t : variable label a_name_that_is_much_longer_than_
assert "`t'" == "{'L' * 80}"
local t : data label
assert "`t'" == "hand"
display "test completed"
""")
PY
run hand.do
sed ':a;N;$!ba;s/\n> //g' hand.log > hand.flat
grep -q '^(variable a_name_that_is_much_longer_than_thirty_two renamed a_name_that_is_much_longer_than_)$' hand.flat || fail "rename note: $(cat hand.log)"
grep -q '^(variable my var renamed my_var)$' hand.log || fail "rename note of my var"
grep -q '^(1 value of txt cut to 244 bytes)$' hand.log || fail "cut note"
grep -q '^(1 value of sl cut to 244 bytes)$' hand.log || fail "cut note of sl"
grep -q '^(1 variable label cut to 80 bytes)$' hand.log || fail "label note"

# 4. Refusals leave the data in memory as they were.
cat > refuse.do <<'DO'
set obs 3
generate x = _n
capture noisily use later, clear
assert _rc == 610
capture noisily use cut, clear
assert _rc == 688
capture noisily use nosuchfile, clear
assert _rc == 601
assert _N == 3 & x[3] == 3
capture noisily save bad, version(117)
assert _rc == 198
display "test completed"
DO
run refuse.do
grep -q '^file later.dta from more recent version of Korvu$' refuse.log || fail "later message: $(cat refuse.log)"
grep -q '^file cut.dta is corrupt$' refuse.log || fail "cut message"

# 5. R's foreign: its format-114 writer into Korvu, Korvu's 113 into it.
command -v Rscript >/dev/null 2>&1 || { echo "passed (R absent): dta_newer"; exit 0; }
Rscript -e 'quit(status = !requireNamespace("foreign", quietly = TRUE))' >/dev/null 2>&1 \
  || { echo "passed (R foreign absent): dta_newer"; exit 0; }
Rscript - <<'R' >/dev/null 2>&1 || fail "R could not write or read"
library(foreign)
x <- data.frame(a = c(1.5, NA, -3), n = c(1L, 2L, 3L), s = c("u", "vw", "t"),
                stringsAsFactors = FALSE)
write.dta(x, "r114.dta", version = 10L)
k <- read.dta("k113.dta", convert.factors = FALSE)
stopifnot(identical(k$l, c(100000L, 200000L, 300000L, 400000L)))
stopifnot(k$d[1] == 1.25, is.na(k$d[2]), is.na(k$d[3]), k$d[4] == 4.25)
stopifnot(identical(k$i, c(-300L, -600L, -900L, -1200L)))
R
[ "$(head -c 1 r114.dta | od -An -tu1 | tr -d ' ')" = 114 ] || fail "R wrote no 114"
cat > rread.do <<'DO'
use r114
assert a == 1.5 in 1
assert a == . in 2
assert a == -3 in 3
assert n == 1 in 1
assert n == 3 in 3
assert s == "vw" in 2
assert s == "t" in 3
display "test completed"
DO
run rread.do
echo "passed: dta_newer"
