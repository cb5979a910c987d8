#!/usr/bin/env bash
# Unpacks the source of lodepng to build/lodepng, where the Windows product builds it from.
exec "$(dirname "${BASH_SOURCE[0]}")/debian-source.sh" lodepng lodepng.h
