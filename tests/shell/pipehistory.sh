#!/usr/bin/env bash
# Lines read from a pipe go to the review ring; keeping it must cost next to
# nothing per line: 160000 lines from a pipe may take at most a few times the
# processor time of the same lines run as a do-file in batch (a history
# shifted at each line took more than ten times as long). #review still lists
# the newest lines.
set -u
exe=$1 work=$2
rm -rf "$work" && mkdir -p "$work" && cd "$work" || exit 2
fail() { echo "FAIL: $*"; exit 1; }

awk 'BEGIN { for (i = 0; i < 160000; i++) print "* line " i }' > lines.do
{ cat lines.do; echo "#review 3"; } > piped.txt

cpu() {
  local TIMEFORMAT='%U %S'
  { time "$@" >out.txt 2>/dev/null; } 2>&1 | awk '{ printf "%.3f", $1 + $2 }'
}
batch=$(cpu "$exe" -q -b do lines.do)
pipe=$(cpu "$exe" -q <piped.txt)
echo "cpu seconds for 160000 lines: batch $batch, pipe $pipe"
awk -v b="$batch" -v p="$pipe" 'BEGIN { exit !(p <= 4 * b + 0.3) }' ||
  fail "piped lines took $pipe s against $batch s in batch"

grep -qx '2 \* line 159999' out.txt || fail "review: $(tail -5 out.txt)"
grep -qx '3 \* line 159998' out.txt || fail "review: $(tail -5 out.txt)"
echo "passed: pipehistory"
