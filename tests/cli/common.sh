# shellcheck shell=bash
# Shared by the command-line tests: runs a program as a user would without a display, and checks what it
# prints against tables of cases. Each test script sources this file and ends with `finish`.
# The script that sources this sets program, name (as the program prints it) and version.
# shellcheck disable=SC2154
set -uo pipefail

failures=0
checks=0
scratch="$(mktemp -d)"
trap 'rm -rf "$scratch"' EXIT

fail() {
  failures=$((failures + 1))
  printf 'FAIL: %s\n' "$*" >&2
}

# run ARGS...: runs the program under test with no display in sight; sets status, out and err.
run() {
  env -u DISPLAY -u WAYLAND_DISPLAY -u QT_QPA_PLATFORM "${run_env[@]}" "$program" "$@" \
    >"$scratch/out" 2>"$scratch/err" </dev/null
  status=$?
  out="$(cat "$scratch/out")"
  err="$(cat "$scratch/err")"
  checks=$((checks + 1))
}
run_env=()

# expect_help ARGS...: exit 0, a usage text on standard output, nothing on standard error.
expect_help() {
  run "$@"
  [ "$status" -eq 0 ] || fail "$* exited $status, not 0: $err"
  [[ "$out" == Usage:* ]] || fail "$* printed no usage on standard output: ${out:0:200}"
  [ -z "$err" ] || fail "$* wrote to standard error: ${err:0:300}"
}

# expect_version ARGS...: exit 0 and exactly "NAME VERSION".
expect_version() {
  run "$@"
  [ "$status" -eq 0 ] || fail "$* exited $status, not 0: $err"
  [ "$out" = "$name $version" ] || fail "$* printed \"$out\", not \"$name $version\""
  [ -z "$err" ] || fail "$* wrote to standard error: ${err:0:300}"
}

# expect_usage_errors: reads a table from standard input, one case a line, "NAMED | ARGS": the arguments
# (split as the shell would, quotes allowed) must exit 2 with a message on standard error that holds NAMED,
# and print nothing on standard output. Blank lines and lines starting with # are skipped.
expect_usage_errors() {
  local line named args
  while IFS= read -r line; do
    [[ -z "${line// /}" || "$line" == \#* ]] && continue
    named="${line%% |*}"
    args="${line#* |}"
    eval "set -- $args"
    run "$@"
    if [ "$status" -ne 2 ]; then
      fail "[$args] exited $status, not 2: ${err:0:300}"
    elif [[ "$err" != *"$name: "*"$named"* ]]; then
      fail "[$args]: the message does not name \"$named\": ${err:0:300}"
    fi
    [ -z "$out" ] || fail "[$args] wrote to standard output: ${out:0:200}"
  done
}

# help_options TEXT: the options a help text shows (words that start with one or two dashes).
help_options() {
  grep -oE '(^|[][ ,(|])--?[A-Za-z][A-Za-z0-9-]*' <<<"$1" | sed -E 's/^[][ ,(|]//' | sort -u
}

# expect_man_page PAGE HELP: the page formats without a warning, and documents every option of HELP.
expect_man_page() {
  local page="$1" help="$2" text option
  checks=$((checks + 1))
  if ! command -v man >/dev/null; then
    fail "man is not installed (Debian package man-db): $page cannot be checked"
    return
  fi
  local warnings
  warnings="$(LC_ALL=C.UTF-8 MANROFFSEQ='' MANWIDTH=80 man --warnings -E UTF-8 -l -Tutf8 -Z "$page" 2>&1 >/dev/null)"
  [ -z "$warnings" ] || fail "$page has warnings: $warnings"
  # The page's source with its escaped dashes and font changes undone.
  text="$(sed -E 's/\\-/-/g; s/\\f[BIRP]//g; s/\\f\(..//g' "$page")"
  local count=0
  while IFS= read -r option; do
    [ -n "$option" ] || continue
    count=$((count + 1))
    grep -qE -- "(^|[^A-Za-z0-9-])${option}([^A-Za-z0-9-]|\$)" <<<"$text" ||
      fail "$(basename "$page") does not document $option, which --help shows"
  done < <(help_options "$help")
  [ "$count" -gt 3 ] || fail "only $count options were found in the help text"
}

finish() {
  if [ "$failures" -gt 0 ]; then
    echo "$failures of $checks checks failed" >&2
    exit 1
  fi
  echo "all $checks checks passed"
}
