#!/usr/bin/env bash
# Random datasets sorted by korvu-xe and by an independent model of the sort:
# the orders, ties included, must agree.
set -u
exe=$1 work=$2
here=$(cd "$(dirname "$0")/../reference" && pwd)
if ! command -v python3 >/dev/null; then
  echo "python3 not found: skipped"
  exit 77
fi
rm -rf "$work" && mkdir -p "$work" || exit 2
python3 "$here/sortcheck.py" "$exe" "$work" 0 150 || exit 1
echo "passed: sortmodel"
