#!/usr/bin/env bash
# Sessions in which one thing goes wrong: every moment of a session is hit once with every fault that can happen there, on
# every kind of link. Prints how many were injected and how many survived, and for each that was not the command that
# repeats it; exit code 1 then.
#
#   scripts/campaign.sh [--preset NAME] [--link NAME] [--fault NAME] [--every K]
#
#   --preset  the build (linux): linux-asan looks for leaks and bad accesses, too, and takes longer
#   --link    camera-link, ebus, usb-mono, usb-color or c-interface alone
#   --fault   one fault alone, as the table names them
#   --every   each K-th moment of each fault only
preset=linux link= fault= every=1
while [ $# -gt 0 ]; do
    case $1 in
    --preset) preset=${2:?} && shift 2 ;;
    --link) link=${2:?} && shift 2 ;;
    --fault) fault=${2:?} && shift 2 ;;
    --every) every=${2:?} && shift 2 ;;
    *) sed -n '2,11s/^# \{0,1\}//p' "$0" >&2 && exit 2 ;;
    esac
done
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"
scripts/setup.sh build

build_preset "$preset" zel_campaign
lines=build/$preset.campaign.txt
begin=$SECONDS
# A process for each link and fault: what crashes ends no other.
"build/$preset/bin/zel_campaign" --list | while read -r a_link a_fault; do
    [ "${link:-$a_link}" = "$a_link" ] && [ "${fault:-$a_fault}" = "$a_fault" ] || continue
    "build/$preset/bin/zel_campaign" --link "$a_link" --fault "$a_fault" --every "$every" 2>&1 ||
        echo "ENDED: --link $a_link --fault $a_fault"
done | tee "$lines" | grep -E '^(NOT SURVIVED|ENDED|==|SUMMARY)' || true

awk -v took=$((SECONDS - begin)) '
    $3 == "injected" {
        if (!($2 in total)) order[++rows] = $2
        injected[$2, $1] = $4; survived[$2, $1] = $6; total[$2] += $4
        all += $4; well += $6
        if ($9 > longest[$2]) { longest[$2] = $9; call[$2] = $11 }
    }
    END {
        split("camera-link ebus usb-mono usb-color c-interface", links)
        printf "\n%-20s", "injected/survived"
        for (l = 1; l <= 5; l++) printf " %12s", links[l]
        print "   longest call, simulated"
        for (r = 1; r <= rows; r++) {
            f = order[r]
            printf "%-20s", f
            for (l = 1; l <= 5; l++) printf " %12s", injected[f, links[l]] + 0 "/" survived[f, links[l]] + 0
            printf "   %6.1f s %s\n", longest[f], call[f]
        }
        printf "\n%d faults injected, %d survived, in %d s\n", all, well, took
    }' "$lines"
! grep -qE '^(NOT SURVIVED|ENDED)' "$lines"
