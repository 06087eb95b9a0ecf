#!/usr/bin/env bash
# The batch edition: its exit status tells whether the do-file stopped on an
# error, the log stays as it is, and -h names the batch option.
set -u
exe=$1 work=$2
rm -rf "$work" && mkdir -p "$work" && cd "$work" || exit 2
fail() { echo "FAIL: $*"; exit 1; }

# a clean run exits with 0
printf 'display "fine"\n' > ok.do
"$exe" -q -b do ok.do </dev/null
[ $? -eq 0 ] || fail "clean run status"

# a run that stops on an error exits with its return code; the log has it all
printf 'display "before"\nerror 459\ndisplay "never"\n' > bad.do
"$exe" -q -b do bad.do </dev/null
st=$?
[ $st -eq 459 ] 2>/dev/null && fail "status above 255 not folded"
[ $st -eq 1 ] || fail "code 459 gave status $st, expected 1"
grep -qx before bad.log || fail "log lost: $(cat bad.log)"
grep -qx 'r(459);' bad.log || fail "no status line in the log"
grep -qx never bad.log && fail "ran past the error"

printf 'capture error 198\nnosuchcommand\n' > bad2.do
"$exe" -q -b do bad2.do </dev/null
st=$?
[ $st -eq 199 ] || fail "unrecognized command gave status $st, expected 199"

# a captured error and nostop ending in success leave 0
printf 'capture error 198\ndisplay "after"\n' > cap.do
"$exe" -q -b do cap.do </dev/null
[ $? -eq 0 ] || fail "captured error changed the status"

# exit with a code ends the run with it
printf 'display "x"\nexit 7\n' > ex.do
"$exe" -q -b do ex.do </dev/null
st=$?
[ $st -eq 7 ] || fail "exit 7 gave status $st"

# a command too long for the input buffer fails the run
{
  printf 'display "start"\n'
  printf 'display "%s"\n' "$(head -c 200000 /dev/zero | tr '\0' x)"
  printf 'display "after the long line"\n'
} > long.do
[ "$(wc -c < long.do)" -eq 200057 ] || fail "could not write long.do"
"$exe" -q -b do long.do </dev/null
st=$?
[ $st -ne 0 ] || fail "a line too long for the buffer left status 0"
grep -qx 'input too long' long.log || fail "no message for the long line"
grep -qx 'after the long line' long.log && fail "ran past the long line"

# the batch log is the unnamed log: query shows it, a second one is refused,
# and nothing is written twice
printf 'log query\ncapture noisily log using twice, text replace\ndisplay _rc\ndisplay "once"\n' > twice.do
"$exe" -q -b do twice.do </dev/null || fail "batch log run status"
grep -q 'log:  .*/twice.log, on' twice.log || fail "log query did not show the batch log: $(cat twice.log)"
grep -qx 604 twice.log || fail "a second unnamed log was not refused"
[ "$(grep -cx once twice.log)" -eq 1 ] || fail "lines written twice: $(cat twice.log)"

# outside batch the unnamed log opens, pauses, resumes and closes
printf 'log using u, text replace\ndisplay "one"\nlog off\ndisplay "two"\nlog on\ndisplay "three"\nlog close\n' |
  "$exe" -q >/dev/null
grep -qx one u.log && grep -qx three u.log || fail "unnamed log: $(cat u.log)"
grep -qx two u.log && fail "paused log took a line"

# the console edition's usage names -b; the exit status of -h stays 0
err=$("$exe" -h 2>&1 >/dev/null </dev/null)
[ $? -eq 0 ] || fail "-h status"
grep -q -- '-b        batch mode' <<<"$err" || fail "-h does not mention -b: $err"
grep -q 'korvu-xe \[-h -b -k# -m# -q\]' <<<"$err" || fail "usage line: $err"
echo "passed: batch"
