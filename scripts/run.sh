#!/usr/bin/env bash
# Command 1: installs what is missing, builds, installs MELO into a local
# prefix (_install/ or $MELO_PREFIX) the way the installer would, starts the
# local stand-in web service on loopback and runs the program. Without a
# display the window runs under Xvfb.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${MELO_BUILD_DIR:-$root/build}
prefix=${MELO_PREFIX:-$root/_install}
"$root/scripts/install-deps.sh"
"$root/scripts/build.sh" -DMELO_BUILD_TESTS=OFF
cmake --install "$build" --prefix "$prefix"

if [ "$(id -u)" -eq 0 ]; then
  # Qt WebEngine refuses to run as root with its sandbox on.
  export QTWEBENGINE_DISABLE_SANDBOX=1
fi

service="$build/tools/melo-service/melo-service"
service_pid=""
if [ -x "$service" ]; then
  echo "run: starting the stand-in web service on 127.0.0.1"
  "$service" &
  service_pid=$!
  trap '[ -n "$service_pid" ] && kill "$service_pid" 2>/dev/null || true' EXIT
  sleep 1
fi

program="$prefix/lib/melo/MELO"
if [ ! -x "$program" ]; then
  echo "run: $program was not built" >&2
  exit 1
fi
if [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ]; then
  echo "run: no display found, running MELO under Xvfb (xvfb-run); stop it with Ctrl+C"
  xvfb-run -a -s "-screen 0 1920x1080x24" "$program"
else
  "$program"
fi
