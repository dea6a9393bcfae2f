#!/usr/bin/env bash
# The Debian package of a build configured with -DCMAKE_INSTALL_PREFIX=/usr (test.sh builds
# it once, in build/release):
#   1. cpack -G DEB builds it;
#   2. its fields: name, architecture, dependencies computed from the shared libraries;
#   3. its files: FHS places only, owned by root, everything the service needs, no password
#      file (the maintainer scripts make it);
#   4. its control files: conffiles, maintainer scripts;
#   5. the unpacked tree runs where it was unpacked (RPATHs) and reads its configuration;
#   6. the maintainer scripts on a scratch root ($DPKG_ROOT) with stand-ins for adduser,
#      getent, install and the systemd helpers: user, password file and state directory made
#      on installation, kept on upgrade and removal, deleted on purge.
#
#   tests/service/package_test.sh BUILD_DIR
set -euo pipefail
build=$(realpath "$1")
work=$(mktemp -d "${TMPDIR:-/tmp}/qel-package.XXXXXX")
trap 'rm -rf "$work"' EXIT
fail() {
  echo "FAIL: $*" >&2
  exit 1
}
step() { echo "-- $*"; }
libdir=$(sed -n 's/^CMAKE_INSTALL_LIBDIR:[A-Z]*=//p' "$build/CMakeCache.txt")
prefix=$(sed -n 's/^CMAKE_INSTALL_PREFIX:[A-Z]*=//p' "$build/CMakeCache.txt")
[ "$prefix" = /usr ] || fail "$build is configured for $prefix; the package needs -DCMAKE_INSTALL_PREFIX=/usr"

# 1.
step "cpack -G DEB"
rm -f "$build"/qel-cimserver_*.deb
(cd "$build" && cpack -G DEB >"$work/cpack.log" 2>&1) || fail "cpack: $(cat "$work/cpack.log")"
deb=$(find "$build" -maxdepth 1 -name 'qel-cimserver_*.deb' | head -n 1)
[ -n "$deb" ] || fail "no package in $build: $(cat "$work/cpack.log")"
echo "   $(basename "$deb"), $(du -k "$deb" | cut -f1) KiB"

# 2.
step "fields (dpkg-deb -f)"
field() { dpkg-deb -f "$deb" "$1"; }
[ "$(field Package)" = qel-cimserver ] || fail "Package: $(field Package)"
[ "$(field Architecture)" = "$(dpkg --print-architecture)" ] || fail "Architecture: $(field Architecture)"
depends=$(field Depends)
echo "   Depends: $depends"
names=$(tr ',' '\n' <<<"$depends" | sed 's/^ *//; s/[ (].*//')
for d in adduser libc6 libstdc++6 libgcc-s1 libsystemd0 libcrypt1 libpugixml1v5; do
  grep -qxF "$d" <<<"$names" || fail "Depends lacks $d: $depends"
done
if grep -qiE 'peg|qel' <<<"$depends"; then
  fail "Depends names the package's own private libraries: $depends"
fi

# 3.
step "files (dpkg-deb -c)"
dpkg-deb -c "$deb" >"$work/contents"
awk '{ print $6 }' "$work/contents" | sed 's|^\./||; s|/$||' | sed '/^$/d' >"$work/files"
if grep -vE '^(usr|etc)(/|$)' "$work/files"; then
  fail "files outside /usr and /etc"
fi
if awk '$2 != "root/root" { print }' "$work/contents" | grep .; then
  fail "files not owned by root"
fi
private=usr/$libdir/qel-cimserver
for f in usr/sbin/qel-cimserver usr/sbin/qel-passwd usr/bin/qelsim usr/bin/qel-mofcheck \
  "$private/libpegcommon.so" "$private/libpegprovider.so" "$private/libpegclient.so" \
  "$private/libqelapi.so" "$private/libQELInternalCacheService.so" \
  "$private/providers/libQEL_FCPortProvider.so" "$private/providers/libQEL_InternalCacheProvider.so" \
  usr/share/qel-cimserver/schema/root.mof usr/share/qel-cimserver/schema/registration/QEL_FCPortProviderR.mof \
  usr/share/qel-cimserver/demo-array.json usr/share/qel-cimserver/qel-cimserver.conf.example \
  etc/qel-cimserver/qel-cimserver.conf usr/lib/systemd/system/qel-cimserver.service \
  usr/include/qel-cimserver/Pegasus/Common/String.h \
  "usr/$libdir/cmake/QelPegasus/QelPegasusConfig.cmake" "usr/$libdir/pkgconfig/qel-pegasus.pc"; do
  grep -qxF "$f" "$work/files" || fail "the package lacks /$f"
done
grep -qE '^etc/qel-cimserver/passwd$|^var(/|$)' "$work/files" &&
  fail "the package ships the password file or state; the maintainer scripts make them"

# 4.
step "control files"
dpkg-deb -e "$deb" "$work/control"
[ "$(cat "$work/control/conffiles")" = /etc/qel-cimserver/qel-cimserver.conf ] ||
  fail "conffiles: $(cat "$work/control/conffiles")"
for s in postinst prerm postrm; do
  [ -x "$work/control/$s" ] || fail "no executable $s"
  sh -n "$work/control/$s" || fail "$s does not parse"
done

# 5.
step "the unpacked tree runs where it is"
dpkg-deb -x "$deb" "$work/root"
while IFS= read -r -d '' f; do
  [ "$(head -c 4 "$f" | tr -d '\177')" = ELF ] || continue
  libraries=$(env -u LD_LIBRARY_PATH ldd "$f")
  if grep -q 'not found' <<<"$libraries"; then
    fail "/${f#"$work/root/"}: $(grep 'not found' <<<"$libraries")"
  fi
done < <(find "$work/root" -type f -print0)
help=$("$work/root/usr/sbin/qel-cimserver" --help) || fail "qel-cimserver --help failed"
grep -q '^SYNOPSIS' <<<"$help" || fail "qel-cimserver --help: $help"
settings=$("$work/root/usr/sbin/qel-cimserver" --config "$work/root/etc/qel-cimserver/qel-cimserver.conf" \
  --print-config) || fail "the packaged configuration does not load"
grep -qE "^password-file = /etc/qel-cimserver/passwd +# $work/root/etc/qel-cimserver/qel-cimserver.conf:[0-9]+$" \
  <<<"$settings" || fail "the packaged configuration does not name the password file: $settings"
grep -qE "^provider-dir = $work/root/$private/providers +# default$" <<<"$settings" ||
  fail "the unpacked server does not default to its own providers folder: $settings"

# 6.
step "maintainer scripts on a scratch root"
scratch=$work/scratch
stubs=$work/stubs
mkdir -p "$scratch/etc/qel-cimserver" "$stubs"
calls=$work/calls
: >"$calls"
stub() {
  printf '#!/bin/sh\necho "%s $*" >>"%s"\n%s\n' "$1" "$calls" "${2:-exit 0}" >"$stubs/$1"
  chmod +x "$stubs/$1"
}
stub getent "[ -e \"$work/user-exists\" ] && echo 'qelcim:x:999:999::/var/lib/qel-cimserver:/usr/sbin/nologin' || exit 2"
stub adduser "touch \"$work/user-exists\""
# install: makes the file or folder without changing owners (no qelcim user here).
# shellcheck disable=SC2016 # expanded by the stand-in, not here
stub install 'for last; do :; done; case "$1" in -d) mkdir -p "$last" ;; *) : >"$last" ;; esac'
stub deb-systemd-helper
stub deb-systemd-invoke
stub systemctl
maint() { DPKG_ROOT=$scratch PATH=$stubs:$PATH sh "$work/control/$1" "${@:2}"; }
count() { grep -c "^$1" "$calls" || true; }

maint postinst configure
[ "$(count adduser)" = 1 ] || fail "installation: adduser called $(count adduser) times"
[ -f "$scratch/etc/qel-cimserver/passwd" ] || fail "installation: no password file"
[ -d "$scratch/var/lib/qel-cimserver" ] || fail "installation: no state directory"
grep -q '^install -m 0640 -o root -g qelcim /dev/null ' "$calls" ||
  fail "installation: password file not made root:qelcim 0640"
grep -q '^deb-systemd-helper enable qel-cimserver.service' "$calls" ||
  fail "installation: service not enabled"

# shellcheck disable=SC2016 # a hash, not an expansion
echo 'monitor:$6$salt$hash' >"$scratch/etc/qel-cimserver/passwd"
echo '{}' >"$scratch/var/lib/qel-cimserver/array-state.json"
maint postinst configure 0.1
[ "$(count adduser)" = 1 ] || fail "upgrade: adduser called again"
grep -q '^monitor:' "$scratch/etc/qel-cimserver/passwd" || fail "upgrade: password file replaced"
maint prerm upgrade 0.1
maint postrm remove
[ -f "$scratch/etc/qel-cimserver/passwd" ] || fail "removal: password file deleted"
[ -f "$scratch/var/lib/qel-cimserver/array-state.json" ] || fail "removal: state deleted"
maint postrm purge
[ ! -e "$scratch/etc/qel-cimserver" ] || fail "purge: /etc/qel-cimserver left: $(ls -A "$scratch/etc/qel-cimserver")"
[ ! -e "$scratch/var/lib/qel-cimserver" ] || fail "purge: state left"
echo "package test passed"
