#!/usr/bin/env bash
# Builds the Linux product, takes ten frames with every camera and shows what came: a table and the pictures' names.
#
#   scripts/demo.sh            pictures go to build/demo/
#
# Without cameras of your own the simulated ones are used; ZEL_SIM_... variables set them up (docs/simulator.md).
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"
frames=10
out=build/demo

scripts/setup.sh build
say "building"
build_preset linux zelcam edt_camera_link pleora_ebus zel_usb

zelcam=build/linux/bin/zelcam
rm -rf "$out"
mkdir -p "$out"
echo
"$zelcam" list
cameras=$("$zelcam" list --json | grep -c '"number"' || true)
if [ "$cameras" -eq 0 ]; then
    echo "demo: no camera found" >&2
    exit 1
fi

# The value of a member that stands once, or first, in a JSON text.
member() { sed -n "s/^ *\"$1\": \"\{0,1\}\([^\",]*\)\"\{0,1\},\{0,1\}\$/\1/p" "$2" | head -n 1; }

echo
printf '%-7s %-14s %-12s %-4s %-7s %-13s %-15s %s\n' camera model size bits frames "lost on link" "no free buffer" frames/s
for ((n = 0; n < cameras; n++)); do
    summary=$out/camera$n.summary.json
    "$zelcam" info --camera "$n" --json >"$out/camera$n.info.json"
    look=(--format png --scale)
    [ -z "$(member color_filter "$out/camera$n.info.json")" ] || look=(--color)
    "$zelcam" capture --camera "$n" --frames "$frames" --exposure 30000 --timeout 60 "${look[@]}" --overwrite --out "$out" --json >"$summary"
    beside=$out/camera${n}_0001.json
    rate=$(member camera_frames_per_second "$summary")
    printf '%-7s %-14s %-12s %-4s %-7s %-13s %-15s %.1f\n' "$n" "$(member model "$summary")" \
        "$(member width "$beside")x$(member height "$beside")" "$(member bits "$beside")" "$(member frames "$summary")" \
        "$(member link "$summary")" "$(member no_free_buffer "$summary")" "${rate/null/0}"
done

echo
echo "Pictures (16-bit PNG, grey ones scaled to the full range, color ones as sRGB; each has a .json beside it):"
for ((n = 0; n < cameras; n++)); do
    echo "  $out/camera${n}_0001.png ... $out/camera${n}_$(printf '%04d' "$frames").png"
done

echo
echo "A frame in Python (docs/install.md has the ways to install the package):"
echo "  cmake --build build/linux --target zel_python"
echo "  PYTHONPATH=build/linux/bin/python /usr/bin/python3 -c 'import zel; print(zel.open().snap())'"
