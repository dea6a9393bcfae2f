#!/bin/sh
# Byte-for-byte comparison of what two builds of qel-cimserver answer: both serve the same
# generated array (1,000 FC ports by default) and get the same CIM-XML requests, sent with
# curl in the same order, once with the providers' own identity calls made in process and
# once over the local socket (--local-calls). Every answer of the second build must be the
# bytes the first one gave.
#
#   bench/wire/identical_answers.sh <build before> <build after> [ports]
#
# A build is a build directory of this tree (qel-cimserver, qel-passwd, qelsim and the
# provider modules built). Prints one line per request (its size, "same" or "DIFFERS") and
# exits non-zero when an answer differs; the differing answers are kept in a folder it names.
# Needs curl. The servers listen on loopback only, on free ports.
set -eu
before=${1:?usage: $0 <build before> <build after> [ports]}
after=${2:?usage: $0 <build before> <build after> [ports]}
ports=${3:-1000}
work=$(mktemp -d)
server_pid=
cleanup() {
  if [ -n "$server_pid" ]; then kill "$server_pid" 2>/dev/null || true; wait "$server_pid" 2>/dev/null || true; fi
  if [ -z "${keep:-}" ]; then rm -rf "$work"; fi
}
trap cleanup EXIT

password=$(head -c 12 /dev/urandom | od -An -tx1 | tr -d ' \n')
printf '%s\n' "$password" | "$before/src/Server/auth/qel-passwd" -f "$work/passwd" add admin >/dev/null
QELSIM_STATE=none "$before/src/qelapi/qelsim" generate --ports "$ports" --out "$work/array.json" >/dev/null

ns='<LOCALNAMESPACEPATH><NAMESPACE NAME="root"/><NAMESPACE NAME="qel"/></LOCALNAMESPACEPATH>'

# The body of an intrinsic request: method, then its IPARAMVALUEs as they are to be sent.
intrinsic() {
  printf '<?xml version="1.0" encoding="utf-8" ?><CIM CIMVERSION="2.0" DTDVERSION="2.0"><MESSAGE ID="1" PROTOCOLVERSION="1.0"><SIMPLEREQ><IMETHODCALL NAME="%s">%s%s</IMETHODCALL></SIMPLEREQ></MESSAGE></CIM>\n' "$1" "$ns" "$2"
}
# An extrinsic call: method, namespace elements, target (INSTANCENAME or CLASSNAME), PARAMVALUEs.
extrinsic() {
  case $3 in
    '<CLASSNAME'*) path=LOCALCLASSPATH ;;
    *) path=LOCALINSTANCEPATH ;;
  esac
  printf '<?xml version="1.0" encoding="utf-8" ?><CIM CIMVERSION="2.0" DTDVERSION="2.0"><MESSAGE ID="1" PROTOCOLVERSION="1.0"><SIMPLEREQ><METHODCALL NAME="%s"><%s><LOCALNAMESPACEPATH>%s</LOCALNAMESPACEPATH>%s</%s>%s</METHODCALL></SIMPLEREQ></MESSAGE></CIM>\n' "$1" "$path" "$2" "$3" "$path" "$4"
}
param() { printf '<IPARAMVALUE NAME="%s">%s</IPARAMVALUE>' "$1" "$2"; }
class() { param ClassName "<CLASSNAME NAME=\"$1\"/>"; }
flag() { param "$1" "<VALUE>$2</VALUE>"; }

# Sends request file $2 (method $1, CIMObject header $3) to the server on $port, answer to $4.
send() {
  curl -s -o "$4" -u "admin:$password" -H 'Content-Type: application/xml; charset="utf-8"' \
    -H 'CIMOperation: MethodCall' -H "CIMMethod: $1" -H "CIMObject: $3" \
    --data-binary @"$2" "http://127.0.0.1:$port/cimom"
}

start() {
  # $1 build, $2 local-calls mode
  QELSIM_STATE=none "$1/src/Server/main/qel-cimserver" --port 0 --socket "$work/cim.socket" \
    --local-calls "$2" --array "$work/array.json" --password-file "$work/passwd" \
    --log-level error >"$work/server.log" 2>&1 &
  server_pid=$!
  port=
  while [ -z "$port" ]; do
    sleep 0.2
    kill -0 "$server_pid"
    port=$(sed -n 's|.*listening on http://127.0.0.1:\([0-9]*\)/cimom.*|\1|p' "$work/server.log")
  done
}

stop() {
  kill "$server_pid"
  wait "$server_pid" 2>/dev/null || true
  server_pid=
}

# The requests, in the order they are sent: "name method CIMObject body". The first port's
# name is taken from the first build's EnumerateInstanceNames answer.
requests() {
  port_name=$1
  cat <<EOF
ei-fcport EnumerateInstances root/qel $(intrinsic EnumerateInstances "$(class QEL_FCPort)")
ei-fcalport EnumerateInstances root/qel $(intrinsic EnumerateInstances "$(class QEL_FCALPort)")
ei-sfp EnumerateInstances root/qel $(intrinsic EnumerateInstances "$(class QEL_SFP)")
ei-lesb EnumerateInstances root/qel $(intrinsic EnumerateInstances "$(class QEL_FCPortLESBStatistics)")
ei-managedelement EnumerateInstances root/qel $(intrinsic EnumerateInstances "$(class CIM_ManagedElement)")
ei-shallow-qualifiers EnumerateInstances root/qel $(intrinsic EnumerateInstances "$(class CIM_FCPort)$(flag DeepInheritance FALSE)$(flag IncludeQualifiers TRUE)$(flag IncludeClassOrigin TRUE)")
ei-propertylist EnumerateInstances root/qel $(intrinsic EnumerateInstances "$(class QEL_FCPort)$(param PropertyList '<VALUE.ARRAY><VALUE>DeviceID</VALUE><VALUE>Speed</VALUE><VALUE>nosuch</VALUE></VALUE.ARRAY>')")
ein-fcport EnumerateInstanceNames root/qel $(intrinsic EnumerateInstanceNames "$(class QEL_FCPort)")
ec-qualifiers EnumerateClasses root/qel $(intrinsic EnumerateClasses "$(flag DeepInheritance TRUE)$(flag IncludeQualifiers TRUE)")
ecn-all EnumerateClassNames root/qel $(intrinsic EnumerateClassNames "$(flag DeepInheritance TRUE)")
gc-fcport GetClass root/qel $(intrinsic GetClass "$(class QEL_FCPort)$(flag LocalOnly FALSE)$(flag IncludeClassOrigin TRUE)")
gi-port GetInstance root/qel $(intrinsic GetInstance "$(param InstanceName "$port_name")")
gi-port-propertylist GetInstance root/qel $(intrinsic GetInstance "$(param InstanceName "$port_name")$(param PropertyList '<VALUE.ARRAY><VALUE>Speed</VALUE></VALUE.ARRAY>')")
gi-missing GetInstance root/qel $(intrinsic GetInstance "$(param InstanceName '<INSTANCENAME CLASSNAME="QEL_FCPort"><KEYBINDING NAME="DeviceID"><KEYVALUE VALUETYPE="string">0</KEYVALUE></KEYBINDING></INSTANCENAME>')")
gp-speed GetProperty root/qel $(intrinsic GetProperty "$(param InstanceName "$port_name")$(param PropertyName '<VALUE>Speed</VALUE>')")
a-port Associators root/qel $(intrinsic Associators "$(param ObjectName "$port_name")")
an-port AssociatorNames root/qel $(intrinsic AssociatorNames "$(param ObjectName "$port_name")")
r-port References root/qel $(intrinsic References "$(param ObjectName "$port_name")$(flag IncludeQualifiers TRUE)")
rn-port ReferenceNames root/qel $(intrinsic ReferenceNames "$(param ObjectName "$port_name")")
an-class AssociatorNames root/qel $(intrinsic AssociatorNames "$(param ObjectName '<CLASSNAME NAME="QEL_FCPort"/>')")
ei-unknown-class EnumerateInstances root/qel $(intrinsic EnumerateInstances "$(class QEL_Nope)")
cc-refused CreateClass root/qel $(intrinsic CreateClass "$(param NewClass '<CLASS NAME="QEL_New"></CLASS>')")
m-systemname GetSystemName root/PG_Internal:QEL_InternalCache.InstanceID="localhost-InternalCache" $(extrinsic GetSystemName '<NAMESPACE NAME="root"/><NAMESPACE NAME="PG_Internal"/>' '<INSTANCENAME CLASSNAME="QEL_InternalCache"><KEYBINDING NAME="InstanceID"><KEYVALUE VALUETYPE="string">localhost-InternalCache</KEYVALUE></KEYBINDING></INSTANCENAME>' '')
m-class-untyped InitializeLoop root/qel:QEL_FCPort $(extrinsic InitializeLoop '<NAMESPACE NAME="root"/><NAMESPACE NAME="qel"/>' '<CLASSNAME NAME="QEL_FCPort"/>' '<PARAMVALUE NAME="CageName"><VALUE>cage1</VALUE></PARAMVALUE>')
m-unknown-method Pong root/qel:QEL_FCPort $(extrinsic Pong '<NAMESPACE NAME="root"/><NAMESPACE NAME="qel"/>' '<CLASSNAME NAME="QEL_FCPort"/>' '')
EOF
}

first_port() {
  # The first INSTANCENAME of an EnumerateInstanceNames answer.
  awk 'BEGIN { RS = "</INSTANCENAME>" } NR == 1 { sub(/.*<IRETURNVALUE>/, ""); print $0 "</INSTANCENAME>"; exit }' "$1"
}

differences=0
for mode in in-process socket; do
  for side in before after; do
    eval build=\$$side
    start "$build" "$mode"
    if [ "$side" = before ]; then
      intrinsic EnumerateInstanceNames "$(class QEL_FCPort)" >"$work/names.xml"
      send EnumerateInstanceNames "$work/names.xml" root/qel "$work/names.answer"
      port_name=$(first_port "$work/names.answer")
    fi
    mkdir -p "$work/$mode/$side"
    requests "$port_name" | while read -r name method object body; do
      printf '%s\n' "$body" >"$work/request.xml"
      send "$method" "$work/request.xml" "$object" "$work/$mode/$side/$name"
    done
    stop
  done
  echo "== identity calls $mode"
  for answer in "$work/$mode/before"/*; do
    name=$(basename "$answer")
    size=$(wc -c <"$answer")
    if cmp -s "$answer" "$work/$mode/after/$name"; then
      printf '%-24s %10s bytes  same\n' "$name" "$size"
    else
      printf '%-24s %10s bytes  DIFFERS\n' "$name" "$size"
      differences=$((differences + 1))
    fi
  done
done
if [ "$differences" -ne 0 ]; then
  keep=1
  echo "$differences answers differ; both sides are in $work"
  exit 1
fi
echo "all answers identical"
