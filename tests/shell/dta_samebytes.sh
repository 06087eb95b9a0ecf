#!/usr/bin/env bash
# String cells hold their text and zero bytes behind it, however they were
# made (generate, replace, input, use of a file with stray bytes), so that the
# same data saved twice give identical files. The cells are checked by an
# independent reader of the file format.
set -u
exe=$1 work=$2
here=$(cd "$(dirname "$0")" && pwd)
ref=$here/../reference/dtacells.py
rm -rf "$work" && mkdir -p "$work" && cd "$work" || exit 2
command -v python3 >/dev/null || exit 77
fail() { echo "FAIL: $*"; exit 1; }
# a file whose str8 cells carry bytes after their terminators
python3 - <<'PY' || fail "could not write stray.dta"
import struct
hdr = bytes([113, 2, 1, 0]) + struct.pack("<hi", 1, 2)
hdr += b"stray".ljust(81, b"\0") + b" 1 Jan 2026 10:00".ljust(18, b"\0")
body = bytes([8]) + b"u".ljust(33, b"\0") + b"\0\0\0\0"
body += b"%9s".ljust(12, b"\0") + b"\0" * 33 + b"\0" * 81 + b"\0" * 5
data = b"ab\0XYZWV" + b"\0QRSTUVW"
open("stray.dta", "wb").write(hdr + body + data)
PY
cat > make.do <<'DO'
args out
use stray, clear
set obs 3
generate str10 t = "a" in 1
generate str12 w = "xyz" if _n == 2
replace u = "k" in 3
replace t = "longer text" in 2
replace t = "b" in 2
generate x = _n
replace w = w + "!" in 1/2
save `out', replace
drop _all
input str6 s
"p"
"qq"
""
end
save `out'_in, replace
DO
"$exe" -q -b do make.do a1 </dev/null || fail "first run: $(cat make.log)"
grep -q '^r(' make.log && fail "first run: $(cat make.log)"
"$exe" -q -b do make.do a2 </dev/null || fail "second run"
printf 'use a1\nsave a3\nuse a1_in, clear\nsave a3_in\n' > again.do
"$exe" -q -b do again.do </dev/null || fail "third run"
for f in a1 a1_in; do
  python3 "$ref" $f.dta || fail "stray bytes in the cells of $f.dta"
done
# the time stamp may differ by a minute between runs: compare past the header
cmp <(tail -c +110 a1.dta) <(tail -c +110 a3.dta) || fail "a1.dta and a3.dta differ"
cmp <(tail -c +110 a1_in.dta) <(tail -c +110 a3_in.dta) || fail "a1_in.dta and a3_in.dta differ"
cmp <(tail -c +110 a1.dta) <(tail -c +110 a2.dta) || fail "a1.dta and a2.dta differ"
cmp <(tail -c +110 a1_in.dta) <(tail -c +110 a2_in.dta) || fail "a1_in.dta and a2_in.dta differ"
# the cells themselves, worked out by hand
z() { printf '\\x00%.0s' $(seq 1 "$1"); }
expected="b'ab$(z 6)' b'a$(z 10)' b'!$(z 11)' 1.0
b'$(z 8)' b'b$(z 10)' b'xyz!$(z 8)' 2.0
b'k$(z 7)' b'$(z 11)' b'$(z 12)' 3.0"
got=$(python3 "$ref" a1.dta --dump)
[ "$got" = "$expected" ] || fail "cells of a1.dta: $got"
expected="b'p$(z 5)'
b'qq$(z 4)'
b'$(z 6)'"
got=$(python3 "$ref" a1_in.dta --dump)
[ "$got" = "$expected" ] || fail "cells of a1_in.dta: $got"
echo "passed: dta_samebytes"
