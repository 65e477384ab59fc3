#!/usr/bin/env bash
# Every test: set up, then
#   1. the normal build and all its tests,
#   2. the same tests under AddressSanitizer and UndefinedBehaviorSanitizer,
#   3. a 32-bit build (-m32 -msse2 -mfpmath=sse) of the kit and the plug-in,
#      whose static assertions prove the documented record layouts, and the
#      kit's and plug-in's unit tests run in 32 bits: natively where this
#      machine executes 32-bit programs, else under qemu-i386 (user-mode
#      emulation), else not at all, saying why,
#   4. the fuzzing harnesses, each briefly.
# What the project can install, scripts/setup.sh installs, and a failed
# install fails. What only the machine can give (executing 32-bit programs
# natively or emulated, starting the one-node Slurm cluster, starting chromium) is probed where it
# is needed; the tests that need it are then skipped with the reason, and the
# summary at the end lists every skipped group.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/setup.sh" --tests
jobs=$(nproc 2>/dev/null || echo 2)

# Tests that skip write "group: reason" here (tests/support/skip.sh).
# Groups that ran in another way than usual are noted in $notes.
GLINTWAVE_SKIP_LOG=$(mktemp)
notes=$(mktemp)
export GLINTWAVE_SKIP_LOG
trap 'rm -f "$GLINTWAVE_SKIP_LOG" "$notes"' EXIT

run_tests() {
  ctest --test-dir "$1" --output-on-failure -j "$jobs"
}

# How this machine runs a program built with the 32-bit flags: "native",
# "qemu-i386" (user-mode emulation, from Debian's qemu-user) or, when
# neither works, a sentence saying why. A program that cannot be built is a
# missing package (gcc-multilib), which fails the test command.
m32=(-m32 -msse2 -mfpmath=sse)
probe_32bit() {
  local dir out status=0 qout qstatus=0
  dir=$(mktemp -d)
  printf '#include <stdio.h>\nint main(void) { puts("32-bit ok"); return 0; }\n' >"$dir/probe.c"
  if ! gcc "${m32[@]}" "$dir/probe.c" -o "$dir/probe" 2>"$dir/err"; then
    cat "$dir/err" >&2
    rm -rf "$dir"
    echo "test: cannot build a 32-bit program; is gcc-multilib installed (scripts/setup.sh --tests)?" >&2
    return 2
  fi
  out=$("$dir/probe" 2>&1) || status=$?
  if [[ $status -eq 0 && $out == "32-bit ok" ]]; then
    echo native
  else
    qout=$(qemu-i386 -cpu coreduo "$dir/probe" 2>&1) || qstatus=$?
    if [[ $qstatus -eq 0 && $qout == "32-bit ok" ]]; then
      echo qemu-i386
    else
      echo "this machine cannot execute 32-bit programs (a probe built with ${m32[*]} answered: ${out:-exit $status}; under qemu-i386: ${qout:-exit $qstatus})"
    fi
  fi
  rm -rf "$dir"
}

echo "== build and test"
"$root/scripts/build.sh" "$root/build"
run_tests "$root/build"

echo "== sanitizers (address, undefined)"
"$root/scripts/build.sh" "$root/build-sanitize" -DGLINTWAVE_SANITIZE=ON
ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1 run_tests "$root/build-sanitize"

echo "== 32-bit layout and kit"
runner=$(probe_32bit)
emulator=()
# The emulated processor has no AVX2: qemu 7.2's AVX2 emulation crashes
# programs that run natively (the 64-bit tests crash under it too), and
# the AVX2 paint path is tested natively by the other builds.
[[ $runner != qemu-i386 ]] || emulator=(-DCMAKE_CROSSCOMPILING_EMULATOR="$(command -v qemu-i386);-cpu;coreduo")
"$root/scripts/build.sh" "$root/build-32" -DGLINTWAVE_LAYOUT_ONLY=ON -DGLINTWAVE_GTEST_FROM_SOURCE=ON \
  -DCMAKE_CXX_FLAGS="${m32[*]}" -DCMAKE_C_FLAGS="${m32[*]}" -DCMAKE_EXE_LINKER_FLAGS=-m32 \
  -DCMAKE_SHARED_LINKER_FLAGS=-m32 -DCMAKE_MODULE_LINKER_FLAGS=-m32 -UCMAKE_CROSSCOMPILING_EMULATOR "${emulator[@]}"
case $runner in
  native) run_tests "$root/build-32" ;;
  qemu-i386)
    echo "32-bit: this machine cannot execute 32-bit programs; the tests run under qemu-i386"
    run_tests "$root/build-32"
    echo "32-bit tests: ran under qemu-i386 user-mode emulation (a Core Duo: SSE3, no AVX2), not natively" >>"$notes" ;;
  *)
    echo "32-bit: built (the record layouts hold), tests not run: $runner"
    echo "32-bit tests: built, not run: $runner" >>"$GLINTWAVE_SKIP_LOG" ;;
esac

echo "== fuzzing harnesses (clang, briefly: each corpus and a bounded number of new inputs)"
"$root/scripts/fuzz.sh"

echo "== skipped on this machine"
if [[ -s $GLINTWAVE_SKIP_LOG ]]; then
  sort -u "$GLINTWAVE_SKIP_LOG" | sed 's/^/  /'
else
  echo "  nothing: every test group ran"
fi
[[ ! -s $notes ]] || sed 's/^/  note: /' "$notes"
