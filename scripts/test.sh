#!/usr/bin/env bash
# Command 2: installs what is missing, builds, and runs the whole CTest suite
# under Xvfb. Exits non-zero when a test fails.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${MELO_BUILD_DIR:-$root/build}
"$root/scripts/install-deps.sh"
"$root/scripts/build.sh" -DMELO_BUILD_TESTS=ON
cd "$build"
# Qt WebEngine refuses to run as root with its sandbox on.
export QTWEBENGINE_DISABLE_SANDBOX=1
# -noreset: the server must not reset (and refuse connections meanwhile)
# whenever its last client has gone between two tests.
xvfb-run -a -s "-screen 0 1920x1080x24 -noreset" \
  ctest --output-on-failure --no-tests=error -j"$(nproc)" "$@"
