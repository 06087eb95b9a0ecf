#!/usr/bin/env bash
# The console edition read from a pipe, its options, and start-up from
# anywhere with no environment set.
set -u
exe=$1 work=$2
rm -rf "$work" && mkdir -p "$work" && cd "$work" || exit 2
fail() { echo "FAIL: $*"; exit 1; }

# lines are read to the end of input, which ends the session
out=$(printf 'display "one"\ndisplay "two"\n' | env -u SYSDIR_KORVU "$exe" -q)
[ $? -eq 0 ] || fail "pipe status"
grep -qx 'one' <<<"$out" || fail "first line not run: $out"
grep -qx 'two' <<<"$out" || fail "second line not run: $out"
grep -qx '\. display "two"' <<<"$out" || fail "no echo of the typed line: $out"
grep -q $'\e\[' <<<"$out" && fail "escape sequences on a pipe"

# exit ends the session at once
out=$(printf 'exit\ndisplay "after"\n' | "$exe" -q)
grep -q after <<<"$out" && fail "line after exit was run"

# a failure prints the status line and the session goes on
out=$(printf 'nosuchcommand\ndisplay "next"\n' | "$exe" -q)
grep -qx 'unrecognized command:  nosuchcommand' <<<"$out" || fail "no message: $out"
grep -qx 'r(199);' <<<"$out" || fail "no status line: $out"
grep -qx 'next' <<<"$out" || fail "session did not go on"

# a command on the command line runs after start-up
out=$("$exe" -q 'display "from argv"' </dev/null)
grep -qx 'from argv' <<<"$out" || fail "command line not run: $out"

# the logo and notes unless -q
out=$(printf '' | "$exe")
grep -q 'Notes:' <<<"$out" || fail "no notes without -q"
grep -q 'maximum variables' <<<"$out" || fail "no maxvar note"

# bad options print the usage on standard error and end the process
for opt in -h -v1000 -m0 -k5 -z; do
  err=$("$exe" $opt 2>&1 >/dev/null </dev/null)
  [ $? -eq 0 ] || fail "$opt status"
  grep -q 'korvu-xe:  usage:  korvu-xe \[-h -b -k# -m# -q\]' <<<"$err" || fail "$opt gave no usage: $err"
done

# the system directory is found beside the executable from any directory
mkdir elsewhere && cd elsewhere
out=$(printf 'display "found"\n' | env -i PATH=/usr/bin:/bin "$exe" -q)
grep -qx found <<<"$out" || fail "did not start from another directory: $out"

# batch mode: the log is named after the do-file
printf 'display "batch"\n' > job.do
"$exe" -q -b do job.do </dev/null || fail "batch status"
grep -qx batch job.log || fail "batch log: $(cat job.log)"
"$exe" -q -b 2>err.txt </dev/null
grep -q -- '-b specified with no command' err.txt || fail "no message for -b alone"
echo "passed: console"
