#!/usr/bin/env bash
# Puts real sample photographs into DEST (default build/samples): the data
# images that Debian's python3-skimage package ships, taken from its .deb
# without installing it. Idempotent: does nothing when DEST is complete.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
dest=${1:-$root/build/samples}
stamp="$dest/.complete"
[ -f "$stamp" ] && exit 0

cache=${MELO_DEB_CACHE:-${XDG_CACHE_HOME:-$HOME/.cache}/melo-debs}
mkdir -p "$cache" "$dest"
deb=$(ls "$cache"/python3-skimage_*_all.deb 2>/dev/null | head -n 1 || true)
if [ -z "$deb" ]; then
  echo "fetch-samples: downloading python3-skimage from the Debian archive"
  if ! (cd "$cache" && apt-get download python3-skimage >/dev/null 2>&1); then
    SUDO=""; [ "$(id -u)" -ne 0 ] && SUDO="sudo"
    $SUDO apt-get update -q >/dev/null
    (cd "$cache" && apt-get download python3-skimage >/dev/null 2>&1)
  fi
  deb=$(ls "$cache"/python3-skimage_*_all.deb | head -n 1)
fi

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
dpkg-deb -x "$deb" "$work"
cp "$work"/usr/lib/python3/dist-packages/skimage/data/*.{png,jpg,tif} "$dest"/
touch "$stamp"
echo "fetch-samples: $(ls "$dest" | wc -l) sample images in $dest"
