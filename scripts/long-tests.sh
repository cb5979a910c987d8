#!/usr/bin/env bash
# What takes longer than scripts/test.sh has time for, one after the other, within 90 minutes on two cores; then a table. Each
# is a script of its own, which repeats it alone or goes on for longer. Exit code 1 when one found something.
#
#   scripts/long-tests.sh [NAME...]     all, or only these: see the list below
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

scripts/setup.sh build long

# name, minutes it may take, command
jobs=(
    "campaign 14 scripts/campaign.sh --every 2"
    "fuzz 25 scripts/fuzz.sh 60"
    "threads 13 scripts/threads.sh 5"
    "soak 8 scripts/soak.sh 0.033"
    "kills 10 scripts/kills.sh 300"
    "coverage 20 scripts/coverage.sh"
)
results=() failed=0
for job in "${jobs[@]}"; do
    read -r name minutes command <<<"$job"
    [ $# -eq 0 ] || [[ " $* " = *" $name "* ]] || continue
    say "$name: $command"
    begin=$SECONDS
    code=0
    # shellcheck disable=SC2086
    timeout --kill-after=30 "${minutes}m" $command || code=$?
    took=$((SECONDS - begin))
    case $code in
    0) result="well" ;;
    124 | 137) result="NOT DONE within $minutes minutes" ;;
    *) result="FOUND SOMETHING (exit code $code)" ;;
    esac
    [ "$code" -eq 0 ] || failed=1
    results+=("$(printf '%-10s %4d s  %s' "$name" "$took" "$result")")
done
say "long tests"
printf '%s\n' "${results[@]}"
exit $failed
