#!/usr/bin/env bash
# The developers' notes and the README name files relative to the checkout,
# never by an absolute path of one machine.
set -u
top=$(cd "$(dirname "$0")/../.." && pwd)
fail() { echo "FAIL: $*"; exit 1; }
for f in README.md DEVELOPERS.md; do
  [ -f "$top/$f" ] || fail "$f missing"
  if grep -nE '(^|[ `(])/(work|home|root|Users)/' "$top/$f"; then
    fail "$f names an absolute path"
  fi
done
echo "passed: notes"
