#!/usr/bin/env bash
# Nesting deeper than the process can hold ends with a message and r(1000),
# the session alive and the lines around the deep block in their structure;
# 9999 nested foreach loops run, the 10000th is refused with 198.
set -u
exe=$1 work=$2
rm -rf "$work" && mkdir -p "$work" && cd "$work" || exit 2
fail() { echo "FAIL: $*"; exit 1; }

# nested blocks: kind, depth
nest() {
  awk -v kind="$1" -v n="$2" 'BEGIN {
    for (i = 0; i < n; i++) {
      if (kind == "if") print "if 1 {"
      else if (kind == "brace") print "{"
      else if (kind == "forv") print "forvalues i" i " = 1/1 {"
      else print "foreach v" i " in a {"
    }
    print "display \"deep\""
    for (i = 0; i < n; i++) print "}"
    print "display \"after\""
  }'
}

for depth in if:35000 brace:15000 forv:20000 foreach:10000; do
  kind=${depth%%:*} n=${depth##*:}
  nest "$kind" "$n" > deep.do
  printf 'do deep.do, nostop\ndisplay "alive"\n' | "$exe" -q > out.txt 2>&1
  st=$?
  [ $st -eq 0 ] || fail "$kind x $n: status $st: $(tail -c 400 out.txt)"
  if [ "$kind" = foreach ]; then
    grep -qx 'r(198);' out.txt || fail "$kind x $n: no r(198)"
  else
    grep -q '^commands nested too deeply' out.txt || fail "$kind x $n: no message"
    grep -qx 'r(1000);' out.txt || fail "$kind x $n: no r(1000)"
  fi
  grep -qx deep out.txt && fail "$kind x $n: the innermost line ran"
  grep -qx after out.txt || fail "$kind x $n: the line after the block did not run"
  grep -qx alive out.txt || fail "$kind x $n: the session did not go on"
  grep -q 'unexpected\|unrecognized' out.txt && fail "$kind x $n: structure lost"
done

# 9999 nested foreach loops are allowed
nest foreach 9999 > deep.do
"$exe" -q -b do deep.do </dev/null
st=$?
[ $st -eq 0 ] || fail "9999 nested foreach: status $st: $(tail -5 deep.log)"
grep -qx deep deep.log || fail "9999 nested foreach did not reach the innermost line"

# prefixes stacked on one line
awk 'BEGIN { s = ""; for (i = 0; i < 20000; i++) s = s "quietly "; print s "display 1"; print "display \"alive\"" }' > pre.do
printf 'do pre.do, nostop\n' | "$exe" -q > out.txt 2>&1
[ $? -eq 0 ] || fail "prefixes: status"
grep -qx 'r(1000);' out.txt || fail "prefixes: no r(1000)"
grep -qx alive out.txt || fail "prefixes: the session did not go on"
echo "passed: nesting"
