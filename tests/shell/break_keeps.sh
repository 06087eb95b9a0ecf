#!/usr/bin/env bash
# A break in the middle of replace or sort: the status is r(1); replace leaves
# each cell either as it was or as replaced (never anything else), sort leaves
# every observation whole, in some order, and the data no longer marked sorted.
set -u
exe=$1 work=$2
rm -rf "$work" && mkdir -p "$work" && cd "$work" || exit 2
fail() { echo "FAIL: $*"; exit 1; }
# Lines read from a pipe go on after a failure, so "checked" shows even when
# a check failed: the break's r(1) must be the only status line.
only_break() {
  local other
  other=$(grep '^r([0-9]*);' out.txt | grep -vx 'r(1);')
  [ -z "$other" ] || fail "$1: $other: $(cat out.txt)"
}
# x runs over 1..N in a scrambled order (7 and N share no factor); y is tied to
# x in each observation, so a torn observation shows. The sort key has ties, so
# the sort runs its quicksort, which polls at every partition.
cat > rep.txt <<'IN'
set obs 200000
generate double x = mod(_n * 7, 200000) + 1
generate double y = 3 * x + 1
replace y = -y
assert y == 3 * x + 1 | y == -(3 * x + 1)
count if y < 0
assert r(N) < 200000
summarize x
assert r(sum) == 200000 * 200001 / 2 & r(N) == 200000
display "checked"
IN
cat > srt.txt <<'IN'
set obs 200000
generate double x = mod(_n * 7, 200000) + 1
generate double y = mod(x, 97)
sort y
assert y == mod(x, 97)
summarize x
assert r(sum) == 200000 * 200001 / 2 & r(N) == 200000
local s : sortedby
assert "`s'" == ""
display "checked"
IN
# where did the break of a run fall: "before" the command, "in" it, "after"
# it (or no break at all)
where() {
  local cmd=$1
  if ! grep -q '^--Break--' out.txt; then echo after; return; fi
  local at
  at=$(awk '/^\. /{last=$0} /^--Break--/{print last; exit}' out.txt)
  case "$at" in
    ". $cmd"*) echo in ;;
    ". set obs"* | ". generate"*) echo before ;;
    *) echo after ;;
  esac
}
for f in rep srt; do
  cmd=replace
  [ $f = srt ] && cmd=sort
  lo=1 hi=2000000 found=0
  while [ $lo -le $hi ]; do
    n=$(((lo + hi) / 2))
    KORVU_TEST_BREAK_AFTER=$n "$exe" -q <$f.txt >out.txt 2>&1
    case $(where $cmd) in
      before) lo=$((n + 1)) ;;
      after) hi=$((n - 1)) ;;
      in) found=1; break ;;
    esac
  done
  [ $found = 1 ] || fail "$f: no poll count broke the $cmd"
  grep -q '^r(1);' out.txt || fail "$f, break after $n polls: no r(1): $(cat out.txt)"
  only_break "$f, break after $n polls"
  grep -q '^checked' out.txt || fail "$f, break after $n polls: $(cat out.txt)"
done
echo "passed: break_keeps"
