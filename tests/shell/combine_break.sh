#!/usr/bin/env bash
# A break in a program that preserved brings the data back; a break in the
# middle of merge or append leaves the data exactly as they were.
set -u
exe=$1 work=$2
rm -rf "$work" && mkdir -p "$work" && cd "$work" || exit 2
fail() { echo "FAIL: $*"; exit 1; }
# Lines read from a pipe go on after a failure, so "checked" shows even when
# an assert failed: the break's r(1) must be the only status line.
only_break() {
  local other
  other=$(grep '^r([0-9]*);' out.txt | grep -vx 'r(1);')
  [ -z "$other" ] || fail "$1: $other: $(cat out.txt)"
}

# the program loops for ever after its preserve: any break past the first
# few polls lands inside it
cat > prog.txt <<'IN'
set obs 20
generate double x = _n
program define loopy
    preserve
    drop in 1/5
    replace x = -x
    while 1 {
        quietly replace x = x + 1
    }
end
loopy
assert c(N) == 20 & c(k) == 1
summarize x
assert r(sum) == 210 & r(min) == 1
display "checked"
IN
for n in 300 1000 5000; do
  KORVU_TEST_BREAK_AFTER=$n "$exe" -q <prog.txt >out.txt 2>&1
  grep -q '^--Break--' out.txt || fail "loopy, $n polls: no break: $(cat out.txt)"
  only_break "loopy, $n polls"
  grep -q '^checked' out.txt || fail "loopy, $n polls: $(cat out.txt)"
done

# master x = 1..N, sorted; using: y tied to the key. After a broken command
# the data must be the master as saved: same size, values, sort, flag.
cat > mk.txt <<'IN'
set obs 100000
generate long id = _n
generate double y = 3 * id
sort id
save u, replace
drop _all
set obs 100000
generate long id = 2 * _n
generate double x = id + 0.5
sort id
save m, replace
IN
"$exe" -q <mk.txt >out.txt 2>&1 || fail "making the data: $(cat out.txt)"
cat > check.txt <<'IN'
assert c(N) == 100000 & c(k) == 2 & c(changed) == 0
local s : sortedby
assert "`s'" == "id"
assert x == id + 0.5 & id == 2 * _n
display "checked"
IN
for cmd in "merge id using u" "append using u" "merge id using u, match(1:1)"; do
  { printf 'use m\n%s\n' "$cmd"; cat check.txt; } >run.txt
  word=${cmd%% *}
  # find a poll count that breaks inside the command
  lo=1 hi=3000000 found=0 tries=0
  while [ $lo -le $hi ] && [ $tries -lt 40 ]; do
    tries=$((tries + 1))
    n=$(((lo + hi) / 2))
    KORVU_TEST_BREAK_AFTER=$n "$exe" -q <run.txt >out.txt 2>&1
    if ! grep -q '^--Break--' out.txt; then hi=$((n - 1)); continue; fi
    at=$(awk '/^\. /{last=$0} /^--Break--/{print last; exit}' out.txt)
    case "$at" in
      ". $word"*) found=1; break ;;
      ". use"*) lo=$((n + 1)) ;;
      *) hi=$((n - 1)) ;;
    esac
  done
  [ $found = 1 ] || fail "$cmd: no poll count broke it"
  grep -q '^r(1);' out.txt || fail "$cmd, $n polls: no r(1): $(cat out.txt)"
  only_break "$cmd, $n polls"
  grep -q '^checked' out.txt || fail "$cmd, $n polls: $(cat out.txt)"
done
echo "passed: combine_break"
