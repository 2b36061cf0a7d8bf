#!/usr/bin/env bash
# Installs every Debian 12 package that building, running and testing Tarvolin needs.
# Safe to run again: apt-get skips what is already there.
set -euo pipefail

packages=(
  # toolchain
  build-essential cmake ninja-build pkg-config git clang-format curl ca-certificates
  # the game: Qt 6.4 Quick, multimedia, SVG
  qt6-base-dev qt6-base-dev-tools qt6-declarative-dev qt6-declarative-dev-tools
  qt6-multimedia-dev qt6-svg-dev libqt6svg6 qt6-image-formats-plugins qt6-websockets-dev
  qml6-module-qtquick qml6-module-qtquick-controls qml6-module-qtquick-layouts
  qml6-module-qtquick-window qml6-module-qtquick-templates qml6-module-qtqml-workerscript
  qml6-module-qtquick-particles qml6-module-qtquick-shapes qml6-module-qtmultimedia
  qml6-module-qttest qml6-module-qtqml-models qt6-charts-dev qml6-module-qtcharts
  libgl-dev libvulkan-dev libxkbcommon-dev
  # the service
  libboost1.81-dev libsqlite3-dev libpqxx-dev libpq-dev libsodium-dev libicu-dev
  postgresql
  # content tools
  hunspell-ar libhunspell-dev librsvg2-dev
  # tests and benchmarks
  libgtest-dev libgmock-dev googletest libbenchmark-dev xvfb xauth dbus-daemon
  # the accessibility test (tests/a11y): the AT-SPI bus and registry, and a client that reads the tree
  at-spi2-core python3-gi gir1.2-atspi-2.0 python3-pyatspi
  # packaging (scripts/package.sh) and the validators of the installed files
  dpkg-dev lintian desktop-file-utils appstream systemd debootstrap
  systemd-container
  # the manual pages are checked with man (tests/cli)
  man-db
  # fuzzing (scripts/fuzz.sh): clang and its libFuzzer runtime
  clang libclang-rt-14-dev
)

SUDO=""
if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi
export DEBIAN_FRONTEND=noninteractive

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done
if [ "${#missing[@]}" -gt 0 ]; then
  $SUDO apt-get update -qq
  $SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi
