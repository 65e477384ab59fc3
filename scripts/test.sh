#!/usr/bin/env bash
# Every test: set up, then
#   1. the normal build and all its tests,
#   2. the same tests under AddressSanitizer and UndefinedBehaviorSanitizer,
#   3. a 32-bit build (-m32 -msse2 -mfpmath=sse) of the kit and the plug-in,
#      whose static assertions prove the documented record layouts, and the
#      kit's and plug-in's unit tests run in 32 bits.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/setup.sh" --tests
jobs=$(nproc 2>/dev/null || echo 2)

run_tests() {
  ctest --test-dir "$1" --output-on-failure -j "$jobs"
}

echo "== build and test"
"$root/scripts/build.sh" "$root/build"
run_tests "$root/build"

echo "== sanitizers (address, undefined)"
"$root/scripts/build.sh" "$root/build-sanitize" -DGLINTWAVE_SANITIZE=ON
ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1 run_tests "$root/build-sanitize"

echo "== 32-bit layout and kit"
m32=(-m32 -msse2 -mfpmath=sse)
"$root/scripts/build.sh" "$root/build-32" -DGLINTWAVE_LAYOUT_ONLY=ON -DGLINTWAVE_GTEST_FROM_SOURCE=ON \
  -DCMAKE_CXX_FLAGS="${m32[*]}" -DCMAKE_C_FLAGS="${m32[*]}" -DCMAKE_EXE_LINKER_FLAGS=-m32 \
  -DCMAKE_SHARED_LINKER_FLAGS=-m32 -DCMAKE_MODULE_LINKER_FLAGS=-m32
run_tests "$root/build-32"

echo "== fuzzing harnesses (clang, briefly: each corpus and a bounded number of new inputs)"
"$root/scripts/fuzz.sh"
