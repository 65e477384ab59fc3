#!/usr/bin/env bash
# Builds the libFuzzer harnesses (fuzz/, clang) in build-fuzz/ and runs each:
#   scripts/fuzz.sh                 briefly: the committed corpus plus a bounded
#                                   number of new inputs per harness (CI)
#   scripts/fuzz.sh long SECONDS [HARNESS...]
#                                   10 million executions per harness, or
#                                   SECONDS (default 3600) if that comes
#                                   first; new inputs are kept in
#                                   build-fuzz/corpus/NAME, and one line per
#                                   harness (executions, seconds, findings)
#                                   in build-fuzz/long-runs.txt.
#                                   GLINTWAVE_FUZZ_JOBS=N runs N processes
#                                   of one harness at once (libFuzzer's fork
#                                   mode) for the whole SECONDS
# A harness that finds a fault stops with its input written to
# build-fuzz/artifacts/; add that file to fuzz/corpus/NAME/ once it is fixed.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=$root/build-fuzz
mode=${1:-brief}
seconds=${2:-3600}
shift $(( $# > 2 ? 2 : $# ))

launcher=()
if command -v ccache >/dev/null 2>&1; then
  export CCACHE_BASEDIR="$root" CCACHE_NOHASHDIR=1
  launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
fi
cmake -S "$root/fuzz" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_COMPILER=clang++ \
  "${launcher[@]}" >/dev/null
cmake --build "$build" -j "$(nproc 2>/dev/null || echo 2)"

harnesses=("$@")
if [ ${#harnesses[@]} -eq 0 ]; then
  for corpus in "$root"/fuzz/corpus/*/; do harnesses+=("$(basename "$corpus")"); done
fi
mkdir -p "$build/artifacts"
export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1
# Long runs skip recording where each allocation was made (a fifth of their
# time); a finding is replayed from its artifact with the full report.
[ "$mode" = long ] && ASAN_OPTIONS+=:malloc_context_size=0
for name in "${harnesses[@]}"; do
  options=(-max_len=4096 -artifact_prefix="$build/artifacts/$name-" -print_final_stats=1)
  [ -f "$root/fuzz/$name.dict" ] && options+=(-dict="$root/fuzz/$name.dict")
  # fuzz/NAME.options: the harness's own libFuzzer flags, one line.
  [ -f "$root/fuzz/$name.options" ] && read -ra own < "$root/fuzz/$name.options" && options+=("${own[@]}")
  if [ "$mode" = long ]; then
    mkdir -p "$build/corpus/$name"
    found=$build/corpus/$name
    jobs=${GLINTWAVE_FUZZ_JOBS:-1}
    if [ "$jobs" -gt 1 ]; then
      options+=(-fork="$jobs" -max_total_time="$seconds")
    else
      options+=(-runs="${GLINTWAVE_FUZZ_RUNS:-10000000}" -max_total_time="$seconds")
    fi
    started=$(date +%s)
  else
    # New inputs go to a scratch folder: the committed corpus stays as it is.
    found=$(mktemp -d)
    options+=(-runs=20000 -max_total_time=10)
  fi
  echo "== fuzz $name"
  log=$(mktemp)
  "$build/${name}_fuzzer" "${options[@]}" "$found" "$root/fuzz/corpus/$name" >"$log" 2>&1 && status=0 || status=$?
  grep -E '^(stat::number_of_executed_units|#[0-9]+ +DONE)|ERROR|SUMMARY|Test unit written' "$log" || true
  if [ "$mode" = long ]; then
    # Fork mode reports the executions of all its processes as "#N:" lines.
    executions=$( (grep -oE 'number_of_executed_units: *[0-9]+' "$log" || grep -oE '^#[0-9]+:' "$log") |
                  tail -1 | grep -oE '[0-9]+' || echo "?")
    echo "$name: $executions executions in $(( $(date +%s) - started )) s, exit $status" \
         "$(grep -m1 -oE 'ERROR: .*' "$log" || echo "no findings")" | tee -a "$build/long-runs.txt"
  fi
  rm -f "$log"
  [ "$mode" = long ] || rm -rf "$found"
  [ "$status" -eq 0 ] || { echo "fuzz: $name failed"; exit 1; }
done
