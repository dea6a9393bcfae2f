#!/usr/bin/env bash
# Builds the fuzz targets with clang and runs each for a short while (FUZZ_SECONDS, default
# 20) from its seed corpus. For a long run: FUZZ_SECONDS=3600 fuzz/run-short.sh, or run a
# target directly (docs/security.md has the commands and the figures of the long runs):
#   build/fuzz/fuzz/fuzz_cimxml_request -max_total_time=3600 fuzz/corpus/cimxml
# Crashes are written as crash-* files in the current directory.
#
# Each run must also end with at least its target's coverage floor (libFuzzer's final
# `cov:`). A build whose libraries lack coverage instrumentation leaves libFuzzer nearly
# blind: it then counts only the edges of the target's own source and of the header-only
# code compiled into it (Boost.Beast for the HTTP head), and the check fails. Each floor
# lies below what the seed corpus alone reaches and well above a blind 15 s run.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${FUZZ_SECONDS:-20}
build=build/fuzz

# target:corpus folder:floor   cov of a blind 15 s run (- not measured) / seeds alone / a 15 s run
targets=(
  cimxml_request:cimxml:900   # 12 / 1,005 / 1,501
  object_path:path:300        # 14 / 348 / 637
  mof:mof:480                 # 122 / 549 / 942
  http_request_head:http:1000 # 773 / 1,012 / 1,561
  password_file:passwd:100    # 36 / 123 / 161
  port_wwn:wwn:40             # - / 46 / 51
  config_file:config:380      # - / 430 / 535
  cimload_answer:http_answer:130 # - / 159 / 206
  cimxml_response:response:1000 # - / 1,131 / (8 min: 1,559)
  certificate_map:certmap:140  # - / 169 / (8 min: 262)
)

launcher=()
command -v ccache >/dev/null && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache -DCMAKE_C_COMPILER_LAUNCHER=ccache)
generator=()
command -v ninja >/dev/null && generator=(-G Ninja)
cmake -S . -B "$build" "${generator[@]}" "${launcher[@]}" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ -DQEL_BUILD_FUZZ=ON -DQEL_SANITIZE=ON \
  -DQEL_BUILD_TESTS=OFF -DQEL_BUILD_BENCH=OFF >/dev/null
names=()
for target in "${targets[@]}"; do
  name=${target%%:*}
  names+=("fuzz_$name")
done
cmake --build "$build" -j "${JOBS:-2}" --target "${names[@]}"

for target in "${targets[@]}"; do
  IFS=: read -r name corpus floor <<<"$target"
  work=$(mktemp -d)
  cp fuzz/corpus/"$corpus"/* "$work"/
  echo "-- fuzz_$name for ${seconds}s"
  "$build"/fuzz/fuzz_"$name" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 \
    -print_final_stats=1 "$work" >"$work.log" 2>&1 || {
    tail -n 40 "$work.log"
    rm -rf "$work" "$work.log"
    exit 1
  }
  tail -n 3 "$work.log"
  cov=$(sed -n 's/.*[[:space:]]DONE *cov: \([0-9]*\).*/\1/p' "$work.log" | tail -n 1)
  rm -rf "$work" "$work.log"
  if [ -z "$cov" ] || [ "$cov" -lt "$floor" ]; then
    echo "error: fuzz_$name ended with cov: ${cov:-none}, below its floor of $floor:" \
      "are the libraries built with -fsanitize=fuzzer-no-link?" >&2
    exit 1
  fi
  echo "   cov: $cov (floor $floor)"
done
