#!/usr/bin/env bash
# tarvolin-service's command line: help, version, every wrong option and value from a flag or its variable,
# both forms of a value, and the manual page against --help.
# Usage: service.sh PROGRAM VERSION MANPAGE
# shellcheck source=tests/cli/common.sh disable=SC2034
source "$(dirname "$0")/common.sh"
program="$1" version="$2" page="$3" name=tarvolin-service

for args in --help -h; do expect_help "$args"; done
for args in --version -V; do expect_version "$args"; done

mkdir -p "$scratch/folder"
printf 'a=b,c\n' >"$scratch/comma.settings"
printf 'greeting=<br>\n' >"$scratch/br.settings"
expect_usage_errors <<EOT
unknown option --bogus | --bogus
unknown option -p | -p 8080
unexpected argument "8080" | 8080
--help takes no value | --help=yes
--version takes no value | --version=1
--port needs a value | --port
--port | --port ''
--port | --port=
--port | --port 65536
--port | --port=-1
--port | --port 80a
--port | --port ' 80'
--address | --address nowhere
--address | --address=256.1.1.1
--address | --address ''
--database | --database ''
--database | --database sqlite:
--database | --database mysql://db/tarvolin
--database | --database postgresql://
--database | --database "$scratch/folder"
--log-level | --log-level loud
--log-level | --log-level=INFO
--threads | --threads 0
--threads | --threads 257
--max-body | --max-body 1023
--max-body | --max-body 67108865
--rate-limit | --rate-limit -1
--rate-burst | --rate-burst 0
--signups-per-hour | --signups-per-hour many
--connections-per-address | --connections-per-address 1000001
--ws-handshakes-per-minute | --ws-handshakes-per-minute 1.5
--ws-handshake-burst | --ws-handshake-burst 0
--header-timeout | --header-timeout 0
--idle-timeout | --idle-timeout 86401
--ws-timeout | --ws-timeout 1
--settings | --settings "$scratch/missing.settings"
--settings | --settings "$scratch/folder"
--settings | --settings "$scratch/comma.settings"
--settings | --settings="$scratch/br.settings"
--shutdown-grace | --shutdown-grace 3601
--busy-poll | --busy-poll 10001
EOT

# A wrong value from a variable is named with the variable; a flag wins over its variable.
while read -r variable value flag; do
  run_env=("$variable=$value")
  run
  [ "$status" -eq 2 ] && [[ "$err" == *"$flag (from $variable)"* ]] ||
    fail "$variable=$value exited $status with: ${err:0:300}"
  run "$flag=bad$value" # the flag's own value is reported, without the variable
  [ "$status" -eq 2 ] && [[ "$err" == *"$flag must"* || "$err" == *"$flag \""* ]] && [[ "$err" != *"(from"* ]] ||
    fail "$flag over $variable=$value exited $status with: ${err:0:300}"
done <<EOT
TARVOLIN_PORT 99999 --port
TARVOLIN_ADDRESS nowhere --address
TARVOLIN_LOG_LEVEL loud --log-level
TARVOLIN_THREADS 0 --threads
TARVOLIN_WS_TIMEOUT 1 --ws-timeout
TARVOLIN_DATABASE mysql://x --database
EOT
run_env=()

# Both forms of a value are taken: the service starts on the address and database given, and stops on
# SIGTERM with status 0.
starts=0
start_and_stop() {
  # A log of its own, emptied before the start: the background shell truncates its redirection only after the
  # fork, so a shared log could still show the previous run's "listening" to the loop below.
  starts=$((starts + 1))
  local log="$scratch/service-$starts.log" pid i
  : >"$log"
  env -u DISPLAY "$program" "$@" 2>>"$log" &
  pid=$!
  for i in $(seq 600); do
    grep -q '"msg":"listening"' "$log" && break
    kill -0 "$pid" 2>/dev/null || break
    sleep 0.1
  done
  grep -q '"msg":"listening"' "$log" || { kill -KILL "$pid" 2>/dev/null; fail "[$*] never listened: $(head -c 500 "$log")"; }
  kill -TERM "$pid" 2>/dev/null
  wait "$pid"
  status=$?
  checks=$((checks + 1))
  [ "$status" -eq 0 ] || fail "[$*] stopped with status $status: $(head -c 500 "$log")"
  grep -q '"address":"127.0.0.1"' "$log" || fail "[$*] did not listen on 127.0.0.1: $(head -c 500 "$log")"
}
start_and_stop --address=127.0.0.1 --port=0 --database="sqlite:$scratch/equals.db" --threads=1
[ -f "$scratch/equals.db" ] || fail "--database=sqlite:FILE did not create FILE"
start_and_stop --address 127.0.0.1 --port 0 --database "$scratch/spaced.db" --threads 1
[ -f "$scratch/spaced.db" ] || fail "--database FILE did not create FILE"

run --help
expect_man_page "$page" "$out"
finish
