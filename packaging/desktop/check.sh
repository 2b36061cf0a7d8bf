#!/usr/bin/env bash
# Checks the files that put the game into a desktop's menu and software centre (ctest runs it).
#   check.sh desktop-entry DIR VALIDATOR   desktop-file-validate finds no error, warning or hint
#   check.sh metainfo DIR VALIDATOR        appstreamcli finds no error, warning or info, and no pedantic hint
#                                          besides the ones listed in allowed_hints
#   check.sh assets DIR                    screenshots, icons and names agree with the metainfo and the entry
#   check.sh installed DIR VALIDATOR CMAKE  DIR is this folder's build folder: its install rules for the
#                                          component "tarvolin" put every file where a desktop looks for it,
#                                          and appstreamcli validate-tree accepts the result
# DIR holds app.tarvolin.Tarvolin.* as in packaging/desktop (but for "installed"). A VALIDATOR that is empty or *-NOTFOUND fails the
# check under CI=true and skips it (exit 77) elsewhere. Only bash and coreutils are needed.
set -uo pipefail

mode="${1:-}"
dir="${2:-}"
validator="${3:-}"
failures=0
fail() {
  echo "FAIL: $*" >&2
  failures=$((failures + 1))
}
# The pedantic hints that this component cannot meet: its identifier is fixed with its capital letter, since
# it names the desktop entry, the icons and the Wayland app id.
allowed_hints=(cid-contains-uppercase-letter)

if [ -z "$mode" ] || [ -z "$dir" ] || [ ! -d "$dir" ]; then
  echo "usage: $0 desktop-entry|metainfo|assets|installed DIR [VALIDATOR] [CMAKE]" >&2
  exit 2
fi

need_validator() {
  if [ -z "$validator" ] || [[ "$validator" == *-NOTFOUND ]] || [ ! -x "$validator" ]; then
    if [ "${CI:-}" = "true" ]; then
      echo "FAIL: $1 is not installed (scripts/install-deps.sh installs it)" >&2
      exit 1
    fi
    echo "SKIP: $1 is not installed" >&2
    exit 77
  fi
}

# The value of KEY in the [Desktop Entry] group of a .desktop file.
desktop_key() {
  sed -n '/^\[Desktop Entry\]/,/^\[/{s/^'"$2"'=//p}' "$1" | head -n1
}

# png_size FILE prints WIDTHxHEIGHT from the PNG header, or fails when FILE is no PNG.
png_size() {
  local signature chunk
  [ -f "$1" ] || return 1
  signature="$(od -An -tx1 -N8 "$1" | tr -d ' \n')"
  chunk="$(od -An -tx1 -j12 -N4 "$1" | tr -d ' \n')"
  [ "$signature" = "89504e470d0a1a0a" ] && [ "$chunk" = "49484452" ] || return 1
  local b
  read -r -a b < <(od -An -tu1 -j16 -N8 "$1")
  [ "${#b[@]}" -eq 8 ] || return 1
  echo "$((b[0] << 24 | b[1] << 16 | b[2] << 8 | b[3]))x$((b[4] << 24 | b[5] << 16 | b[6] << 8 | b[7]))"
}

check_desktop_entry() {
  need_validator desktop-file-validate
  local file="$dir/app.tarvolin.Tarvolin.desktop" output status
  [ -f "$file" ] || { fail "$file is missing"; return; }
  output="$("$validator" "$file" 2>&1)"
  status=$?
  [ -n "$output" ] && echo "$output"
  [ "$status" -eq 0 ] || fail "desktop-file-validate exited with $status"
  [ -z "$output" ] || fail "desktop-file-validate reported the lines above"
}

check_metainfo() {
  need_validator appstreamcli
  local file="$dir/app.tarvolin.Tarvolin.metainfo.xml" output status
  [ -f "$file" ] || { fail "$file is missing"; return; }
  output="$("$validator" validate --no-net --pedantic --no-color "$file" 2>&1)"
  status=$?
  echo "$output"
  [ "$status" -eq 0 ] || fail "appstreamcli validate exited with $status"
  judge_appstream_output "$output"
}

check_assets() {
  local metainfo="$dir/app.tarvolin.Tarvolin.metainfo.xml"
  [ -f "$metainfo" ] || { fail "$metainfo is missing"; return; }
  local id launchable entry icon exec binary
  id="$(sed -n 's|.*<id>\(.*\)</id>.*|\1|p' "$metainfo" | head -n1)"
  launchable="$(sed -n 's|.*<launchable type="desktop-id">\(.*\)</launchable>.*|\1|p' "$metainfo" | head -n1)"
  binary="$(sed -n 's|.*<binary>\(.*\)</binary>.*|\1|p' "$metainfo" | head -n1)"

  # Names: the metainfo's id, its launchable, the entry's file name and Icon, and the icon files all agree.
  [ "$(basename "$metainfo")" = "$id.metainfo.xml" ] || fail "the metainfo file is not named after its id \"$id\""
  [ "$launchable" = "$id.desktop" ] || fail "the launchable \"$launchable\" is not \"$id.desktop\""
  entry="$dir/$launchable"
  if [ ! -f "$entry" ]; then
    fail "the launchable's desktop entry $entry is missing"
  else
    icon="$(desktop_key "$entry" Icon)"
    exec="$(desktop_key "$entry" Exec)"
    [ "$icon" = "$id" ] || fail "the desktop entry's Icon \"$icon\" is not the id \"$id\""
    [ "${exec%% *}" = "$binary" ] || fail "the desktop entry runs \"${exec%% *}\" but the metainfo provides \"$binary\""
  fi

  # The scalable icon draws alike everywhere: no text, fonts, embedded pictures or outside references.
  local svg="$dir/icons/$id.svg"
  if [ ! -f "$svg" ]; then
    fail "the scalable icon $svg is missing"
  else
    grep -Eq '<svg[^>]*viewBox="0 0 ([0-9]+) \1"' "$svg" || fail "$svg has no square viewBox"
    if grep -Eiq '<text|<tspan|font-family|@font-face|<image|href="(https?:|file:|/|\.)' "$svg"; then
      fail "$svg uses text, fonts, embedded pictures or outside references"
    fi
  fi

  # Every size a desktop asks for, in a folder of its size, named after the id.
  local size actual png
  for size in 16 22 24 32 48 64 128 256 512; do
    png="$dir/icons/hicolor/${size}x${size}/apps/$id.png"
    if ! actual="$(png_size "$png")"; then
      fail "$png is missing or no PNG"
    elif [ "$actual" != "${size}x${size}" ]; then
      fail "$png is $actual, not ${size}x${size}"
    fi
  done
  while IFS= read -r png; do
    [ "$(basename "$png")" = "$id.png" ] || fail "$png is not named $id.png"
    size="$(basename "$(dirname "$(dirname "$png")")")"
    actual="$(png_size "$png")" || { fail "$png is no PNG"; continue; }
    [ "$actual" = "$size" ] || fail "$png is $actual, not $size"
  done < <(find "$dir/icons/hicolor" -name '*.png' 2>/dev/null | sort)

  # Screenshots: 4 to 6, each with an English and an Arabic caption and a committed picture of the declared size.
  local count=0 declared url name width height
  while IFS= read -r declared; do
    count=$((count + 1))
    width="$(sed -n 's/.*width="\([0-9]*\)".*/\1/p' <<<"$declared")"
    height="$(sed -n 's/.*height="\([0-9]*\)".*/\1/p' <<<"$declared")"
    url="$(sed -n 's|.*>\(.*\)</image>|\1|p' <<<"$declared")"
    name="${url#https://tarvolin.app/screenshots/}"
    if [ "$name" = "$url" ] || [[ ! "$name" =~ ^[a-z0-9-]+\.png$ ]]; then
      fail "the screenshot $url is not https://tarvolin.app/screenshots/NAME.png"
      continue
    fi
    png="$dir/screenshots/$name"
    if ! actual="$(png_size "$png")"; then
      fail "$png, the picture of $url, is missing or no PNG"
    elif [ -z "$width" ] || [ -z "$height" ]; then
      fail "the screenshot $url declares no width and height"
    elif [ "$actual" != "${width}x${height}" ]; then
      fail "$png is $actual but the metainfo declares ${width}x${height}"
    fi
  done < <(grep -o '<image[^>]*>[^<]*</image>' "$metainfo")
  if [ "$count" -lt 4 ] || [ "$count" -gt 6 ]; then
    fail "the metainfo has $count screenshots, not 4 to 6"
  fi
  local captions
  captions="$(awk '/<screenshot[ >]/ { en = 0; ar = 0 }
    /<caption>/ { en++ } /<caption xml:lang="ar">/ { ar++ }
    /<\/screenshot>/ { print en, ar }' "$metainfo")"
  while read -r en ar; do
    if [ "$en" -ne 1 ] || [ "$ar" -ne 1 ]; then
      fail "a screenshot has $en English and $ar Arabic captions, not one of each"
    fi
  done <<<"$captions"
  # No picture is kept that the metainfo does not show.
  for png in "$dir"/screenshots/*.png; do
    [ -e "$png" ] || continue
    grep -q "https://tarvolin.app/screenshots/$(basename "$png")<" "$metainfo" ||
      fail "$png is not in the metainfo"
  done
}

# The metainfo validator's lines: errors, warnings and infos fail, and pedantic hints but the allowed ones.
judge_appstream_output() {
  local line tag allowed hint
  while IFS= read -r line; do
    [[ "$line" =~ ^[[:space:]]*([EWIP]):[[:space:]] ]] || continue
    if [ "${BASH_REMATCH[1]}" != "P" ]; then
      fail "appstreamcli: $line"
      continue
    fi
    tag="$(awk '{print $3}' <<<"$line")"
    allowed=0
    for hint in "${allowed_hints[@]}"; do
      [ "$tag" = "$hint" ] && allowed=1
    done
    [ "$allowed" -eq 1 ] || fail "appstreamcli pedantic hint that can be met: $line"
  done <<<"$1"
}

check_installed() {
  need_validator appstreamcli
  local cmake="${4:-cmake}" prefix output status id="app.tarvolin.Tarvolin" expected actual
  [ -f "$dir/cmake_install.cmake" ] || { fail "$dir/cmake_install.cmake is missing: configure first"; return; }
  prefix="$(mktemp -d)"
  # Only this folder's rules, for the game's component, into a throw-away prefix.
  if ! output="$("$cmake" -DCMAKE_INSTALL_PREFIX="$prefix" -DCMAKE_INSTALL_COMPONENT=tarvolin \
    -P "$dir/cmake_install.cmake" 2>&1)"; then
    echo "$output"
    fail "the install rules failed"
    rm -rf "$prefix"
    return
  fi
  expected="share/applications/$id.desktop
share/metainfo/$id.metainfo.xml
share/icons/hicolor/scalable/apps/$id.svg"
  for size in 16 22 24 32 48 64 128 256 512; do
    expected+=$'\n'"share/icons/hicolor/${size}x${size}/apps/$id.png"
  done
  expected="$(sort <<<"$expected")"
  actual="$(cd "$prefix" && find . -type f | sed 's|^\./||' | sort)"
  if [ "$actual" != "$expected" ]; then
    fail "the installed files differ from the expected ones:"
    diff <(echo "$expected") <(echo "$actual") >&2
  fi
  output="$("$validator" validate-tree --no-net --pedantic --no-color "$prefix" 2>&1)"
  status=$?
  echo "$output"
  [ "$status" -eq 0 ] || fail "appstreamcli validate-tree exited with $status"
  judge_appstream_output "$output"
  rm -rf "$prefix"
}

case "$mode" in
desktop-entry) check_desktop_entry ;;
metainfo) check_metainfo ;;
assets) check_assets ;;
installed) check_installed "$@" ;;
*)
  echo "unknown check \"$mode\"" >&2
  exit 2
  ;;
esac

if [ "$failures" -gt 0 ]; then
  echo "$mode: $failures problem(s)" >&2
  exit 1
fi
echo "$mode: ok"
