#!/usr/bin/env bash
# Unpacks the source of libdeflate to build/libdeflate, where the Windows product builds it from.
exec "$(dirname "${BASH_SOURCE[0]}")/debian-source.sh" libdeflate libdeflate.h
