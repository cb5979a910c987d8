#!/usr/bin/env bash
# Builds the benchmarks of the Linux product, runs them one after the other and prints one table.
#
#   scripts/bench.sh [--json FILE]    FILE gets one list of {name, value, unit, target}
json=
while [ $# -gt 0 ]; do
    case $1 in
    --json) json=$(realpath -m "${2:?--json needs a file}") && shift 2 ;;
    *) sed -n '2,4s/^# \{0,1\}//p' "$0" >&2 && exit 2 ;;
    esac
done
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

scripts/setup.sh build compare
build_preset linux zel_benches
parts=$(mktemp -d -t zel-bench.XXXXXX)
trap 'rm -rf "$parts"' EXIT
failed=0
for program in build/linux/bin/bench/*_bench; do
    "$program" --json "$parts/$(basename "$program").json" || failed=1
done
[ -z "$json" ] || {
    echo '['
    cat "$parts"/*.json | grep '^  {' | sed -e 's/},$/}/' -e '$!s/$/,/'
    echo ']'
} >"$json"
exit $failed
