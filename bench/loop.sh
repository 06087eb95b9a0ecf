#!/usr/bin/env bash
# Interpreter loop: a forvalues loop of one million passes, each storing a
# local, run as a do-file in batch mode. With expressions linked in, the body
# is `local x = `x' + 1`; without them, `local x "`i'"` (expansion and a store).
set -euo pipefail
cd "$(dirname "$0")/.."
exe=$PWD/build/bin/korvu-xe
[ -x "$exe" ] || { echo "build first: build/bin/korvu-xe"; exit 1; }
work=$(mktemp -d /tmp/korvu-bench.XXXXXX)
trap 'rm -rf "$work"' EXIT
cd "$work"
n=${1:-1000000}
body=${2:-'local x "`i'"'"'"'}
printf 'local x 0\nforvalues i = 1/%s {\n    %s\n}\ndisplay "x = `x'"'"'"\n' "$n" "$body" > loop.do
cat loop.do
/usr/bin/time -f "%e s elapsed, %M KB max resident" "$exe" -q -b do loop.do
grep -E "^x = |^r\(" loop.log
