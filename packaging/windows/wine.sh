#!/usr/bin/env bash
# Runs a Windows program under Wine, without a display: in the prefix that WINEPREFIX names, else in
# one of the dependencies' folder.
set -euo pipefail
deps="${TARNWICK_WINDOWS_DEPS:-$(cd "$(dirname "$0")/../.." && pwd)/build/windows-deps}"
export WINEPREFIX="${WINEPREFIX:-$deps/prefix}"
export WINEDEBUG="${WINEDEBUG:--all}" WINEDLLOVERRIDES="mscoree,mshtml=" LC_ALL=C.UTF-8
unset DISPLAY
wine="$(command -v wine64 || echo /usr/lib/wine/wine64)"
exec "$wine" "$@"
