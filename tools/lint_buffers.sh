#!/usr/bin/env bash
# Text goes into buffers through calls that take the size: no strcpy, strcat,
# sprintf, vsprintf or gets anywhere in the product's sources (src/). Run from anywhere:
#   bash tools/lint_buffers.sh [top of the checkout]
set -u
top=${1:-$(cd "$(dirname "$0")/.." && pwd)}
cd "$top" || exit 2
hits=$(grep -rnE --include='*.cpp' --include='*.h' --include='*.c' \
  '(^|[^A-Za-z0-9_])(strcpy|strcat|sprintf|vsprintf|gets)[[:space:]]*\(' src 2>/dev/null |
  grep -vE '^[^:]+:[0-9]+:[[:space:]]*//')
if [ -n "$hits" ]; then
  echo "unsized copies into buffers (use snprintf, copytext or the scratch pools):"
  echo "$hits"
  exit 1
fi
echo "no unsized buffer copies"
