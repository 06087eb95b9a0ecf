#!/usr/bin/env bash
# Leaving is immediate, however large the data area: after set memory 1000m
# and a dataset in it, exit, clear ends the process at once.
set -u
exe=$1 work=$2
rm -rf "$work" && mkdir -p "$work" && cd "$work" || exit 2
fail() { echo "FAIL: $*"; exit 1; }

printf 'set memory 1000m\nset obs 200000\ngenerate double x = _n\ndisplay "ready"\n' > setup.txt
{ cat setup.txt; printf 'exit, clear\n'; } > leave.txt

elapsed() {
  local TIMEFORMAT='%R'
  { time "$exe" -q <"$1" >/dev/null 2>&1; } 2>&1
}
base=$(elapsed setup.txt)
leave=$(elapsed leave.txt)
echo "seconds: to end of input $base, with exit, clear $leave"
awk -v b="$base" -v l="$leave" 'BEGIN { exit !(l <= b + 1.0) }' ||
  fail "exit, clear took $leave s against $base s"
awk -v l="$leave" 'BEGIN { exit !(l <= 10) }' || fail "the whole run took $leave s"
echo "passed: exitfast"
