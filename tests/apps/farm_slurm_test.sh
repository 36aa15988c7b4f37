#!/bin/sh
# fizzle-farm on a real single-node Slurm that this test starts and always
# stops: a 48-frame shot in chunks of 8 must equal one sequential render,
# and submitting again after a frame was lost renders only that frame.
#     farm_slurm_test.sh BUILD_DIR SOURCE_DIR
set -eu
build=$(cd "$1" && pwd)
source=$(cd "$2" && pwd)
if [ "$(id -u)" -ne 0 ]; then
    echo "the Slurm daemons need root; skipped"
    exit 77
fi
work=$(mktemp -d /tmp/fizzle-farm-test.XXXXXX)
cleanup() {
    status=$?
    if [ $status -ne 0 ]; then
        for log in "$work"/farm/fizzle-farm/*.log "$work"/cluster/slurmctld.log; do
            [ -f "$log" ] && { echo "== $log"; tail -n 20 "$log"; }
        done
    fi
    "$source/scripts/slurm-local.sh" stop "$work/cluster" >/dev/null 2>&1 || true
    rm -rf "$work"
    exit $status
}
trap cleanup EXIT
trap 'exit 1' INT TERM HUP

SLURM_CONF=$("$source/scripts/slurm-local.sh" start "$work/cluster")
export SLURM_CONF FIZZLE_NO_PAUSE=1
cd "$work"

# Bursts, congregation, turbulence, pre-roll and an animated control.
shot="--preset Gathering --preroll --size 64x36 --animate Density=1:10,48:40"
mkdir sequential
"$build/fizzle-render" -q $shot --frames 1-48 -o sequential/f.%04d.png >/dev/null

compare() {
    for frame in $(seq -w 1 48); do
        if ! cmp -s "sequential/f.00$frame.png" "farm/f.00$frame.png"; then
            echo "frame $frame of the farm differs from the sequential render"
            exit 1
        fi
    done
}

"$build/fizzle-farm" submit --frames 1-48 --chunk 8 --cache-every 10 $shot -o farm/f.%04d.png
"$build/fizzle-farm" wait farm/fizzle-farm --timeout 240
compare

# A lost frame: the resubmitted chunks skip every frame that is there.
rm farm/f.0030.png
before=$(stat -c %Y.%i farm/f.0029.png)
"$build/fizzle-farm" submit --frames 1-48 --chunk 8 --cache-every 10 $shot -o farm/f.%04d.png
"$build/fizzle-farm" wait farm/fizzle-farm --timeout 240
compare
if [ "$(stat -c %Y.%i farm/f.0029.png)" != "$before" ]; then
    echo "frame 29 was rendered again although it was there"
    exit 1
fi
echo "1 passed, 0 failed"
