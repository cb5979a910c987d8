#!/usr/bin/env bash
# Checks that a library exports exactly the names given.
#
#   check_exports.sh elf NM LIBRARY NAME...
#   check_exports.sh pe OBJDUMP LIBRARY NAME...
set -euo pipefail
format=$1 reader=$2 library=$3
shift 3
case $format in
    elf) found=$("$reader" -D --defined-only "$library" | awk '$2 != "A" { sub(/@@.*/, "", $3); print $3 }' | sort) ;;
    pe) found=$("$reader" -p "$library" |
        awk '/\[Ordinal\/Name Pointer\] Table/ { table = 1; next } NF == 0 { table = 0 } table { print $NF }' | sort) ;;
    *) echo "unknown format $format"; exit 2 ;;
esac
if ! diff <(printf '%s\n' "$@" | sort) <(printf '%s\n' "$found"); then
    echo "the exports of $library differ (<: wanted, >: found)"
    exit 1
fi
echo "$# exports, and no other"
