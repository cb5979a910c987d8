#!/usr/bin/env bash
# Holds the order of the folders: each may include itself and what stands behind its name here, nothing else. A folder
# that is named with a path is a room with walls of its own. Prints every include that goes against an arrow.
# The tool's doctor looks at what the SDK does by itself: which plug-ins it loads (sdk/InterfaceLibrary), what they export
# (link), which kernels it chooses (kernels). The simulated sensor has vector code of its own: of kernels it takes what asks
# the processor.
cd "$(dirname "${BASH_SOURCE[0]}")/.." || exit 1
export LC_ALL=C
allowed='
include
include/zel:        include include/zel/detail
include/zel/detail: include include/zel
platform
kernels
sdk/Logger:         include platform
logger:             include platform
link:               include platform sdk/Logger
util:               include platform sdk/Logger
calibration/Sha1:
calibration:        calibration/Sha1
tapbalance:         calibration calibration/Sha1 kernels link platform sdk/Logger
image:              include kernels platform tapbalance sdk/Logger
camera:             image include link platform tapbalance util sdk/Logger
sdk/InterfaceLibrary: camera link platform sdk sdk/Logger
sdk:                camera include link platform util sdk/Logger sdk/InterfaceLibrary
record:             platform
record/camera:      include include/zel include/zel/detail platform record
devices/kit:          include link platform
devices/gige:         include link platform kernels devices/kit
devices/sim/scene:    platform
devices/sim/sensor:   include link platform kernels record devices/sim/scene
devices/sim/firmware: include link platform devices/kit devices/sim/scene devices/sim/sensor calibration/Sha1
devices/sim/link:     include link platform record devices/kit devices/sim/sensor devices/sim/firmware
devices/sim/plugins:  include link platform devices/kit devices/sim/link
bindings/c:           include include/zel include/zel/detail platform util sdk/Logger
bindings/gstreamer:   include include/zel include/zel/detail
bindings/python/src:  include include/zel include/zel/detail platform record record/camera
tools/manual:
tools/zelcam/text:        include include/zel include/zel/detail platform
tools/zelcam/camera:      include include/zel tools/zelcam/text
tools/zelcam/calibration: include include/zel platform calibration tools/zelcam/text tools/zelcam/camera
tools/zelcam/frames:      include include/zel platform util tools/zelcam/text tools/zelcam/camera
tools/zelcam/record:      include include/zel platform record record/camera tools/zelcam/text tools/zelcam/camera tools/zelcam/frames
tools/zelcam/view:        include include/zel platform record record/camera tools/zelcam/text tools/zelcam/camera tools/zelcam/frames tools/zelcam/record
tools/zelcam/doctor:      include include/zel platform kernels link sdk/InterfaceLibrary tools/zelcam/text tools/zelcam/camera tools/zelcam/calibration tools/zelcam/frames
tools/zelcam/check:       include include/zel link platform tools/zelcam/text
tools/zelcam/commands:    include include/zel platform tools/zelcam/text tools/zelcam/camera tools/zelcam/calibration tools/zelcam/frames tools/zelcam/record tools/zelcam/view tools/zelcam/doctor tools/zelcam/check record record/camera tools/manual
tools/zelcam:             platform tools/zelcam/text tools/zelcam/commands
tools/scene_picture:      platform devices/sim/scene
examples:                 include include/zel
examples/plugin:          devices/kit
'
# The public headers are for any compiler and any standard library: they include each other alone. The layer over them
# in include/zel is C++20 and uses the standard library; the C interface names its types with stdint.h.
folders=$(awk -F'[:/]' 'NF { print $1 }' <<<"$allowed" | sort -u)
{ grep -rnE '^ *# *include +"' --include='*.h' --include='*.cpp' --include='*.c' $folders
  grep -nE '^ *# *include +<' include/*.h | grep -vE '<std(int|def)\.h>'; } |
awk -v allowed="$allowed" '
    function room(path,  best, r) {
        if (path ~ /^zel\//) path = "include/" path
        best = path ~ /\// ? "" : "include"
        for (r in known) if (index(path, r "/") == 1 || index(path, r ".") == 1) if (length(r) > length(best)) best = r
        return best
    }
    BEGIN {
        n = split(allowed, lines, "\n")
        for (i = 1; i <= n; i++) {
            m = split(lines[i], words, /[: ]+/)
            known[words[1]]
            for (j = 1; j <= m; j++) may[words[1], words[j]]
        }
    }
    {
        split($0, part, ":")
        target = $0; sub(/.*# *include +["<]/, "", target); sub(/[">].*/, "", target)
        from = room(part[1]); to = $0 ~ /include +</ ? "the system" : room(target)
        if (!((from, to) in may)) { print part[1] ":" part[2] ": " from " may not include " target; bad = 1 }
    }
    END { if (!NR) print "no includes found"; exit bad || !NR }' || failed=1
# What waits for an atomic value sleeps on for ever now and then where GCC 12 has no futex, which is on Windows: it looks at
# the value and goes to sleep without a lock between the two (bits/atomic_wait.h). Semaphores do, barriers, latches, and stop tokens
# that somebody waits with. Threads wait for a condition.
if grep -rnE '<(semaphore|barrier|latch)>|stop_(token|callback)|condition_variable_any|arrive_and_wait' \
        --include='*.h' --include='*.cpp' $folders tests bench fuzz; then
    echo "these can miss what they wait for"
    failed=1
fi
exit ${failed:-0}
