#!/usr/bin/env bash
# Compiles the C interface's header alone, as C and as C++ of several standards, and the file that pins its structs, with
# every compiler that is installed; those that are not are named.
#
#   check_header.sh INCLUDE_FOLDER LAYOUT_FILE
set -euo pipefail
include=$1 layout=$2
warn=(-Wall -Wextra -Wpedantic -Wconversion -Wstrict-prototypes -Werror)
count=0

# compile COMPILER LANGUAGE STANDARD HEADER [FLAG...]
compile() {
    local warnings=("${warn[@]}")
    [ "$2" = c ] || warnings=("${warn[@]/-Wstrict-prototypes/-Wold-style-cast}")
    printf '#include "%s"\n' "$4" | "$1" "${@:5}" "${warnings[@]}" -std="$3" -I"$include" -fsyntax-only -x "$2" - ||
        { echo "$4 does not compile with $*"; exit 1; }
    count=$((count + 1))
}

# with C_COMPILER CXX_COMPILER [FLAG...]
with() {
    local c=$1 cxx=$2 standard
    shift 2
    if ! command -v "$c" >/dev/null || ! command -v "$cxx" >/dev/null; then
        echo "skipped: $c and $cxx are not both installed"
        return
    fi
    for standard in c99 c11; do compile "$c" c $standard zel.h "$@"; done
    compile "$c" c c99 ZelParameters.h "$@"
    for standard in c++17 c++20; do compile "$cxx" c++ $standard zel.h "$@"; done
    "$c" "$@" "${warn[@]}" -std=c11 -ffreestanding -I"$include" -fsyntax-only "$layout"
}

with gcc g++
with gcc g++ -m32 -ffreestanding
with clang clang++
with clang clang++ --target=i686-pc-windows-msvc
with clang clang++ --target=x86_64-pc-windows-msvc
with i686-w64-mingw32-gcc-posix i686-w64-mingw32-g++-posix
with x86_64-w64-mingw32-gcc-posix x86_64-w64-mingw32-g++-posix
# The example in the header's comment.
{ echo '#include <stdio.h>'; echo '#include "zel.h"'; echo 'extern void use(const uint16_t*, uint32_t, uint32_t, uint32_t);'
  echo 'int main(void) {'; sed -n '/^\/\/\/ *zel_sdk\*/,/zel_sdk_close/s#^///##p' "$include/zel.h"; echo '}'; } |
    gcc "${warn[@]}" -std=c99 -I"$include" -fsyntax-only -x c -
[ "$count" -gt 0 ] || { echo "no compiler found"; exit 1; }
echo "$count compilations"
