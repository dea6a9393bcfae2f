#!/usr/bin/env bash
# Installs what is missing, builds, and runs the CIM server on the demo array
# (foreground; Ctrl-C stops it cleanly). Extra arguments go to the server,
# e.g. ./run.sh --port 15988   (see: build/release/src/Server/main/qel-cimserver --help)
set -euo pipefail
cd "$(dirname "$0")"
./scripts/setup.sh

generator=()
command -v ninja >/dev/null && generator=(-G Ninja)
# The same configuration as the package's (test.sh, README): installed under /usr.
cmake -S . -B build/release "${generator[@]}" -DCMAKE_BUILD_TYPE=Release \
      -DQEL_BUILD_TESTS=OFF -DQEL_BUILD_BENCH=OFF -DCMAKE_INSTALL_PREFIX=/usr >/dev/null
cmake --build build/release -j "${JOBS:-$(nproc)}" --target qel-cimserver qel-passwd qelsim \
      QEL_FCPortProvider QEL_InternalCacheProvider

exec build/release/src/Server/main/qel-cimserver --demo "$@"
