#!/usr/bin/env bash
# Takes docs/screenshots/home.png and gallery.png: the stand-in service's
# home page (after a demo login from the title bar) and cloud gallery inside
# the MELO window, on a fresh Xvfb display with settings and temporary
# folders of their own.
#   docs/screenshots/take-pages.sh [MELO program] [build folder]
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
root=$(cd "$here/../.." && pwd)
program=${1:-$root/_install/lib/melo/MELO}
build=${2:-$root/build}
. "$here/session.sh"
# Installed as the installer would: version (so no update is due), channel.
melo_prepare "$build" --channel local

xvfb-run -a -s "-screen 0 1920x1080x24" bash -c '
  set -e
  . "$0"
  melo_start "$1" "$2"
  xdotool mousemove --window "$window" 1605 25 click 1   # 登录/注册 in the title bar
  sleep 1
  xdotool mousemove --window "$window" 952 689 click 1  # 体验账号一键登录 on the login card
  sleep 3                                  # avatar downloaded
  melo_grab "$3/home.png"
  xdotool mousemove --window "$window" 356 25 click 1    # 云图库
  sleep 2
  xdotool mousemove --window "$window" 365 164 click 1   # select two pictures
  xdotool mousemove --window "$window" 1110 164 click 1
  sleep 0.5
  melo_grab "$3/gallery.png"
' "$here/session.sh" "$program" "$build/tools/melo-service/melo-service" "$here"
echo "screenshots: $here/home.png $here/gallery.png"
