#!/usr/bin/env bash
# Installs what the game needs, builds it, starts a local tarvolin-service on the embedded database (unless one
# is already answering) and starts the game. Extra arguments go to the game (try --help).
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
build="${TARVOLIN_BUILD_DIR:-$root/build}"

bash "$root/scripts/install-deps.sh"
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTARVOLIN_BUILD_BENCH=OFF
cmake --build "$build" -j "$(nproc)" --target tarvolin tarvolin-service

# A local service on this machine only, with its SQLite file in the user's data folder.
port="${TARVOLIN_PORT:-8470}"
service_pid=""
if ! curl -fsS "http://127.0.0.1:$port/healthz" >/dev/null 2>&1; then
  data="${XDG_DATA_HOME:-$HOME/.local/share}/tarvolin-service"
  mkdir -p "$data"
  "$build/bin/tarvolin-service" --address 127.0.0.1 --port "$port" --database "$data/tarvolin.db" \
    >>"$data/service.log" 2>&1 &
  service_pid=$!
  trap '[ -n "$service_pid" ] && kill "$service_pid" 2>/dev/null || true' EXIT
  for _ in $(seq 50); do
    curl -fsS "http://127.0.0.1:$port/healthz" >/dev/null 2>&1 && break
    sleep 0.1
  done
  echo "tarvolin-service is running on port $port (log: $data/service.log)"
fi

"$build/bin/tarvolin" --service "http://127.0.0.1:$port" "$@"
