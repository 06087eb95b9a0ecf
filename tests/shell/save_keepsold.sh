#!/usr/bin/env bash
# A save, replace that fails (a file-size limit) or is broken leaves the old
# file byte for byte as it was and no temporary file behind; one that succeeds
# replaces it.
set -u
exe=$1 work=$2
rm -rf "$work" && mkdir -p "$work" && cd "$work" || exit 2
fail() { echo "FAIL: $*"; exit 1; }
printf 'set obs 3\ngenerate x = _n\nsave good\n' > good.do
"$exe" -q -b do good.do </dev/null
[ -f good.dta ] || fail "no good.dta: $(cat good.log)"
sum=$(cksum < good.dta)
files() { ls -A | grep -v -e '\.do$' -e '\.log$' | tr '\n' ' '; }
before=$(files)
cat > big.do <<'DO'
set obs 300000
generate double x = _n
generate double y = -_n
save good, replace
DO
# 1. past a file-size limit of 256 kB the write fails
(ulimit -f 256; "$exe" -q -b do big.do </dev/null) >/dev/null 2>&1
grep -q '^r(699);' big.log || fail "no r(699) at the size limit: $(tail -5 big.log)"
[ "$(cksum < good.dta)" = "$sum" ] || fail "good.dta changed by a failed save"
[ "$(files)" = "$before" ] || fail "files left behind: $(files)"
# 2. a break while the records are written: find a poll count that stops the
#    run inside the save (before it, the save never starts; after it, it is done)
lo=1 hi=20000 found=0
while [ $lo -le $hi ]; do
  n=$(((lo + hi) / 2))
  KORVU_TEST_BREAK_AFTER=$n "$exe" -q -b do big.do </dev/null >/dev/null 2>&1
  if grep -q 'file good.dta saved' big.log; then
    hi=$((n - 1))
    [ "$(cksum < good.dta)" != "$sum" ] || fail "save, replace did not replace"
    # put the old file back for the next try
    rm -f good.dta
    "$exe" -q -b do good.do </dev/null >/dev/null 2>&1
    sum=$(cksum < good.dta)
  elif awk '/^\. /{last=$0} /^--Break--/{print last; exit}' big.log | grep -q '^\. save'; then
    found=1
    break
  else
    lo=$((n + 1))
  fi
done
[ $found = 1 ] || fail "no poll count broke the save"
grep -q '^r(1);' big.log || fail "the broken save did not end with r(1)"
[ "$(cksum < good.dta)" = "$sum" ] || fail "good.dta changed by a broken save"
[ "$(files)" = "$before" ] || fail "files left behind by a broken save: $(files)"
echo "passed: save_keepsold"
