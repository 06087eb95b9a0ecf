#!/usr/bin/env bash
# Writes the .expected file of each script test named, from a run of the
# present build: tools/expected.sh tests/scripts/kernel/status.do ...
# Read every line of the result before committing it: it is the test.
set -eu
cd "$(dirname "$0")/.."
for s in "$@"; do
  KORVU_WRITE_EXPECTED=1 bash tests/run_script.sh "$PWD/build/bin/korvu-xe" "$PWD/$s" /tmp/unused
done
