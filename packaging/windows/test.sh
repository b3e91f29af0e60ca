#!/usr/bin/env bash
# Runs the tests of the rooms that need no window under Wine, each room's program in a prefix of its
# own, as many at once as there are processors, and then moves repositories between the systems
# (move.sh).
#
#   test.sh [ROOM...]      of these rooms alone; without move.sh
#
# Tests that ask for what Wine or Windows hasn't got stand with the reason in skipped-tests.txt.
# TARNWICK_WINE_PREFIXES names another folder for the prefixes than build/windows/prefixes.
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
cd "$here/../.."
rooms=("$@")
if [ $# -eq 0 ]; then  # those that take longest first
  rooms=(board app maintenance outlook oe database platform sources takeout search look repository
         contacts intake reading timeline core)
fi
"$here/build.sh" "${rooms[@]/#/test_}"

build="$PWD/build/windows"
prefixes="${TARNWICK_WINE_PREFIXES:-$build/prefixes}"
mkdir -p "$prefixes" "$build/test-logs"
# Letters that people sent are read on Linux; here it would take long and show nothing new.
export WINEDEBUG=-all TARNWICK_DATA=none
# What lies in the home of whoever runs the tests would be that person's documents in Windows as well.
export HOME="$prefixes/home"
mkdir -p "$HOME"

# The prefix that the others are copies of: files are shared, the registry is not.
if [ ! -e "$prefixes/made" ]; then
  rm -rf "$prefixes/first"
  WINEPREFIX="$prefixes/first" "$here/wine.sh" wineboot --init >/dev/null 2>&1
  WINEPREFIX="$prefixes/first" /usr/lib/wine/wineserver64 -w
  touch "$prefixes/made"
fi

run_room() {
  local room="$1" prefix log skipped status=0 started=$SECONDS
  prefix="$prefixes/$room"
  log="$build/test-logs/$room.log"
  rm -rf "$prefix"
  cp -al "$prefixes/first" "$prefix"
  for file in "$prefix"/*.reg; do cp "$file" "$file.own" && mv "$file.own" "$file"; done
  skipped="$(awk -v room="$room" '$1 == room { printf "%s%s", sep, $2; sep = ":" }' "$here/skipped-tests.txt")"
  WINEPREFIX="$prefix" timeout -k 10 900 "$here/wine.sh" "$build/tests/test_$room.exe" \
    --gtest_brief=1 --gtest_filter="*${skipped:+-$skipped}" >"$log" 2>&1 || status=$?
  WINEPREFIX="$prefix" /usr/lib/wine/wineserver64 -k || true
  rm -rf "$prefix"
  echo "$room: $(grep -aE '^\[  PASSED  \]' "$log" | tr -d '\r' || echo "ended with $status");" \
       "$(awk -v room="$room" '$1 == room' "$here/skipped-tests.txt" | wc -l) rows of skipped tests;" \
       "$((SECONDS - started)) s"
  if [ "$status" -ne 0 ]; then
    grep -aE -A8 'Failure|^wine: ' "$log" | tr -d '\r' | cut -c 1-300 | head -80 || true
    grep -aE '^\[  FAILED  \]' "$log" | tr -d '\r' | sort -u | head -20 || true
    return 1
  fi
}

failed=0
running=0
for room in "${rooms[@]}"; do
  if [ "$running" -ge "$(nproc)" ]; then
    wait -n || failed=1
    running=$((running - 1))
  fi
  run_room "$room" &
  running=$((running + 1))
done
for ((; running > 0; --running)); do wait -n || failed=1; done
[ "$failed" -eq 0 ] || exit 1
[ $# -gt 0 ] || "$here/move.sh"
