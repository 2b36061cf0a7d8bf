#!/usr/bin/env bash
# Runs atspi_tree.py on a session bus and an X display of its own, so that the game's accessibility tree is
# read exactly as a screen reader on a desktop reads it, and nothing of the caller's desktop is touched.
#   run-atspi-test.sh GAME [atspi_tree.py options]
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
# Debian's own Python: the AT-SPI bindings are Debian packages, which another Python on the PATH lacks.
py=/usr/bin/python3
[ -x "$py" ] || py=python3
for tool in dbus-run-session Xvfb "$py"; do
  command -v "$tool" >/dev/null || { echo "run-atspi-test.sh: $tool is missing (scripts/install-deps.sh)" >&2; exit 2; }
done
"$py" -c 'import gi; gi.require_version("Atspi", "2.0")' 2>/dev/null ||
  { echo "run-atspi-test.sh: gir1.2-atspi-2.0 and python3-gi are missing (scripts/install-deps.sh)" >&2; exit 2; }

# A display of its own, at the first number from 100 on that no other server holds.
work="$(mktemp -d)"
xvfb=""
trap '[ -z "$xvfb" ] || { kill "$xvfb" 2>/dev/null; wait "$xvfb" 2>/dev/null; }; rm -rf "$work"' EXIT
for n in $(seq 100 199); do
  [ -e "/tmp/.X$n-lock" ] || [ -e "/tmp/.X11-unix/X$n" ] && continue
  # -displayfd: the number is written once the server takes clients, not merely once its socket exists;
  # -noreset: the accessibility bus launcher leaving would otherwise reset the server under the game.
  Xvfb ":$n" -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp -noreset 3>"$work/ready" 2>"$work/xvfb.log" &
  xvfb=$!
  for _ in $(seq 100); do
    [ -s "$work/ready" ] && break
    kill -0 "$xvfb" 2>/dev/null || break
    sleep 0.1
  done
  if kill -0 "$xvfb" 2>/dev/null && [ -s "$work/ready" ]; then
    export DISPLAY=":$n"
    break
  fi
  wait "$xvfb" 2>/dev/null || true
  xvfb=""
done
[ -n "$xvfb" ] || { echo "run-atspi-test.sh: Xvfb did not start:" >&2; cat "$work/xvfb.log" >&2; exit 2; }

# The accessibility bus and its registry are started by the session bus on the first request.
status=0
dbus-run-session -- "$py" "$here/atspi_tree.py" "$@" || status=$?
exit "$status"
