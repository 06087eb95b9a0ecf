#!/usr/bin/env bash
# Temporary files in a directory whose name is 2,000 characters long: the
# name is built whole with its counter, and set maxvar, which parks the
# dictionary in a temporary file there, keeps the macros and leaves nothing.
# A directory too long for a file name gives 914.
set -u
exe=$1 work=$2
rm -rf "$work" && mkdir -p "$work" && cd "$work" || exit 2
fail() { echo "FAIL: $*"; exit 1; }

seg=$(printf 'd%.0s' $(seq 1 249))
long=$work
while [ ${#long} -lt 2000 ]; do long=$long/$seg; done
long=${long:0:2000}
long=${long%/}
mkdir -p "$long" || fail "cannot make the long directory"
[ ${#long} -ge 1990 ] || fail "directory name only ${#long} long"

cat > long.do <<'DO'
tempfile f
display "name=`f'"
program define inner
    tempfile g h
    global inner "`h'"
end
inner
tempfile k
display "next=`k'"
global kept "macro survives"
set maxvar 6000
display "after maxvar: $kept"
display "test completed"
DO
KORVUTMP=$long "$exe" -q -b do long.do </dev/null
[ $? -eq 0 ] || fail "status $?"
log=long.log
grep -qx 'test completed' $log || { cat $log; fail "did not run to the end"; }
# long output lines go on after "> "
joined() { awk -v k="$1=" 'index($0,k)==1{v=substr($0,length(k)+1);on=1;next} on&&/^> /{v=v substr($0,3);next} {on=0} END{print v}' $log; }
name=$(joined name)
case "$name" in
"$long"/St[0-9][0-9][0-9][0-9][0-9]*.000001) ;;
*) fail "temporary name ${name:0:60}...${name: -30}" ;;
esac
# two names were taken inside the program: the next is the fourth
next=$(joined next)
[ "$next" = "${name%000001}000004" ] || fail "counter after the frame: ${next: -20}"
grep -qx 'after maxvar: macro survives' $log || { cat $log; fail "set maxvar lost the macros"; }
# the dictionary parked by set maxvar went back and its file is gone
[ -z "$(ls -A "$long")" ] || fail "files left in the temporary directory: $(ls "$long")"

# a directory too long for any file name: tempfile fails with 914
huge=/$(printf 'h%.0s' $(seq 1 5000))
printf 'capture tempfile f\ndisplay "rc=" _rc\ndisplay "test completed"\n' > huge.do
KORVUTMP=$huge "$exe" -q -b do huge.do </dev/null
grep -qx 'rc=914' huge.log || { cat huge.log; fail "no 914 for a directory too long"; }
echo "passed"
