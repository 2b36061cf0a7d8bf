#!/usr/bin/env bash
# tarvolin-levels's command line: help, version, every wrong command, option and value, and the manual page
# against the help of the tool and of its commands.
# Usage: levels.sh PROGRAM VERSION MANPAGE PACKFILE
# shellcheck source=tests/cli/common.sh disable=SC2034
source "$(dirname "$0")/common.sh"
program="$1" version="$2" page="$3" pack="$4" name=tarvolin-levels

for args in --help -h help "check --help" "check -h" "build --help" "build $pack --help"; do
  # shellcheck disable=SC2086
  expect_help $args
done
for args in --version -V; do expect_version "$args"; done

mkdir -p "$scratch/folder"
touch "$scratch/file"
expect_usage_errors <<EOT
no command |
unknown command draw | draw
unknown option --bogus | --bogus
unknown option --bogus | check "$pack" --bogus
unknown option --bogus | build --bogus=1
unknown option --version | check --version
check needs a FILE | check
check needs a FILE | check --rounds 3
check takes one FILE | check "$pack" "$pack"
FILE | check "$scratch/missing.wav"
FILE | check "$scratch/folder"
--pictures | check "$pack" --pictures
--pictures | check "$pack" --pictures "$scratch/missing"
--pictures | check "$pack" --pictures="$scratch/file"
--exceptions | check "$pack" --exceptions "$scratch/missing.txt"
--exceptions | check "$pack" --exceptions "$scratch/folder"
--dictionary | check "$pack" --dictionary "$scratch/missing"
--dictionary | check "$pack" --dictionary="$scratch/file.dic"
--rounds | check "$pack" --rounds many
--rounds | check "$pack" --rounds 0
--rounds | check "$pack" --rounds=10001
--rounds | check "$pack" --rounds=
build needs --levels, --scenes, --svg and --out | build
build needs --levels, --scenes, --svg and --out | build --levels "$pack"
unexpected argument | build "$pack"
--levels | build --levels "$scratch/missing.wav"
--levels | build --levels "$scratch/folder"
--scenes | build --scenes "$scratch/missing"
--svg | build --svg "$scratch/file"
--svg | build --svg "$scratch/missing"
--out | build --out "$scratch/file"
--out | build --out "$scratch/file/pictures"
--qrc | build --qrc "$scratch/missing/p.qrc"
--qrc | build --qrc "$scratch/folder"
--size | build --size 0
--size | build --size 4097
--size | build --size=big
--jobs | build --jobs 0
--jobs | build --jobs 257
--jobs | build --jobs
EOT

run --help
help="$out"
run check --help
help+=$'\n'"$out"
run build --help
help+=$'\n'"$out"
expect_man_page "$page" "$help"
finish
