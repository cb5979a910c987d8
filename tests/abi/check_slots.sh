#!/usr/bin/env bash
# Compares the slots that a compiler gives the interfaces with slots.txt.
#
#   check_slots.sh gcc|microsoft COMPILER INCLUDE_FOLDER
#
# gcc: the compiler's own layout, read from the virtual tables in its assembly; a destructor of two slots counts as one.
# Operations without a body have no name there; the plug-ins' interfaces, which have neither destructor nor overloads,
# are laid out as they are declared by every compiler and left to the other check.
# microsoft: the layout of Microsoft's compiler, as clang++ prints it.
set -euo pipefail
layout=$1 compiler=$2 include=$3
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Lines "CLASS NUMBER OPERATION" in the order of the tables.
gcc_slots() {
    "$compiler" -std=c++17 -I"$include" -I"$include/.." -S -o - "$here/Probe.cpp" | awk '
        /^_?_ZTV/ { table = $1; sub(/^__/, "_", table); entry = 0; next }
        table != "" && /^[ \t]+\.(quad|long)[ \t]/ {
            if (++entry > 2) { sub(/^__/, "_", $2); print table, $2 }   # after the offset and the type
            next
        }
        /^[^ \t]/ || /^[ \t]+\.(section|globl|weak)/ { table = "" }' | c++filt |
        sed -nE 's/^(vtable for |_ZTV[0-9]+)(Zel[A-Za-z]+)Probe: */\2\t/p'
}

microsoft_slots() {
    "$compiler" --target=i686-pc-windows-msvc -std=c++17 -I"$include" -I"$include/.." -fno-rtti -fno-exceptions \
        -fno-threadsafe-statics -Xclang -fdump-vtable-layouts -c -o "$work/probe.o" "$here/Probe.cpp" | awk '
        /^VFTable for .* in .*Probe/ { name = $0; sub(/.* in ./, "", name); sub(/Probe.*/, "", name) }
        /^$/ { name = "" }
        name != "" && /^ *[0-9]+ \|/ { sub(/^ *[0-9]+ \| */, ""); print name "\t" $0 }'
}

# One spelling of operations for every compiler, and numbers.
normalise() {
    sed -E -e 's/ \[(scalar deleting|pure)\]//' -e 's/\t.*(::~|::DeletingDestructor).*/\tdestructor/' \
        -e 's/\t[^(]*::([A-Za-z0-9]+\()/\t\1/' -e 's/const (char|void|float|unsigned short|unsigned char) \*/\1 const*/g' \
        -e 's/ \*/*/g' -e 's/(Callback(Ex)?\()[A-Za-z]+, void\*\)/\1callback, void*)/' \
        -e 's/(Callback(Ex)?\().+, void\*\)$/\1callback, void*)/' |
        awk -F'\t' '!($2 == "destructor" && last == $0) { print $1, ++number[$1], $2 } { last = $0 }' | sort
}

without='^#'
[ "$layout" = gcc ] && without='^[#I]'
grep -v "$without" "$here/slots.txt" | sort > "$work/expected"
"${layout}_slots" | normalise > "$work/found"
if ! diff "$work/expected" "$work/found"; then
    echo "the slots of the interfaces differ from slots.txt (<: slots.txt, >: $compiler)"
    exit 1
fi
echo "$(wc -l < "$work/found") slots agree"
