#!/usr/bin/env bash
# Runs Aravis' own arv-camera-test and zelcam on one fake GigE Vision camera, in a network of their own, and prints frames,
# lost frames and processor time per frame of both. Needs a build (preset linux), the package aravis-tools, and unshare.
#     scripts/gige-bench.sh [SECONDS]
if [ "${1:-}" != inside ]; then
    exec unshare -rn bash "${BASH_SOURCE[0]}" inside "${1:-8}"
fi
cd "$(dirname "${BASH_SOURCE[0]}")/../build/linux/bin" && ip link set lo up || exit 1
export ZEL_SIM_CL_CAMERAS=0 ZEL_SIM_USB_CAMERAS=0 LD_LIBRARY_PATH=$PWD/plugins/gige TIMEFORMAT='%U %S'
aravis=$(command -v arv-camera-test-0.8) || { echo "arv-camera-test-0.8 is missing: install aravis-tools"; exit 1; }
log=$(mktemp)
each() { awk -v frames="$1" '{ printf "%.2f ms each", ($1 + $2) * 1000 / (frames ? frames : 1) }'; }
for rate in 50 100; do
    coproc camera { exec ./fake_gige_camera --size 512x512 --period $((1000000 / rate)) --replace 'Name="Bayer=>Name="Other'; }
    read -r _ <&"${camera[0]}"
    used=$({ time "$aravis" -n 127.0.0.1 --no-packet-socket -a -w 512 -h 512 --features PixelFormat=Mono16 \
        --duration "$2" >"$log" 2>&1; } 2>&1)
    frames=$(awk '/^n_completed_buffers/ { print $3 }' "$log")
    printf '%d frames/s:   arv-camera-test %d frames, %d lost, %s; ' "$rate" "$frames" \
        "$(awk '/^n_failures/ { print $3 }' "$log")" "$(each "$frames" <<<"$used")"
    used=$({ time ./zelcam stream -n $(($2 * rate)) --buffers 30 >"$log"; } 2>&1 | tail -n 1)
    frames=$(awk '/ frames,/ { print $1; exit }' "$log")
    printf 'zelcam %d frames, %d lost, %s\n' "$frames" "$(awk '/^dropped/ { print $2 }' "$log")" "$(each "$frames" <<<"$used")"
    kill "$camera_PID"
    wait "$camera_PID" 2>/dev/null
done
rm -f "$log"
