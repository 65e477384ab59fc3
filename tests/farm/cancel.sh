#!/usr/bin/env bash
# cancel.sh GLINTWAVE - a long shot on the one-node Slurm cluster, two array
# tasks of two worker processes each through scripts/slurm-render.sh,
# cancelled with scancel once each task has written a frame. Every task must say
# which frames it wrote, leave no temporary file and no process behind, and
# every frame it wrote must be whole: byte-identical to a local render.
set -euo pipefail
glintwave=$1
here=$(cd "$(dirname "$0")" && pwd)
root=$(cd "$here/../.." && pwd)
out=$(mktemp -d /tmp/glintwave-farm-cancel.XXXXXX)
trap 'rm -rf "$out"' EXIT
cd "$out"
mkdir farm local

"$glintwave" -q project new shot.json --size 960x540 --frames 1-400 --style 4
"$glintwave" -q project set shot.json --key light.x@1=0.15 --key light.x@400=0.85

source "$here/run-array.sh"
log=$(GLINTWAVE=$glintwave run_array --frames 1-400 --tasks 2 --dir "$out" --cancel-when 'farm/shot.000[1-9].exr farm/shot.020[1-9].exr' -- \
  "SLURM_CPUS_PER_TASK=2 bash '$root/scripts/slurm-render.sh' shot.json 1-400 'farm/shot.####.exr'")
echo "$log"

said=$(grep -c 'glintwave: cancelled; [0-9]* of 200 frames were written' <<<"$log" || true)
[[ $said -eq 2 ]] || { echo "FAILED: $said of 2 tasks said which frames they wrote"; exit 1; }
if compgen -G 'farm/.*tmp-*' >/dev/null; then
  echo "FAILED: temporary files left: $(ls -a farm | grep tmp- | tr '\n' ' ')"; exit 1
fi
if pgrep -f -- "--project shot.json" >/dev/null; then
  echo "FAILED: a render process outlived the cancel"; pgrep -af -- "--project shot.json"; exit 1
fi
written=$(ls farm | sed -n 's/^shot\.0*\([0-9][0-9]*\)\.exr$/\1/p' | sort -n | paste -sd, -)
count=$(ls farm | wc -l)
((count > 0 && count < 400)) || { echo "FAILED: $count frames written; the cancel did not stop the array"; exit 1; }
"$glintwave" -q render --project shot.json --frames "$written" -o 'local/shot.####.exr' --threads 1
for f in farm/*.exr; do
  cmp "$f" "local/$(basename "$f")" || { echo "FAILED: $f is not the whole frame"; exit 1; }
done
echo "farm cancel: both tasks stopped by scancel; $count whole frames, nothing left behind"
