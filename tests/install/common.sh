# Shared by the checks: sourced with their arguments. Installs the build into a fresh folder and moves it.
set -euo pipefail
build=$1 compiler=$2 libraries=$3 documents=$4
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
unset LD_LIBRARY_PATH
export ZEL_SIM_SIZE=64x48 ZEL_SIM_PACE=none

fail() { echo "FAILED: $*"; exit 1; }
# expect WHAT WANTED FOUND
expect() { [ "$2" = "$3" ] || fail "$1: wanted '$2', found '$3'"; }

cmake --install "$build" --prefix "$work/first" >"$work/log" || fail "$(cat "$work/log")"
mv "$work/first" "$work/moved"
prefix=$work/moved
cp -r "$prefix/$documents/examples" "$work/outside"
cd "$work"
