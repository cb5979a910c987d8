#!/usr/bin/env bash
# Builds the fuzz targets with libFuzzer, address and undefined-behaviour sanitizers, runs them, and tells what they did:
# executions, findings, and how many lines of the files that a target is about its inputs reach.
#
#   scripts/fuzz.sh SECONDS [TARGET...]     each target so long, two at a time; default: all of fuzz/
#   scripts/fuzz.sh 0 [TARGET...]           only the coverage of the inputs kept so far
#   scripts/fuzz.sh --sum                   what all runs so far come to
#
# Kept in build/fuzz from run to run: corpus/TARGET (inputs that reach something new, begun with fuzz/corpus/TARGET),
# found/TARGET (inputs that broke something), runs.csv (a line per target and run). Not 0 when something was found.
[ $# -gt 0 ] || { sed -n '2,10s/^# \{0,1\}//p' "$0" >&2 && exit 2; }
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"
kept=build/fuzz runs=build/fuzz/runs.csv
# Short stacks of allocations and little memory held back: half as fast again.
export ASAN_OPTIONS=malloc_context_size=4:quarantine_size_mb=16:${ASAN_OPTIONS:-}

if [ "$1" = --sum ]; then
    awk -F, 'NR > 1 { for (name = $2; name != ""; name = name == "~all" ? "" : "~all") {
            s[name] += $3; n[name] += $4; f[name] += $8 } }
        END { for (name in n) printf "%-24s %9d s %14d executions %4d findings\n", name, s[name], n[name], f[name] }' \
        "$runs" | sort | sed 's/^~all/all /'
    exit
fi
seconds=$1
shift
scripts/setup.sh build long
say "build"
targets=("$@")
if [ ${#targets[@]} -eq 0 ]; then
    build_preset fuzz fuzzers
    mapfile -t targets < <(ls $kept/fuzz/about)
else
    build_preset fuzz "${targets[@]}"
fi
[ -e $runs ] || echo "utc,target,seconds,executions,per_second,edges,features,findings" >$runs

# figure LOG NAME: one of libFuzzer's figures at its end.
figure() { sed -n "s/^stat::$2: *//p" "$1" | tail -n 1; }
# progress LOG NAME: the last of the figures that it prints on its way.
progress() { grep -oE "\b$2: [0-9]+" "$1" | tail -n 1 | tr -dc 0-9; }

# fuzz TARGET: one run. What it finds goes into found/TARGET; the run goes on behind a finding until its time is over.
fuzz() {
    local target=$1 log=$kept/$1.log found=$kept/found/$1 start=$SECONDS left round=0 executions=0
    mkdir -p "$kept/corpus/$target" "$found"
    local before=$(ls "$found" | wc -l)
    while left=$((seconds - (SECONDS - start))) && [ $left -gt 0 ] && [ $((round++)) -lt 20 ]; do
        (cd $kept/bin && exec "./$target" -max_total_time=$left -timeout=25 -report_slow_units=25 -rss_limit_mb=3000 -entropic=0 -print_final_stats=1 \
            -artifact_prefix="$PWD/../found/$target/" "$PWD/../corpus/$target" \
            $(ls -d "../../../fuzz/corpus/$target" 2>/dev/null)) >"$log" 2>&1 || true
        # What ended before it began has no figures.
        local units=$(figure "$log" number_of_executed_units)
        executions=$((executions + ${units:-0}))
    done
    # The engine looks at the clock, which also counts what else the machine does. What ends within 25 s of a processor is
    # no finding.
    local input
    for input in "$found"/timeout-* "$found"/slow-unit-*; do
        [ ! -e "$input" ] || ! (ulimit -t 25 && timeout 300 "$kept/bin/$target" -timeout=0 "$input") &>/dev/null || rm "$input"
    done
    local took=$((SECONDS - start)) findings=$(($(ls "$found" | wc -l) - before))
    local line=$(date -u +%FT%TZ),$target,$took,$executions,$((executions / (took > 0 ? took : 1)))
    echo "$line,$(progress "$log" cov),$(progress "$log" ft),$findings" | tee -a $runs | awk -F, '{
        printf "%-24s %6d s %12d executions %8d/s %6d edges %7d features %3d findings\n", $2, $3, $4, $5, $6, $7, $8 }'
    [ $findings -eq 0 ] || for input in "$found"/*; do echo "    $kept/bin/$target $input"; done
}

if [ "$seconds" -gt 0 ]; then
    say "run: $seconds s each"
    findings_before=$(awk -F, 'NR > 1 { n += $8 } END { print n + 0 }' $runs)
    for target in "${targets[@]}"; do
        while [ "$(jobs -rp | wc -l)" -ge "${ZEL_FUZZ_JOBS:-2}" ]; do wait -n; done
        fuzz "$target" &
    done
    wait
    scripts/fuzz.sh --sum | tail -n 1 | sed 's/^all */All runs so far:/'
fi

say "lines reached"
build_preset fuzz-coverage "${targets[@]}"
for target in "${targets[@]}"; do
    program=build/fuzz-coverage/bin/$target profile=$kept/$target.profile
    LLVM_PROFILE_FILE=$profile.raw "$program" $(ls -d $kept/corpus/$target fuzz/corpus/$target 2>/dev/null) >/dev/null
    llvm-profdata-14 merge -sparse -o "$profile" "$profile.raw"
    echo "$target"
    llvm-cov-14 export -summary-only -instr-profile="$profile" "$program" |
        /usr/bin/python3 scripts/fuzz-coverage.py $(cat "$kept/fuzz/about/$target")
done
[ "$seconds" -eq 0 ] || [ "$findings_before" -eq "$(awk -F, '{ n += $8 } END { print n + 0 }' $runs)" ]
