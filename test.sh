#!/usr/bin/env bash
# Installs what is missing, builds, and runs every test. "./test.sh asan" does so under the address
# and undefined-behaviour sanitizers.
set -euo pipefail
cd "$(dirname "$0")"
preset="${1:-debug}"
./cmake/setup.sh
cmake --preset "$preset"
cmake --build --preset "$preset"
export LSAN_OPTIONS="suppressions=$PWD/cmake/lsan.supp:print_suppressions=0"
ctest --preset "$preset" --parallel "$(nproc)"
