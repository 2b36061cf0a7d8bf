#!/usr/bin/env bash
# Draws the game's icon at every size the desktop asks for, from the hand-written SVGs beside it:
#   icons/app.tarvolin.Tarvolin.svg     the icon (also installed as the scalable one)
#   icons/app.tarvolin.Tarvolin-16.svg  the same icon on a 16-pixel grid, for the 16 px picture
#   icons/app.tarvolin.Tarvolin-24.svg  and on a 24-pixel grid, for the 22 and 24 px pictures
# and writes icons/hicolor/NxN/apps/app.tarvolin.Tarvolin.png. A developer's tool (rsvg-convert comes with
# Debian's librsvg2-bin); the PNGs are committed and the build does not run it.
set -euo pipefail

here="$(cd "$(dirname "$0")" && pwd)"
icons="$here/icons"
id="app.tarvolin.Tarvolin"
if ! command -v rsvg-convert >/dev/null; then
  echo "rsvg-convert is missing: apt-get install librsvg2-bin" >&2
  exit 1
fi

for size in 16 22 24 32 48 64 128 256 512; do
  case "$size" in
  16) source="$icons/$id-16.svg" ;;
  22 | 24) source="$icons/$id-24.svg" ;;
  *) source="$icons/$id.svg" ;;
  esac
  folder="$icons/hicolor/${size}x${size}/apps"
  mkdir -p "$folder"
  rsvg-convert --width "$size" --height "$size" --keep-aspect-ratio --format png \
    --output "$folder/$id.png" "$source"
  echo "$folder/$id.png"
done
