#!/usr/bin/env bash
# Builds everything and runs every test: unit, interface, content, service (SQLite, and PostgreSQL when a local
# server can be started). Warnings are errors here, and the sources must be formatted.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
build="${TARVOLIN_BUILD_DIR:-$root/build}"
jobs="${TARVOLIN_JOBS:-$(nproc)}"

echo "== format check"
mapfile -t sources < <(cd "$root" && git ls-files -co --exclude-standard -- '*.cpp' '*.h' | grep -v '^content/pictures/')
if [ "${#sources[@]}" -gt 0 ]; then
  (cd "$root" && clang-format --dry-run -Werror "${sources[@]}")
fi

echo "== configure and build ($build)"
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTARVOLIN_WERROR=ON
cmake --build "$build" -j "$jobs"

if [ -z "${TARVOLIN_TEST_DATABASE:-}" ] && [ -x "$root/scripts/start-test-postgres.sh" ]; then
  echo "== starting a local PostgreSQL for the service tests"
  if url="$("$root/scripts/start-test-postgres.sh")"; then
    export TARVOLIN_TEST_DATABASE="$url"
  else
    echo "PostgreSQL could not be started; the service tests run on SQLite only." >&2
  fi
fi

echo "== tests"
export QT_QPA_PLATFORM=offscreen
ctest --test-dir "$build" --output-on-failure -j "$jobs"

# The figures of the hardening tests from the log of the run above: the authorisation matrix's size, the kills
# that the service and the profile survived with what was checked after them, and the health check's times
# while one address abuses the service; then what the installed files and the unit's checks said, and what the
# accessibility test read on each screen.
grep -h -e '^\[ matrix' -e '^\[ kill load' -e '^\[ profile kill' -e '^\[ health' -e '^\[ installed' \
  -e '^\[ systemd' -e '^\[ desktop' -e '^\[ appstream' \
  -e '^\[ a11y' "$build/Testing/Temporary/LastTest.log" 2>/dev/null || true
# What a screen reader hears on the play screen, as the accessibility test read it.
sed -n '/^The play screen.s accessible names/,/^\[ a11y play: [0-9]/p' "$build/Testing/Temporary/LastTest.log" \
  2>/dev/null || true
