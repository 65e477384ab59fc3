#!/usr/bin/env bash
# Configures and builds one build tree: scripts/build.sh DIR [cmake options...]
set -euo pipefail
dir=$1; shift
root=$(cd "$(dirname "$0")/.." && pwd)
jobs=$(nproc 2>/dev/null || echo 2)
cmake -S "$root" -B "$dir" -DCMAKE_BUILD_TYPE=RelWithDebInfo "$@" >/dev/null
cmake --build "$dir" -j "$jobs"
