#!/usr/bin/env bash
# The leaderboard against Redis, measured side by side in one run on this machine.
#   bash bench/leaderboard-vs-redis.sh [--players N] [--seconds S] [--database postgresql://…] [--threads N]
#                                      [--only rank|range|durable]
# Starts two throwaway redis-server processes on loopback, each in a folder of its own that is removed after:
# one without persistence (rank look-ups and range loads) and one with appendfsync always (durable score
# reports), in the same file system as the service's SQLite file. Then builds and runs
# tarvolin_leaderboard_vs_redis_bench, which fills both sides with the same players and prints, for each
# measure, the service's figure, Redis's and the ratio against the goal. Exits 1 when a goal is not met.
# A quick look: --players 100000 --seconds 1. Not part of ctest.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
build="${TARVOLIN_BUILD_DIR:-$root/build}"

for tool in redis-server redis-cli; do
  command -v "$tool" >/dev/null || {
    echo "leaderboard-vs-redis.sh: $tool is missing; it comes with Debian's packages redis-server and" \
      "redis-tools (apt-get install redis-server)" >&2
    exit 2
  }
done

if [ ! -f "$build/CMakeCache.txt" ]; then
  cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTARVOLIN_BUILD_BENCH=ON >/dev/null
fi
cmake --build "$build" --target tarvolin_leaderboard_vs_redis_bench tarvolin-service >/dev/null

work="$(mktemp -d "${TMPDIR:-/tmp}/tarvolin-redis-bench.XXXXXX")"
pids=()
cleanup() {
  for pid in "${pids[@]}"; do kill "$pid" 2>/dev/null || true; done
  for pid in "${pids[@]}"; do wait "$pid" 2>/dev/null || true; done
  rm -rf "$work"
}
trap cleanup EXIT

# Starts a redis-server with the given options on a free loopback port; prints the port.
start_redis() {
  local name="$1" port
  shift
  mkdir -p "$work/$name"
  for _ in $(seq 20); do
    port=$((20000 + RANDOM % 30000))
    redis-server --bind 127.0.0.1 --port "$port" --dir "$work/$name" --daemonize no --save '' \
      --logfile "$work/$name/redis.log" "$@" >/dev/null 2>&1 &
    local pid=$!
    for _ in $(seq 50); do
      if redis-cli -p "$port" ping 2>/dev/null | grep -q PONG; then
        pids+=("$pid")
        echo "$port"
        return 0
      fi
      kill -0 "$pid" 2>/dev/null || break
      sleep 0.1
    done
    kill "$pid" 2>/dev/null || true
    wait "$pid" 2>/dev/null || true
  done
  echo "leaderboard-vs-redis.sh: redis-server did not start; see $work/$name/redis.log" >&2
  return 1
}

# The port comes back through a file: a command substitution would run start_redis in a subshell, whose
# pids+=() the cleanup would never see.
start_redis rank --appendonly no >"$work/rank.port"
rank_port="$(cat "$work/rank.port")"
start_redis durable --appendonly yes --appendfsync always >"$work/durable.port"
durable_port="$(cat "$work/durable.port")"
echo "$(redis-server --version | cut -d' ' -f1-3) on ports $rank_port (no persistence) and $durable_port" \
  "(appendfsync always)"

TMPDIR="$work" "$build/bin/tarvolin_leaderboard_vs_redis_bench" \
  --redis-rank "$rank_port" --redis-durable "$durable_port" "$@"
