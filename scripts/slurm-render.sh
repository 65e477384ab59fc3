#!/usr/bin/env bash
# slurm-render.sh - one chunk of a shot, as a task of a Slurm job array.
#
#   sbatch --array=0-3 --cpus-per-task=2 scripts/slurm-render.sh shot.json 1-100 'frames/shot.####.exr' [OPTIONS]
#
# The frames FIRST-LAST are cut into as many chunks of equal length as the
# array has tasks (the last may be shorter); the task SLURM_ARRAY_TASK_ID
# renders its chunk with
#   glintwave render -q --project shot.json --frames A-B -o 'frames/shot.####.exr' --threads C [OPTIONS]
# with C the CPUs Slurm gave the task. Every frame is independent and
# deterministic, so the files are those of one local render, whichever task
# writes them. OPTIONS go to `glintwave render` as they are: --over
# 'plate.####.exr', or --skip-existing to finish a partly rendered array.
# Paths are taken from the job's working folder (sbatch -D). GLINTWAVE
# names the command (default: glintwave on PATH).
#SBATCH --job-name=glintwave
#SBATCH --cpus-per-task=1
set -euo pipefail

if (($# < 3)) || [[ ! $2 =~ ^(-?[0-9]+)-(-?[0-9]+)$ ]]; then
  echo "usage: sbatch --array=0-N $0 PROJECT FIRST-LAST OUTPUT.####.EXT [render options]" >&2
  exit 64
fi
project=$1 output=$3
first=${BASH_REMATCH[1]} last=${BASH_REMATCH[2]}
shift 3
: "${SLURM_ARRAY_TASK_ID:?run it as a job array: sbatch --array=0-N $0 ...}"

tasks=${SLURM_ARRAY_TASK_COUNT:-$((SLURM_ARRAY_TASK_MAX - SLURM_ARRAY_TASK_MIN + 1))}
task=$((SLURM_ARRAY_TASK_ID - ${SLURM_ARRAY_TASK_MIN:-0}))
count=$((last - first + 1))
chunk=$(((count + tasks - 1) / tasks))
a=$((first + task * chunk))
b=$((a + chunk - 1 < last ? a + chunk - 1 : last))
if ((a > last)); then
  echo "task $SLURM_ARRAY_TASK_ID: no frames left for it"
  exit 0
fi
echo "task $SLURM_ARRAY_TASK_ID: frames $a-$b"
exec "${GLINTWAVE:-glintwave}" render -q --project "$project" --frames "$a-$b" -o "$output" \
  --threads "${SLURM_CPUS_PER_TASK:-1}" "$@"
