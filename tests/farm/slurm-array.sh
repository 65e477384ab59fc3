#!/usr/bin/env bash
# slurm-array.sh - runs a command as a Slurm job array on a one-node cluster
# that it starts on loopback, then stops it again.
#
#   tests/farm/slurm-array.sh --frames 1-24 --tasks 4 [--dir D] [--cancel-when GLOB] -- 'COMMAND'
#
# The frames are cut into --tasks chunks of equal length (the last may be
# shorter); array task i runs COMMAND with bash in D (default: the current
# folder) with FRAMES="a-b", FRAME_FIRST=a and FRAME_LAST=b set to its
# chunk, computed from SLURM_ARRAY_TASK_ID, e.g.
#   'glintwave render --project shot.json --frames "$FRAMES" -o out.####.exr'
#
# The cluster: munged, slurmctld and slurmd from a private temporary folder
# (nothing under /etc is touched, no systemd), every listener on 127.0.0.1,
# the daemons stopped by the process ids they wrote. Needs root and Debian's
# slurm-wlm and munge (scripts/setup.sh --tests installs them).
#
# With --cancel-when 'GLOB...', the array is cancelled (scancel: SIGTERM to
# every process of its tasks) as soon as every GLOB matches a file in D, and
# it succeeds when every task then ended cancelled.
#
# Exit status: 0 when every task completed (or, with --cancel-when, ended
# cancelled); 1 when a task failed, the array
# did not finish in FARM_TIMEOUT seconds (default 600), a tool is missing or
# the cluster we configured misbehaves, naming the tasks and showing their
# logs; 2 when this machine cannot start the cluster (not root, a daemon
# refuses to start or the node never comes up), saying why. It never passes
# without having run every task.
# Knobs: FARM_PORT (first of two ports; default: the first free pair from
# 16817), FARM_TIMEOUT, FARM_KEEP=1 (keep the temporary folder).
set -euo pipefail

say() { echo "farm: $*" >&2; }
cannot_start() { say "the one-node cluster cannot start: $*"; exit 2; }
failed() { say "FAILED: $*"; exit 1; }

frames="" tasks="" dir=$PWD cancelWhen=""
while (($#)); do
  case $1 in
    --frames) frames=$2; shift 2 ;;
    --tasks) tasks=$2; shift 2 ;;
    --dir) dir=$2; shift 2 ;;
    --cancel-when) cancelWhen=$2; shift 2 ;;
    --) shift; break ;;
    *) say "unknown option '$1'"; exit 64 ;;
  esac
done
command=${1:-}
if [[ ! $tasks =~ ^[1-9][0-9]*$ ]] || [[ -z $command ]] || [[ ! $frames =~ ^(-?[0-9]+)-(-?[0-9]+)$ ]]; then
  say "usage: $0 --frames FIRST-LAST --tasks N [--dir D] -- 'COMMAND'"
  exit 64
fi
first=${BASH_REMATCH[1]} last=${BASH_REMATCH[2]}
((last >= first)) || { say "frames $frames end before they start"; exit 64; }
count=$((last - first + 1))
chunk=$(((count + tasks - 1) / tasks))
arrayTasks=$(((count + chunk - 1) / chunk))

# ---- the cluster's prerequisites ---------------------------------------------------------
[[ $(id -u) -eq 0 ]] || cannot_start "it must run as root (the daemons run the jobs as root)"
for tool in munged mungekey munge slurmctld slurmd sbatch squeue sinfo ss; do
  command -v "$tool" >/dev/null ||
    failed "'$tool' is missing: install slurm-wlm and munge (scripts/setup.sh --tests)"
done

W=$(mktemp -d /tmp/glintwave-farm.XXXXXX)
chmod 0755 "$W"   # munged wants its socket folder a+x and not group/other-writable
mkdir -p "$W"/{state,spool,logs}

cleanup() {
  set +e
  for pf in "$W/slurmd.pid" "$W/slurmctld.pid" "$W/munged.pid"; do
    [[ -s $pf ]] || continue
    p=$(cat "$pf"); kill "$p" 2>/dev/null
    for _ in $(seq 50); do kill -0 "$p" 2>/dev/null || break; sleep 0.1; done
    kill -9 "$p" 2>/dev/null
  done
  if [[ ${FARM_KEEP:-0} == 1 ]]; then say "kept $W"; else rm -rf "$W"; fi
}
trap cleanup EXIT
trap "exit 143" TERM INT HUP

show_logs() { for log in "$W"/munged.log "$W"/slurmctld.log "$W"/slurmd.log; do [[ -f $log ]] && tail -15 "$log" >&2; done; }

port_taken() { ss -Hltn "( sport = :$1 )" 2>/dev/null | grep -q .; }
port=${FARM_PORT:-16817}
if [[ -z ${FARM_PORT:-} ]]; then
  for _ in $(seq 50); do
    port_taken "$port" || port_taken $((port + 1)) || break
    port=$((port + 2))
  done
fi

# ---- munge ---------------------------------------------------------------------------------
mungekey -c -k "$W/munge.key" -b 1024 || cannot_start "mungekey could not make a key"
munged --socket="$W/munge.sock" --key-file="$W/munge.key" --pid-file="$W/munged.pid" \
       --log-file="$W/munged.log" --seed-file="$W/munged.seed" 2>"$W/munged.err" ||
  { cat "$W/munged.err" >&2; show_logs; cannot_start "munged did not start"; }
munge -n -S "$W/munge.sock" | unmunge -S "$W/munge.sock" >/dev/null ||
  { show_logs; cannot_start "munge cannot verify its own credential"; }

# ---- slurm ---------------------------------------------------------------------------------
cat >"$W/slurm.conf" <<EOF
ClusterName=glintwave
SlurmctldHost=$(hostname -s)(127.0.0.1)
SlurmUser=root
SlurmdUser=root
SlurmctldPort=$port
SlurmdPort=$((port + 1))
CommunicationParameters=NoCtldInAddrAny,NoInAddrAny
AuthType=auth/munge
CredType=cred/munge
AuthInfo=socket=$W/munge.sock
StateSaveLocation=$W/state
SlurmdSpoolDir=$W/spool
SlurmctldPidFile=$W/slurmctld.pid
SlurmdPidFile=$W/slurmd.pid
SlurmctldLogFile=$W/slurmctld.log
SlurmdLogFile=$W/slurmd.log
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
JobAcctGatherType=jobacct_gather/none
AccountingStorageType=accounting_storage/none
JobCompType=jobcomp/filetxt
JobCompLoc=$W/jobcomp.txt
MpiDefault=none
MailProg=/bin/true
SwitchType=switch/none
SchedulerType=sched/backfill
SelectType=select/cons_tres
SelectTypeParameters=CR_Core
ReturnToService=2
SchedulerParameters=sched_interval=1
MessageTimeout=10
SlurmdTimeout=30
NodeName=localhost NodeAddr=127.0.0.1 CPUs=$(nproc) State=UNKNOWN
PartitionName=main Nodes=localhost Default=YES MaxTime=INFINITE State=UP
EOF
export SLURM_CONF="$W/slurm.conf"

slurmctld -c -i || { show_logs; cannot_start "slurmctld did not start"; }
slurmd -N localhost || { show_logs; cannot_start "slurmd did not start"; }
state=""
for _ in $(seq 300); do
  state=$(sinfo -h -N -o '%T' 2>/dev/null | head -1 || true)
  [[ $state == idle ]] && break
  sleep 0.1
done
[[ $state == idle ]] || { show_logs; cannot_start "the node never became idle (state '${state:-none}')"; }
ss -Hltnp | grep -E 'slurm(ctl)?d' >"$W/listeners.txt" || true
if grep -vqE '127\.0\.0\.1:' "$W/listeners.txt"; then
  cat "$W/listeners.txt" >&2
  failed "a daemon listens beyond loopback"
fi

# ---- the array -----------------------------------------------------------------------------
printf '%s\n' "$command" >"$W/command.sh"
cat >"$W/task.sh" <<'EOF'
#!/usr/bin/env bash
set -euo pipefail
a=$((FARM_FIRST + SLURM_ARRAY_TASK_ID * FARM_CHUNK))
b=$((a + FARM_CHUNK - 1))
((b > FARM_LAST)) && b=$FARM_LAST
export FRAME_FIRST=$a FRAME_LAST=$b FRAMES="$a-$b"
exec bash "$FARM_DIR/command.sh"
EOF
job=$(sbatch --parsable --array=0-$((arrayTasks - 1)) -D "$dir" -o "$W/logs/task-%a.log" \
        --export=ALL,FARM_FIRST="$first",FARM_LAST="$last",FARM_CHUNK="$chunk",FARM_DIR="$W" \
        "$W/task.sh") || { show_logs; failed "sbatch refused the array"; }
say "array $job: frames $first-$last in $arrayTasks tasks of up to $chunk frames"

all_exist() {
  local glob
  for glob; do compgen -G "$dir/$glob" >/dev/null || return 1; done
}
deadline=$((SECONDS + ${FARM_TIMEOUT:-600}))
cancelled=0
while [[ -n $(squeue -h -j "$job" -o %i 2>/dev/null) ]]; do
  ((SECONDS < deadline)) || { say "FAILED: array $job still running after ${FARM_TIMEOUT:-600} s"; squeue >&2; exit 1; }
  if [[ -n $cancelWhen ]] && ((!cancelled)) && all_exist $cancelWhen; then
    say "cancelling array $job: $cancelWhen exist"
    scancel "$job"
    cancelled=1
  fi
  sleep 0.2
done

if [[ -n $cancelWhen ]]; then
  ((cancelled)) || failed "array $job ended before anything matched $cancelWhen"
  states=$(grep "ArrayJobId=$job " "$W/jobcomp.txt" 2>/dev/null | grep -o 'JobState=[A-Z_]*' | sort | uniq -c || true)
  for log in "$W"/logs/task-*.log; do cat "$log"; done
  if grep "ArrayJobId=$job " "$W/jobcomp.txt" 2>/dev/null | grep -v 'JobState=CANCELLED' | grep -q .; then
    failed "not every task ended cancelled: $states"
  fi
  say "every task of array $job ended cancelled"
  exit 0
fi

# jobcomp keeps one record per task once it ends.
completed=$(grep "ArrayJobId=$job " "$W/jobcomp.txt" 2>/dev/null | grep -c 'JobState=COMPLETED' || true)
if [[ $completed -ne $arrayTasks ]]; then
  say "FAILED: $completed of $arrayTasks tasks completed"
  grep "ArrayJobId=$job " "$W/jobcomp.txt" 2>/dev/null | grep -v 'JobState=COMPLETED' |
    grep -o 'JobState=[A-Z_]* .*ArrayTaskId=[0-9]*' >&2 || true
  for log in "$W"/logs/task-*.log; do echo "--- $(basename "$log")" >&2; tail -20 "$log" >&2; done
  exit 1
fi
for log in "$W"/logs/task-*.log; do cat "$log"; done
say "all $arrayTasks tasks completed"
