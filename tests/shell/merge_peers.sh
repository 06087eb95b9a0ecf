#!/usr/bin/env bash
# Declared-match merges (1:1, m:1, 1:m) against pandas' merge of the same
# data: counts of each origin, keys and values.
set -u
exe=$1 work=$2
here=$(cd "$(dirname "$0")/../reference" && pwd)
if ! /usr/bin/python3 -c 'import pandas' 2>/dev/null; then
  echo "pandas not found: skipped"
  exit 77
fi
rm -rf "$work" && mkdir -p "$work" || exit 2
/usr/bin/python3 "$here/mergepeer.py" "$exe" "$work" 7 || exit 1
echo "passed: merge_peers"
