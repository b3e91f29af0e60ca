#!/usr/bin/env bash
# Runs the tests of the rooms that need no window under Wine, each room's program in a prefix of its
# own, and then moves repositories between the systems (move.sh).
#
#   test.sh [ROOM...]      of these rooms alone; without move.sh
#
# Tests that ask for what Wine or Windows hasn't got stand with the reason in skipped-tests.txt.
# TARNWICK_WINE_PREFIXES names another folder for the prefixes than build/windows/prefixes.
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
cd "$here/../.."
rooms=("$@")
if [ $# -eq 0 ]; then
  rooms=(platform database core repository intake oe contacts maintenance outlook sources takeout
         reading search timeline look board app)
fi
"$here/build.sh" "${rooms[@]/#/test_}"

build="$PWD/build/windows"
prefixes="${TARNWICK_WINE_PREFIXES:-$build/prefixes}"
mkdir -p "$prefixes" "$build/test-logs"
# Letters that people sent are read on Linux; here it would take long and show nothing new.
export WINEDEBUG=-all TARNWICK_DATA=none

# The prefix that the others are copies of: files are shared, the registry is not.
if [ ! -e "$prefixes/made" ]; then
  rm -rf "$prefixes/first"
  WINEPREFIX="$prefixes/first" "$here/wine.sh" wineboot --init >/dev/null 2>&1
  WINEPREFIX="$prefixes/first" /usr/lib/wine/wineserver64 -w
  touch "$prefixes/made"
fi

run_room() {
  local room="$1" prefix log skipped status=0
  prefix="$prefixes/$room"
  log="$build/test-logs/$room.log"
  rm -rf "$prefix"
  cp -al "$prefixes/first" "$prefix"
  for file in "$prefix"/*.reg; do cp "$file" "$file.own" && mv "$file.own" "$file"; done
  skipped="$(awk -v room="$room" '$1 == room { printf "%s%s", sep, $2; sep = ":" }' "$here/skipped-tests.txt")"
  WINEPREFIX="$prefix" timeout -k 10 900 "$here/wine.sh" "$build/tests/test_$room.exe" \
    --gtest_brief=1 --gtest_filter="*${skipped:+-$skipped}" >"$log" 2>&1 || status=$?
  rm -rf "$prefix"
  echo "$room: $(grep -aE '^\[  PASSED  \]' "$log" | tr -d '\r' || echo "ended with $status");" \
       "$(awk -v room="$room" '$1 == room' "$here/skipped-tests.txt" | wc -l) rows of skipped tests"
  if [ "$status" -ne 0 ]; then
    grep -aE '^\[  FAILED  \]|Failure|^ *$room' "$log" | tr -d '\r' | head -40
    return 1
  fi
}

failed=0
for room in "${rooms[@]}"; do run_room "$room" || failed=1; done
[ "$failed" -eq 0 ] || exit 1
[ $# -gt 0 ] || "$here/move.sh"
