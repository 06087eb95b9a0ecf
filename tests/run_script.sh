#!/usr/bin/env bash
# Runs one script test: korvu-xe -b do <name>.do in a scratch directory.
# Passes when the log ends the script's run with the marker line
# `test completed` (printed by the script's last command,
# display "test completed"), so a run that stopped early cannot pass, and
# when the log holds no error status line or, where <name>.expected stands
# beside the script, when the log matches it with the log header masked.
set -u
exe=$1 script=$2 work=$3
name=$(basename "$script" .do)
src=$(dirname "$script")
# a short scratch path keeps the log header on one line
work=$(mktemp -d /tmp/korvu-test.XXXXXX) || exit 2
trap 'rm -rf "$work"' EXIT
cp -R "$src"/. "$work"/
cd "$work" || exit 2
env -u SYSDIR_KORVU -u S_ADO "$exe" -q -b do "$name.do" </dev/null
status=$?
if [ ! -f "$name.log" ]; then
  echo "korvu-xe exited with status $status"
  echo "no log $name.log written"
  exit 1
fi
# A run that ends on an error exits with its return code (1 above 255): the
# status line closing the log; otherwise 0.
want=$(grep -v '^ *$' "$name.log" | tail -n 1 | sed -nE 's/^r\(([0-9]+)\);$/\1/p')
want=${want:-0}
[ "$want" -gt 255 ] && want=1
if [ $status -ne "$want" ]; then
  echo "korvu-xe exited with status $status, expected $want"
  cat "$name.log"
  exit 1
fi
# The scratch directory and time stamps differ from run to run.
mask() {
  sed -E -e "s|$work|<dir>|g" \
    -e 's/[0-9]{1,2} [A-Z][a-z]{2} [0-9]{4},? [0-9]{2}:[0-9]{2}(:[0-9]{2})?/<date>/g' "$1"
}
if ! grep -qx 'test completed' "$name.log"; then
  echo "the log lacks the closing marker line 'test completed':"
  cat "$name.log"
  exit 1
fi
# An assertion over no observations tests nothing: a script that means one
# says so by naming "null assertion" in its text.
if grep -q '^(null assertion)$' "$name.log" && ! grep -q 'null assertion' "$name.do"; then
  echo "an assertion in the script tested no observation:"
  grep -n -B2 '^(null assertion)$' "$name.log"
  exit 1
fi
if [ -n "${KORVU_WRITE_EXPECTED:-}" ]; then
  mask "$name.log" > "$src/$name.expected"
  echo "wrote $src/$name.expected"
  exit 0
fi
if [ -f "$src/$name.expected" ]; then
  if ! diff -u "$src/$name.expected" <(mask "$name.log"); then
    echo "log differs from $name.expected"
    exit 1
  fi
elif grep -nE '^r\([0-9]+\);' "$name.log"; then
  echo "error status line in log:"
  cat "$name.log"
  exit 1
fi
echo "passed: $name"
