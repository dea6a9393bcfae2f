#!/usr/bin/env bash
# Builds the fuzz targets with clang and runs each for a short while (FUZZ_SECONDS, default
# 20). For a long run: FUZZ_SECONDS=3600 fuzz/run-short.sh, or run a target directly:
#   build/fuzz/fuzz/fuzz_cimxml_request -max_total_time=3600 fuzz/corpus/cimxml
# Crashes are written as crash-* files in the current directory.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${FUZZ_SECONDS:-20}
build=build/fuzz
launcher=()
command -v ccache >/dev/null && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache -DCMAKE_C_COMPILER_LAUNCHER=ccache)
generator=()
command -v ninja >/dev/null && generator=(-G Ninja)
cmake -S . -B "$build" "${generator[@]}" "${launcher[@]}" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ -DQEL_BUILD_FUZZ=ON -DQEL_SANITIZE=ON \
  -DQEL_BUILD_TESTS=OFF -DQEL_BUILD_BENCH=OFF >/dev/null
cmake --build "$build" -j "${JOBS:-2}" --target fuzz_cimxml_request fuzz_object_path fuzz_mof \
  fuzz_certificate_map
for target in cimxml_request:cimxml object_path:path mof:mof certificate_map:certmap; do
  name=${target%%:*}
  corpus=${target##*:}
  work=$(mktemp -d)
  cp fuzz/corpus/"$corpus"/* "$work"/
  echo "-- fuzz_$name for ${seconds}s"
  "$build"/fuzz/fuzz_"$name" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 \
    -print_final_stats=1 "$work" 2>&1 | tail -n 3
  rm -rf "$work"
done
