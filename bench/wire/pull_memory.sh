#!/bin/sh
# Resident memory of a real qel-cimserver process on a generated array of 10,000 FC ports
# while 8 clients each hold an open enumeration of QEL_FCPort (OpenEnumerateInstances with
# MaxObjectCount 500, then no pull: each context keeps what it has not handed out and its
# provider waits), against the same 8 clients each asking EnumerateInstances of it at once.
# Prints, in MiB, VmRSS idle, then VmRSS and VmHWM (peak) with the enumerations held, after
# they are closed, and for the 8 EnumerateInstances (a server of its own).
#
#   bench/wire/pull_memory.sh build/release-bench [ports]
#
# Needs curl. The servers listen on loopback only, on a free port, with no local socket.
set -eu
build=${1:?usage: $0 <build directory> [ports]}
ports=${2:-10000}
work=$(mktemp -d)
server_pid=
cleanup() {
  if [ -n "$server_pid" ]; then kill "$server_pid" 2>/dev/null || true; wait "$server_pid" 2>/dev/null || true; fi
  rm -rf "$work"
}
trap cleanup EXIT

password=$(head -c 12 /dev/urandom | od -An -tx1 | tr -d ' \n')
printf '%s\n' "$password" | "$build/src/Server/auth/qel-passwd" -f "$work/passwd" add admin >/dev/null
QELSIM_STATE=none "$build/src/qelapi/qelsim" generate --ports "$ports" --out "$work/array.json" >/dev/null

message() {
  printf '<?xml version="1.0" encoding="utf-8" ?>\n<CIM CIMVERSION="2.0" DTDVERSION="2.0"><MESSAGE ID="1" PROTOCOLVERSION="1.0"><SIMPLEREQ><IMETHODCALL NAME="%s"><LOCALNAMESPACEPATH><NAMESPACE NAME="root"/><NAMESPACE NAME="qel"/></LOCALNAMESPACEPATH>%s</IMETHODCALL></SIMPLEREQ></MESSAGE></CIM>\n' "$1" "$2"
}
class='<IPARAMVALUE NAME="ClassName"><CLASSNAME NAME="QEL_FCPort"/></IPARAMVALUE>'
message OpenEnumerateInstances "$class<IPARAMVALUE NAME=\"OperationTimeout\"><VALUE>300</VALUE></IPARAMVALUE><IPARAMVALUE NAME=\"MaxObjectCount\"><VALUE>500</VALUE></IPARAMVALUE>" >"$work/open.xml"
message EnumerateInstances "$class" >"$work/ei.xml"

start_server() {
  QELSIM_STATE=none "$build/src/Server/main/qel-cimserver" --port 0 --socket none --array "$work/array.json" \
    --password-file "$work/passwd" --log-level error --access-log no >"$work/server.log" 2>&1 &
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
mib() { awk -v k="$1:" '$1 == k { printf "%.1f", $2 / 1024 }' "/proc/$server_pid/status"; }
post() {
  curl -sf -u "admin:$password" -H 'Content-Type: application/xml; charset="utf-8"' \
    -H 'CIMOperation: MethodCall' -H "CIMMethod: $1" -H 'CIMObject: root/qel' \
    --data-binary @"$work/$2" "http://127.0.0.1:$port/cimom"
}
close() {
  message CloseEnumeration "<IPARAMVALUE NAME=\"EnumerationContext\"><VALUE>$1</VALUE></IPARAMVALUE>" >"$work/close.xml"
  post CloseEnumeration close.xml >/dev/null
}

start_server
idle=$(mib VmRSS)
clients=
for c in 1 2 3 4 5 6 7 8; do
  post OpenEnumerateInstances open.xml >"$work/open.$c" &
  clients="$clients $!"
done
wait $clients
# Until every provider has filled its context and waits: the resident size stops growing.
last=0
while :; do
  sleep 1
  now=$(mib VmRSS)
  [ "$now" = "$last" ] && break
  last=$now
done
held_rss=$(mib VmRSS) held_hwm=$(mib VmHWM)
for c in 1 2 3 4 5 6 7 8; do
  close "$(sed -n 's|.*NAME="EnumerationContext" PARAMTYPE="string"><VALUE>\([0-9a-f]*\)</VALUE>.*|\1|p' "$work/open.$c")"
done
sleep 2
closed_rss=$(mib VmRSS)
stop_server

start_server
clients=
for c in 1 2 3 4 5 6 7 8; do
  post EnumerateInstances ei.xml >/dev/null &
  clients="$clients $!"
done
wait $clients
ei_rss=$(mib VmRSS) ei_hwm=$(mib VmHWM)
stop_server

printf '%-7s %9s %13s %13s %11s %12s %12s\n' ports idle_rss 8_open_rss 8_open_hwm closed_rss 8_ei_rss 8_ei_hwm
printf '%-7s %9s %13s %13s %11s %12s %12s\n' "$ports" "$idle" "$held_rss" "$held_hwm" "$closed_rss" "$ei_rss" "$ei_hwm"
