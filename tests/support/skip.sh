# Sourced by test scripts. A test that needs what only the machine can give
# (a running Slurm cluster, a browser that starts) and finds it missing calls
#   skip_test GROUP "why"
# which prints the reason, adds "GROUP: why" to $GLINTWAVE_SKIP_LOG when the
# test command set one (its closing summary lists them), and exits 77, the
# code ctest counts as skipped (SKIP_RETURN_CODE). Anything the project can
# install is not a reason to skip: a missing package fails the test.
skip_test() {
  local group=$1; shift
  echo "SKIPPED ($group): $*"
  if [[ -n ${GLINTWAVE_SKIP_LOG:-} ]]; then
    echo "$group: $*" >>"$GLINTWAVE_SKIP_LOG"
  fi
  exit 77
}
