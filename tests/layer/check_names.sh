#!/usr/bin/env bash
# No type of the C++ layer has the name of one of the library's own: both live in the namespace zel, and a program may be
# linked from both.
#
#   check_names.sh SOURCE_ROOT
cd "$1" || exit 1
types() {
    grep -rhoE --include=*.h --include=*.cpp '^(class|struct|enum class|enum|union|using) +[A-Za-z_]+' "$@" |
        sed 's/.* //' | sort -u
}
layer=$(types include/zel)
[ "$(wc -l <<< "$layer")" -gt 20 ] || { echo "the types of the layer are not found" && exit 1; }
# kernels/ and devices/ have namespaces of their own.
both=$(comm -12 <(echo "$layer") <(types platform sdk link image calibration tapbalance util camera logger))
[ -z "$both" ] || { echo "also the name of a type of the library:" $both && exit 1; }
