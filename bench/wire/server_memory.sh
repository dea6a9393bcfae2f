#!/bin/sh
# Resident memory of a real qel-cimserver process on generated arrays of 100, 1,000 and
# 10,000 FC ports: idle after start, then after EnumerateInstances of QEL_FCPort sent by
# 1 and by 8 concurrent clients (curl, so that no client memory is counted). Prints, per
# array, VmRSS idle, VmRSS and VmHWM (peak) after each load, in MiB, and the server's CPU
# time per enumeration (user + system, from /proc, over the 1-client requests) and per port.
# Then, on the 10,000-port array, the time to the first byte and to the last of one
# enumeration, without and with TE: trailers; and on a 1,000-port array the 16-client
# mixed load (EnumerateInstances and EnumerateInstanceNames, 150 requests per client):
# VmRSS idle, and 10 s after the load.
#
#   bench/wire/server_memory.sh build/release-bench [requests per client]
#   PORTS="1000" bench/wire/server_memory.sh ...   (only these arrays before the mixed load)
#   SERVER_PRELOAD=/usr/lib/x86_64-linux-gnu/libjemalloc.so.2 ...   (another allocator, for the
#                                                       server only)
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

sed 's/EnumerateInstances/EnumerateInstanceNames/' "$work/ei.xml" >"$work/EnumerateInstanceNames.xml"
cp "$work/ei.xml" "$work/EnumerateInstances.xml"

mib() { awk -v k="$1:" '$1 == k { printf "%.1f", $2 / 1024 }' "/proc/$server_pid/status"; }

post() { # post <operation> [curl options...]
  op=$1
  shift
  curl -sf -u "admin:$password" -H 'Content-Type: application/xml; charset="utf-8"' \
    -H 'CIMOperation: MethodCall' -H "CIMMethod: $op" -H 'CIMObject: root/qel' \
    --data-binary @"$work/$op.xml" "$@" "http://127.0.0.1:$port/cimom"
}

# User + system CPU of the server so far, in clock ticks.
ticks() { awk '{ print $14 + $15 }' "/proc/$server_pid/stat"; }
hz=$(getconf CLK_TCK)

enumerate() {
  i=0
  while [ "$i" -lt "$requests" ]; do
    curl -sf -o /dev/null -u "admin:$password" -H 'Content-Type: application/xml; charset="utf-8"' \
      -H 'CIMOperation: MethodCall' -H 'CIMMethod: EnumerateInstances' -H 'CIMObject: root/qel' \
      --data-binary @"$work/ei.xml" "http://127.0.0.1:$port/cimom"
    i=$((i + 1))
  done
}

start_server() { # start_server <ports>
  QELSIM_STATE=none "$build/src/qelapi/qelsim" generate --ports "$1" --out "$work/array.json" >/dev/null
  QELSIM_STATE=none env ${SERVER_PRELOAD:+LD_PRELOAD=$SERVER_PRELOAD} "$build/src/Server/main/qel-cimserver" --port 0 --socket none --array "$work/array.json" \
    --password-file "$work/passwd" --log-level error >"$work/server.log" 2>&1 &
  server_pid=$!
  port=
  while [ -z "$port" ]; do
    sleep 0.2
    kill -0 "$server_pid"
    port=$(sed -n 's|.*listening on http://127.0.0.1:\([0-9]*\)/cimom.*|\1|p' "$work/server.log")
  done
}

stop_server() {
  kill "$server_pid"
  wait "$server_pid" 2>/dev/null || true
  server_pid=
}

printf '%-7s %10s %14s %14s %14s %14s %12s %12s\n' ports idle_rss rss_1client hwm_1client rss_8clients hwm_8clients \
  cpu_ms_enum cpu_us_port
for ports in ${PORTS:-100 1000 10000}; do
  start_server "$ports"
  idle=$(mib VmRSS)
  before=$(ticks)
  enumerate
  rss1=$(mib VmRSS) hwm1=$(mib VmHWM)
  used=$(($(ticks) - before))
  cpu=$(awk -v t="$used" -v n="$requests" -v hz="$hz" 'BEGIN { printf "%.1f", t * 1000 / hz / n }')
  perport=$(awk -v t="$used" -v n="$requests" -v hz="$hz" -v p="$ports" 'BEGIN { printf "%.2f", t * 1e6 / hz / n / p }')
  clients=
  for c in 1 2 3 4 5 6 7 8; do
    enumerate &
    clients="$clients $!"
  done
  wait $clients
  rss8=$(mib VmRSS) hwm8=$(mib VmHWM)
  printf '%-7s %10s %14s %14s %14s %14s %12s %12s\n' "$ports" "$idle" "$rss1" "$hwm1" "$rss8" "$hwm8" "$cpu" "$perport"
  if [ "$ports" = 10000 ]; then
    times=$(post EnumerateInstances -o /dev/null -w '%{time_starttransfer} %{time_total}')
    times_te=$(post EnumerateInstances -H 'TE: trailers' -o /dev/null -w '%{time_starttransfer} %{time_total}')
  fi
  stop_server
done
if [ -n "${times:-}" ]; then
  echo "10,000-port EnumerateInstances: first byte, last byte (s): $times"
  echo "  the same with TE: trailers (chunks begin after 64 KiB): $times_te"
fi

start_server 1000
idle=$(mib VmRSS)
# A refused request is counted, not fatal: the memory figures hold either way.
mixed() {
  i=0
  while [ "$i" -lt 150 ]; do
    if [ $((i % 2)) = 0 ]; then op=EnumerateInstances; else op=EnumerateInstanceNames; fi
    post "$op" -o /dev/null || echo x >>"$work/refused"
    i=$((i + 1))
  done
}
: >"$work/refused"
clients=
c=0
while [ "$c" -lt 16 ]; do
  mixed &
  clients="$clients $!"
  c=$((c + 1))
done
wait $clients
peak=$(mib VmHWM)
sleep 10
echo "16-client mixed load on 1,000 ports (MiB): idle $idle, peak $peak, 10 s after $(mib VmRSS)" \
  "($(wc -l <"$work/refused") of 2,400 requests refused)"
stop_server
