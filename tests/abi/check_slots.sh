#!/usr/bin/env bash
# Compares the slots that a compiler gives the interfaces with slots.txt.
#
#   check_slots.sh gcc|microsoft INCLUDE_FOLDER COMPILER [FLAGS...]
#
# gcc: the layout of GCC on every system, read from the virtual tables in the compiler's assembly; a destructor of two
# slots counts as one.
# microsoft: the layout of Microsoft's compiler, as clang++ prints it for a target of that compiler.
set -euo pipefail
layout=$1 include=$2
shift 2
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
compile=("$@" -std=c++17 -I"$include" -I"$include/..")

# Lines "CLASS NUMBER OPERATION" in the order of the tables. An operation without a body has no name in them, so those
# of the plug-ins' interfaces get one.
gcc_slots() {
    mkdir "$work/link"
    local header
    for header in ICameraInterface IZelCameraCommon; do
        sed 's/) = 0;/);/' "$include/../link/$header.h" > "$work/link/$header.h"
    done
    "${compile[0]}" -I"$work" "${compile[@]:1}" -S -o - "$here/Probe.cpp" | awk '
        /^_?_ZTV/ { table = $1; sub(/^__/, "_", table); entry = 0; next }
        table != "" && /^[ \t]+\.(quad|long)[ \t]/ {
            if (++entry > 2) { sub(/^__/, "_", $2); print table, $2 }   # after the offset and the type
            next
        }
        /^[^ \t]/ || /^[ \t]+\.(section|globl|weak)/ { table = "" }' | c++filt |
        sed -nE 's/^(vtable for |_ZTV[0-9]+)([A-Za-z]+)Probe: */\2\t/p'
}

microsoft_slots() {
    "${compile[@]}" -fno-rtti -fno-exceptions -fno-threadsafe-statics -Xclang -fdump-vtable-layouts -c \
        -o "$work/probe.o" "$here/Probe.cpp" | awk '
        /^VFTable for .* in .*Probe/ { name = $0; sub(/.* in ./, "", name); sub(/Probe.*/, "", name) }
        /^$/ { name = "" }
        name != "" && /^ *[0-9]+ \|/ { sub(/^ *[0-9]+ \| */, ""); print name "\t" $0 }'
}

# One spelling of operations for every compiler, and numbers.
normalise() {
    sed -E -e 's/ \[(scalar deleting|pure)\]//' -e 's/\t.*(::~|::DeletingDestructor).*/\tdestructor/' \
        -e 's/\t[^(]*::([A-Za-z0-9]+\()/\t\1/' -e 's/const (char|void|float|unsigned short|unsigned char) \*/\1 const*/g' \
        -e 's/ \*/*/g' -e 's/(Callback(Ex)?\()[A-Za-z]+, void\*\)/\1callback, void*)/' \
        -e 's/(Callback(Ex)?\().+, void\*\)$/\1callback, void*)/' \
        -e 's/(Handler\().+, ZelCamera\*\)$/\1handler, ZelCamera*)/' |
        awk -F'\t' '!($2 == "destructor" && last == $0) { print $1, ++number[$1], $2 } { last = $0 }' | sort
}

grep -v '^#' "$here/slots.txt" | sort > "$work/expected"
"${layout}_slots" | normalise > "$work/found"
if ! diff "$work/expected" "$work/found"; then
    echo "the slots of the interfaces differ from slots.txt (<: slots.txt, >: $*)"
    exit 1
fi
echo "$(wc -l < "$work/found") slots agree"
