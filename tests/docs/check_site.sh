#!/usr/bin/env bash
# Makes the site in a folder of its own; whatever is public and undocumented, or a reference that leads nowhere, is an
# error of Doxygen's. So is an argument or a result of the interfaces that is not described. A header that does not say
# @file would be left out without a word.
#
#   check_site.sh DOXYGEN FOLDER     FOLDER holds the Doxyfile
set -euo pipefail
doxygen=$1 folder=$2
cd "$(dirname "${BASH_SOURCE[0]}")/../.." || exit 1
site=$folder/checked
rm -rf "$site"
mkdir -p "$site"
# run NAME SETTING...: Doxygen with the site's settings and these.
run() {
    local file=$site/$1.doxyfile
    { cat "$folder/Doxyfile"; printf '%s\n' "OUTPUT_DIRECTORY = $site" "${@:2}"; } >"$file"
    "$doxygen" "$file"
}
run site
# Without the other pages, links of the start page lead nowhere.
run interfaces "WARN_NO_PARAMDOC = YES" "WARN_IF_INCOMPLETE_DOC = YES" "WARN_IF_DOC_ERROR = NO" "FILE_PATTERNS = Z*.h" \
    "EXCLUDE = $PWD/include/zel" "USE_MDFILE_AS_MAINPAGE =" "HTML_OUTPUT = interfaces"

failed=0 headers=0
while read -r header; do
    headers=$((headers + 1))
    grep -q '@file' "$header" || { echo "$header: @file is missing, so its functions are not on the site"; failed=1; }
done < <(sed -n 's/^\(INPUT *=\)\? *\(\/.*[^ \\]\) *\\\?$/\2/p' "$folder/Doxyfile" |
    xargs -I{} find {} -name detail -prune -o -name '*.h' -print)
pages=$(find "$site/html" -name 'class*.html' | wc -l)
echo "$headers headers, $pages pages of classes"
[ "$failed" -eq 0 ] && [ "$headers" -ge 34 ] && [ -f "$site/html/classzel_1_1Camera.html" ]
