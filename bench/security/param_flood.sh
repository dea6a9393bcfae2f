#!/usr/bin/env bash
# A browse user floods the server with method calls of 20,000 PARAMVALUE elements (about
# 1.5 MB each) while a legitimate client reads a port: what one such call costs, and what
# the legitimate client's GetInstance latency is idle and while 8 clients flood.
#
#   bench/security/param_flood.sh build/release [calls per flooding client] [calls alone]
#
# Runs the real qel-cimserver on a generated 1,000-port array (loopback, a free port, no
# local socket), with users made by qel-passwd: `monitor` (browse) floods, `operator`
# reads. Each client keeps its connection alive, so that the password is checked once per
# connection and the latencies are those of the requests; the first request of each
# connection is left out of the figures. Needs curl.
#
# Prints, in ms: GetInstance idle (median, p90, max); flood calls sent one at a time (the
# answer, their times, and the CPU time the server spent on each, measured rather than
# timed, so that the machine's load moves it less); then, with 8 flooding clients sending
# their calls at once (1 each by default), the flood calls and the GetInstances made
# meanwhile.
set -euo pipefail
build=${1:?usage: $0 <build directory> [calls per flooding client] [calls alone]}
floods_per_client=${2:-1}
alone=${3:-10}
params=20000
work=$(mktemp -d)
server_pid=
cleanup() {
  if [ -n "$server_pid" ]; then kill "$server_pid" 2>/dev/null || true; wait "$server_pid" 2>/dev/null || true; fi
  rm -rf "$work"
}
trap cleanup EXIT

secret() { head -c 12 /dev/urandom | od -An -tx1 | tr -d ' \n'; }
op_pw=$(secret)
mon_pw=$(secret)
printf '%s\n' "$op_pw" | "$build/src/Server/auth/qel-passwd" -f "$work/passwd" add operator >/dev/null
printf '%s\n' "$mon_pw" | "$build/src/Server/auth/qel-passwd" -f "$work/passwd" add monitor >/dev/null
QELSIM_STATE=none "$build/src/qelapi/qelsim" generate --ports 1000 --out "$work/array.json" >/dev/null
QELSIM_STATE=none "$build/src/Server/main/qel-cimserver" --port 0 --socket none \
  --array "$work/array.json" --password-file "$work/passwd" --log-level error >"$work/server.log" 2>&1 &
server_pid=$!
port=
while [ -z "$port" ]; do
  sleep 0.2
  kill -0 "$server_pid"
  port=$(sed -n 's|.*listening on http://127.0.0.1:\([0-9]*\)/cimom.*|\1|p' "$work/server.log")
done
url="http://127.0.0.1:$port/cimom"

envelope() {
  printf '<?xml version="1.0" encoding="utf-8" ?>\n<CIM CIMVERSION="2.0" DTDVERSION="2.0"><MESSAGE ID="1" PROTOCOLVERSION="1.0"><SIMPLEREQ>%s</SIMPLEREQ></MESSAGE></CIM>\n' "$1"
}
ns='<LOCALNAMESPACEPATH><NAMESPACE NAME="root"/><NAMESPACE NAME="qel"/></LOCALNAMESPACEPATH>'
cim_post() { # user:password method object body-file [curl options...]
  local credentials=$1 method=$2 object=$3 body=$4
  shift 4
  curl -sS -u "$credentials" -H 'Content-Type: application/xml; charset="utf-8"' \
    -H 'CIMOperation: MethodCall' -H "CIMMethod: $method" -H "CIMObject: $object" \
    --data-binary @"$body" "$@" "$url"
}

# A port's name, as the server gives it, for the GetInstance and the flood's target.
envelope "<IMETHODCALL NAME=\"EnumerateInstanceNames\">$ns<IPARAMVALUE NAME=\"ClassName\"><CLASSNAME NAME=\"QEL_FCPort\"/></IPARAMVALUE></IMETHODCALL>" >"$work/ein.xml"
port_name=$(cim_post "operator:$op_pw" EnumerateInstanceNames root%2Fqel "$work/ein.xml" |
  tr -d '\n' | sed -n 's|^.*<IRETURNVALUE>\(<INSTANCENAME [^>]*>.*\)$|\1|p' |
  sed 's|</INSTANCENAME>.*|</INSTANCENAME>|')
[ -n "$port_name" ] || { echo "error: no QEL_FCPort name from the server" >&2; exit 1; }
envelope "<IMETHODCALL NAME=\"GetInstance\">$ns<IPARAMVALUE NAME=\"InstanceName\">$port_name</IPARAMVALUE></IMETHODCALL>" >"$work/gi.xml"

# CIMObject of the method call: namespace:path, URI-escaped.
path="QEL_FCPort.$(printf '%s' "$port_name" |
  sed 's|<KEYBINDING NAME="\([^"]*\)"><KEYVALUE[^>]*>\([^<]*\)</KEYVALUE></KEYBINDING>|\1="\2",|g' |
  sed 's|<[^>]*>||g; s|,$||')"
object=
text="root/qel:$path"
for ((i = 0; i < ${#text}; i++)); do
  c=${text:i:1}
  case $c in
    [a-zA-Z0-9.~_-]) object+=$c ;;
    *) object+=$(printf '%%%02X' "'$c") ;;
  esac
done
{
  printf '<?xml version="1.0" encoding="utf-8" ?>\n<CIM CIMVERSION="2.0" DTDVERSION="2.0"><MESSAGE ID="2" PROTOCOLVERSION="1.0"><SIMPLEREQ><METHODCALL NAME="SetOffline"><LOCALINSTANCEPATH>%s%s</LOCALINSTANCEPATH>' \
    "$ns" "$port_name"
  for ((i = 0; i < params; i++)); do
    printf '<PARAMVALUE NAME="Parameter%05d" PARAMTYPE="string"><VALUE>x</VALUE></PARAMVALUE>' "$i"
  done
  printf '</METHODCALL></SIMPLEREQ></MESSAGE></CIM>\n'
} >"$work/flood.xml"

# curl config for `count` requests on one connection, each printing its time in seconds;
# answers go to `out` (default /dev/null).
requests() { # count user:password method object body-file [out]
  local count=$1 credentials=$2 method=$3 object=$4 body=$5 out=${6:-/dev/null} i
  for ((i = 0; i < count; i++)); do
    printf 'url = "%s"\nuser = "%s"\nheader = "Content-Type: application/xml; charset=\\"utf-8\\""\n' "$url" "$credentials"
    printf 'header = "CIMOperation: MethodCall"\nheader = "CIMMethod: %s"\nheader = "CIMObject: %s"\n' "$method" "$object"
    printf 'data-binary = "@%s"\noutput = "%s"\nwrite-out = "%%{time_total}\\n"\nsilent\nshow-error\n' "$body" "$out"
    if [ "$i" -lt $((count - 1)) ]; then printf 'next\n'; fi
  done
}
# Median, p90 and max in ms of the times in seconds on stdin.
stats() {
  sort -n | awk '{ t[NR] = $1 * 1000 } END {
    if (NR == 0) { print "no requests"; exit }
    printf "n %d  median %.2f  p90 %.2f  max %.2f\n", NR, t[int((NR + 1) / 2)], t[int(NR * 0.9 + 0.999)], t[NR] }'
}

requests 201 "operator:$op_pw" GetInstance root%2Fqel "$work/gi.xml" >"$work/gi.cfg"
echo "GetInstance idle, ms:                  $(curl -K "$work/gi.cfg" | tail -n +2 | stats)"

# A flooding client's curl config: a GetInstance first (its connection's password check),
# then `count` flood calls.
flooder() { # count [out]
  requests 1 "monitor:$mon_pw" GetInstance root%2Fqel "$work/gi.xml"
  printf 'next\n'
  requests "$1" "monitor:$mon_pw" SetOffline "$object" "$work/flood.xml" "${2:-/dev/null}"
}
# CPU time the server's threads have used, in ns.
server_cpu() { cat /proc/"$server_pid"/task/*/schedstat | awk '{ ns += $1 } END { printf "%.0f", ns }'; }

# Alone: one connection sends `alone` flood calls. The server's CPU for them is measured
# around the whole connection, less that of a connection making only its first
# GetInstance (median of three), and divided by their number.
requests 1 "monitor:$mon_pw" GetInstance root%2Fqel "$work/gi.xml" >"$work/warmup.cfg"
for run in 1 2 3; do
  before=$(server_cpu)
  curl -K "$work/warmup.cfg" >/dev/null
  echo $(($(server_cpu) - before))
done | sort -n | sed -n 2p >"$work/warmup.cpu"
flooder "$alone" "$work/flood.out" >"$work/alone.cfg"
before=$(server_cpu)
curl -K "$work/alone.cfg" | tail -n +2 >"$work/alone.times"
cpu=$(($(server_cpu) - before - $(cat "$work/warmup.cpu")))
answer=$(sed -n 's|.*<ERROR CODE="\([0-9]*\)" DESCRIPTION="\([^"]*\)".*|error \1: \2|p' "$work/flood.out")
printf 'Flood calls (%d PARAMVALUE, %d bytes) by monitor, one at a time:\n' "$params" \
  "$(wc -c <"$work/flood.xml")"
echo "  answer: ${answer:-$(head -c 200 "$work/flood.out")}"
echo "  ms:                                   $(stats <"$work/alone.times")"
printf '  server CPU per call, ms:              %.1f\n' "$(echo "$cpu $alone" | awk '{ print $1 / $2 / 1e6 }')"

# Eight flooding clients at once; meanwhile GetInstances in batches on fresh connections
# (the first of each batch, which carries the password check, is left out).
requests 51 "operator:$op_pw" GetInstance root%2Fqel "$work/gi.xml" >"$work/gi51.cfg"
flooder "$floods_per_client" >"$work/flooder.cfg"
flooders=()
for c in 1 2 3 4 5 6 7 8; do
  curl -K "$work/flooder.cfg" | tail -n +2 >"$work/flood.$c" &
  flooders+=($!)
done
: >"$work/during"
while :; do
  curl -K "$work/gi51.cfg" | tail -n +2 >>"$work/during"
  running=0
  for pid in "${flooders[@]}"; do kill -0 "$pid" 2>/dev/null && running=1; done
  [ "$running" = 1 ] || break
done
wait "${flooders[@]}"
echo "8 clients x $floods_per_client flood calls, ms:    $(cat "$work"/flood.[1-8] | stats)"
echo "GetInstance meanwhile, ms:              $(stats <"$work/during")"
