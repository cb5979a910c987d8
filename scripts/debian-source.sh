#!/usr/bin/env bash
# Unpacks a Debian source package, of the suite this machine runs, to build/NAME. Quiet; nothing is done when it is there
# already. Needs dpkg-dev and xz-utils.
#
#   scripts/debian-source.sh NAME FILE     FILE: one of the package's files, by which it is known to be there
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
name=$1
target=$here/../build/$name
[ ! -f "$target/$2" ] || exit 0

. "$here/main-suites.sh"
state=$(mktemp -d -t zel-source.XXXXXX)
trap 'rm -rf "$state"' EXIT
mkdir -p "$state/lists/partial" "$state/cache/archives/partial" "$state/unpacked"
main_suites deb-src > "$state/source.list"

# Lists, cache and download folder of this run's own: the system's apt state is not touched.
apt_source() {
    apt-get -o Dir::Etc::sourcelist="$state/source.list" -o Dir::Etc::sourceparts=/dev/null \
        -o Dir::State::Lists="$state/lists" -o Dir::Cache="$state/cache" -o APT::Sandbox::User= "$@" >>"$state/log" 2>&1
}

cd "$state/unpacked"
if ! { apt_source update && apt_source source --only-source "$name"; }; then
    echo "Could not fetch the source of $name; apt-get's last lines:" >&2
    tail -n 15 "$state/log" >&2
    exit 1
fi
rm -rf "$target"
mkdir -p "$(dirname "$target")"
mv "$state/unpacked/$name"-*/ "$target"
