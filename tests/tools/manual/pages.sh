#!/usr/bin/env bash
# Every command of the tool has a page, and man(1) shows each without a warning.
#   pages.sh FOLDER ZELCAM
folder=$1 zelcam=$2
failed=0
commands=$("$zelcam" --help | sed -n '/^Subcommands:/,/^$/s/^  \([a-z-]*\) .*/\1/p')
[ -n "$commands" ] || { echo "no commands found"; exit 1; }
for command in $commands; do
    page=$folder/zelcam-$command.1
    text=$(MANWIDTH=200 man -l "$page")
    for option in $("$zelcam" "$command" --help | grep -oE '^  (-.,)?--[a-z-]+' | grep -oE -e '--[a-z-]+'); do
        grep -q -e "$option" <<<"$text" || { echo "$page lacks $option"; failed=1; }
    done
done
for page in "$folder"/*.1; do
    warnings=$(LC_ALL=C.UTF-8 MANROFFSEQ='' MANWIDTH=80 man --warnings -E UTF-8 -l -Tutf8 -Z "$page" 2>&1 >/dev/null)
    [ -z "$warnings" ] || { echo "$page: $warnings"; failed=1; }
done
MANWIDTH=100 man -l "$folder/zelcam.1" | grep -q '^EXIT STATUS' || { echo "zelcam.1 has no exit codes"; failed=1; }
exit $failed
