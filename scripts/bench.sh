#!/usr/bin/env bash
# Builds the benchmarks of the Linux product, runs them one after the other and prints one table.
#
#   scripts/bench.sh [--only NAME,...] [--variant NAME] [--json FILE] [--compare OLD.json] [--markdown | --page] [--windows]
#
#   --only      these programs, named as in bench/ (frame, tap, color, pool, camera, layer, file, stream, record,
#               saving, tool)
#   --variant   the frame path with the kernels scalar, avx2, avx2-without-gathers or avx512 instead of the fastest
#   --json      FILE gets machine, date, command and a list of figures, each with median and spread
#   --compare   what moved against a file of --json, and by how much beyond the spread of both runs
#   --markdown  the table of docs/performance.md instead of the plain one
#   --page      the same into docs/performance.md, in the place of what is there
#   --windows   the frame path of the Windows products under Wine, too: each time beside Linux's on the same kernels
command="scripts/bench.sh $*"
json= compare= markdown= page= windows= only= variant=()
while [ $# -gt 0 ]; do
    case $1 in
    --json) json=$(realpath -m "${2:?--json needs a file}") && shift 2 ;;
    --compare) compare=$(realpath -e "${2:?--compare needs a file}") && shift 2 ;;
    --only) only=${2:?--only needs names} && shift 2 ;;
    --variant) variant=(--variant "${2:?--variant needs a name}") && shift 2 ;;
    --markdown) markdown=1 && shift ;;
    --page) page=1 && markdown=1 && shift ;;
    --windows) windows=1 && shift ;;
    *) sed -n '2,14s/^# \{0,1\}//p' "$0" >&2 && exit 2 ;;
    esac
done
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

parts=$(mktemp -d -t zel-bench.XXXXXX)
stop_all() {
    [ ! -e "$parts/wine" ] || WINEPREFIX=$(cat "$parts/wine") wineserver -k 2>/dev/null || true
    rm -rf "$parts"
}
trap stop_all EXIT
frame_path=(frame tap color)
failed=0

# run PROGRAM PART [COMMAND...]: PART of the results, its lines to the standard output unless a table comes instead.
run() {
    local program=$1 part=$2
    shift 2
    "$@" "$program" "${variant[@]}" --json "$parts/$part.json" >"$parts/$part.txt" || failed=1
    [ -n "$markdown" ] || cat "$parts/$part.txt"
}
wanted() { [ -z "$only" ] || [[ ,$only, = *,$1,* ]]; }

scripts/setup.sh build compare
targets=()
for source in bench/*Bench.cpp; do
    name=$(basename "$source" Bench.cpp | tr A-Z a-z)
    ! wanted "$name" || targets+=("${name}_bench")
done
[ ${#targets[@]} -gt 0 ] || { echo "no program of '$only'" >&2 && exit 2; }
build_preset linux "${targets[@]}"
for target in "${targets[@]}"; do
    run "build/linux/bin/bench/$target" "$target"
done

if [ -n "$windows" ]; then
    scripts/setup.sh windows
    for preset in windows-i686 windows-x86_64; do
        scripts/libdeflate-source.sh && scripts/lodepng-source.sh && scripts/tiff-source.sh
        build_preset "$preset" "${frame_path[@]/%/_bench}"
        export WINEDEBUG=-all WINEARCH=win32 WINEPREFIX=$PWD/build/wine
        [ "$preset" = windows-i686 ] || export WINEARCH=win64 WINEPREFIX=$PWD/build/wine64
        echo "$WINEPREFIX" >"$parts/wine"
        mkdir -p "$WINEPREFIX"
        wineboot -i >/dev/null 2>&1 || true
        for name in "${frame_path[@]}"; do
            ! wanted "$name" || run "build/$preset/bin/bench/${name}_bench.exe" "$preset.$name" wine
        done
        wineserver -k 2>/dev/null || true
    done
fi

results=${json:-$parts/all.results}
scripts/bench-results.py join "$command" "$parts" >"$results"
if [ -n "$page" ]; then
    scripts/bench-results.py page "$results" docs/performance.md
else
    [ -z "$markdown" ] || scripts/bench-results.py markdown "$results"
    [ -z "$windows" ] || [ -n "$markdown" ] || scripts/bench-results.py windows "$results"
fi
[ -z "$compare" ] || scripts/bench-results.py compare "$compare" "$results"
exit $failed
