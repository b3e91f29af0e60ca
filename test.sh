#!/usr/bin/env bash
# Installs what is missing, builds, and runs every test.
#
#   ./test.sh                  as people work on it
#   ./test.sh asan [ROOM...]   under the address and undefined-behaviour sanitizers; of these rooms
#                              (folders of tests/) alone, where some are named
set -euo pipefail
cd "$(dirname "$0")"
preset="${1:-debug}"
rooms=("${@:2}")
./cmake/setup.sh
cmake --preset "$preset"
targets=("${rooms[@]/#/test_}")
cmake --build --preset "$preset" ${targets[@]:+--target "${targets[@]}"}
only=""
if [ ${#rooms[@]} -gt 0 ]; then only="^($(IFS='|' && echo "${rooms[*]}"))\\."; fi
export LSAN_OPTIONS="suppressions=$PWD/cmake/lsan.supp:print_suppressions=0"
ctest --preset "$preset" --parallel "$(nproc)" ${only:+-R "$only"}
