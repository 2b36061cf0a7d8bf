#!/usr/bin/env bash
# Builds the libFuzzer targets with clang (fuzz/) and runs each for a bounded time on a copy of its seed
# corpus. Prints the executions of each target and in all; exits non-zero on any finding (a crash, a sanitizer
# report, a leak, a timeout), whose input is left in the scratch folder it names.
#
#   TARVOLIN_FUZZ_SECONDS    seconds per target (default 25)
#   TARVOLIN_FUZZ_BUILD_DIR  the clang build folder (default build-fuzz)
#   TARVOLIN_FUZZ_TARGETS    the targets to run, separated by spaces (default: all)
#   TARVOLIN_JOBS            build jobs (default: the number of processors)
#
# A long campaign: TARVOLIN_FUZZ_SECONDS=3600 bash scripts/fuzz.sh
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
build="${TARVOLIN_FUZZ_BUILD_DIR:-$root/build-fuzz}"
seconds="${TARVOLIN_FUZZ_SECONDS:-25}"
jobs="${TARVOLIN_JOBS:-$(nproc)}"
all_targets=(fuzz_service_requests fuzz_event_socket fuzz_match_data fuzz_level_file fuzz_context_number
             fuzz_user_defaults fuzz_service_replies)
read -r -a targets <<<"${TARVOLIN_FUZZ_TARGETS:-${all_targets[*]}}"

launcher=()
if command -v ccache >/dev/null; then launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache); fi

started=$(date +%s)
echo "== configure and build the fuzz targets ($build)"
CC=clang CXX=clang++ cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Fuzz \
  -DCMAKE_CXX_FLAGS_FUZZ="-O1 -gline-tables-only" -DTARVOLIN_FUZZ=ON -DTARVOLIN_WERROR=ON \
  -DTARVOLIN_BUILD_CONTENT=OFF -DTARVOLIN_BUILD_TESTS=OFF -DTARVOLIN_BUILD_BENCH=OFF "${launcher[@]}" >/dev/null
cmake --build "$build" -j "$jobs" --target "${targets[@]}"
built=$(date +%s)

scratch="$(mktemp -d "${TMPDIR:-/tmp}/tarvolin-fuzz.XXXXXX")"
export QT_QPA_PLATFORM=offscreen
export ASAN_OPTIONS="detect_leaks=1:abort_on_error=1:${ASAN_OPTIONS:-}"
export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1:${UBSAN_OPTIONS:-}"
export LSAN_OPTIONS="suppressions=$root/fuzz/lsan.supp:print_suppressions=0:${LSAN_OPTIONS:-}"

total=0
failed=()
for t in "${targets[@]}"; do
  corpus="$scratch/$t/corpus"
  mkdir -p "$corpus" "$scratch/$t/findings"
  if [ -d "$root/fuzz/corpus/$t" ]; then cp -r "$root/fuzz/corpus/$t/." "$corpus/"; fi
  dict=()
  if [ -f "$root/fuzz/dict/$t.dict" ]; then dict=("-dict=$root/fuzz/dict/$t.dict"); fi
  echo "== $t (${seconds}s)"
  set +e
  (cd "$scratch/$t" && "$build/bin/$t" "$corpus" "${dict[@]}" -max_total_time="$seconds" -timeout=10 \
     -rss_limit_mb=2048 -print_final_stats=1 -artifact_prefix="$scratch/$t/findings/" >"$scratch/$t/log" 2>&1)
  rc=$?
  set -e
  execs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$scratch/$t/log" | tail -1)
  execs=${execs:-0}
  total=$((total + execs))
  if [ "$rc" -ne 0 ] || [ -n "$(ls -A "$scratch/$t/findings")" ]; then
    failed+=("$t")
    echo "$t: FINDING (exit $rc) after $execs executions; the log:"
    tail -n 60 "$scratch/$t/log"
    echo "the input: $(ls "$scratch/$t/findings/"* 2>/dev/null | head -1)"
  else
    echo "$t: $execs executions, no finding"
  fi
done
finished=$(date +%s)

echo "== executions in all: $total; building took $((built - started)) s, fuzzing $((finished - built)) s"
if [ "${#failed[@]}" -gt 0 ]; then
  echo "findings in: ${failed[*]} (inputs and logs in $scratch)" >&2
  exit 1
fi
rm -rf "$scratch"
