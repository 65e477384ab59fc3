#!/usr/bin/env bash
# Configures and builds one build tree: scripts/build.sh DIR [cmake options...]
# Compiles through ccache when it is installed: paths are taken relative to
# the source tree, so clones in other folders share the cached objects.
set -euo pipefail
dir=$1; shift
root=$(cd "$(dirname "$0")/.." && pwd)
jobs=$(nproc 2>/dev/null || echo 2)
launcher=()
if command -v ccache >/dev/null 2>&1; then
  export CCACHE_BASEDIR="$root" CCACHE_NOHASHDIR=1
  launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache -DCMAKE_C_COMPILER_LAUNCHER=ccache)
fi
cmake -S "$root" -B "$dir" -DCMAKE_BUILD_TYPE=RelWithDebInfo "${launcher[@]}" "$@" >/dev/null
cmake --build "$dir" -j "$jobs"
