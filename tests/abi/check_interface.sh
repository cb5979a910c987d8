#!/usr/bin/env bash
# Compares the public interface (every type in reach of Interface.cpp, read from GCC's debug information) with the one
# that baseline/ holds, and makes sure that the comparison would see a virtual operation put in between.
#
#   check_interface.sh COMPILER            compares
#   check_interface.sh COMPILER renew      the interface of today becomes the baseline: only for what abidiff reports and
#                                          old applications don't notice, such as an operation behind the last one
set -euo pipefail
compiler=$1 action=${2:-compare}
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
baseline=$here/baseline/interface.abi.gz
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# build ROOT NAME: $work/NAME.so from the headers of a source tree.
build() {
    "$compiler" -std=c++17 -g -femit-class-debug-always -fPIC -shared -nostdlib -I"$1/include" -I"$1" \
        -o "$work/$2.so" "$here/Interface.cpp"
}

build "$here/../.." today
if [ "$action" = renew ]; then
    abidw --no-show-locs --no-comp-dir-path --no-corpus-path --no-elf-needed --no-parameter-names "$work/today.so" |
        gzip -9n > "$baseline"
    exit
fi
gzip -dc "$baseline" > "$work/baseline.abi"
if ! abidiff "$work/baseline.abi" "$work/today.so"; then
    echo "the public interface is not the one that applications were built with"
    exit 1
fi

mkdir "$work/other"
cp -r "$here/../../include" "$here/../../link" "$work/other"
sed -i 's/virtual bool Stop();/virtual bool InBetween();\n&/' "$work/other/include/ZelCamera.h"
build "$work/other" other
result=0
abidiff "$work/baseline.abi" "$work/other.so" > "$work/report" || result=$?
if [ $result -eq 0 ] || ! grep -q 'InBetween.*virtual at voffset' "$work/report"; then
    echo "an operation put in between is not noticed (abidiff: $result)"
    exit 1
fi
echo "no change, and one would be seen"
