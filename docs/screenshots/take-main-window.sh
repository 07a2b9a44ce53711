#!/usr/bin/env bash
# Takes docs/screenshots/main-window.png: the installed MELO (./scripts/run.sh
# installs it into _install/) at its first start, with the stand-in web
# service's home page and its welcome note, on a fresh Xvfb display with its
# own settings and temporary folders; then quits it.
#   docs/screenshots/take-main-window.sh [MELO program] [build folder] [output]
set -euo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
program=${1:-$root/_install/lib/melo/MELO}
build=${2:-$root/build}
out=${3:-$root/docs/screenshots/main-window.png}
service=$build/tools/melo-service/melo-service
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export HOME=$work/home XDG_CONFIG_HOME=$work/config XDG_DATA_HOME=$work/data XDG_CACHE_HOME=$work/cache TMPDIR=$work/tmp
mkdir -p "$HOME" "$XDG_CONFIG_HOME" "$XDG_DATA_HOME" "$XDG_CACHE_HOME" "$TMPDIR"
export QTWEBENGINE_DISABLE_SANDBOX=1
export MELO_SERVICE_HTTP=http://127.0.0.1:28180 MELO_SERVICE_HTTPS=https://127.0.0.1:28543
# Installed as the installer would: install folder, version, channel.
mkdir -p "$work/install"
"$build/tools/melo-install-keys/melo-install-keys" --install-location "$work/install" --version 1.0.0.0 \
  --channel local >/dev/null

xvfb-run -a -s "-screen 0 1920x1080x24" bash -c '
  set -e
  trap "kill \$melo \$service 2>/dev/null || true" EXIT
  "$1" --http-port 28180 --https-port 28543 & service=$!
  sleep 1
  "$0" & melo=$!
  for _ in $(seq 300); do
    window=$(xdotool search --onlyvisible --name "^MELO\$" 2>/dev/null | head -n 1) && [ -n "$window" ] && break
    sleep 0.1
  done
  sleep 6   # both pages loaded and connected, the first paint settled
  xdotool mousemove --window "$window" 900 1000
  sleep 0.5
  xwd -silent -id "$window" | xwdtopnm 2>/dev/null | pnmtopng > "$2"
  kill -TERM "$melo"; wait "$melo" || true
  kill -TERM "$service"; wait "$service" || true
' "$program" "$service" "$out"
echo "screenshot: $out"
