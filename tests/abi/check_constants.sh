#!/usr/bin/env bash
# Checks that every value which the frozen headers define has the same definition in the headers of today: applications
# were compiled with it.
#
#   check_constants.sh FROZEN_FOLDER INCLUDE_FOLDER COMPILER
set -euo pipefail
frozen=$1 include=$2 compiler=$3

# Lines "#define NAME VALUE" of all headers of a folder, guards and macros with arguments left out.
definitions() {
    (cd "$1" && printf '#include "%s"\n' *.h) | "$compiler" -I"$1" -std=c++17 -dM -E -x c++ - |
        grep -E '^#define (ZEL|CAMERA)_[A-Z0-9_]+ [^ ]' | sort
}

old=$(definitions "$frozen")
missing=$(comm -23 <(echo "$old") <(definitions "$include"))
if [ -n "$missing" ]; then
    printf 'changed or gone:\n%s\n' "$missing"
    exit 1
fi
echo "$(wc -l <<<"$old") values agree"
