#!/usr/bin/env bash
# Unpacks the sources of libtiff and of zstd, which it compresses with, to build/tiff and build/libzstd, where the Windows
# products build them from.
set -e
here=$(dirname "${BASH_SOURCE[0]}")
"$here/debian-source.sh" tiff libtiff/tiffio.h
"$here/debian-source.sh" libzstd lib/zstd.h
