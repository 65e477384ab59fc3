#!/usr/bin/env bash
# render.sh GLINTWAVE - a 24-frame shot with keyed settings and a moving,
# changing light, rendered on the one-node Slurm cluster as an array of 4
# tasks through scripts/slurm-render.sh; every frame must be byte-identical
# to the frame of a local render, and the frames must differ from each other.
# A machine that cannot start the cluster skips the test, saying why.
set -euo pipefail
glintwave=$1
here=$(cd "$(dirname "$0")" && pwd)
root=$(cd "$here/../.." && pwd)
out=$(mktemp -d /tmp/glintwave-farm-render.XXXXXX)
trap 'rm -rf "$out"' EXIT
cd "$out"
mkdir local farm

"$glintwave" -q project new shot.json --size 320x180 --frames 1-24 --style 2 --light-radius 0.15
"$glintwave" -q project set shot.json \
  --key light.x@1=0.15 --key light.x@24=0.85 --key light.y@1=0.7 --key light.y@24=0.25 \
  --key light.color@1=255,255,255 --key light.color@24=255,150,60 --key light.rotation@24=90 \
  --key "Ring Scale@1=0.5" --key "Ring Scale@24=1.8" --key "Streak Intensity@1=0" --key "Streak Intensity@24=1.5"
"$glintwave" -q render --project shot.json -o 'local/shot.####.exr' --threads 1

source "$here/run-array.sh"
GLINTWAVE=$glintwave run_array --frames 1-24 --tasks 4 --dir "$out" -- \
  "bash '$root/scripts/slurm-render.sh' shot.json 1-24 'farm/shot.####.exr'"

for f in $(seq -f %04g 1 24); do
  [[ -f farm/shot.$f.exr ]] || { echo "FAILED: the array wrote no frame $f"; exit 1; }
  cmp "local/shot.$f.exr" "farm/shot.$f.exr" || { echo "FAILED: frame $f differs from the local render"; exit 1; }
done
distinct=$(md5sum local/*.exr | cut -d' ' -f1 | sort -u | wc -l)
[[ $distinct -eq 24 ]] || { echo "FAILED: only $distinct distinct frames; the keys do not animate"; exit 1; }
echo "farm render: 24 frames from 4 array tasks, each byte-identical to the local render"
