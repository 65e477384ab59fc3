#!/usr/bin/env bash
# Runs every fuzzing harness long: scripts/fuzz-long.sh [SECONDS [HARNESS...]]
# (default an hour each), one after the other, niced so that a shared
# machine stays usable, each on every CPU this process may use
# (GLINTWAVE_FUZZ_JOBS, libFuzzer's fork mode). New inputs are kept in build-fuzz/corpus/NAME; to
# fold the useful ones into the committed corpus:
#   build-fuzz/NAME_fuzzer -merge=1 fuzz/corpus/NAME build-fuzz/corpus/NAME
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
export GLINTWAVE_FUZZ_JOBS=${GLINTWAVE_FUZZ_JOBS:-$(nproc 2>/dev/null || echo 1)}
exec nice -n 10 "$root/scripts/fuzz.sh" long "${1:-3600}" "${@:2}"
