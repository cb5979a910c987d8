#!/usr/bin/env bash
# The installed tree on Linux.
#
#   check_install.sh BUILD_FOLDER COMPILER LIBRARY_FOLDER DOCUMENT_FOLDER
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"
lib=$prefix/$libraries include=$prefix/include/zel-sdk

expect "cameras of the moved tree" 4 "$("$prefix/bin/zelcam" list --json | grep -o '"serial"' | wc -l)"
# Debian's list of symbols has all of each library, with their versions.
for name in libzel_sdk libzel_c; do
    asked_for=$(readelf -d "$lib/$name.so" | sed -n 's/.*SONAME.*\[\(.*\)\]/\1/p')
    diff <(awk -v name="$asked_for" '/^[^ ]/ { on = $1 == name; next } on && !/^ (ZEL_.*)@/ { print $1 }' \
        "$here/../../packaging/debian/symbols" | LC_ALL=C sort) \
        <(nm -D --defined-only "$lib/$name.so" | awk '$2 != "A" { sub(/@@/, "@", $3); print $3 }' | LC_ALL=C sort) ||
        fail "packaging/debian/symbols and $asked_for differ (<: listed, >: in the library)"
done

# Each header alone. Those in zel/ are for C++20.
check_header() {
    local standard=c++17
    [[ $1 != zel/* && $1 != devices/* ]] || standard=c++20
    "$compiler" -std=$standard -Wall -Wextra -Werror -fsyntax-only -I"$include" -x c++ - <<<"#include <$1>" ||
        fail "$1 does not compile alone"
}
export -f check_header fail
export compiler include
(cd "$include" && find . -name '*.h' -printf '%P\n') >headers
xargs -P2 -I{} bash -c 'check_header {}' <headers || exit 1
count=$(wc -l <headers)
[ "$count" -ge 12 ] || fail "only $count headers are installed"

# Examples, of which all are built in the tree, and a C program: with CMake and with make.
cp "$here/cameras.c" outside
cmake -S outside -B cmake-build -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_CXX_COMPILER="$compiler" >log 2>&1 &&
    cmake --build cmake-build -j2 --target one_frame live_statistics c_cameras >>log 2>&1 || fail "$(tail -n 30 log)"
PKG_CONFIG_PATH=$lib/pkgconfig make -s -C outside one_frame c_cameras CXX="$compiler"
for folder in cmake-build outside; do
    expect "$folder, C++" "frame.tif is written" "$("$folder/one_frame")"
    expect "$folder, C" "4 cameras" "$("$folder/c_cameras")"
done

# A plug-in written with the kit: its camera is found, checked and gives frames.
cmake -S outside/plugin -B plugin-build -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_CXX_COMPILER="$compiler" >log 2>&1 &&
    cmake --build plugin-build >>log 2>&1 || fail "$(tail -n 30 log)"
"$prefix/bin/zelcam" check-plugin "$PWD/plugin-build/libzel_usb.so" >log || fail "$(grep FAIL log)"
"$prefix/bin/zelcam" --plugins "$PWD/plugin-build" capture --frames 3 --exposure 20000 --out gradient >log 2>&1 || fail "$(cat log)"
expect "pictures of the gradient" 3 "$(ls gradient/*.tif | wc -l)"

# The GStreamer element finds the library that it was installed with.
if [ -f "$lib/gstreamer-1.0/libgstzel.so" ]; then
    GST_PLUGIN_PATH=$lib/gstreamer-1.0 GST_REGISTRY=$PWD/gst.registry gst-launch-1.0 -q zelsrc num-buffers=1 ! fakesink >log 2>&1 ||
        fail "zelsrc: $(cat log)"
else
    echo "not tried: the GStreamer element, which is not built"
fi

# And so does the Python package.
python=$prefix/lib/python3/dist-packages
if [ -d "$python/zel" ]; then
    expect "a frame in Python" "(48, 64)" "$(PYTHONPATH=$python /usr/bin/python3 -c 'import zel; print(zel.open().snap().shape)' 2>&1)"
    [ -f "$prefix/$documents/examples/python/live_statistics.py" ] || fail "the examples in Python are not installed"
else
    echo "not tried: the Python package, which is not built"
fi

# A program that was linked with a library without versions.
sed -nE 's/^ +([a-z_]+);$/extern "C" void \1() {}/p' "$here/../../sdk/zel_sdk.map" |
    "$compiler" -shared -Wl,-soname,libzel_sdk.so -o libzel_sdk.so -x c++ -
"$compiler" -std=c++20 -I"$include" -o old outside/one_frame.cpp -L. -lzel_sdk
expect "a program of old" "frame.tif is written" "$(LD_LIBRARY_PATH=$lib ./old)"

# A maker's library goes before the simulated one.
"$compiler" -std=c++17 -shared -fPIC -I"$include" -o "$lib/zel-sdk/cameras/libzel_usb.so" "$here/OutsidePlugin.cpp"
"$prefix/bin/zelcam" version | grep -q "a maker's library" || fail "the library in cameras/ was passed over"
expect "cameras beside a maker's library" 2 "$("$prefix/bin/zelcam" list --json | grep -o '"serial"' | wc -l)"
expect "simulated ones all the same" 4 "$("$prefix/bin/zelcam" list --plugins sim --json | grep -o '"serial"' | wc -l)"

# Libraries that somebody put where they do not belong, and one that a maker's plug-in needs. They tell when they are loaded.
mkdir planted
printf '#include <stdio.h>\n__attribute__((constructor)) static void Tell(void) { puts("PLANTED"); }\n' |
    "$compiler" -shared -fPIC -o planted/libneeded.so -x c -
for name in libedt_camera_link.so libzel_usb.so libkestrane_zel_logger.so libzel_sdk.so.3 libtiff.so.6; do
    cp planted/libneeded.so planted/$name
done
loaded() { (cd planted && env ZEL_LOG=error "$@" "$prefix/bin/zelcam" version 2>&1); }
loaded PATH="$PWD/planted:$PATH" | grep PLANTED && fail "a library of the current folder or PATH was loaded"
rm planted/libzel_sdk.so.3 planted/libtiff.so.6  # the program would not even start
loaded LD_LIBRARY_PATH="$PWD/planted" | grep PLANTED >log || fail "a planted library does not tell"
maker() {
    "$compiler" -std=c++17 -shared -fPIC -I"$include" -o "$lib/zel-sdk/cameras/libzel_usb.so" "$here/OutsidePlugin.cpp" \
        -Lplanted -Wl,--no-as-needed -lneeded "$@"
}
maker
cp planted/libneeded.so "$lib"
loaded | grep -E "PLANTED|maker" && fail "what a plug-in needs was looked for in the SDK's folders"
maker -Wl,-rpath,'$ORIGIN'
mv "$lib/libneeded.so" "$lib/zel-sdk/cameras"
expect "a plug-in with a run path" 2 "$(loaded | grep -cE "^PLANTED|maker")"
rm "$lib/zel-sdk/cameras"/*

# How it is built.
while read -r file; do
    facts=$(readelf -hldW "$file" 2>/dev/null) || continue
    for wanted in 'Type: +DYN' GNU_RELRO 'FLAGS.*NOW' 'GNU_STACK .* RW '; do
        grep -qE "$wanted" <<<"$facts" || fail "$file lacks $wanted"
    done
    symbols=$(nm -D "$file")
    grep -q __stack_chk_fail <<<"$symbols" || fail "$file has no stack protector"
    ! grep -qE ' U __[a-z]+_chk(@|$)' <<<"$symbols" || checked=$((${checked:-0} + 1))
    hardened=$((${hardened:-0} + 1))
done < <(find "$prefix" -type f \( -perm -u+x -o -name '*.so*' \))
[ "${hardened:-0}" -ge 8 ] && [ "${checked:-0}" -ge 3 ] || fail "only ${hardened:-0} files are hardened, ${checked:-0} with checked functions"

# How much memory there is, is known without /proc, too.
if unshare -rm mount -t tmpfs none /proc 2>/dev/null; then
    LD_LIBRARY_PATH=$lib unshare -rm sh -c "mount -t tmpfs none /proc; exec '$prefix/bin/zelcam' capture --frames 1 --out pictures" >log 2>&1 ||
        fail "without /proc: $(cat log)"
else
    echo "not tried: a run without /proc, which the system does not let this user have"
fi
echo "$hardened programs and libraries, $count headers, $(find cmake-build -maxdepth 1 -type f -perm -u+x | wc -l) examples"
