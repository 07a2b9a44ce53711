#!/usr/bin/env bash
# Installs the Debian 12 packages MELO needs to build, run and test.
# Idempotent: packages already present are skipped, and apt is not touched at all
# when everything is installed.
set -euo pipefail

PACKAGES=(
  # build
  build-essential cmake pkg-config
  qtbase5-dev libqt5svg5-dev qtwebengine5-dev libqt5webchannel5-dev libqt5x11extras5-dev
  libopencv-dev libjpeg62-turbo-dev libcurl4-openssl-dev libjsoncpp-dev
  libcpp-httplib-dev libssl-dev openssl
  # photographs: colour profiles, HEIF/AVIF, camera RAW, TIFF, Qt's own Chinese texts
  liblcms2-dev libheif-dev libraw-dev libtiff-dev qttranslations5-l10n zlib1g-dev
  # run and test
  xvfb xauth p7zip-full fonts-wqy-microhei locales
  # window checks and screenshots under Xvfb
  xdotool x11-utils x11-apps netpbm desktop-file-utils libxcb1-dev
  # test photographs made from real ones (orientation, profiles, HEIC, WebP)
  libimage-exiftool-perl icc-profiles-free imagemagick libheif-examples webp
  # benchmarks and fuzzing
  ffmpeg gmic clang libclang-rt-14-dev
)

missing=()
for p in "${PACKAGES[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$p")
  fi
done

SUDO=""
if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi

if [ "${#missing[@]}" -gt 0 ]; then
  echo "install-deps: installing ${missing[*]}"
  export DEBIAN_FRONTEND=noninteractive
  $SUDO apt-get update -q
  $SUDO apt-get install -y -q --no-install-recommends "${missing[@]}"
else
  echo "install-deps: all packages present"
fi

# The LUT readers are tested under a locale with a decimal comma.
if ! locale -a 2>/dev/null | grep -qi '^de_DE\.utf8$'; then
  echo "install-deps: generating de_DE.UTF-8"
  $SUDO sed -i 's/^# *\(de_DE.UTF-8 UTF-8\)/\1/' /etc/locale.gen
  grep -q '^de_DE.UTF-8 UTF-8' /etc/locale.gen || echo 'de_DE.UTF-8 UTF-8' | $SUDO tee -a /etc/locale.gen >/dev/null
  $SUDO locale-gen >/dev/null
fi
