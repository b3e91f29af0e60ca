#!/usr/bin/env bash
# Fails with what clang-tidy finds. $1: a build folder with compile_commands.json; $2: how
# many of the sources that changed last are looked at (all of them without it).
set -euo pipefail
cd "$(dirname "$0")/.."
build="$1"
most="${2:-0}"
known=$(grep -o '"file": "[^"]*"' "$build/compile_commands.json" | cut -d'"' -f4 | sort -u)
sources=()
# The sources in the order of their last change; a clone without history has them in any order.
while read -r file; do
  [ -f "$file" ] || continue
  grep -qxF "$PWD/$file" <<<"$known" || continue
  sources+=("$file")
  [ "${#sources[@]}" -ne "$most" ] || break
done < <(git log --format= --name-only -- '*.cpp' '*.cc' | awk '!seen[$0]++')
printf '%s\0' "${sources[@]}" | xargs -0 -P "$(nproc)" -n 1 clang-tidy --quiet -p "$build" 2>/dev/null
echo "clang-tidy: ${#sources[@]} files are clean"
