#!/usr/bin/env bash
# Starts a throwaway PostgreSQL cluster on 127.0.0.1 for the service tests and prints its URL on stdout,
# ready for TARVOLIN_TEST_DATABASE:
#
#   export TARVOLIN_TEST_DATABASE="$(scripts/start-test-postgres.sh)"
#
# The cluster lives in a new temporary directory and trusts local connections; stop it with the command
# printed on stderr. Runs as root (the cluster then belongs to the "postgres" user) or as any other user.
# Environment: TARVOLIN_PG_PORT (default: the first free port from 55432).
set -euo pipefail

bindir=$(ls -d /usr/lib/postgresql/*/bin 2>/dev/null | sort -V | tail -n 1)
if [ -z "$bindir" ] || [ ! -x "$bindir/initdb" ]; then
  echo "start-test-postgres: no PostgreSQL server found under /usr/lib/postgresql (apt-get install postgresql)" >&2
  exit 1
fi

port_free() { ! (exec 3<>"/dev/tcp/127.0.0.1/$1") 2>/dev/null; }
port=${TARVOLIN_PG_PORT:-}
if [ -z "$port" ]; then
  port=55432
  while ! port_free "$port"; do port=$((port + 1)); done
fi

dir=$(mktemp -d /tmp/tarvolin-pg.XXXXXX)
as_owner=()
if [ "$(id -u)" -eq 0 ]; then
  chown postgres: "$dir"
  as_owner=(runuser -u postgres --)
fi

"${as_owner[@]}" "$bindir/initdb" -D "$dir/data" -U tarvolin --auth=trust -E UTF8 --no-locale >"$dir/initdb.log" 2>&1 || {
  cat "$dir/initdb.log" >&2
  exit 1
}
"${as_owner[@]}" "$bindir/pg_ctl" -D "$dir/data" -l "$dir/server.log" -w -t 60 \
  -o "-p $port -k $dir -c listen_addresses=127.0.0.1 -c fsync=off -c max_connections=200" start >/dev/null || {
  cat "$dir/server.log" >&2
  exit 1
}
"${as_owner[@]}" "$bindir/createdb" -h 127.0.0.1 -p "$port" -U tarvolin tarvolin_test

echo "start-test-postgres: running in $dir; stop with: ${as_owner[*]} $bindir/pg_ctl -D $dir/data stop" >&2
echo "postgresql://tarvolin@127.0.0.1:$port/tarvolin_test"
