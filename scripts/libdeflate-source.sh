#!/usr/bin/env bash
# Unpacks the source of libdeflate to build/libdeflate, where the Windows product builds it from: Debian's source
# package of the suite this machine runs. Quiet; nothing is done when it is there already. Needs dpkg-dev and xz-utils.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
target=$here/../build/libdeflate
[ ! -f "$target/libdeflate.h" ] || exit 0

. "$here/main-suites.sh"
state=$(mktemp -d -t zel-libdeflate.XXXXXX)
trap 'rm -rf "$state"' EXIT
mkdir -p "$state/lists/partial" "$state/cache/archives/partial" "$state/unpacked"
main_suites deb-src > "$state/source.list"

# Lists, cache and download folder of this run's own: the system's apt state is not touched.
apt_source() {
    apt-get -o Dir::Etc::sourcelist="$state/source.list" -o Dir::Etc::sourceparts=/dev/null \
        -o Dir::State::Lists="$state/lists" -o Dir::Cache="$state/cache" -o APT::Sandbox::User= "$@" >>"$state/log" 2>&1
}

cd "$state/unpacked"
if ! { apt_source update && apt_source source --only-source libdeflate; }; then
    echo "Could not fetch the source of libdeflate; apt-get's last lines:" >&2
    tail -n 15 "$state/log" >&2
    exit 1
fi
rm -rf "$target"
mkdir -p "$(dirname "$target")"
mv "$state"/unpacked/libdeflate-*/ "$target"
