#!/usr/bin/env bash
# A table of many cells: its columns go into panels no wider than the line
# size, each with the stub again, and every cell holds its own value (worked
# out from the data: cell (a, b) holds the one observation n = 200 b + a + 1).
set -u
exe=$1 work=$2
rm -rf "$work" && mkdir -p "$work" && cd "$work" || exit 2
fail() { echo "FAIL: $*"; exit 1; }

cat > wide.do <<'DO'
set linesize 80
set obs 40000
generate long a = mod(_n - 1, 200)
generate long b = floor((_n - 1) / 200)
generate double y = _n
table a b, contents(mean y)
table a b if a < 3 & b < 2, contents(freq sum y) row col
display "test completed"
DO
"$exe" -q -b do wide.do </dev/null || fail "status $?: $(tail -5 wide.log)"
grep -q '^> ' wide.log && fail "lines wrapped in the log"
awk 'length($0) > 80 { bad = 1 } END { exit bad }' wide.log || fail "a line longer than 80"
grep -q 'hline' wide.log && fail "a rule left as markup"
# 9 wide cells, a stub of 8: 6 columns a panel, 34 panels for 200 columns
n=$(grep -c '^       a |' wide.log)
[ "$n" -eq 35 ] || fail "$n panels, expected 34 and one for the small table"
grep -qx '       5 |         6       206       406       606       806      1006' wide.log ||
  fail "first panel, row 5"
grep -qx '     199 |     39800     40000' wide.log || fail "last panel, row 199"
# the small table with totals: a = 0..2, b = 0..1 hold n = 1,2,3 and 201,202,203
grep -qx '   Total |         3         3         6' wide.log || fail "frequency totals"
grep -qx '         |         6       606       612' wide.log || fail "sum totals"
exit 0
