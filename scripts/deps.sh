#!/usr/bin/env bash
# Installs the Debian packages the build, the program and the tests need, but only those
# that are missing. Safe to run again; does nothing when everything is present.
set -euo pipefail

packages=(
  cmake ninja-build g++ pkg-config clang libclang-rt-dev
  libgtest-dev libgmock-dev libbenchmark-dev
  qt6-base-dev qt6-svg-dev libpulse-dev libburn-dev libudev-dev
  lame sox libsox-fmt-all ffmpeg mpg123 id3v2 python3-mutagen
  unzip zip
  xorriso genisoimage p7zip-full udftools bchunk cuetools
  fonts-dejavu-core xvfb xauth
  pulseaudio pulseaudio-utils dbus-daemon
  desktop-file-utils appstream man-db groff-base file dpkg-dev lintian libgtk-3-bin
)

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "Installing: ${missing[*]}" >&2
sudo_cmd=()
[ "$(id -u)" -ne 0 ] && sudo_cmd=(sudo)
export DEBIAN_FRONTEND=noninteractive
"${sudo_cmd[@]}" apt-get update -qq
"${sudo_cmd[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
