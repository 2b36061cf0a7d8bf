#!/usr/bin/env bash
# Installs the build into a temporary prefix and runs what was installed, away from the source and build
# folders: the game headless to its first screens, the service to its health check, the content tool on the
# shipped level file. Usage: installed_test.sh BUILD_DIR LEVEL_FILE CONFIGURED_PREFIX
set -euo pipefail
build="$1"
levels="$2"
configured_prefix="$3"
work="$(mktemp -d /tmp/tarvolin-installed.XXXXXX)"
service_pid=""
cleanup() {
  [ -n "$service_pid" ] && kill "$service_pid" 2>/dev/null && wait "$service_pid" 2>/dev/null
  rm -rf "$work"
}
trap cleanup EXIT
fail() { echo "FAIL: $*" >&2; exit 1; }

prefix="$work/prefix"
cmake --install "$build" --prefix "$prefix" >"$work/install.log" || { cat "$work/install.log"; fail "cmake --install"; }

# The layout a player's and an operator's system expect.
for f in bin/tarvolin bin/tarvolin-service bin/tarvolin-levels \
         share/tarvolin/tarvolin-pictures.rcc \
         share/tarvolin/fonts/NotoKufiArabic-Regular.ttf share/tarvolin/fonts/NotoKufiArabic-Bold.ttf \
         share/doc/tarvolin/copyright share/doc/tarvolin/changelog.Debian.gz \
         share/doc/tarvolin/LICENSE-noto-kufi-arabic.txt share/doc/tarvolin/LICENSE-twemoji.txt \
         share/doc/tarvolin-service/copyright share/doc/tarvolin-service/examples/postgresql.conf \
         lib/systemd/system/tarvolin-service.service lib/sysusers.d/tarvolin-service.conf; do
  [ -s "$prefix/$f" ] || fail "$f was not installed"
done
for f in bin/tarvolin bin/tarvolin-service bin/tarvolin-levels; do
  [ -x "$prefix/$f" ] || fail "$f is not executable"
done
grep -qx "ExecStart=$configured_prefix/bin/tarvolin-service" \
  "$prefix/lib/systemd/system/tarvolin-service.service" || fail "the unit does not start the installed service"

# Nothing may be found through the build folder: the game looks beside its own executable.
unset TARVOLIN_DATA_DIR TARVOLIN_PICTURES
export XDG_DATA_DIRS="$work/nothing" XDG_DATA_HOME="$work/nothing" XDG_RUNTIME_DIR="$work/runtime"
mkdir -p "$XDG_RUNTIME_DIR" && chmod 700 "$XDG_RUNTIME_DIR"
cd "$work"

# --help and --version need no display.
env -u DISPLAY -u WAYLAND_DISPLAY -u QT_QPA_PLATFORM "$prefix/bin/tarvolin" --help >"$work/help.txt" \
  || fail "tarvolin --help without a display"
grep -q -- "--screenshot" "$work/help.txt" || fail "tarvolin --help printed no options"
env -u DISPLAY -u WAYLAND_DISPLAY -u QT_QPA_PLATFORM "$prefix/bin/tarvolin" --version | grep -q "^tarvolin [0-9]" \
  || fail "tarvolin --version without a display"

# The game, headless, to its first screen and to a level with its pictures.
mkdir -p "$work/data/profiles/default"
printf '[General]\nATTrackingAuthorizationStatus=3\n' >"$work/data/profiles/default/settings.ini"
png_size() { od -An -tu1 -j16 -N8 "$1" | awk '{ printf "%dx%d", $1*16777216+$2*65536+$3*256+$4, $5*16777216+$6*65536+$7*256+$8 }'; }
for screen in main play; do
  open=()
  [ "$screen" = main ] || open=(--open "$screen")
  if ! env -u DISPLAY -u WAYLAND_DISPLAY QT_QPA_PLATFORM=offscreen timeout 120 "$prefix/bin/tarvolin" \
      --data-dir "$work/data" --offline "${open[@]}" --screenshot "$work/$screen.png" --screenshot-after 1 \
      >"$work/$screen.out" 2>"$work/$screen.err"; then
    cat "$work/$screen.err" >&2
    fail "the installed game did not reach its $screen screen"
  fi
  [ "$(head -c 8 "$work/$screen.png" | od -An -tx1 | tr -d ' ')" = "89504e470d0a1a0a" ] || fail "$screen.png is not a PNG"
  [ "$(png_size "$work/$screen.png")" != "0x0" ] || fail "$screen.png is empty"
  if grep -E "could not be loaded|were not found|qrc:.*(Error|error|is not a type)|QQmlApplicationEngine failed" "$work/$screen.err"; then
    fail "the installed game missed some of its data on the $screen screen"
  fi
  echo "[ installed game: $screen screen $(png_size "$work/$screen.png"), $(stat -c %s "$work/$screen.png") bytes ]"
done

# The service, from its installed binary, to its health check. Its log exists before it starts: the
# background start opens the file only once it runs, and the wait below reads the file at once.
: >"$work/service.log"
"$prefix/bin/tarvolin-service" --address 127.0.0.1 --port 0 --database "$work/service.db" 2>"$work/service.log" &
service_pid=$!
port=""
for _ in $(seq 300); do
  port="$(sed -n 's/.*"msg":"listening".*"port":\([0-9]*\).*/\1/p' "$work/service.log" | head -1)"
  [ -n "$port" ] && break
  kill -0 "$service_pid" 2>/dev/null || { cat "$work/service.log" >&2; fail "the installed service stopped"; }
  sleep 0.1
done
[ -n "$port" ] || { cat "$work/service.log" >&2; fail "the installed service never listened"; }
health="$(curl -fsS "http://127.0.0.1:$port/healthz")" || fail "the installed service's health check"
echo "[ installed service: /healthz on port $port answered $health ]"
kill "$service_pid"
wait "$service_pid" || { tail -40 "$work/service.log" >&2; fail "the installed service did not stop cleanly on SIGTERM"; }
service_pid=""

# The content tool checks the shipped level file.
"$prefix/bin/tarvolin-levels" check "$levels" >"$work/levels.out" || { tail "$work/levels.out" >&2; fail "tarvolin-levels check"; }
echo "[ installed tarvolin-levels: $(tail -1 "$work/levels.out") ]"
echo "installed test passed"
