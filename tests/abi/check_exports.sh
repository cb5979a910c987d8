#!/usr/bin/env bash
# Checks that a library exports exactly the names given.
#
#   check_exports.sh elf|pe LIBRARY NAME...
set -euo pipefail
format=$1 library=$2
shift 2
case $format in
    elf) found=$(nm -D --defined-only "$library" | awk '$2 != "A" { print $3 }' | sort) ;;
    pe) found=$(i686-w64-mingw32-objdump -p "$library" |
        awk '/\[Ordinal\/Name Pointer\] Table/ { table = 1; next } NF == 0 { table = 0 } table { print $NF }' | sort) ;;
    *) echo "unknown format $format"; exit 2 ;;
esac
if ! diff <(printf '%s\n' "$@" | sort) <(printf '%s\n' "$found"); then
    echo "the exports of $library differ (<: wanted, >: found)"
    exit 1
fi
echo "$# exports, and no other"
