# Sourced by the farm tests. run_array ARGS... runs slurm-array.sh ARGS...;
# where this machine cannot start the one-node cluster (slurm-array.sh's
# exit status 2) the test is reported skipped with slurm-array.sh's reason.
# Every other failure stays a failure.
source "$(dirname "${BASH_SOURCE[0]}")/../support/skip.sh"

run_array() {
  local err status=0 why
  err=$(mktemp)
  bash "$(dirname "${BASH_SOURCE[0]}")/slurm-array.sh" "$@" 2>"$err" || status=$?
  cat "$err" >&2
  why=$(grep -o 'cannot start: .*' "$err" | tail -n 1 || true)
  rm -f "$err"
  ((status != 2)) || skip_test farm "the one-node Slurm cluster ${why:-cannot start}"
  return "$status"
}
