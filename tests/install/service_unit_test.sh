#!/usr/bin/env bash
# The service's systemd files: `systemd-analyze verify` finds nothing to say about the unit, its hardening
# keeps the exposure that `systemd-analyze security` measures low, and systemd-sysusers creates the service's
# user from its sysusers.d file. Usage: service_unit_test.sh UNIT SYSUSERS_FILE
set -euo pipefail
unit="$1"
sysusers="$2"
fail() { echo "FAIL: $*" >&2; exit 1; }
if ! command -v systemd-analyze >/dev/null; then
  [ "${CI:-}" = true ] && fail "systemd-analyze is not installed (package systemd)"
  echo "systemd-analyze is not installed; skipped"
  exit 77
fi
work="$(mktemp -d /tmp/tarvolin-unit.XXXXXX)"
trap 'rm -rf "$work"' EXIT

# verify exits 0 on some findings, so any output at all is a failure. The man page named by Documentation= is
# not installed beside a build folder; the clean-install test checks it with the packages.
if ! systemd-analyze verify --man=no "$unit" >"$work/verify.txt" 2>&1 || [ -s "$work/verify.txt" ]; then
  cat "$work/verify.txt" >&2
  fail "systemd-analyze verify $(basename "$unit")"
fi
echo "[ systemd-analyze verify: clean ]"

# Exposure from 0 (sealed) to 10 (unprotected); systemd calls below 2 "OK", 2 to 5 "MEDIUM".
systemd-analyze security --offline=true --no-pager "$unit" >"$work/security.txt" 2>&1 || true
exposure="$(sed -n 's/.*Overall exposure level for [^:]*: \([0-9.]*\).*/\1/p' "$work/security.txt")"
[ -n "$exposure" ] || { cat "$work/security.txt" >&2; fail "systemd-analyze security gave no exposure level"; }
echo "[ systemd-analyze security: exposure $exposure ]"
awk -v e="$exposure" 'BEGIN { exit !(e < 2.0) }' || { grep "✗" "$work/security.txt" >&2 || true; fail "exposure $exposure is 2.0 or more"; }

# The unit and the sysusers file agree on the user, and systemd-sysusers can create it.
user="$(sed -n 's/^User=//p' "$unit")"
[ "$user" = "$(sed -n 's/^Group=//p' "$unit")" ] || fail "the unit's User and Group differ"
mkdir -p "$work/root/etc"
systemd-sysusers --root="$work/root" "$sysusers"
grep -q "^$user:x:[0-9]*:[0-9]*:.*:/var/lib/$user:" "$work/root/etc/passwd" || { cat "$work/root/etc/passwd" >&2; fail "no system user $user"; }
uid="$(grep "^$user:" "$work/root/etc/passwd" | cut -d: -f3)"
[ "$uid" -lt 1000 ] || fail "$user is not a system user (uid $uid)"
grep -q "^StateDirectory=$user$" "$unit" || fail "the state directory is not named after the user"
echo "[ systemd-sysusers: $user uid $uid ]"
