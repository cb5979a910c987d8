#!/usr/bin/env bash
# Measures the Python package beside the C++ layer, and beside Aravis' Python bindings on one fake GigE Vision camera in a
# network of its own; prints tables (docs/performance.md has a run). Needs a build (preset linux), python3-gi,
# gir1.2-aravis-0.8 (group compare of packages.txt) and unshare.
#     scripts/python-bench.sh [--repetitions N] [--dry-run]
if [ "${1:-}" != inside ]; then
    exec unshare -rn bash "${BASH_SOURCE[0]}" inside "$@"
fi
shift
cd "$(dirname "${BASH_SOURCE[0]}")/.." && ip link set lo up || exit 1
source scripts/common.sh
exec /usr/bin/python3 bench/python/python_bench.py build/linux/bin --network "$@"
