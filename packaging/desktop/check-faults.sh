#!/usr/bin/env bash
# Shows that check.sh catches what it is there for: each case breaks one thing in a copy of the desktop files
# and expects the check to fail with a message that names the fault; the untouched copy must pass.
#   check-faults.sh DIR [DESKTOP_FILE_VALIDATE] [APPSTREAMCLI] [BUILD_DIR CMAKE]
# The validators' cases run when the validators are given (check.sh's own tests decide whether they must be);
# the install rules' cases when this folder's build folder and cmake are given.
set -uo pipefail

dir="$(cd "${1:?usage: $0 DIR [DESKTOP_FILE_VALIDATE] [APPSTREAMCLI]}" && pwd)"
desktop_validator="${2:-}"
appstream_validator="${3:-}"
build_dir="${4:-}"
cmake="${5:-}"
here="$(cd "$(dirname "$0")" && pwd)"
id="app.tarvolin.Tarvolin"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
passed=0
failed=0

usable() { [ -n "$1" ] && [[ "$1" != *-NOTFOUND ]] && [ -x "$1" ]; }

# expect NAME MODE VALIDATOR PATTERN SCRIPT: runs SCRIPT in a fresh copy, then check.sh MODE on it, which must
# fail with PATTERN in its output (an empty PATTERN: must pass).
expect() {
  local name="$1" mode="$2" validator="$3" pattern="$4" script="$5" copy output status
  copy="$work/$name"
  cp -r "$dir" "$copy"
  (cd "$copy" && eval "$script") || {
    echo "FAIL $name: could not break the copy"
    failed=$((failed + 1))
    return
  }
  output="$(bash "$here/check.sh" "$mode" "$copy" "$validator" 2>&1)"
  status=$?
  if [ -z "$pattern" ]; then
    if [ "$status" -eq 0 ]; then
      passed=$((passed + 1))
    else
      echo "FAIL $name: the untouched files do not pass:"
      echo "$output"
      failed=$((failed + 1))
    fi
  elif [ "$status" -ne 0 ] && grep -Eq "$pattern" <<<"$output"; then
    passed=$((passed + 1))
  else
    echo "FAIL $name: expected a failure matching \"$pattern\", got exit $status:"
    echo "$output"
    failed=$((failed + 1))
  fi
  rm -rf "$copy"
}

meta="$id.metainfo.xml"
expect untouched assets "" "" ":"
expect wrong-declared-size assets "" "declares 800x1024" \
  "sed -i '0,/width=\"768\"/s//width=\"800\"/' $meta"
expect missing-screenshot assets "" "screenshots/main.png.*missing" "rm screenshots/main.png"
expect screenshot-not-png assets "" "screenshots/rank.png.*no PNG" "printf 'not a picture' >screenshots/rank.png"
expect truncated-screenshot assets "" "screenshots/play.png.*no PNG" "head -c 20 screenshots/play.png >t && mv t screenshots/play.png"
expect screenshot-elsewhere assets "" "not https://tarvolin.app/screenshots/NAME.png" \
  "sed -i 's|https://tarvolin.app/screenshots/rounds.png|https://example.org/rounds.png|' $meta"
expect stray-screenshot assets "" "stray.png is not in the metainfo" "cp screenshots/play.png screenshots/stray.png"
expect too-few-screenshots assets "" "3 screenshots, not 4 to 6" \
  "awk '/<screenshot[ >]/ { n++ } n > 3 { skip = 1 } !skip { print } /<\\/screenshot>/ { skip = 0 }' $meta >t && mv t $meta"
expect missing-arabic-caption assets "" "1 English and 0 Arabic captions" \
  "sed -i '0,/<caption xml:lang=\"ar\">/{/<caption xml:lang=\"ar\">/d}' $meta"
expect icon-of-wrong-size assets "" "48x48/apps/$id.png is 32x32, not 48x48" \
  "cp icons/hicolor/32x32/apps/$id.png icons/hicolor/48x48/apps/$id.png"
expect missing-icon-size assets "" "22x22/apps/$id.png is missing" "rm icons/hicolor/22x22/apps/$id.png"
expect icon-misnamed assets "" "tarvolin.png is not named $id.png" \
  "mv icons/hicolor/64x64/apps/$id.png icons/hicolor/64x64/apps/tarvolin.png"
expect entry-names-other-icon assets "" "Icon \"tarvolin\" is not the id" "sed -i 's/^Icon=.*/Icon=tarvolin/' $id.desktop"
expect launchable-elsewhere assets "" "launchable \"tarvolin.desktop\"" \
  "sed -i 's|>$id.desktop</launchable>|>tarvolin.desktop</launchable>|' $meta"
expect other-binary assets "" "provides \"tarvolin-game\"" "sed -i 's|<binary>tarvolin</binary>|<binary>tarvolin-game</binary>|' $meta"
expect icon-with-text assets "" "uses text, fonts" \
  "sed -i 's|</svg>|<text x=\"10\" y=\"10\">T</text></svg>|' icons/$id.svg"
expect icon-with-outside-picture assets "" "uses text, fonts" \
  "sed -i 's|</svg>|<image href=\"https://tarvolin.app/a.png\"/></svg>|' icons/$id.svg"

if usable "$desktop_validator"; then
  expect entry-untouched desktop-entry "$desktop_validator" "" ":"
  expect entry-unknown-key desktop-entry "$desktop_validator" "SingleMainWindow" \
    "printf 'SingleMainWindow=true\n' >>$id.desktop"
  expect entry-unknown-category desktop-entry "$desktop_validator" "WordGames" \
    "sed -i 's/^Categories=.*/Categories=Game;WordGames;/' $id.desktop"
else
  echo "desktop-file-validate is not given: its cases are left out"
fi
if usable "$appstream_validator"; then
  expect metainfo-untouched metainfo "$appstream_validator" "" ":"
  expect metainfo-no-summary metainfo "$appstream_validator" "summary" "sed -i '/<summary>/d' $meta"
  expect metainfo-bad-release-date metainfo "$appstream_validator" "release-time-invalid|date" \
    "sed -i 's|date=\"2026-11-24\"|date=\"2026-24-11\"|' $meta"
  expect metainfo-warning-only metainfo "$appstream_validator" "FAIL: appstreamcli: W:.*url-redefined" \
    "sed -i 's|<url type=\"homepage\">https://tarvolin.app</url>|<url type=\"homepage\">https://tarvolin.app</url><url type=\"homepage\">https://tarvolin.app/en</url>|' $meta"
else
  echo "appstreamcli is not given: its cases are left out"
fi

# broken_install NAME PATTERN SED: the install rules with SED applied to them must fail the "installed" check.
broken_install() {
  local rules="$work/install-$1" output status
  mkdir -p "$rules"
  sed "$3" "$build_dir/cmake_install.cmake" >"$rules/cmake_install.cmake"
  output="$(bash "$here/check.sh" installed "$rules" "$appstream_validator" "$cmake" 2>&1)"
  status=$?
  if [ "$status" -ne 0 ] && grep -Eq "$2" <<<"$output"; then
    passed=$((passed + 1))
  else
    echo "FAIL install-$1: expected a failure matching \"$2\", got exit $status:"
    echo "$output"
    failed=$((failed + 1))
  fi
}
if usable "$appstream_validator" && [ -n "$build_dir" ] && [ -f "$build_dir/cmake_install.cmake" ] && [ -n "$cmake" ]; then
  broken_install without-metainfo "installed files differ" '/share\/metainfo/d'
  broken_install without-entry "desktop-file-not-found" '/share\/applications/d'
  broken_install icon-in-wrong-folder "installed files differ" 's|hicolor/48x48/apps|hicolor/64x64/apps|'
else
  echo "the build folder, cmake or appstreamcli is not given: the install rules' cases are left out"
fi

echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ]
