#!/usr/bin/env bash
# Builds the whole project a second time with AddressSanitizer and UndefinedBehaviorSanitizer and runs every
# test in it. A report of either fails the test that met it. Expects what scripts/install-deps.sh installs.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
build="${TARVOLIN_SANITIZE_BUILD_DIR:-$root/build-sanitize}"
jobs="${TARVOLIN_JOBS:-$(nproc)}"
start=$(date +%s)

# The tests are listed by running them at build time, so the options hold for the build as well.
export QT_QPA_PLATFORM=offscreen
asan="abort_on_error=0:detect_stack_use_after_return=0:check_initialization_order=1:strict_init_order=1"
export ASAN_OPTIONS="detect_leaks=0:$asan"
export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"
export LSAN_OPTIONS="suppressions=$root/tests/sanitizers/lsan.supp:print_suppressions=0"

echo "== configure and build with ASan and UBSan ($build)"
# -O1 keeps the build and the tests quick while the reports still name lines; benchmarks are left out.
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE= -DCMAKE_CXX_FLAGS="-O1 -g1" \
  -DTARVOLIN_SANITIZE="address;undefined" -DTARVOLIN_WERROR=ON -DTARVOLIN_BUILD_BENCH=OFF
cmake --build "$build" -j "$jobs"
built=$(date +%s)

if [ -z "${TARVOLIN_TEST_DATABASE:-}" ] && [ -x "$root/scripts/start-test-postgres.sh" ]; then
  if url="$("$root/scripts/start-test-postgres.sh")"; then
    export TARVOLIN_TEST_DATABASE="$url"
  fi
fi

# The service's tests look for leaks as well. Qt keeps its scene graph, images and fonts until the process ends,
# and Debian builds it without frame pointers, so in the programs that use it a leak report names no caller of
# ours and cannot be told from Qt's own: there the leak check is off (the fuzz targets check the game's readers
# for leaks, on inputs that do not draw).
status=0
echo "== the service's tests under ASan (leaks included) and UBSan"
ASAN_OPTIONS="detect_leaks=1:$asan" ctest --test-dir "$build" --output-on-failure -j "$jobs" -L service || status=1
echo "== every other test under ASan and UBSan"
ctest --test-dir "$build" --output-on-failure -j "$jobs" -LE service || status=1
end=$(date +%s)
echo "== sanitizer suite: build $((built - start)) s, tests $((end - built)) s"
exit "$status"
