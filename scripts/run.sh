#!/usr/bin/env bash
# Command 1: installs what is missing, builds, installs MELO into a local
# prefix (_install/ or $MELO_PREFIX) the way the installer would, starts the
# local stand-in web service on loopback and runs the program. Without a
# display the window runs on an Xvfb display of its own.
#
# Ctrl+C or a SIGTERM to this script asks MELO to quit normally, so it cleans
# up after itself; the helpers started here are stopped afterwards.
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

program="$prefix/lib/melo/MELO"
if [ ! -x "$program" ]; then
  echo "run: $program was not built" >&2
  exit 1
fi

work=$(mktemp -d)
helpers=()
cleanup() {
  for pid in "${helpers[@]}"; do kill "$pid" 2>/dev/null && wait "$pid" 2>/dev/null || true; done
  rm -rf "$work"
}
trap cleanup EXIT

# Helpers run in their own sessions, so a Ctrl+C reaches only MELO.
service="$build/tools/melo-service/melo-service"
if [ -x "$service" ]; then
  echo "run: starting the stand-in web service on 127.0.0.1"
  setsid "$service" &
  helpers+=($!)
  sleep 1
fi

if [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ]; then
  echo "run: no display found, running MELO on a virtual display (Xvfb 1920x1080); stop it with Ctrl+C"
  setsid Xvfb -displayfd 1 -screen 0 1920x1080x24 -nolisten tcp -noreset >"$work/display" 2>"$work/xvfb.log" &
  helpers+=($!)
  for _ in $(seq 100); do
    [ -s "$work/display" ] && break
    sleep 0.1
  done
  if [ ! -s "$work/display" ]; then
    echo "run: Xvfb did not start:" >&2
    cat "$work/xvfb.log" >&2
    exit 1
  fi
  export DISPLAY=":$(head -n 1 "$work/display")"
  echo "run: MELO is on display $DISPLAY"
fi

"$program" &
melo=$!
trap 'kill -TERM "$melo" 2>/dev/null || true' TERM INT
status=0
# A trapped signal ends `wait` early; wait on until MELO has really exited.
while kill -0 "$melo" 2>/dev/null; do
  wait "$melo" && status=0 || status=$?
done
echo "run: MELO exited with status $status"
exit "$status"
