#!/usr/bin/env bash
# The installed tree for Windows.
#
#   check_windows_install.sh BUILD_FOLDER COMPILER LIBRARY_FOLDER DOCUMENT_FOLDER
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"
run=$here/../../scripts/run-windows-program.sh
tools=$("$compiler" -dumpmachine)

count=0 flags=(DYNAMIC_BASE NX_COMPAT)
case $tools in x86_64*) flags+=(HIGH_ENTROPY_VA) ;; esac
for file in "$prefix"/bin/*.*; do
    "$tools-objdump" -h "$file" | grep -q '\.rsrc' || fail "$file has no version resource"
    strings -el "$file" | grep -qx "$(basename "$file")" || fail "the version resource of $file does not name it"
    facts=$("$tools-objdump" -p "$file")
    for wanted in "${flags[@]}"; do
        grep -q "$wanted" <<<"$facts" || fail "$file lacks $wanted"
    done
    count=$((count + 1))
done
[ "$count" -ge 7 ] || fail "only $count programs and libraries are installed"

"$compiler" -std=c++20 -static -I"$prefix/include/zel-sdk" -o "$prefix/bin/one_frame.exe" outside/one_frame.cpp \
    -L"$prefix/$libraries" -lzel_sdk
cd "$prefix/bin"
expect "one_frame.exe" "frame.tif is written" "$("$run" one_frame.exe | tr -d '\r')"

# A plug-in that is missing beside the program: zelcam takes none of the current folder.
mkdir planted
printf '#include <stdio.h>\n__attribute__((constructor)) static void Tell(void) { puts("PLANTED"); fflush(stdout); }\n' |
    "$compiler" -shared -static -o planted/zel_usb.dll -x c -
mv zel_usb.dll away.dll
cd planted
loaded() { env "$@" "$run" ../zelcam.exe version; }
loaded | grep PLANTED && fail "a library of the current folder was loaded"
loaded WINEPATH="$(winepath -w .)" | grep PLANTED >log || fail "a planted library does not tell"
cd ..
mv away.dll zel_usb.dll

# Microsoft's linker finds every name of the module-definition files.
target=x86_64 machine=x64 underscore='' decorated='?get_version_str@@YAPEADXZ'
case $tools in i686*) target=i686 machine=x86 underscore=_ decorated='?get_version_str@@YAPADXZ' ;; esac
names=(/include:"$decorated")
while read -r name; do
    names+=(/include:"$underscore$name")
done < <(sed -nE 's/^ +([a-z_]+);$/\1/p' "$here/../../sdk/zel_sdk.map" "$here/../../bindings/c/zel_c.map")
echo 'extern "C" int start() { return 7; }' |
    clang++ --target=$target-pc-windows-msvc -ffreestanding -c -o "$work/start.obj" -x c++ -
lld-link /entry:start /subsystem:console /nodefaultlib /safeseh:no "${names[@]}" /machine:$machine \
    /out:linked.exe "$work/start.obj" "$prefix/$libraries"/zel_{sdk,c}.lib
status=0
"$run" linked.exe || status=$?
expect "exit code of a program that needs all ${#names[@]} names" 7 "$status"
echo "$count files with version resources, ${#names[@]} names"
