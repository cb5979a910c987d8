#!/usr/bin/env bash
# Says which files clang-format would change; with --fix changes them.
cd "$(dirname "${BASH_SOURCE[0]}")/.." || exit 1
mode=(--dry-run -Werror)
[ "${1:-}" != --fix ] || mode=(-i)
find . \( -path ./build -o -path './.*' \) -prune -o \( -name '*.cpp' -o -name '*.c' -o -name '*.h' \) -print0 |
    xargs -0 -n 40 clang-format "${mode[@]}"
