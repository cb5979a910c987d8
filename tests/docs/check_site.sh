#!/usr/bin/env bash
# Makes the site in a folder of its own; whatever is public and undocumented, or a reference that leads nowhere, is an
# error of Doxygen's. A header that does not say @file would be left out without a word.
#
#   check_site.sh DOXYGEN FOLDER     FOLDER holds the Doxyfile
set -uo pipefail
doxygen=$1 folder=$2
cd "$(dirname "${BASH_SOURCE[0]}")/../.." || exit 1
site=$folder/checked
rm -rf "$site"
mkdir -p "$site"
{ cat "$folder/Doxyfile"; echo "OUTPUT_DIRECTORY = $site"; } >"$site/Doxyfile"
"$doxygen" "$site/Doxyfile" || exit 1

failed=0 headers=0
while read -r header; do
    headers=$((headers + 1))
    grep -q '@file' "$header" || { echo "$header: @file is missing, so its functions are not on the site"; failed=1; }
done < <(sed -n 's/^\(INPUT *=\)\? *\(\/.*[^ \\]\) *\\\?$/\2/p' "$folder/Doxyfile" | xargs -I{} find {} -name '*.h')
pages=$(find "$site/html" -name 'class*.html' | wc -l)
echo "$headers headers, $pages pages of classes"
[ "$failed" -eq 0 ] && [ "$headers" -ge 12 ] && [ -f "$site/html/classZelCamera.html" ]
