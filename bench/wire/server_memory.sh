#!/bin/sh
# Resident memory of a real qel-cimserver process on generated arrays of 100, 1,000 and
# 10,000 FC ports: idle after start, then after EnumerateInstances of QEL_FCPort sent by
# 1 and by 8 concurrent clients (curl, so that no client memory is counted). Prints, per
# array, VmRSS idle, VmRSS and VmHWM (peak) after each load, in MiB.
#
#   bench/wire/server_memory.sh build/release-bench [requests per client]
#
# Needs curl. The server listens on loopback only, on a free port, with no local socket.
set -eu
build=${1:?usage: $0 <build directory> [requests per client]}
requests=${2:-10}
work=$(mktemp -d)
server_pid=
cleanup() {
  if [ -n "$server_pid" ]; then kill "$server_pid" 2>/dev/null || true; wait "$server_pid" 2>/dev/null || true; fi
  rm -rf "$work"
}
trap cleanup EXIT

password=$(head -c 12 /dev/urandom | od -An -tx1 | tr -d ' \n')
printf '%s\n' "$password" | "$build/src/Server/auth/qel-passwd" -f "$work/passwd" add admin >/dev/null

cat >"$work/ei.xml" <<'EOF'
<?xml version="1.0" encoding="utf-8" ?>
<CIM CIMVERSION="2.0" DTDVERSION="2.0"><MESSAGE ID="1" PROTOCOLVERSION="1.0"><SIMPLEREQ><IMETHODCALL NAME="EnumerateInstances"><LOCALNAMESPACEPATH><NAMESPACE NAME="root"/><NAMESPACE NAME="qel"/></LOCALNAMESPACEPATH><IPARAMVALUE NAME="ClassName"><CLASSNAME NAME="QEL_FCPort"/></IPARAMVALUE></IMETHODCALL></SIMPLEREQ></MESSAGE></CIM>
EOF

mib() { awk -v k="$1:" '$1 == k { printf "%.1f", $2 / 1024 }' "/proc/$server_pid/status"; }

enumerate() {
  i=0
  while [ "$i" -lt "$requests" ]; do
    curl -sf -o /dev/null -u "admin:$password" -H 'Content-Type: application/xml; charset="utf-8"' \
      -H 'CIMOperation: MethodCall' -H 'CIMMethod: EnumerateInstances' -H 'CIMObject: root/qel' \
      --data-binary @"$work/ei.xml" "http://127.0.0.1:$port/cimom"
    i=$((i + 1))
  done
}

printf '%-7s %10s %14s %14s %14s %14s\n' ports idle_rss rss_1client hwm_1client rss_8clients hwm_8clients
for ports in 100 1000 10000; do
  QELSIM_STATE=none "$build/src/qelapi/qelsim" generate --ports "$ports" --out "$work/array.json" >/dev/null
  QELSIM_STATE=none "$build/src/Server/main/qel-cimserver" --port 0 --socket none --array "$work/array.json" \
    --password-file "$work/passwd" --log-level error >"$work/server.log" 2>&1 &
  server_pid=$!
  port=
  while [ -z "$port" ]; do
    sleep 0.2
    kill -0 "$server_pid"
    port=$(sed -n 's|.*listening on http://127.0.0.1:\([0-9]*\)/cimom.*|\1|p' "$work/server.log")
  done
  idle=$(mib VmRSS)
  enumerate
  rss1=$(mib VmRSS) hwm1=$(mib VmHWM)
  clients=
  for c in 1 2 3 4 5 6 7 8; do
    enumerate &
    clients="$clients $!"
  done
  wait $clients
  rss8=$(mib VmRSS) hwm8=$(mib VmHWM)
  printf '%-7s %10s %14s %14s %14s %14s\n' "$ports" "$idle" "$rss1" "$hwm1" "$rss8" "$hwm8"
  kill "$server_pid"
  wait "$server_pid" 2>/dev/null || true
  server_pid=
done
