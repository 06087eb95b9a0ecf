#!/usr/bin/env bash
# Start-up time: korvu-xe -q given `exit` on standard input, against the
# start-up of R and Python doing nothing. Installs what it needs from Debian.
set -euo pipefail
cd "$(dirname "$0")/.."
need=()
command -v hyperfine >/dev/null || need+=(hyperfine)
command -v Rscript >/dev/null || need+=(r-base-core)
if [ ${#need[@]} -gt 0 ]; then
  sudo=""; [ "$(id -u)" -ne 0 ] && sudo=sudo
  $sudo apt-get update -qq && DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq "${need[@]}" >/dev/null
fi
[ -x build/bin/korvu-xe ] || bash tools/setup.sh test >/dev/null
exe=$PWD/build/bin/korvu-xe
py=/usr/bin/python3; [ -x "$py" ] || py=$(command -v python3)
hyperfine -N --warmup 5 --runs 50 --export-markdown /tmp/korvu-startup.md \
  "bash -c 'echo exit | $exe -q'" \
  "bash -c 'echo exit | cat >/dev/null'" \
  "Rscript -e 0" \
  "$py -c 0"
cat /tmp/korvu-startup.md
