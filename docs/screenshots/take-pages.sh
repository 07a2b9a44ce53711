#!/usr/bin/env bash
# Takes docs/screenshots/home.png and gallery.png: the stand-in service's
# home page (after a demo login from the title bar) and cloud gallery inside
# the MELO window, on a fresh Xvfb display with settings and temporary
# folders of their own.
#   docs/screenshots/take-pages.sh [MELO program] [build folder]
set -euo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
program=${1:-$root/_install/lib/melo/MELO}
build=${2:-$root/build}
service=$build/tools/melo-service/melo-service
out=$root/docs/screenshots
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export HOME=$work/home XDG_CONFIG_HOME=$work/config XDG_DATA_HOME=$work/data XDG_CACHE_HOME=$work/cache TMPDIR=$work/tmp
mkdir -p "$HOME" "$XDG_CONFIG_HOME" "$XDG_DATA_HOME" "$XDG_CACHE_HOME" "$TMPDIR"
export QTWEBENGINE_DISABLE_SANDBOX=1
export MELO_SERVICE_HTTP=http://127.0.0.1:28180 MELO_SERVICE_HTTPS=https://127.0.0.1:28543
# Installed as the installer would: version (so no update is due), channel.
mkdir -p "$work/install"
"$build/tools/melo-install-keys/melo-install-keys" --install-location "$work/install" --channel local >/dev/null

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
  sleep 6                                  # pages loaded and connected
  window=$(xdotool search --onlyvisible --name "^MELO\$" | head -n 1)
  xdotool mousemove --window "$window" 1605 25 click 1   # 登录/注册 in the title bar
  sleep 1
  xdotool mousemove --window "$window" 952 689 click 1  # 体验账号一键登录 on the login card
  sleep 3                                  # avatar downloaded
  xdotool mousemove --window "$window" 900 1000
  sleep 0.5
  xwd -silent -id "$window" | xwdtopnm 2>/dev/null | pnmtopng > "$2/home.png"
  xdotool mousemove --window "$window" 356 25 click 1    # 云图库
  sleep 2
  xdotool mousemove --window "$window" 365 164 click 1   # select two pictures
  xdotool mousemove --window "$window" 1110 164 click 1
  sleep 0.5
  xdotool mousemove --window "$window" 900 1000
  sleep 0.5
  xwd -silent -id "$window" | xwdtopnm 2>/dev/null | pnmtopng > "$2/gallery.png"
  kill -TERM "$melo"; wait "$melo" || true
  kill -TERM "$service"; wait "$service" || true
' "$program" "$service" "$out"
echo "screenshots: $out/home.png $out/gallery.png"
