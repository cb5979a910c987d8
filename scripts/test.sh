#!/usr/bin/env bash
# Installs what is missing, builds the three products and runs every test of each; the Windows ones under Wine.
#
#   scripts/test.sh              the three products
#   scripts/test.sh PRESET...    only these presets: linux, windows-i686, windows-x86_64, linux-asan, linux-tsan,
#                                linux-clang
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"
presets=("$@")
[ ${#presets[@]} -gt 0 ] || presets=(linux windows-i686 windows-x86_64)

scripts/setup.sh build

# start_wine PRESET: Wine with a prefix of the product's own in the build folder, a 32-bit or a 64-bit Windows, one
# server kept alive, and a display for the tests that open windows.
start_wine() {
    export WINEDEBUG=-all WINEPREFIX=$PWD/build/wine WINEARCH=win32
    [ "$1" = windows-i686 ] || export WINEPREFIX=$PWD/build/wine64 WINEARCH=win64
    mkdir -p "$WINEPREFIX"
    if [ -z "${DISPLAY:-}" ]; then
        rm -f build/xvfb.display  # of an earlier run
        Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp 3>build/xvfb.display >/dev/null 2>&1 &
        xvfb=$!
        for _ in $(seq 50); do
            [ -s build/xvfb.display ] && break
            sleep 0.1
        done
        export DISPLAY=:$(cat build/xvfb.display)
    fi
    # The server first: it answers with an error when one runs already.
    wineserver -p && wineboot -i >/dev/null 2>&1
}
stop_wine() {
    [ -z "${WINEPREFIX:-}" ] || wineserver -k 2>/dev/null || true
    unset WINEPREFIX
}
# What Windows products need beside the tree.
fetch_windows() {
    scripts/libdeflate-source.sh
    scripts/lodepng-source.sh
    scripts/tiff-source.sh
}

# start_early PRESET: builds it with what the tests of the one before leave of the machine. A head start and nothing else:
# whatever goes wrong goes wrong once more, and is told, when its turn has come.
start_early() {
    (
        renice -n 19 -p "$BASHPID" >/dev/null
        [[ $1 != windows-* ]] || { scripts/setup.sh windows && fetch_windows; }
        build_preset "$1"
    ) >/dev/null 2>&1 &
    early=$!
}
finish_early() {
    [ -z "${early:-}" ] || wait "$early" || true
    early=
}

stop_all() {
    [ -z "${early:-}" ] || kill "$early" 2>/dev/null || true
    stop_wine
    [ -z "${xvfb:-}" ] || kill "$xvfb" 2>/dev/null || true
}
trap stop_all EXIT

failed=0
for i in "${!presets[@]}"; do
    preset=${presets[i]}
    finish_early
    if [[ $preset = windows-* ]]; then
        if ! scripts/setup.sh windows || ! start_wine "$preset"; then
            echo "************************************************************************" >&2
            echo "Wine or the cross compilers can't be had here: THE TESTS OF $preset DO NOT RUN." >&2
            echo "************************************************************************" >&2
            [ "${CI:-}" = true ] && failed=1
            continue
        fi
        fetch_windows
    fi
    say "$preset: build"
    build_preset "$preset"
    [ -z "${presets[i + 1]:-}" ] || start_early "${presets[i + 1]}"
    say "$preset: test"
    ctest --test-dir "build/$preset" --output-on-failure --no-tests=error -j2 || failed=1
    stop_wine
done
exit $failed
