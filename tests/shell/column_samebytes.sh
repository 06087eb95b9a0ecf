#!/usr/bin/env bash
# The dataset files written from data held by columns are byte for byte the
# files a build that held observations as records wrote for the same commands
# (tests/reference/colmix: the do-file and the files it made then), past the
# time stamp of the header. Reading those files and saving them again gives
# them back unchanged, and a few cells are checked by an independent reader.
set -u
exe=$1 work=$2
here=$(cd "$(dirname "$0")" && pwd)
ref=$here/../reference
rm -rf "$work" && mkdir -p "$work" && cd "$work" || exit 2
command -v python3 >/dev/null || exit 77
fail() { echo "FAIL: $*"; exit 1; }
cp "$ref/colmix/colmix.do" "$ref"/colmix/colmix_ref*.dta .
"$exe" -q -b do colmix.do new </dev/null || fail "colmix.do: $(tail -5 colmix.log)"
same() { cmp <(tail -c +110 "$1") <(tail -c +110 "$2") || fail "$1 and $2 differ"; }
same colmix_ref.dta new.dta
same colmix_ref_sub.dta new_sub.dta
# the header too, but for the time stamp
cmp <(head -c 91 colmix_ref.dta) <(head -c 91 new.dta) || fail "headers differ"
printf 'use colmix_ref\nsave again\nuse colmix_ref_sub, clear\nsave again_sub\n' > again.do
"$exe" -q -b do again.do </dev/null || fail "again.do: $(tail -5 again.log)"
same colmix_ref.dta again.dta
same colmix_ref_sub.dta again_sub.dta
# cells worked out apart: 600 observations less the 46 ids divisible by 13;
# after `sort d, stable` d ascends (missing last, . before .q); the first d
# is (1.25 * 1 - 200)^3 / 11, for id 1; the subset holds the odd ids of
# observations 10 to 400 of the saved file, in their order
python3 - "$ref" new.dta new_sub.dta <<'PY' || fail "cells"
import sys
sys.path.insert(0, sys.argv[1])
from dtacells import parse
names, types, rows = parse(sys.argv[2])
assert names == ["t", "id", "b", "k", "i", "f", "d", "s", "c", "w", "u"], names
assert len(rows) == 600 - 600 // 13, len(rows)
ids = [r[1] for r in rows]
assert sorted(ids) == [n for n in range(1, 601) if n % 13], "ids"
d = [r[6] for r in rows]
assert all(a <= b for a, b in zip(d, d[1:])), "d not ascending"
assert rows[0][1] == 1 and abs(d[0] - (1.25 - 200) ** 3 / 11) < 1e-9 * abs(d[0]), rows[0]
nmiss = sum(1 for n in ids if n % 31 == 0 or n % 37 == 0)
assert sum(1 for x in d if x >= 2.0 ** 1023) == nmiss, "missing d"
sn, st, sr = parse(sys.argv[3])
assert sn == ["t", "id", "k", "d"], sn
want = [r[1] for r in rows[9:400] if r[1] % 2 == 1]
assert [r[1] for r in sr] == want, "subset ids"
assert [r[3] for r in sr] == [r[6] for r in rows[9:400] if r[1] % 2 == 1], "subset d"
PY
echo "passed: column_samebytes"
