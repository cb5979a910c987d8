#!/usr/bin/env bash
# Runs a program of the Windows product under Wine, with its output and exit code: what CMake and ctest start it with.
#
#   scripts/run-windows-program.sh PROGRAM [ARGUMENT...]
#
# The first program of a session that opens a window starts Wine's desktop, a process that keeps the output it inherits
# and stays as long as any program runs. Who reads a pipe to its end would wait for the desktop; so the program writes
# into a file, and what is in it is passed on until the program ends.
set -uo pipefail
output=$(mktemp) || exit 1
trap 'rm -f "$output"' EXIT
# The 64-bit loader itself: `wine` is the 32-bit one, which leaves a 64-bit program to a process of its own, and that one
# now and then can't be started on a busy machine.
loader=wine
[ "${WINEARCH:-}" != win64 ] || [ ! -x /usr/lib/wine/wine64 ] || loader=/usr/lib/wine/wine64
# Wine takes what names of files may be from the locale, and a new machine's has ASCII alone.
LC_ALL=C.UTF-8 $loader "$@" <&0 >"$output" 2>&1 &
program=$!
tail -n +1 -f -s 0.1 --pid="$program" "$output"
wait "$program"
