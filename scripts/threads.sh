#!/usr/bin/env bash
# Six threads and all callbacks call any operation of the SDK and of cameras on three links, while cameras are plugged in
# and out and fail, under the thread sanitizer, for so many minutes (tests/system/LifetimeModelTest). Prints minutes,
# operations and reports; fails with the first report, crash or hang, and says how to repeat it.
#
#     scripts/threads.sh MINUTES [--seed N] [--bin FOLDER]
#
#   --seed  the first of the seeds that are run one after the other (1)
#   --bin   a copy of build/linux-tsan/bin instead of building it
usage() { sed -n '2,9s/^# \{0,1\}//p' "${BASH_SOURCE[0]}" >&2; exit 2; }
minutes=${1:-} seed=1 bin=
[[ $minutes =~ ^[0-9]*\.?[0-9]+$ ]] && shift || usage
while [ $# -gt 0 ]; do
    case $1 in
    --seed) seed=${2:?} && shift 2 ;;
    --bin) bin=$(realpath -e "${2:?}") && shift 2 ;;
    *) usage ;;
    esac
done
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"
scripts/setup.sh build
if [ -z "$bin" ]; then
    build_preset linux-tsan lifetime_tests
    bin=$PWD/build/linux-tsan/bin
fi
log=$(mktemp -t zel-threads.XXXXXX)
end=$(awk "BEGIN { printf \"%d\", $SECONDS + $minutes * 60 }")
operations=0 inside=0 seeds=0
while [ $SECONDS -lt "$end" ]; do
    run=(env ZEL_TEST_SEED="$seed" ZEL_TEST_STEPS=1000 "$bin/lifetime_tests" --gtest_filter='FurtherThreads/LifetimeModelTest.*/1')
    if ! nice -n 19 "${run[@]}" >"$log" 2>&1; then
        cat "$log"
        echo "seed $seed, $((SECONDS / 60)) minutes, $operations operations: REPORTED. Again, now and then: ${run[*]}"
        exit 1
    fi
    read -r done _ within _ < <(grep ' operations, ' "$log")
    operations=$((operations + done)) inside=$((inside + within)) seeds=$((seeds + 1)) seed=$((seed + 1))
done
rm -f "$log"
echo "$seeds seeds in $((SECONDS / 60)) minutes, $operations operations of six threads, $inside of them inside callbacks: no report"
