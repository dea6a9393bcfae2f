#!/usr/bin/env bash
# Installs what is missing, builds, and runs every test:
#   0. the code format check,
#   1. the whole suite under AddressSanitizer + UndefinedBehaviorSanitizer,
#   2. the concurrency suites under ThreadSanitizer,
#   3. the release build, its Debian package and the package's checks,
#   4. a smoke run of every benchmark program and a short run of every fuzz target.
set -euo pipefail
cd "$(dirname "$0")"
./scripts/setup.sh

jobs=${JOBS:-$(nproc)}

echo "== Code format (.clang-format) =="
# Fails on any C/C++ file that clang-format would change: run clang-format -i on it.
if git rev-parse --is-inside-work-tree >/dev/null 2>&1; then
  git ls-files -z '*.c' '*.cpp' '*.h'
else
  find src tests bench fuzz examples \( -name '*.c' -o -name '*.cpp' -o -name '*.h' \) -print0
fi | xargs -0 clang-format --dry-run --Werror
# Scratch files and the simulated array's default state file live in a folder of this run.
TMPDIR=$(mktemp -d "${TMPDIR:-/tmp}/qel-test.XXXXXX")
export TMPDIR
trap 'rm -rf "$TMPDIR"' EXIT
generator=()
command -v ninja >/dev/null && generator=(-G Ninja)
launcher=()
command -v ccache >/dev/null && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache -DCMAKE_C_COMPILER_LAUNCHER=ccache)

echo "== ASan + UBSan build =="
cmake -S . -B build/asan "${generator[@]}" "${launcher[@]}" -DCMAKE_BUILD_TYPE=Debug -DQEL_SANITIZE=ON
cmake --build build/asan -j "$jobs"
export ASAN_OPTIONS=detect_leaks=1:abort_on_error=0:strict_string_checks=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
ctest --test-dir build/asan --output-on-failure -j "$jobs"

echo "(ASan + UBSan stage done at ${SECONDS}s)"
echo "== ThreadSanitizer build (concurrency suites) =="
cmake -S . -B build/tsan "${generator[@]}" "${launcher[@]}" -DCMAKE_BUILD_TYPE=Debug -DQEL_TSAN=ON \
      -DQEL_BUILD_BENCH=OFF
cmake --build build/tsan -j "$jobs"
TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1 \
  ctest --test-dir build/tsan --output-on-failure -j "$jobs" -L concurrency

echo "== Release build and Debian package (built once; checked by tests/service/package_test.sh) =="
cmake -S . -B build/release "${generator[@]}" "${launcher[@]}" -DCMAKE_BUILD_TYPE=Release \
      -DQEL_BUILD_TESTS=OFF -DQEL_BUILD_BENCH=OFF -DCMAKE_INSTALL_PREFIX=/usr
cmake --build build/release -j "$jobs"
tests/service/package_test.sh build/release

echo "== Benchmark smoke run (every program runs; the 10,000-port sizes are left to docs/performance.md) =="
while IFS= read -r b; do
  echo "-- $b"
  "$b" --benchmark_min_time=0.001 --benchmark_filter='-/10000' >/dev/null
done < <(find build/asan/bench -type f -perm -u+x -name 'bench_*' | sort)

echo "== Fuzz targets, short run =="
FUZZ_SECONDS=${FUZZ_SECONDS:-15} fuzz/run-short.sh
echo "All test stages passed in $((SECONDS / 60)) min $((SECONDS % 60)) s."
