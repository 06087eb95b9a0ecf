#!/usr/bin/env bash
# Class members against global macros: one million passes of a forvalues loop,
# each `.o.x = .o.x + 1` on a member of an instance, and the same loop over a
# global macro (`global x = $x + 1`), run as do-files in batch mode.
set -euo pipefail
cd "$(dirname "$0")/.."
exe=$PWD/build/bin/korvu-xe
[ -x "$exe" ] || { echo "build first: build/bin/korvu-xe"; exit 1; }
work=$(mktemp -d /tmp/korvu-bench.XXXXXX)
trap 'rm -rf "$work"' EXIT
cd "$work"
n=${1:-1000000}
cat > counter.class <<'CLS'
version 9.2
class counter {
    double x = 0
}
CLS
cat > member.do <<DO
global S_ADO "\$S_ADO;."
.o = .counter.new
forvalues i = 1/$n {
    .o.x = .o.x + 1
}
display "x = \`.o.x'"
DO
cat > global.do <<DO
global x 0
forvalues i = 1/$n {
    global x = \$x + 1
}
display "x = \$x"
DO
for t in member global; do
  echo "$t:"
  /usr/bin/time -o time.txt -f "  %e s elapsed, %U s user, %S s sys, %M KB max resident" \
    "$exe" -q -b do $t.do
  grep -E "^x = |^r\(" $t.log | sed 's/^/  /'
  cat time.txt
done
