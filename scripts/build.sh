#!/usr/bin/env bash
# Configures and builds MELO (Release) into build/ or $MELO_BUILD_DIR.
# Extra arguments go to the CMake configure step.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${MELO_BUILD_DIR:-$root/build}
cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=Release "$@"
cmake --build "$build" -j"$(nproc)"
