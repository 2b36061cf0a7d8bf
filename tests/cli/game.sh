#!/usr/bin/env bash
# tarvolin's command line without a display: help, version, Qt's own options, every wrong option and value,
# the message when there is no display, and the manual page against --help.
# Usage: game.sh PROGRAM VERSION MANPAGE
# shellcheck source=tests/cli/common.sh disable=SC2034
source "$(dirname "$0")/common.sh"
program="$1" version="$2" page="$3" name=tarvolin

for args in "--help" "-h" "--help-all" "-platform offscreen --help"; do
  # shellcheck disable=SC2086
  expect_help $args
done
for args in "--version" "-v" "-platform offscreen --version" "--platform offscreen --version" \
  "-platform offscreen -reverse -style fusion -qmljsdebugger=port:3768 --version" \
  "-style=fusion -qwindowgeometry 400x700+0+0 -qwindowtitle T -session s1 --version"; do
  # shellcheck disable=SC2086
  expect_version $args
done

mkdir -p "$scratch/readonly" && chmod 555 "$scratch/readonly"
touch "$scratch/file"
expect_usage_errors <<EOT
# What is not an option of the game or of Qt.
unknown option --bogus | --bogus
unknown option -x | -x
unknown option --profiles | --profiles=a
unexpected argument "level7" | level7
unexpected argument "a" | --offline a
--offline | --offline=yes
# Qt's options need their values.
-platform needs a value | -platform
-qwindowgeometry needs a value | --offline -qwindowgeometry
-reverse takes no value | -reverse=1
-platform takes its value as the next argument | -platform=offscreen --version
# Each option of the game with what it does not take.
--profile | --profile
--profile | --profile ''
--profile | --profile 'two words'
--profile | --profile ../escape
--profile | --profile $(printf 'n%.0s' {1..65})
--screenshot | --screenshot ''
--screenshot | --screenshot "$scratch/missing/shot.png"
--screenshot | --screenshot "$scratch"
--screenshot | --screenshot "$scratch/shot.unknown"
--screenshot | --screenshot "$scratch/shot"
--screenshot-after | --screenshot-after
--screenshot-after | --screenshot-after soon
--screenshot-after | --screenshot-after -1
--screenshot-after | --screenshot-after 120.5
--screenshot-after | --screenshot-after nan
--screenshot-after | --screenshot-after inf
--service | --service 127.0.0.1:8470
--service | --service ftp://example.org
--service | --service http://
--service | --service 'http://exa mple.org'
--service | --service http://example.org:99999
--device | --device
--device | --device watch
--device | --device ''
--data-dir | --data-dir ''
--data-dir | --data-dir "$scratch/file"
--data-dir | --data-dir "$scratch/file/below"
--open | --open
--open | --open nowhere
--open | --open ''
--open | --open PLAY
EOT
# A folder without write permission stops nobody but root.
if [ "$(id -u)" -ne 0 ]; then
  expect_usage_errors <<<"--screenshot | --screenshot \"$scratch/readonly/shot.png\""
fi

# No display: a clear message and status 1, not Qt's abort.
for args in "" "--offline" "-platform xcb" "--profile anna"; do
  # shellcheck disable=SC2086
  run $args
  [ "$status" -eq 1 ] || fail "[$args] without a display exited $status, not 1: ${err:0:300}"
  [[ "$err" == "tarvolin: no display: set DISPLAY or WAYLAND_DISPLAY"* ]] ||
    fail "[$args] without a display said: ${err:0:300}"
  [ "$(wc -l <<<"$err")" -eq 1 ] || fail "[$args] without a display said more than one line: $err"
done
run_env=(QT_QPA_PLATFORM=xcb)
run --offline
[ "$status" -eq 1 ] && [[ "$err" == *"no display"* ]] || fail "QT_QPA_PLATFORM=xcb without DISPLAY exited $status: $err"
run_env=()

# Qt's options reach Qt: the game draws its first screen off screen, chosen by -platform alone.
run -platform offscreen -reverse --data-dir "$scratch/profiles" --offline --screenshot "$scratch/first.png"
[ "$status" -eq 0 ] || fail "a screenshot with -platform offscreen exited $status: ${err:0:500}"
[ -s "$scratch/first.png" ] || fail "a screenshot with -platform offscreen wrote no picture"
[ -d "$scratch/profiles/profiles/default" ] || fail "--data-dir was not used for the profile"

run --help
expect_man_page "$page" "$out"
finish
