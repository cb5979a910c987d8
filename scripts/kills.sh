#!/usr/bin/env bash
# Kills zelcam at random moments of captures, recordings and downloads of a calibration, and has it write to disks that are
# full, read-only, slow or lead round in circles: what is on the disk afterwards is whole or not there.
#
#   scripts/kills.sh [KILLS [SEED]]     1000 kills without
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

scripts/setup.sh build
build_preset linux zelcam slow_disk edt_camera_link pleora_ebus zel_usb
/usr/bin/python3 tests/tools/zelcam/disk/check_disk.py build/linux/bin "${1:-1000}" "${2:-1}"
