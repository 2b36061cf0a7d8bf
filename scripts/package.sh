#!/usr/bin/env bash
# Builds the Debian packages `tarvolin` (the game and its content tool) and `tarvolin-service` into dist/, with
# Debian's hardening flags, and checks them with lintian. With TARVOLIN_CLEAN_INSTALL=1 it then installs them
# into a fresh Debian 12 (debootstrap, as root) and runs the installed game and service there.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
build="${TARVOLIN_PACKAGE_BUILD_DIR:-$root/build-package}"
dist="${TARVOLIN_DIST_DIR:-$root/dist}"
cd "$root"

bash scripts/install-deps.sh

# The flags Debian builds its own packages with: fortified functions, stack protector, full RELRO, PIE.
eval "$(DEB_BUILD_MAINT_OPTIONS=hardening=+all dpkg-buildflags --export=sh)"
export CXXFLAGS="$CXXFLAGS $CPPFLAGS"
launcher=()
if command -v ccache >/dev/null; then launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache); fi
# Debian's layout: the game in /usr/games, the service and the content tool in /usr/bin.
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=None -DCMAKE_INSTALL_PREFIX=/usr -DTARVOLIN_GAME_BINDIR=games \
  -DTARVOLIN_BUILD_TESTS=OFF -DTARVOLIN_BUILD_BENCH=OFF -DTARVOLIN_FUZZ=OFF "${launcher[@]}"
cmake --build "$build" -j "$(nproc)"

rm -rf "$build/_CPack_Packages"
(cd "$build" && cpack -G DEB)
mkdir -p "$dist"
rm -f "$dist"/tarvolin*.deb
cp "$build"/tarvolin*.deb "$dist"/
for deb in "$dist"/*.deb; do
  echo "== $(basename "$deb")"
  dpkg-deb --field "$deb" Package Version Depends Recommends | sed 's/^/   /'
done

# lintian: no error may remain; warnings are shown.
lintian --fail-on error --display-level ">=warning" --tag-display-limit 0 "$dist"/*.deb
echo "lintian: no errors in $(ls "$dist"/*.deb | wc -l) packages"

if [ "${TARVOLIN_CLEAN_INSTALL:-0}" = 1 ]; then
  bash "$root/packaging/clean-install-test.sh" "$dist"
fi
echo "packages in $dist"
