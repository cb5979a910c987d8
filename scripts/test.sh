#!/usr/bin/env bash
# Installs what is missing, builds both products and runs every test of both; the Windows ones under Wine.
#
#   scripts/test.sh              both products
#   scripts/test.sh PRESET...    only these presets: linux, windows-i686, linux-asan, linux-tsan,
#                                linux-clang
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"
presets=("$@")
[ ${#presets[@]} -gt 0 ] || presets=(linux windows-i686)

scripts/setup.sh build

# Wine with its own prefix in the build folder, one server kept alive, and a display for the tests that open windows.
start_wine() {
    export WINEPREFIX=$PWD/build/wine WINEDEBUG=-all WINEARCH=win32
    mkdir -p "$WINEPREFIX"
    if [ -z "${DISPLAY:-}" ]; then
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
    [ -z "${xvfb:-}" ] || kill "$xvfb" 2>/dev/null || true
}
trap stop_wine EXIT

failed=0
for preset in "${presets[@]}"; do
    if [ "$preset" = windows-i686 ]; then
        if ! scripts/setup.sh windows || ! start_wine; then
            echo "************************************************************************" >&2
            echo "Wine or the cross compiler can't be had here: THE WINDOWS TESTS DO NOT RUN." >&2
            echo "************************************************************************" >&2
            [ "${CI:-}" = true ] && failed=1
            continue
        fi
        scripts/libdeflate-source.sh
        scripts/lodepng-source.sh
    fi
    say "$preset: build"
    build_preset "$preset"
    say "$preset: test"
    ctest --test-dir "build/$preset" --output-on-failure --no-tests=error -j2 || failed=1
done
exit $failed
