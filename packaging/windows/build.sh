#!/usr/bin/env bash
# Builds Tarnwick for 64-bit Windows on Debian 12: installs what is missing, builds the libraries once
# (build/windows-deps, or the folder that TARNWICK_WINDOWS_DEPS names), then the programs, their handbook
# and the empty databases into build/windows, and packs the installer and the portable program (pack.sh).
#
#   build.sh                the whole
#   build.sh TARGET...      of the build these targets alone, such as tarnwick-cli or test_platform;
#                           nothing is packed, and Qt is not built if it isn't there
set -euo pipefail
cd "$(dirname "$0")/../.."
./cmake/setup.sh windows
export TARNWICK_WINDOWS_DEPS="${TARNWICK_WINDOWS_DEPS:-$PWD/build/windows-deps}"
if [ $# -gt 0 ]; then
  mapfile -t libraries < <(awk '!/^#/ && NF && $1 != "qt6-base" { print $1 }' packaging/windows/sources.txt)
  ./packaging/windows/dependencies.sh "${libraries[@]}"
  cmake --preset windows
  exec cmake --build --preset windows --target "$@"
fi
./packaging/windows/dependencies.sh
cmake --preset windows
cmake --build --preset windows --target tarnwick tarnwick-cli tarnwick-reader
./packaging/windows/pack.sh
