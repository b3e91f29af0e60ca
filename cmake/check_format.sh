#!/usr/bin/env bash
# Fails with the places where a source file differs from .clang-format. $1: clang-format.
set -euo pipefail
cd "$(dirname "$0")/.."
shopt -s nullglob
find src samples tests bench* fuzz* \( -name '*.cpp' -o -name '*.cc' -o -name '*.h' \) -print0 |
  xargs -0 -r "$1" --dry-run --Werror
