#!/usr/bin/env bash
# Takes the pictures of docs/viewer.md: the page of `zelcam view` with simulated cameras, in Chromium without a screen.
#
#   scripts/viewer-pictures.sh                       builds what it needs first
#   PROGRAMS=FOLDER scripts/viewer-pictures.sh       uses the programs in FOLDER
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

scripts/setup.sh build docs
if [ -z "${PROGRAMS:-}" ]; then
    say "building"
    build_preset linux zelcam edt_camera_link pleora_ebus zel_usb
fi
work=$(mktemp -d -t zel-pictures.XXXXXX)
trap 'rm -rf "$work"' EXIT

say "taking the pictures"
/usr/bin/python3 scripts/viewer-pictures.py "${PROGRAMS:-build/linux/bin}/zelcam" "$work"
# 256 colors are as many as one sees in them, and a third of the bytes.
for picture in "$work"/*.png; do
    pngtopam "$picture" >"$work/picture.ppm"
    pnmquant -quiet 256 "$work/picture.ppm" | pamtopng >"docs/images/$(basename "$picture")"
done

echo
du -bc docs/images/viewer-*.png
