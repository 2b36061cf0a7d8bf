#!/usr/bin/env bash
# Installs the built packages on a fresh Debian 12 and uses them as a player and an operator would.
# A minimal bookworm (with systemd, as every Debian 12 system has) is made with debootstrap; the packages are
# installed there with apt, which must find every dependency on its own. Then that system is booted in a
# container (systemd-nspawn): the service must have been enabled by its package, start under its own user,
# report ready and answer its health check, then do the same on PostgreSQL by its example drop-in; the game
# must start headless to its first screen; the desktop entry and its icon must be in place. Where a container cannot be booted, the same checks run in the chroot
# without systemd, and the script says so. Usage (as root): clean-install-test.sh DIST_DIR
set -euo pipefail
dist="$(cd "$1" && pwd)"
[ "$(id -u)" = 0 ] || { echo "clean-install-test.sh must run as root (debootstrap, chroot)" >&2; exit 1; }
root="${TARVOLIN_CLEAN_ROOT:-/tmp/tarvolin-clean-root}"
mirror="${TARVOLIN_DEBIAN_MIRROR:-http://deb.debian.org/debian}"
fail() { echo "FAIL: $*" >&2; exit 1; }

rm -rf "$root"
echo "== debootstrap bookworm into $root"
debootstrap --variant=minbase --include=systemd,systemd-sysv,dbus,curl,ca-certificates,man-db \
  bookworm "$root" "$mirror" >/tmp/tarvolin-debootstrap.log 2>&1 \
  || { tail -20 /tmp/tarvolin-debootstrap.log >&2; fail "debootstrap"; }
cp /etc/resolv.conf "$root/etc/resolv.conf"
if [ -f /etc/apt/sources.list.d/debian.sources ]; then
  cp /etc/apt/sources.list.d/debian.sources "$root/etc/apt/sources.list.d/"
  rm -f "$root/etc/apt/sources.list"
fi
mkdir -p "$root/tmp/debs"
cp "$dist"/tarvolin*.deb "$root/tmp/debs/"

echo "== apt-get install the packages"
in_root() { chroot "$root" /usr/bin/env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin DEBIAN_FRONTEND=noninteractive "$@"; }
in_root apt-get update -qq
debs=()
for deb in "$root"/tmp/debs/*.deb; do debs+=("/tmp/debs/$(basename "$deb")"); done
in_root apt-get install -y -qq --no-install-recommends "${debs[@]}" >/tmp/tarvolin-apt.log 2>&1 \
  || { tail -30 /tmp/tarvolin-apt.log >&2; fail "the packages do not install on a clean Debian 12"; }
echo "   installed: $(in_root dpkg-query -W -f='${Package} ${Version}, ' tarvolin tarvolin-service)"
# PostgreSQL, for the service's PostgreSQL example.
in_root apt-get install -y -qq --no-install-recommends postgresql >>/tmp/tarvolin-apt.log 2>&1 \
  || { tail -30 /tmp/tarvolin-apt.log >&2; fail "PostgreSQL does not install"; }

# What the packages put in place, checked from the installed system.
for f in /usr/games/tarvolin /usr/bin/tarvolin-service /usr/bin/tarvolin-levels /usr/share/tarvolin/tarvolin-pictures.rcc \
         /usr/share/applications/app.tarvolin.Tarvolin.desktop /usr/share/metainfo/app.tarvolin.Tarvolin.metainfo.xml \
         /usr/share/icons/hicolor/scalable/apps/app.tarvolin.Tarvolin.svg /usr/share/icons/hicolor/48x48/apps/app.tarvolin.Tarvolin.png \
         /lib/systemd/system/tarvolin-service.service; do
  [ -e "$root$f" ] || [ -e "$root/usr$f" ] || fail "$f is missing after installing the packages"
done
in_root getent passwd tarvolin-service >/dev/null || fail "the package did not create the user tarvolin-service"
[ -L "$root/etc/systemd/system/multi-user.target.wants/tarvolin-service.service" ] \
  || fail "the package did not enable tarvolin-service"
in_root man -w tarvolin-service >/dev/null || fail "no man page for tarvolin-service"
in_root man -w tarvolin >/dev/null || fail "no man page for tarvolin"

# The probe that runs inside the booted system.
cat >"$root/usr/local/sbin/tarvolin-probe" <<'PROBE'
#!/bin/sh
exec >/var/tmp/probe.txt 2>&1
set -x
systemctl is-active tarvolin-service && echo "probe: active"
curl -fsS http://127.0.0.1:8470/healthz && echo && echo "probe: healthy"
systemctl show -p User -p Type -p ActiveState -p SubState tarvolin-service
stat -c 'probe: owner %U of %n' /var/lib/tarvolin-service/tarvolin.db
systemd-analyze verify /lib/systemd/system/tarvolin-service.service && echo "probe: verify done"
systemctl stop tarvolin-service && systemctl show -p Result -p ExecMainStatus tarvolin-service
systemctl start tarvolin-service && curl -fsS http://127.0.0.1:8470/healthz && echo && echo "probe: restarted"
su -l player -c 'QT_QPA_PLATFORM=offscreen timeout 120 tarvolin --offline --screenshot /var/tmp/first.png' && echo "probe: game drew its first screen"
# The PostgreSQL example, followed as its comments say.
runuser -u postgres -- createuser tarvolin-service
runuser -u postgres -- createdb --owner=tarvolin-service tarvolin
mkdir -p /etc/systemd/system/tarvolin-service.service.d
cp /usr/share/doc/tarvolin-service/examples/postgresql.conf /etc/systemd/system/tarvolin-service.service.d/
systemctl daemon-reload && systemctl restart tarvolin-service && curl -fsS http://127.0.0.1:8470/healthz && echo
journalctl -u tarvolin-service --no-pager | grep '"msg":"listening"' | tail -1 | grep -q '"database":"postgresql"' && echo "probe: healthy on postgresql"
DEBIAN_FRONTEND=noninteractive apt-get purge -y -qq tarvolin-service && ! systemctl is-active tarvolin-service && echo "probe: purged"
echo "probe: end"
PROBE
chmod 755 "$root/usr/local/sbin/tarvolin-probe"
cat >"$root/etc/systemd/system/tarvolin-probe.service" <<'UNIT'
[Unit]
Description=Checks the installed Tarvolin packages, then powers off
After=multi-user.target tarvolin-service.service
[Service]
Type=oneshot
ExecStart=/usr/local/sbin/tarvolin-probe
ExecStopPost=/bin/systemctl poweroff --no-block
[Install]
WantedBy=multi-user.target
UNIT
ln -sf /etc/systemd/system/tarvolin-probe.service "$root/etc/systemd/system/multi-user.target.wants/tarvolin-probe.service"
# A player of the machine, with a login shell's PATH (which has /usr/games).
in_root useradd --create-home --shell /bin/bash player

echo "== boot the installed system (systemd-nspawn)"
rm -f "$root/var/tmp/probe.txt"
booted=0
if command -v systemd-nspawn >/dev/null && timeout 300 systemd-nspawn -q --register=no --keep-unit --boot \
     -D "$root" >/tmp/tarvolin-boot.log 2>&1 </dev/null && grep -q "probe: end" "$root/var/tmp/probe.txt" 2>/dev/null; then
  booted=1
fi
cp "$root/var/tmp/first.png" "$dist/clean-install-first-screen.png" 2>/dev/null || true
if [ "$booted" = 1 ]; then
  grep -v "^+" "$root/var/tmp/probe.txt" | grep -E "^probe:|^(User|Type|Result|ExecMainStatus)=" | sed "s/^/   /" || true
  for want in "probe: active" "probe: healthy" "probe: owner tarvolin-service" "probe: verify done" \
              "probe: restarted" "probe: game drew its first screen" "probe: healthy on postgresql" \
              "probe: purged"; do
    grep -q "$want" "$root/var/tmp/probe.txt" || { cat "$root/var/tmp/probe.txt" >&2; fail "in the booted system: no \"$want\""; }
  done
  grep -q "^Type=notify" "$root/var/tmp/probe.txt" || fail "the unit is not Type=notify"
  if grep -v "^+" "$root/var/tmp/probe.txt" | grep -i "tarvolin-service.service:" | grep -v "^probe"; then
    fail "systemd-analyze verify had something to say in the installed system"
  fi
  echo "clean install: the packages install, the service starts under systemd and is healthy on SQLite and PostgreSQL, the game starts"
else
  echo "   no container could be booted here ($(tail -1 /tmp/tarvolin-boot.log 2>/dev/null)); checking in the chroot without systemd"
  mkdir -p "$root/var/lib/tarvolin-service"
  in_root chown tarvolin-service:tarvolin-service /var/lib/tarvolin-service
  chroot --userspec=tarvolin-service:tarvolin-service "$root" /usr/bin/env -i TARVOLIN_ADDRESS=127.0.0.1 TARVOLIN_PORT=8470 \
    TARVOLIN_DATABASE=/var/lib/tarvolin-service/tarvolin.db /usr/bin/tarvolin-service 2>/tmp/tarvolin-chroot-service.log &
  pid=$!
  ok=0
  for _ in $(seq 100); do curl -fsS http://127.0.0.1:8470/healthz >/dev/null 2>&1 && { ok=1; break; }; sleep 0.2; done
  kill "$pid"; wait "$pid" || true
  [ "$ok" = 1 ] || { cat /tmp/tarvolin-chroot-service.log >&2; fail "the installed service did not answer its health check"; }
  in_root su -l player -c 'QT_QPA_PLATFORM=offscreen timeout 120 tarvolin --offline --screenshot /var/tmp/first.png' \
    || fail "the installed game did not reach its first screen"
  cp "$root/var/tmp/first.png" "$dist/clean-install-first-screen.png"
  echo "clean install: the packages install, the service runs as its user and is healthy, the game starts (no systemd boot)"
fi
