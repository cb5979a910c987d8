#!/usr/bin/env bash
# Takes the pictures of docs/post-processing.md and docs/color.md with the simulated cameras and writes them to docs/images.
#
#   scripts/docs-pictures.sh            builds what it needs first
#   PROGRAMS=FOLDER scripts/docs-pictures.sh     uses the programs in FOLDER
#
# The same pictures come out every time: simulated frames depend on their settings alone.
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

scripts/setup.sh build docs
bin=${PROGRAMS:-build/linux/bin}
if [ -z "${PROGRAMS:-}" ]; then
    say "building"
    build_preset linux zelcam zel_scene_picture edt_camera_link pleora_ebus zel_usb
fi
bin=$(cd "$bin" && pwd)
images=$PWD/docs/images
mkdir -p "$images"
work=$(mktemp -d -t zel-pictures.XXXXXX)
trap 'rm -rf "$work"' EXIT
cd "$work"

# Small frames, as fast as they come. "static": every frame shows the same noise, so that the steps show one frame.
export ZEL_SIM_SIZE=256x192 ZEL_SIM_PACE=none ZEL_SIM_FILL=static
export ZEL_SIM_CL_CAMERAS=1 ZEL_SIM_EBUS_CAMERAS=1 ZEL_SIM_USB_CAMERAS=2

# view NAME WHITE [ENLARGEMENT]: makes NAME.png in docs/images of the counts on the standard input: the black level of
# 64 becomes black, WHITE becomes white, with the curve of ordinary picture files, 8 bits.
view() {
    pamfunc -subtractor=64 | pamfunc -multiplier="$((65535 / ($2 - 64)))" | pamdepth 255 | pnmgamma -srgbramp |
        pamenlarge "${3:-1}" | pamtopng >"$images/$1.png"
}

# delivered LIBRARY bytes|samples [TAPS]: a frame as the link delivers it.
delivered() {
    (cd "$bin" && ./zelcam check-plugin "$1" "--$2" "$work/delivered.pgm" ${3:+--taps "$3"}) >&2
    cat delivered.pgm
}

# frame CAMERA [ARGUMENT...]: the counts of a frame as the SDK hands it over.
frame() {
    local camera=$1
    shift
    local format=png
    case " $* " in *" --color "*) format=16 ;; esac
    "$bin/zelcam" capture --camera "$camera" --format "$format" --prefix frame --overwrite --out . "$@" >&2
    pngtopam frame_0001.png
}

say "two taps, packed (eBUS)"
delivered pleora_ebus.dll bytes | pamfunc -multiplier=3 | pnmgamma | pamtopng >"$images/delivered-packed.png"
delivered pleora_ebus.dll samples | view unpacked 1200
frame 1 | view reordered 1200
frame 1 --roi 32,120,96,64 | view cropped 1200 2
frame 1 --roi 32,120,96,64 --bin 2,2 | pamfunc -subtractor=192 | view binned 4095 4

say "four taps (Camera Link)"
delivered edt_camera_link.dll samples | view delivered-four-taps 4700
frame 0 | view reordered-four-taps 4700

say "averaging"
export ZEL_SIM_FILL=noise
frame 0 --exposure 150 --roi 32,120,96,64 | view single 130 2
frame 0 --exposure 150 --roi 32,120,96,64 --average 8 | view average-of-8 130 2

say "color (USB)"
export ZEL_SIM_FILL=static ZEL_SIM_SIZE=1024x768
quarter() { pamscale 0.25 | pamdepth 255 | pamtopng >"$images/$1.png"; }
"$bin/zel_scene_picture" "$ZEL_SIM_SIZE" scene.ppm
pnmgamma -srgbramp <scene.ppm | quarter color-scene
frame 2 --exposure 35000 --scale | pnmgamma -srgbramp | quarter color-mosaic
frame 2 --exposure 35000 --color --color-space sensor --scale | pnmgamma -srgbramp | quarter color-sensor
frame 2 --exposure 35000 --color | quarter color-result
pamcut -left 130 -top 580 -width 64 -height 48 scene.ppm | pnmgamma -srgbramp | pamdepth 255 | pamenlarge 4 |
    pamtopng >"$images/color-detail-scene.png"
frame 2 --exposure 35000 --roi 130,580,64,48 | view color-detail-mosaic 16383 4
frame 2 --exposure 35000 --roi 130,580,64,48 --color | pamdepth 255 | pamenlarge 4 |
    pamtopng >"$images/color-detail-result.png"

echo
du -bc "$images"/*.png
