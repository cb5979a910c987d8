#!/usr/bin/env bash
# The functions that zel.h declares, the names in zel_c.map and zel_c.def, and the exports of the library are the same.
#
#   check_exports.sh elf NM LIBRARY ROOT
#   check_exports.sh pe OBJDUMP LIBRARY ROOT
set -euo pipefail
format=$1 reader=$2 library=$3 root=$4
declared=$(grep -ohE 'ZEL_CALL zel_[a-z_]+\(' "$root/include/zel.h" | sed 's/.* //; s/(//' | sort)
map=$(grep -oE '^ +zel_[a-z_]+;' "$root/bindings/c/zel_c.map" | tr -d ' ;' | sort)
def=$(grep -oE '^ +zel_[a-z_]+$' "$root/bindings/c/zel_c.def" | tr -d ' ' | sort)
case $format in
    elf) found=$("$reader" -D --defined-only "$library" | awk '$2 != "A" { print $3 }' | sort)
        declared_there=$(sed 's/$/@@ZEL_C_1/' <<<"$declared") ;;
    pe) found=$("$reader" -p "$library" |
        awk '/\[Ordinal\/Name Pointer\] Table/ { table = 1; next } NF == 0 { table = 0 } table { print $NF }' | sort)
        declared_there=$declared ;;
    *) echo "unknown format $format"; exit 2 ;;
esac
[ -n "$declared" ] || { echo "no functions in zel.h"; exit 1; }
same() {
    diff <(printf '%s\n' "$2") <(printf '%s\n' "$3") || { echo "$1 differs from zel.h (<: zel.h)"; exit 1; }
}
same zel_c.map "$declared" "$map"
same zel_c.def "$declared" "$def"
same "$library" "$declared_there" "$found"
echo "$(wc -l <<<"$declared") functions, and no other export"
