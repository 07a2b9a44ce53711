#!/usr/bin/env bash
# Takes docs/screenshots/main-window.png: starts the installed MELO
# (./scripts/run.sh installs it into _install/) on a fresh Xvfb display with
# its own settings and temporary folders, grabs the main window, and quits it.
set -euo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
program=${1:-$root/_install/lib/melo/MELO}
out=${2:-$root/docs/screenshots/main-window.png}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export HOME=$work/home XDG_CONFIG_HOME=$work/config XDG_DATA_HOME=$work/data TMPDIR=$work/tmp
mkdir -p "$HOME" "$XDG_CONFIG_HOME" "$XDG_DATA_HOME" "$TMPDIR"
export QTWEBENGINE_DISABLE_SANDBOX=1

xvfb-run -a -s "-screen 0 1920x1080x24" bash -c '
  "$0" & melo=$!
  for _ in $(seq 300); do
    window=$(xdotool search --onlyvisible --pid "$melo" 2>/dev/null | head -n 1) && [ -n "$window" ] && break
    sleep 0.1
  done
  sleep 3   # let the first paint settle
  xwd -silent -id "$window" | xwdtopnm 2>/dev/null | pnmtopng > "$1"
  kill -TERM "$melo"; wait "$melo"
' "$program" "$out"
echo "screenshot: $out"
