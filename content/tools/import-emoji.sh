#!/usr/bin/env bash
# Copies the Twemoji SVG artwork used by content/pictures/scenes.txt into
# content/pictures/svg/. The artwork comes from the npm package
# @twemoji/svg (graphics licensed CC-BY 4.0; see content/pictures/LICENSE-twemoji.txt).
#
# Usage: content/tools/import-emoji.sh [--prune]
#   --prune  also delete SVG files in content/pictures/svg/ that no scene uses.
# Environment: TWEMOJI_SVG_DIR may point to an already installed
# node_modules/@twemoji/svg folder, which skips the npm install.
set -euo pipefail

here="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
content="$(dirname "$here")"
scenes="$content/pictures/scenes.txt"
dest="$content/pictures/svg"
version="15.0.0"
prune=0
for arg in "$@"; do
  case "$arg" in
    --prune) prune=1 ;;
    -h|--help) sed -n '2,9p' "${BASH_SOURCE[0]}"; exit 0 ;;
    *) echo "import-emoji.sh: unknown argument: $arg" >&2; exit 2 ;;
  esac
done

if [[ ! -f "$scenes" ]]; then
  echo "import-emoji.sh: missing $scenes" >&2
  exit 1
fi

tmp=""
cleanup() { if [[ -n "$tmp" ]]; then rm -rf "$tmp"; fi; }
trap cleanup EXIT

if [[ -n "${TWEMOJI_SVG_DIR:-}" ]]; then
  src="$TWEMOJI_SVG_DIR"
else
  if ! command -v npm >/dev/null 2>&1; then
    echo "import-emoji.sh: npm is required (apt-get install npm)" >&2
    exit 1
  fi
  tmp="$(mktemp -d)"
  echo "import-emoji.sh: installing @twemoji/svg@$version into $tmp" >&2
  npm install --prefix "$tmp" --no-audit --no-fund --silent "@twemoji/svg@$version" >&2
  src="$tmp/node_modules/@twemoji/svg"
fi
if [[ ! -d "$src" ]]; then
  echo "import-emoji.sh: no Twemoji SVG folder at $src" >&2
  exit 1
fi

# Every symbol of every scene line: skip blank and comment lines, drop the
# picture name and the background, stop at a field that starts a comment
# ("#"), and cut the optional mirror mark "~" and placement "@x,y,s[,r]".
mapfile -t stems < <(
  awk '
    /^[[:space:]]*(#|$)/ { next }
    {
      for (i = 3; i <= NF; i++) {
        s = $i
        if (substr(s, 1, 1) == "#") break
        sub(/^~/, "", s)
        sub(/@.*/, "", s)
        print s
      }
    }' "$scenes" | sort -u
)

mkdir -p "$dest"
missing=0
bad=0
for stem in "${stems[@]}"; do
  if [[ ! "$stem" =~ ^[0-9a-f]+(-[0-9a-f]+)*$ ]]; then
    echo "import-emoji.sh: malformed symbol '$stem' in $scenes" >&2
    bad=$((bad + 1))
    continue
  fi
  if [[ ! -f "$src/$stem.svg" ]]; then
    echo "import-emoji.sh: symbol '$stem' does not exist in @twemoji/svg@$version" >&2
    missing=$((missing + 1))
    continue
  fi
  cp "$src/$stem.svg" "$dest/$stem.svg"
done
if (( missing > 0 || bad > 0 )); then
  echo "import-emoji.sh: $scenes has $missing unknown and $bad malformed symbol(s)" >&2
  exit 1
fi

if (( prune )); then
  declare -A used=()
  for stem in "${stems[@]}"; do used["$stem"]=1; done
  for f in "$dest"/*.svg; do
    [[ -e "$f" ]] || continue
    b="$(basename "$f" .svg)"
    if [[ -z "${used[$b]:-}" ]]; then
      rm -f "$f"
      echo "import-emoji.sh: removed unused $b.svg" >&2
    fi
  done
fi
echo "import-emoji.sh: ${#stems[@]} symbols copied to $dest" >&2
