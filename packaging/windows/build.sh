#!/usr/bin/env bash
# Builds Tarnwick for 64-bit Windows on Debian 12: installs what is missing, builds the libraries once
# (build/windows-deps, or the folder that TARNWICK_WINDOWS_DEPS names) and then tarnwick-cli.exe,
# tarnwick-pst-reader.exe and the empty databases into build/windows.
#
#   build.sh [TARGET...]     further targets of the build, such as test_platform
set -euo pipefail
cd "$(dirname "$0")/../.."
./cmake/setup.sh windows
export TARNWICK_WINDOWS_DEPS="${TARNWICK_WINDOWS_DEPS:-$PWD/build/windows-deps}"
./packaging/windows/dependencies.sh
cmake --preset windows
cmake --build --preset windows --target tarnwick-cli tarnwick-pst-reader "$@"
