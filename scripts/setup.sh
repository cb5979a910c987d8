#!/usr/bin/env bash
# Installs what scripts/packages.txt names and this machine lacks. Quiet when there is nothing to do.
#
#   scripts/setup.sh [GROUP...]     groups as in packages.txt; default: build windows
#
# 32-bit libraries must match the installed 64-bit ones to the version, and the security suite's i386 index may lag
# behind its amd64 one. The packages are therefore taken from Debian's main and updates suites alone, as the system's
# own apt configuration names them; when that does not work out, all configured sources are tried.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
. "$here/main-suites.sh"
groups=("$@")
[ ${#groups[@]} -gt 0 ] || groups=(build windows)

wanted() {
    local group
    for group in "${groups[@]}"; do
        awk -v g="$group" '!/^#/ && $1 == g { print $2 }' "$here/packages.txt"
    done
}

missing() {
    local name
    for name in $(wanted); do
        dpkg-query -W -f '${Status}' "$name" 2>/dev/null | grep -q '^install ok installed' || echo "$name"
    done
}

need=$(missing)
[ -n "$need" ] || exit 0

if [ "$(id -u)" -eq 0 ]; then sudo=(env); else sudo=(sudo env); fi
log=$(mktemp -t zel-setup.XXXXXX)
state=$(mktemp -d -t zel-apt.XXXXXX)
trap 'rm -rf "$state"' EXIT
mkdir -p "$state/lists/partial"
main_suites > "$state/main.list"
chmod -R a+rX "$state"

quiet() { "${sudo[@]}" DEBIAN_FRONTEND=noninteractive "$@" >>"$log" 2>&1; }
apt_main() {
    quiet apt-get -o Dir::Etc::sourcelist="$state/main.list" -o Dir::Etc::sourceparts=/dev/null \
        -o Dir::State::Lists="$state/lists" -o APT::Sandbox::User=root "$@"
}

echo "Installing: $(echo $need)"
case " $need " in *:i386*) quiet dpkg --add-architecture i386 ;; esac
# shellcheck disable=SC2086
if [ -s "$state/main.list" ] && apt_main update && apt_main install -y --no-install-recommends $need; then
    :
elif quiet apt-get update && quiet apt-get install -y --no-install-recommends $need; then
    :
else
    echo "Could not install every package; the last lines of $log:" >&2
    tail -n 15 "$log" >&2
    exit 1
fi
rm -f "$log"
