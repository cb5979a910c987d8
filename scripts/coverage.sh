#!/usr/bin/env bash
# How much of the library and of the kit the tests reach: lines and branches per folder, and what they don't reach.
#
#   scripts/coverage.sh [--no-run]
#
#   --no-run   the table again, of what the last run left
#
# Clang counts at the places of the source. A branch is a condition's true or false; the ways on which an exception leaves
# a call are none, and neither is a condition that the compiler decides. build/coverage/uncovered.txt lists the lines
# that no test reached and the branches that were never taken.
run=1
while [ $# -gt 0 ]; do
    case $1 in
    --no-run) run= && shift ;;
    *) sed -n '2,10s/^# \{0,1\}//p' "$0" >&2 && exit 2 ;;
    esac
done
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"
scripts/setup.sh build long

programs=(link_tests camera_tests image_pool_tests post_processing_tests kernel_test util_file_tests progress_tests
          tapbalance_tests tapbalance_log_tests sdk_tests kit_tests sim_tests session_tests system_tests leak_tests
          lifetime_tests layer_camera_tests layer_plugins_tests fuzz_kernels fuzz_frame)
folders=(sdk link camera image tapbalance util kernels devices/kit)
bin=$PWD/build/linux-coverage/bin
out=$PWD/build/coverage
version=$(clang --version | sed -n 's/.*version \([0-9]*\).*/\1/p')
tool() { PATH=$PATH:/usr/lib/llvm-$version/bin command "llvm-$1" "${@:2}"; }
path_of() { find "$bin" -maxdepth 2 -name "$1" -type f; }

if [ -n "$run" ]; then
    build_preset linux-coverage "${programs[@]}"
    rm -rf "$out" && mkdir -p "$out/raw" "$out/home"
    for program in "${programs[@]}"; do
        path=$(path_of "$program")
        (
            cd "$(dirname "$path")"
            # As many random inputs as ctest has.
            case $program in
            fuzz_kernels) arguments=(--random 60000) ;;
            fuzz_*) arguments=(--random 1000) ;;
            *) arguments=() ;;
            esac
            XDG_DATA_HOME=$out/home LLVM_PROFILE_FILE=$out/raw/$program-%p-%m.profraw \
                run_quietly "$out/$program.log" "$path" "${arguments[@]}"
        )
    done
    tool profdata merge -sparse "$out"/raw/*.profraw -o "$out/all.profdata"
fi

objects=()
for program in "${programs[@]}" 'lib*.so*'; do
    while read -r path; do objects+=(${objects:+-object} "$path"); done < <(path_of "$program")
done
tool cov export -format=lcov -instr-profile "$out/all.profdata" "${objects[@]}" \
    "${folders[@]/#/$PWD/}" >"$out/all.lcov"
scripts/coverage-table.py "$out/all.lcov" "$out/uncovered.txt" "${folders[@]}"
