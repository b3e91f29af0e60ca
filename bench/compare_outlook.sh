#!/usr/bin/env bash
# Compares loads from Outlook stores with readpst, which writes the same stores to files:
#
#   bench/compare_outlook.sh DIR [RUNS] [MESSAGES...]
#
# DIR holds real messages, one a file, at any depth. For each number of MESSAGES (default 1000 10000
# 20000) they are written, over and over, as a Unicode and as an ANSI store. Each of RUNS rounds
# (default 3) times "tarnwick-cli load" and "readpst -e" on it, each from scratch. Printed are
# medians: messages a second by the clock and by the processor time of all processes (user and
# system), our rates as multiples of readpst's, and the peak memory of the program and its reader.
set -euo pipefail
[ $# -ge 1 ] || { sed -n '2,10p' "$0"; exit 2; }
mail=$(realpath "$1")
runs=${2:-3}
shift $(($# < 2 ? $# : 2))
sizes=("$@")
[ ${#sizes[@]} -gt 0 ] || sizes=(1000 10000 20000)
cd "$(dirname "$0")/.."
./cmake/setup.sh bench
cmake --preset release >/dev/null
cmake --build --preset release --target tarnwick-cli tarnwick-make-outlook-store >/dev/null
bin=$PWD/build/release/bin

work=$(mktemp -d "${TMPDIR:-/tmp}/tarnwick-compare-XXXXXX")
trap 'rm -rf "$work"' EXIT
unset TARNWICK_HOME TARNWICK_PROFILE TARNWICK_READER
mkdir "$work/profile"

timed() { # NAME COMMAND...
  local name=$1
  shift
  sync
  /usr/bin/time -o "$work/$name.times" -a -f '%e %U %S' "$@" >"$work/$name.out" 2>&1 ||
    { cat "$work/$name.out" >&2; exit 1; }
}

median() { # FILE COLUMNS-AS-AWK-EXPRESSION
  awk "{ print $2 }" "$1" | sort -n |
    awk '{ v[NR] = $1 } END { print NR % 2 ? v[(NR + 1) / 2] : (v[NR / 2] + v[NR / 2 + 1]) / 2 }'
}

# What is made once in a program's life is not part of the load.
fresh_home() {
  rm -rf "${work:?}/home" "$work/files"
  mkdir "$work/files"
  "$bin/tarnwick-cli" --home "$work/home" list >/dev/null
}

load=("$bin/tarnwick-cli" --home "$work/home" --profile "$work/profile" load --accept all)

# A load of its own, watched: "program reader", each the most memory it had, in MB.
peaks() {
  fresh_home
  "${load[@]}" >/dev/null 2>&1 &
  local program=$! reader ours=0 its=0 now
  while now=$(awk '/^VmHWM/ { print $2 }' "/proc/$program/status" 2>/dev/null) && [ -n "$now" ]; do
    ours=$now
    reader=$(pgrep -P "$program" | head -n 1) || true
    now=$(awk '/^VmHWM/ { print $2 }' "/proc/${reader:-none}/status" 2>/dev/null) || true
    its=${now:-$its}
    sleep 0.02
  done
  wait "$program"
  echo "$((ours / 1024)) $((its / 1024))"
}

columns='%-8s %7s %8s | %8s %8s | %8s %8s | %6s %6s | %8s %8s\n'
echo "messages a second, medians of $runs runs; load average $(cut -d' ' -f1-3 /proc/loadavg)"
# shellcheck disable=SC2059
printf "$columns" store messages MB 'load' 'by cpu' readpst 'by cpu' ratio 'by cpu' 'MB load' reader
for size in "${sizes[@]}"; do
  for variant in unicode ansi; do
    rm -f "$work"/*.times
    store="$work/profile/bench.pst"
    "$bin/tarnwick-make-outlook-store" "$mail" "$size" "$store" "$variant"
    for ((run = 1; run <= runs; run++)); do
      fresh_home
      timed tarnwick "${load[@]}"
      tail -n 1 "$work/tarnwick.out" | grep -q "found $size, stored $size," ||
        { tail -n 1 "$work/tarnwick.out" >&2; exit 1; }
      timed readpst readpst -q -e -o "$work/files" "$store"
      written=$(find "$work/files" -name '*.eml' | wc -l)
      [ "$written" -eq "$size" ] || echo "readpst wrote $written of $size" >&2
    done
    read -r ours its <<<"$(peaks)"
    awk -v form="$columns" -v variant=$variant -v size="$size" -v mb="$(du -m "$store" | cut -f1)" \
      -v a="$(median "$work/tarnwick.times" '$1')" -v b="$(median "$work/tarnwick.times" '$2 + $3')" \
      -v c="$(median "$work/readpst.times" '$1')" -v d="$(median "$work/readpst.times" '$2 + $3')" \
      -v ours="$ours" -v its="$its" 'BEGIN {
        printf form, variant, size, mb, int(size / a), int(size / b), int(size / c), int(size / d),
          sprintf("%.2f", c / a), sprintf("%.2f", d / b), ours, its }'
  done
done
