#!/usr/bin/env bash
# Takes docs/screenshots/editor.png and editor-crop.png: the editor_screenshots
# program (built with the tests) opens a sample photograph in the real main
# window on a fresh Xvfb display, with the generated preset library unpacked
# into its own temporary folder, grades it and grabs the window.
set -euo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
program=${1:-${MELO_BUILD_DIR:-$root/build}/tests/mainwindow/editor_screenshots}
out=${2:-$root/docs/screenshots}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export HOME=$work/home XDG_CONFIG_HOME=$work/config XDG_DATA_HOME=$work/data TMPDIR=$work/tmp
export XDG_RUNTIME_DIR=$work/runtime QTWEBENGINE_DISABLE_SANDBOX=1 QTWEBENGINE_CHROMIUM_FLAGS=--disable-gpu
mkdir -p "$HOME" "$XDG_CONFIG_HOME" "$XDG_DATA_HOME" "$TMPDIR" "$XDG_RUNTIME_DIR"
chmod 700 "$XDG_RUNTIME_DIR"
xvfb-run -a -s "-screen 0 1920x1080x24" "$program" "$out"
echo "screenshots: $out/editor.png $out/editor-crop.png"
