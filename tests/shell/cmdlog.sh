#!/usr/bin/env bash
# The command log records only lines the user typed, never its own command.
set -u
exe=$1 work=$2
rm -rf "$work" && mkdir -p "$work" && cd "$work" || exit 2
fail() { echo "FAIL: $*"; exit 1; }
printf 'display "inner line"\n' > inner.do
printf 'cmdlog using cmds, replace\ndisplay "typed"\ndo inner.do\n   cmdlog off\ndisplay "while off"\ncmdlog on\nquietly display "quiet"\ncmdlog close\ndisplay "after"\n' \
  | "$exe" -q > out.txt || fail status
[ -f cmds.txt ] || fail "no cmds.txt: $(cat out.txt)"
expected='display "typed"
do inner.do
quietly display "quiet"'
[ "$(cat cmds.txt)" = "$expected" ] || fail "command log holds: $(cat cmds.txt)"
grep -q '(cmdlog .*cmds.txt opened)' out.txt || fail "no opened line: $(cat out.txt)"
echo "passed: cmdlog"
