# Shared by the take-*.sh scripts that grab the installed MELO with the
# stand-in web service. Source it, then:
#   melo_prepare BUILD [melo-install-keys options...]
#       fresh HOME, XDG and temporary folders in $work (removed on exit), the
#       service addresses, and the installation recorded as the installer would
#   xvfb-run ... bash -c '. "$session"; melo_start PROGRAM SERVICE; ...; melo_grab FILE'
#       starts the service and MELO on the virtual display, waits for the main
#       window and its pages ($window); melo_grab saves the window as PNG; both
#       are stopped when that shell exits.
melo_prepare() {
  local build=$1
  shift
  work=$(mktemp -d)
  trap 'rm -rf "$work"' EXIT
  export HOME=$work/home XDG_CONFIG_HOME=$work/config XDG_DATA_HOME=$work/data XDG_CACHE_HOME=$work/cache
  export TMPDIR=$work/tmp QTWEBENGINE_DISABLE_SANDBOX=1
  mkdir -p "$HOME" "$XDG_CONFIG_HOME" "$XDG_DATA_HOME" "$XDG_CACHE_HOME" "$TMPDIR" "$work/install"
  export MELO_SERVICE_HTTP=http://127.0.0.1:28180 MELO_SERVICE_HTTPS=https://127.0.0.1:28543
  "$build/tools/melo-install-keys/melo-install-keys" --install-location "$work/install" "$@" >/dev/null
}

melo_start() {
  trap melo_stop EXIT
  "$2" --http-port 28180 --https-port 28543 & service=$!
  sleep 1
  "$1" & melo=$!
  for _ in $(seq 300); do
    window=$(xdotool search --onlyvisible --name "^MELO\$" 2>/dev/null | head -n 1) && [ -n "$window" ] && break
    sleep 0.1
  done
  sleep 6   # both pages loaded and connected, the first paint settled
}

melo_grab() {
  xdotool mousemove --window "$window" 900 1000   # no hover effects
  sleep 0.5
  xwd -silent -id "$window" | xwdtopnm 2>/dev/null | pnmtopng > "$1"
}

melo_stop() {
  kill -TERM "$melo" 2>/dev/null && wait "$melo" || true
  kill -TERM "$service" 2>/dev/null && wait "$service" || true
}
