#!/usr/bin/env bash
# Measures the seams of a simulated four-tap camera without and with the correction, at three exposures, and makes the
# pictures of docs/calibration.md in docs/images.
#
#   scripts/calibration-figure.sh                   builds what it needs first
#   PROGRAMS=FOLDER scripts/calibration-figure.sh    uses the programs in FOLDER
#
# Which frames of the simulated camera are taken depends on how busy the computer is, so that the figures of two runs differ
# by their standard errors.
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

scripts/setup.sh build docs
bin=${PROGRAMS:-build/linux/bin}
if [ -z "${PROGRAMS:-}" ]; then
    say "building"
    build_preset linux zelcam edt_camera_link
fi
zelcam=$(cd "$bin" && pwd)/zelcam
images=$PWD/docs/images
mkdir -p "$images"
work=$(mktemp -d -t zel-calibration.XXXXXX)
trap 'rm -rf "$work"' EXIT
cd "$work"

# An even scene in front of small frames, and cache files that nobody else uses.
pgmmake 0.8 16 16 | pamtopng >even.png
export ZEL_SIM_SIZE=512x512 ZEL_SIM_PACE=none ZEL_SIM_SCENE=$work/even.png XDG_DATA_HOME=$work/data

for exposure in 2000 20000 50000; do
    say "zelcam calibrate seams --frames 64 --exposure $exposure"
    "$zelcam" calibrate seams --frames 64 --exposure "$exposure" --save "$exposure"
done

# side_by_side NAME DARK BRIGHT: the frames before and after, the counts DARK and BRIGHT becoming black and white, at half
# the size.
side_by_side() {
    local kind
    for kind in uncorrected corrected; do
        pngtopam "20000/${kind}_0001.png" | pamfunc -subtractor="$2" | pamfunc -multiplier="$((65535 / ($3 - $2)))" |
            pamdepth 255 | pamscale 0.5 >"$kind.pam"
    done
    pamcat -leftright uncorrected.pam corrected.pam | pamtopng >"$images/$1.png"
}
side_by_side calibration-seams 5100 5900

"$zelcam" calibrate show --out . >/dev/null
for speed in 20MHz 40MHz; do cp ./*_"$speed".svg "$images/calibration-gains-$speed.svg"; done

echo
du -bc "$images"/calibration-*
