#!/usr/bin/env bash
# One entry for building and running Korvu on a Debian machine.
#   tools/setup.sh run    install what is missing, build (release), start korvu-xe
#   tools/setup.sh test   install what is missing, build (release), run every test
#   tools/setup.sh asan   the same as test, built with the sanitizers, in build-asan/
set -euo pipefail
cd "$(dirname "$0")/.."

mode=${1:-run}
shift || true

packages=(cmake ninja-build g++ pkg-config ccache libgtest-dev libedit-dev zlib1g-dev libopenblas-dev liblapacke-dev)

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  echo "setup: installing ${missing[*]}"
  sudo=""
  [ "$(id -u)" -ne 0 ] && sudo=sudo
  $sudo apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq "${missing[@]}" >/dev/null
fi

export CCACHE_DIR=${CCACHE_DIR:-$HOME/.cache/korvu-ccache}
export CCACHE_BASEDIR=$PWD
export CCACHE_NOHASHDIR=1

build() {
  local dir=$1; shift
  cmake -S . -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE=Release "$@" >/dev/null
  cmake --build "$dir" -j "$(nproc)"
}

case "$mode" in
  run)
    build build
    exec build/bin/korvu-xe "$@"
    ;;
  test)
    # warnings fail the build here, so that none creeps in
    build build -DKORVU_WERROR=ON
    ctest --test-dir build --output-on-failure -j "$(nproc)"
    ;;
  asan)
    build build-asan -DKORVU_SANITIZE=ON
    ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 \
      ctest --test-dir build-asan --output-on-failure -j "$(nproc)"
    ;;
  *)
    echo "usage: tools/setup.sh run|test|asan" >&2
    exit 2
    ;;
esac
