#!/usr/bin/env bash
# save, oldformat writes the one missing value of the old formats in every
# cell holding an extended missing value (2^1023 in a double, 2^127 in a float,
# the top integer in the integer types), keeps the data in memory with their
# extended missing values, and writes files another package reads: R's
# foreign::read.dta, where installed (else the test reports skip).
set -u
exe=$1 work=$2
here=$(cd "$(dirname "$0")" && pwd)
ref=$here/../reference/dtacells.py
rm -rf "$work" && mkdir -p "$work" && cd "$work" || exit 2
command -v python3 >/dev/null || exit 77
fail() { echo "FAIL: $*"; exit 1; }
cat > old.do <<'DO'
set obs 5
generate double d = _n + 0.5
replace d = .a in 2
replace d = . in 3
generate float f = -_n
replace f = .b in 1
generate byte b = _n * 20
replace b = .c in 4
generate int i = 1000 * _n
replace i = .z in 5
generate long l = 100000 * _n
replace l = .d in 1
label define yn 1 "yes" 2 "no"
label values b yn
save o111, oldformat
save o110, oldformat midband
* nothing cleared: the extended missing values stand in memory
assert _N == 5
assert d == .a in 2
assert d == . in 3
assert f == .b in 1
assert b == .c in 4
assert i == .z in 5
assert l == .d in 1
assert d == 4.5 in 4
DO
"$exe" -q -b do old.do </dev/null || fail "run: $(cat old.log)"
grep -q '^r(' old.log && fail "run: $(cat old.log)"
for f in o111 o110; do
  [ "$(head -c 1 $f.dta | od -An -tu1 | tr -d ' ')" = "${f#o}" ] || fail "$f.dta format byte"
done
# cells by an independent reader: 2^1023 is 8.98846567431158e+307 exactly,
# 2^127 is 1.7014118346046923e+38
python3 - "$ref" <<'PY' || fail "cells of the old-format files"
import os, struct, sys
sys.path.insert(0, os.path.dirname(os.path.abspath(sys.argv[1])))
import dtacells as m
M, F = 2.0 ** 1023, 2.0 ** 127
want = [
    [1.5, F, 20, 1000, 2147483647],
    [M, -2.0, 40, 2000, 200000],
    [M, -3.0, 60, 3000, 300000],
    [4.5, -4.0, 127, 4000, 400000],
    [5.5, -5.0, 100, 32767, 500000],
]
for f in ("o111.dta", "o110.dta"):
    names, types, rows = m.parse(f)
    assert names == ["d", "f", "b", "i", "l"], names
    assert rows == want, (f, rows)
    # the double cells of .a and . hold exactly the bits of 2^1023
    data = open(f, "rb").read()
    assert data.count(struct.pack("<Q", 0x7FE0000000000000)) >= 2, f
    assert struct.pack("<Q", 0x7FE0010000000000) not in data, f
print("cells ok")
PY
command -v Rscript >/dev/null 2>&1 || { echo "skip: no Rscript"; exit 77; }
Rscript -e 'quit(status = !requireNamespace("foreign", quietly = TRUE))' >/dev/null 2>&1 \
  || { echo "skip: R has no foreign package"; exit 77; }
Rscript - <<'R' || fail "R reads the files otherwise"
library(foreign)
for (f in c("o111.dta", "o110.dta")) {
  x <- read.dta(f, convert.factors = FALSE)
  stopifnot(identical(names(x), c("d", "f", "b", "i", "l")))
  stopifnot(identical(is.na(x$d), c(FALSE, TRUE, TRUE, FALSE, FALSE)))
  stopifnot(all(x$d[c(1, 4, 5)] == c(1.5, 4.5, 5.5)))
  stopifnot(identical(is.na(x$f), c(TRUE, FALSE, FALSE, FALSE, FALSE)))
  stopifnot(all(x$f[2:5] == -(2:5)))
  stopifnot(identical(is.na(x$b), c(FALSE, FALSE, FALSE, TRUE, FALSE)))
  stopifnot(all(x$b[-4] == c(20, 40, 60, 100)))
  stopifnot(identical(is.na(x$i), c(FALSE, FALSE, FALSE, FALSE, TRUE)))
  stopifnot(identical(is.na(x$l), c(TRUE, FALSE, FALSE, FALSE, FALSE)))
  stopifnot(all(x$l[-1] == 100000 * (2:5)))
  # every value, missing ones included, stays far from the old codes
  stopifnot(all(abs(x$d[!is.na(x$d)]) < 10))
}
cat("R ok\n")
R
echo "passed: dta_oldformat"
