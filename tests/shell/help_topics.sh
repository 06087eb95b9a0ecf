#!/usr/bin/env bash
# Every link to a help topic in the help files leads to a topic that exists,
# and every built-in command with a handler, and every ado-file in base/, has
# a help page (directly, by an alias or as the abbreviation of a command).
set -u
exe=$1 work=$2
top=$(cd "$(dirname "$0")/../.." && pwd)
fail() { echo "FAIL: $*"; exit 1; }
rm -rf "$work" && mkdir -p "$work" && cd "$work" || exit 2

# link targets: {help x}, {help x:text}, {helpb x...}, and the shorthand tags
# that make links of their own
links=$(grep -rhoE '\{helpb? +[^ }:]+' "$top/base" --include='*.hlp' --include='*.ptag' |
  sed -E 's/^\{helpb? +//' | sort -u)
shorthand=$(grep -rhoE '\{(ifin|weight|dtype|var|varname|vars|varlist|depvar|depvars|depvarlist|indepvars|newvar)\}' \
  "$top/base" --include='*.hlp' | sort -u)
[ -n "$links" ] || fail "no links found in the help files"

# commands: rows of the built-in table with a handler
cmds=$(grep -oE '^\s*\{"[^"]+", [0-9]+, .{3}, [0-9]+, [0-9]+, [0-9], [A-Za-z_0-9]+' \
  "$top/src/kernel/cmds/builtins.cpp" | grep -v nullptr | sed -E 's/^\s*\{"([^"]+)".*/\1/' | sort -u)
[ "$(echo "$cmds" | wc -l)" -gt 50 ] || fail "could not read the built-in table"
ados=$(find "$top/base" -name '*.ado' -exec basename {} .ado \; | sort -u)

{
  echo 'local bad 0'
  for t in $links; do
    echo "capture quietly help $t"
    echo "if _rc {"
    echo "    display \"BROKEN LINK $t\""
    echo "    local bad 1"
    echo "}"
  done
  for t in $cmds $ados; do
    echo "capture quietly help $t"
    echo "if _rc {"
    echo "    display \"NO HELP $t\""
    echo "    local bad 1"
    echo "}"
  done
  echo 'display "checked `bad'"'"'"'
} > topics.do
env -u SYSDIR_KORVU -u S_ADO "$exe" -q -b do topics.do </dev/null
[ -f topics.log ] || fail "no log written"
if grep -E '^(BROKEN LINK|NO HELP) ' topics.log; then fail "help topics missing"; fi
grep -q '^checked 0' topics.log || { cat topics.log; fail "the check did not run to its end"; }
[ -z "$shorthand" ] || fail "shorthand link tags need topics of their own: $shorthand"

# the not-found message names the topic and points to search, with r(111)
printf 'help nosuchtopic\n' > miss.do
env -u SYSDIR_KORVU -u S_ADO "$exe" -q -b do miss.do </dev/null
[ $? -eq 111 ] || fail "an unknown topic should end with 111"
grep -q '^help for nosuchtopic not found$' miss.log || fail "not-found message"
grep -q '^try help contents or search nosuchtopic$' miss.log || fail "pointer to search"
echo "passed: help topics ($(echo "$links" | wc -w) links, $(echo $cmds $ados | wc -w) commands)"
