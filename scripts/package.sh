#!/usr/bin/env bash
# Makes the packages: Debian's on Linux, a .zip for Windows, into build/packages. They are built apart from what the tests
# run (build/package-PRESET). Prints their names, sizes and SHA-256 sums, and what Debian's checks find.
#
#   scripts/package.sh [--twice] [PRESET...]    presets: linux, windows-i686, windows-x86_64; default: all of them
#
# --twice builds everything once more in another folder and compares the bytes of the packages.
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"
twice=
[ "${1:-}" != --twice ] || { twice=1; shift; }
presets=("$@")
[ ${#presets[@]} -gt 0 ] || presets=(linux windows-i686 windows-x86_64)

# Every time in a package is that of the last commit.
export SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(git log -1 --format=%ct)}
umask 022

# make_packages PRESET FOLDER PACKAGES: builds in FOLDER and leaves the packages in PACKAGES.
make_packages() {
    local preset=$1 folder=$2 packages=$3 options=()
    [ "$preset" != linux ] || options=(-DCMAKE_INSTALL_PREFIX=/usr -DZEL_DOC_DIR=share/doc/libzel-sdk-dev)
    run_quietly "$folder.configure.log" cmake --preset "$preset" -B "$folder" -DBUILD_TESTING=OFF "${options[@]}"
    run_quietly "$folder.build.log" cmake --build "$folder"
    rm -rf "$folder/_CPack_Packages" "$packages"
    run_quietly "$folder.package.log" cpack --config "$folder/CPackConfig.cmake" -B "$packages"
    # Who builds elsewhere gets the same bytes.
    if find "$packages" -path '*/bin/*' -type f -o -name '*.so*' -type f | xargs grep -lF "$PWD"; then
        echo "these files name the folder that they were built in" >&2
        return 1
    fi
    rm -rf "$packages"/_CPack_Packages "$packages"/*.json
}

for preset in "${presets[@]}"; do
    if [ "$preset" = linux ]; then
        scripts/setup.sh build package
    else
        scripts/setup.sh windows package
        scripts/libdeflate-source.sh
        scripts/lodepng-source.sh
        scripts/tiff-source.sh
    fi
    say "$preset"
    packages=build/packages/$preset
    make_packages "$preset" "build/package-$preset" "$packages"
    (cd "$packages" && for file in *; do
        printf '%-45s %9s bytes  sha256 %s\n' "$file" "$(stat -c %s "$file")" "$(sha256sum "$file" | cut -d' ' -f1)"
    done)
    if [ -n "$twice" ]; then
        make_packages "$preset" "build/again-$preset" "build/again-packages"
        diff -r "$packages" build/again-packages && echo "a second build in another folder: the same bytes"
    fi
    if [ "$preset" = linux ]; then
        lintian --fail-on error "$packages"/*.deb && echo "lintian: no errors"
    fi
done
