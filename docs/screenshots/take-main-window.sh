#!/usr/bin/env bash
# Takes docs/screenshots/main-window.png: the installed MELO (./scripts/run.sh
# installs it into _install/) at its first start, with the stand-in web
# service's home page and its welcome note, on a fresh Xvfb display with its
# own settings and temporary folders; then quits it.
#   docs/screenshots/take-main-window.sh [MELO program] [build folder] [output]
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
root=$(cd "$here/../.." && pwd)
program=${1:-$root/_install/lib/melo/MELO}
build=${2:-$root/build}
out=${3:-$here/main-window.png}
. "$here/session.sh"
melo_prepare "$build" --version 1.0.0.0 --channel local

xvfb-run -a -s "-screen 0 1920x1080x24" bash -c '
  set -e
  . "$0"
  melo_start "$1" "$2"
  melo_grab "$3"
' "$here/session.sh" "$program" "$build/tools/melo-service/melo-service" "$out"
echo "screenshot: $out"
