#!/usr/bin/env bash
# A generate stopped by a break leaves the cells it had not reached missing
# (empty for a string), never zero or the bytes of a dropped variable.
set -u
exe=$1 work=$2
rm -rf "$work" && mkdir -p "$work" && cd "$work" || exit 2
fail() { echo "FAIL: $*"; exit 1; }
# the dropped variables leave their bytes where the new ones are placed
cat > num.txt <<'IN'
set obs 5000
generate double junk = 7
drop junk
generate double x = 1
assert x == 1 | x == .
count if x == .
assert r(N) > 0
display "checked"
IN
# a string generate polls once an observation
cat > str.txt <<'IN'
set obs 300
generate str3 junk = "zzz"
drop junk
generate str3 s = "a"
assert s == "a" | s == ""
count if s == ""
assert r(N) > 0
display "checked"
IN
for f in num str; do
  hits=0
  if [ $f = num ]; then counts=$(seq 1 60); else counts=$(seq 250 7 700); fi
  for n in $counts; do
    KORVU_TEST_BREAK_AFTER=$n "$exe" -q <$f.txt >out.txt 2>&1
    # only runs broken inside the generate of the new variable count
    awk '/^\. /{last=$0} /^--Break--/{print last; exit}' out.txt | grep -q 'generate .* = "*[1a]' \
      || continue
    hits=$((hits + 1))
    grep -q '^r(1);' out.txt || fail "$f: no break status"
    # the checks after the break run on (lines from a pipe): any status line
    # but the break's, a failed assert or a variable gone, is a fault
    other=$(grep '^r([0-9]*);' out.txt | grep -vx 'r(1);')
    [ -z "$other" ] || fail "$f, break after $n polls: $other: $(cat out.txt)"
    grep -q '^checked' out.txt || fail "$f, break after $n polls: checks did not run"
  done
  [ $hits -gt 0 ] || fail "$f: no poll count broke the generate"
done
echo "passed: gen_broken"
