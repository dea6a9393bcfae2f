#!/bin/sh
# Instructions per call of the CIM-XML codec and per request of the server, counted by
# callgrind: unlike times they do not move with the load of a shared machine.
#
#   bench/wire/count_instructions.sh build/release-bench
#
# Each line: what was counted, the calls seen and the instructions per call. Only the
# instructions run inside the named functions count (callgrind --toggle-collect), so the
# benchmarks' own set-up is left out. "server" is a request's work on the server after
# authentication: decoding, the operation (provider included), encoding. "client" is
# CIMClient's work for the request, HTTP included. Needs valgrind.
set -eu
build=${1:?usage: $0 <build directory>}
out=$(mktemp -d)
trap 'rm -rf "$out"' EXIT

# count <label> <callgrind file> <function whose calls are counted>
count() {
  awk -v want="$3" -v label="$1" '
    /^fn=\(/ || /^cfn=\(/ {
      id = $1; sub(/^c?fn=/, "", id)
      name = $0; sub(/^c?fn=\([0-9]+\) ?/, "", name)
      if (name != "") names[id] = name
      callee = (substr($0, 1, 3) == "cfn") ? names[id] : ""
      next
    }
    /^calls=/ { if (callee != "" && index(callee, want) > 0) { split($1, c, "="); calls += c[2] } callee = ""; next }
    /^(totals|summary):/ { total = $2 }
    END { printf "%-44s calls=%-6d instructions/call=%.0f\n", label, calls, calls ? total / calls : 0 }
  ' "$2"
}

# run <file> <benchmark filter> <program> <seconds> <toggled function>...
run() {
  file=$1 filter=$2 program=$3 seconds=$4
  shift 4
  toggles=""
  for f in "$@"; do toggles="$toggles --toggle-collect=$f"; done
  # shellcheck disable=SC2086
  valgrind --tool=callgrind --callgrind-out-file="$out/$file" $toggles "$build/bench/wire/$program" \
    --benchmark_filter="$filter" --benchmark_min_time="$seconds" >/dev/null 2>&1
}

for n in 100 1000; do
  run encode.$n "BM_BuildAndEncodeEnumeration/$n\$" bench_wire_codec 0.01 'qel::cimxml::encodeResponse*'
  count "encode EnumerateInstances, $n ports" "$out/encode.$n" 'qel::cimxml::encodeResponse'
  run decode.$n "BM_DecodeEnumeration/$n\$" bench_wire_codec 0.01 'qel::cimxml::decodeResponse*'
  count "decode EnumerateInstances, $n ports" "$out/decode.$n" 'qel::cimxml::decodeResponse'
done

server='qel::cimxml::decodeRequest*'
operation='qel::server::DispatcherExecutor::execute*'
encode='qel::cimxml::encodeResponse*'
client='qel::client::CimXmlTransport::execute*'
# GetInstance's set-up (one EnumerateInstanceNames) is counted too: the longer run keeps
# its share small.
for case in "EnumerateInstances 100 0.05" "EnumerateInstances 1000 0.05" "GetInstance 100 0.5"; do
  set -- $case
  run "server.$1.$2" "BM_$1/$2/real_time/threads:1" bench_wire_load "$3" "$server" "$operation" "$encode"
  count "server $1, $2 ports" "$out/server.$1.$2" 'qel::server::DispatcherExecutor::execute'
  run "client.$1.$2" "BM_$1/$2/real_time/threads:1" bench_wire_load "$3" "$client"
  count "client $1, $2 ports" "$out/client.$1.$2" 'qel::client::CimXmlTransport::execute'
done
