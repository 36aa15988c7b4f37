#!/bin/sh
# A throw-away single-node Slurm cluster (munge, slurmctld, slurmd) living in
# one directory, for tests and for trying fizzle-farm without a real farm.
#
#     scripts/slurm-local.sh start DIR   # prints the SLURM_CONF to export
#     scripts/slurm-local.sh stop DIR
#
# Everything (key, sockets, state, logs) stays under DIR; the daemons run as
# the calling user, so it must be root. Ports are picked from the process id
# so that two clusters on one machine do not meet.
set -eu

usage() { echo "usage: $0 start|stop DIR" >&2; exit 2; }
[ $# -eq 2 ] || usage
action=$1
dir=$(mkdir -p "$2" && cd "$2" && pwd)

stop_pidfile() {
    [ -f "$1" ] || return 0
    pid=$(cat "$1")
    [ -n "$pid" ] && kill "$pid" 2>/dev/null || true
    # Wait a bounded time for it to go, then insist.
    for _ in 1 2 3 4 5 6 7 8 9 10; do
        kill -0 "$pid" 2>/dev/null || break
        sleep 0.5
    done
    kill -9 "$pid" 2>/dev/null || true
    rm -f "$1"
}

case "$action" in
stop)
    stop_pidfile "$dir/slurmd.pid"
    stop_pidfile "$dir/slurmctld.pid"
    stop_pidfile "$dir/munged.pid"
    exit 0
    ;;
start) ;;
*) usage ;;
esac

for program in munged slurmctld slurmd sinfo; do
    command -v "$program" >/dev/null 2>&1 || PATH="$PATH:/usr/sbin:/sbin"
    command -v "$program" >/dev/null 2>&1 || { echo "$0: $program is not installed (Debian: slurm-wlm, munge)" >&2; exit 1; }
done
[ "$(id -u)" -eq 0 ] || { echo "$0: the daemons need root" >&2; exit 1; }

mkdir -p "$dir/state" "$dir/spool" "$dir/munge"
chmod 700 "$dir/munge"
dd if=/dev/urandom of="$dir/munge/munge.key" bs=1024 count=1 2>/dev/null
chmod 400 "$dir/munge/munge.key"
socket="$dir/munge/munge.socket"
munged --force --key-file="$dir/munge/munge.key" --socket="$socket" --pid-file="$dir/munged.pid" \
       --log-file="$dir/munged.log" --seed-file="$dir/munge/munged.seed"

node=$(hostname -s)
cpus=$(nproc)
memory=$(awk '/MemTotal/ { print int($2 / 1024 / 2) }' /proc/meminfo)
base=$((20000 + ($$ % 20000)))
cat > "$dir/slurm.conf" <<EOF
ClusterName=fizzle
SlurmctldHost=$node(127.0.0.1)
SlurmctldPort=$base
SlurmdPort=$((base + 1))
SlurmUser=root
SlurmdUser=root
AuthType=auth/munge
CredType=cred/munge
AuthInfo=socket=$socket
StateSaveLocation=$dir/state
SlurmdSpoolDir=$dir/spool
SlurmctldPidFile=$dir/slurmctld.pid
SlurmdPidFile=$dir/slurmd.pid
SlurmctldLogFile=$dir/slurmctld.log
SlurmdLogFile=$dir/slurmd.log
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
JobAcctGatherType=jobacct_gather/none
AccountingStorageType=accounting_storage/none
JobCompType=jobcomp/none
SchedulerType=sched/builtin
SelectType=select/cons_tres
SelectTypeParameters=CR_Core
ReturnToService=2
SlurmdTimeout=30
MinJobAge=600
MpiDefault=none
SwitchType=switch/none
NodeName=$node NodeAddr=127.0.0.1 CPUs=$cpus RealMemory=$memory State=UNKNOWN
PartitionName=render Nodes=$node Default=YES MaxTime=INFINITE State=UP OverSubscribe=NO
EOF
export SLURM_CONF="$dir/slurm.conf"
slurmctld -f "$SLURM_CONF"
slurmd -f "$SLURM_CONF" -N "$node"

# Ready when the node is idle; give up after 30 s.
for _ in $(seq 60); do
    if sinfo -h -N -o '%T' 2>/dev/null | grep -q '^idle'; then
        echo "$SLURM_CONF"
        exit 0
    fi
    sleep 0.5
done
echo "$0: the cluster in $dir did not come up; see its *.log" >&2
exit 1
