#!/usr/bin/env bash
# Compiles each public header alone, as the first line of an application's file would.
#
#   check_headers.sh INCLUDE_FOLDER COMPILER [FLAGS...]
set -euo pipefail
include=$1
shift
count=0
for header in "$include"/*.h; do
    if ! printf '#include "%s"\n' "$(basename "$header")" | "$@" -I"$include" -std=c++17 -fsyntax-only -x c++ -; then
        echo "$header does not compile alone with $*"
        exit 1
    fi
    count=$((count + 1))
done
[ "$count" -gt 0 ] || { echo "no headers in $include"; exit 1; }
echo "$count headers compile alone"
