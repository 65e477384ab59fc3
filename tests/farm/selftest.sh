#!/usr/bin/env bash
# selftest.sh - proves the farm harness with a trivial command: 24 frames in
# 5 tasks, each task writing one small file per frame of its chunk. Every
# frame must appear exactly once, written by the task whose chunk holds it.
# A machine that cannot start the cluster skips the test; any other failure
# of the cluster or of a task fails it.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
out=$(mktemp -d /tmp/glintwave-farm-out.XXXXXX)
trap 'rm -rf "$out"' EXIT

source "$here/run-array.sh"
run_array --frames 1-24 --tasks 5 --dir "$out" -- \
  'for f in $(seq "$FRAME_FIRST" "$FRAME_LAST"); do
     [ -e "frame.$(printf %04d "$f").txt" ] && exit 3
     echo "frame $f of chunk $FRAMES" > "frame.$(printf %04d "$f").txt"
   done'

n=$(find "$out" -name 'frame.*.txt' | wc -l)
[[ $n -eq 24 ]] || { echo "FAILED: $n of 24 frames written"; exit 1; }
for f in $(seq 24); do
  # Chunks of 5: 1-5, 6-10, ..., 21-24.
  a=$(( (f - 1) / 5 * 5 + 1 )); b=$(( a + 4 > 24 ? 24 : a + 4 ))
  grep -qx "frame $f of chunk $a-$b" "$out/frame.$(printf %04d "$f").txt" ||
    { echo "FAILED: frame $f: $(cat "$out/frame.$(printf %04d "$f").txt")"; exit 1; }
done
echo "farm selftest: 24 frames from 5 tasks, each frame once"
