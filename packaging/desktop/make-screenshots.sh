#!/usr/bin/env bash
# Takes the store screenshots of the game with its own --screenshot, against a local tarvolin-service on a
# throw-away SQLite file and a throw-away profile, and writes them to packaging/desktop/screenshots/.
# Usage: make-screenshots.sh BUILD_DIR [SCREEN...]   (BUILD_DIR holds bin/tarvolin and bin/tarvolin-service)
# A developer's tool: the build does not run it. After a run, check the pictures and the sizes that
# app.tarvolin.Tarvolin.metainfo.xml declares for them.
set -euo pipefail

if [ $# -lt 1 ]; then
  echo "usage: $0 BUILD_DIR [SCREEN...]" >&2
  exit 2
fi
build="$(cd "$1" && pwd)"
shift
here="$(cd "$(dirname "$0")" && pwd)"
out="$here/screenshots"
for program in tarvolin tarvolin-service; do
  if [ ! -x "$build/bin/$program" ]; then
    echo "$build/bin/$program is missing: build the targets tarvolin and tarvolin-service first" >&2
    exit 1
  fi
done
command -v curl >/dev/null || { echo "curl is needed to wait for the service" >&2; exit 1; }

# NAME DEVICE SCREEN SECONDS: the file name, the layout, the screen to open and how long to let it settle.
shots=(
  "play tablet play 1.5"
  "rounds tablet rounds 1.5"
  "main tablet - 1.5"
  "leaderboard tablet leaderboard 2.5"
  "rank tablet rank 1.5"
)

work="$(mktemp -d)"
service_pid=""
cleanup() {
  if [ -n "$service_pid" ]; then
    kill "$service_pid" 2>/dev/null || true
    wait "$service_pid" 2>/dev/null || true
  fi
  rm -rf "$work"
}
trap cleanup EXIT

# The service picks a free port on this machine and names it in its first log line.
"$build/bin/tarvolin-service" --address 127.0.0.1 --port 0 --database "$work/service.db" \
  --signups-per-hour 0 --log-level info >"$work/service.log" 2>&1 &
service_pid=$!
port=""
for _ in $(seq 100); do
  port="$(sed -n 's/.*"msg":"listening".*"port":\([0-9]*\).*/\1/p' "$work/service.log" | head -n1)"
  [ -n "$port" ] && curl -fsS "http://127.0.0.1:$port/healthz" >/dev/null 2>&1 && break
  sleep 0.1
done
url="http://127.0.0.1:$port"
if [ -z "$port" ] || ! curl -fsS "$url/healthz" >/dev/null 2>&1; then
  echo "tarvolin-service did not start:" >&2
  cat "$work/service.log" >&2
  exit 1
fi

# call METHOD PATH TOKEN [BODY]: one request to the service; prints the answer, fails on an HTTP error.
call() {
  local args=(-fsS -X "$1" -H 'Content-Type: application/json')
  [ -n "$3" ] && args+=(-H "Authorization: Bearer $3")
  [ $# -ge 4 ] && args+=(--data-binary "$4")
  curl "${args[@]}" "$url$2"
}
# account NAME SCORE: creates a player, reports his score and prints his token.
account() {
  local answer token
  answer="$(call POST /v1/accounts "" "{\"displayName\": \"$1\", \"password\": \"screenshots-only\"}")"
  token="$(sed -n 's/.*"token":"\([0-9a-f]*\)".*/\1/p' <<<"$answer")"
  [ -n "$token" ] || { echo "no token for $1: $answer" >&2; exit 1; }
  call POST /v1/leaderboard/scores "$token" "{\"value\": $2}" >/dev/null
  printf '%s' "$token"
}

# Other players, so that the leaderboard has people in it.
for entry in "سارة:9120" "ليلى:6200" "Omar:5480" "نور:4310" "خالد:2950" "Mariam:2200" "يوسف:1730" \
  "هدى:980"; do
  account "${entry%%:*}" "${entry##*:}" >/dev/null
done
account "ريم" 8400 >/dev/null
me="$(account "أحمد" 7350)"

mkdir -p "$out"
for shot in "${shots[@]}"; do
  read -r name device screen seconds <<<"$shot"
  if [ $# -gt 0 ] && [[ " $* " != *" $name "* ]]; then
    continue
  fi
  # Each picture gets a fresh profile.
  data="$work/data-$name"
  mkdir -p "$data/profiles/default"
  # It has answered the tracking prompt, is past the first level (and its help), has the points it reported
  # and logs in as the player.
  printf '[General]\nATTrackingAuthorizationStatus=3\ncurrentLevel=3\ntotalPoints=7350\nlastAuthSavedStatusKey=AUTO\n' \
    >"$data/profiles/default/settings.ini"
  printf 'gameServiceToken=%s\n' "$me" >>"$data/profiles/default/settings.ini"
  args=(--data-dir "$data" --service "$url" --device "$device" --screenshot-after "$seconds"
    --screenshot "$out/$name.png")
  if [ "$screen" != "-" ]; then
    args+=(--open "$screen")
  fi
  QT_QPA_PLATFORM=offscreen "$build/bin/tarvolin" "${args[@]}" >"$work/$name.log" 2>&1 || {
    echo "the game failed on $name:" >&2
    cat "$work/$name.log" >&2
    exit 1
  }
  size="$(od -An -tu1 -j16 -N8 "$out/$name.png" | awk '{print $1*16777216+$2*65536+$3*256+$4 "x" $5*16777216+$6*65536+$7*256+$8}')"
  echo "$out/$name.png: $size"
done
