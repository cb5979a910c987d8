#!/usr/bin/env bash
# Streams all simulated cameras as fast as this machine can, and beside them one of a GigE Vision network where that plug-in
# was built, for so many hours: random settings, stops, starts, unplugging, faults, searches, closing (bench/soak). Then
# draws memory, threads, handles and frames by cause, and judges.
#
#     scripts/soak.sh HOURS [--seed N] [--only simulated|gige] [--folder FOLDER] [--bin FOLDER]
#
#   HOURS     may be a fraction: 0.03 is two minutes. Ctrl-C ends it early, with its picture
#   --seed    another order of everything (1)
#   --only    these cameras alone
#   --folder  gets soak.csv, soak.log and soak.png, and gige/ with those of the other camera (build/soak)
#   --bin     a copy of build/linux/bin instead of building it, for a run of hours beside other work
#
# Fails when a frame, a record, a thread or a handle is missing, when memory grows, and after a crash or a hang.
usage() { sed -n '2,15s/^# \{0,1\}//p' "${BASH_SOURCE[0]}" >&2; exit 2; }
seed=1 only= folder= bin= hours=${1:-}
[[ $hours =~ ^[0-9]*\.?[0-9]+$ ]] && shift || usage
while [ $# -gt 0 ]; do
    case $1 in
    --seed) seed=${2:?} && shift 2 ;;
    --only) only=${2:?} && shift 2 ;;
    --folder) folder=$(realpath -m "${2:?}") && shift 2 ;;
    --bin) bin=$(realpath -e "${2:?}") && shift 2 ;;
    *) usage ;;
    esac
done
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"
scripts/setup.sh build
seconds=$(awk "BEGIN { print $hours * 3600 }")
every=$(awk "BEGIN { print ($hours > 2 ? 10 : 1) }")
folder=${folder:-$PWD/build/soak}
rm -rf "$folder"
mkdir -p "$folder/gige"
if [ -z "$bin" ]; then
    build_preset linux zel_soak
    bin=$PWD/build/linux/bin
    ! ninja -C build/linux -t query fake_gige_camera >/dev/null 2>&1 || build_preset linux fake_gige_camera gige_pleora_ebus
fi

# What cameras calibrate themselves with goes here, not into the user's own folder.
export XDG_DATA_HOME=$folder/data ZEL_SIM_PACE=${ZEL_SIM_PACE:-none} ZEL_SIM_FILL=${ZEL_SIM_FILL:-static}
# So that the allocator keeps little that is free: what was large goes back to the system.
export MALLOC_TRIM_THRESHOLD_=131072 MALLOC_MMAP_THRESHOLD_=131072
soak() { nice -n 19 "$bin/bench/zel_soak" "$seconds" --seed "$seed" --every "$every" --folder "$1" >"$1/soak.log" 2>&1; }

# A network of its own with one camera, which loses a packet in a thousand and is switched off and on.
gige() {
    local job
    ip link set lo up
    export ZEL_SIM_CL_CAMERAS=0 ZEL_SIM_USB_CAMERAS=0 LD_LIBRARY_PATH=$bin/plugins/gige
    export G_SLICE=always-malloc # or GLib's own allocator keeps what was freed
    RANDOM=$seed
    while [ -z "${job:-}" ] || kill -0 "$job" 2>/dev/null; do
        coproc camera { exec "$bin/fake_gige_camera" --size 512x512 --period 10000 --lost 1; }
        read -r _ <&"${camera[0]}"
        [ -n "${job:-}" ] || { soak "$folder/gige" & job=$!; }
        for ((i = RANDOM % 40 + 10; i > 0; i--)); do kill -0 "$job" 2>/dev/null && sleep 1; done
        kill "$camera_PID"
        wait "$camera_PID" 2>/dev/null
        sleep $((RANDOM % 4))
    done
    wait "$job"
}
result=0
jobs=()
if [ "$only" = simulated ]; then
    :
elif [ -e "$bin/plugins/gige" ] && [ -x "$bin/fake_gige_camera" ] && unshare -rn true 2>/dev/null; then
    export -f soak gige
    export bin folder seconds seed every
    unshare -rn bash -c gige &
    jobs+=($!)
else
    echo "no GigE Vision camera: its plug-in was not built, or this machine allows no network of one's own (unshare -rn)"
fi
trap : INT
[ "$only" = gige ] || soak "$folder" || result=$?
for job in "${jobs[@]}"; do wait "$job" || result=$?; done
trap - INT
for one in "$folder" "$folder/gige"; do
    [ -e "$one/soak.csv" ] || continue
    tail -n 4 "$one/soak.log"
    scripts/soak-report.py "$one/soak.csv" "$one/soak.png" || result=$?
done
rm -rf "$folder"/data "$folder"/camera* "$folder"/gige/camera*
exit $result
