#!/usr/bin/env bash
# Compares a load from an Outlook store with readpst, which writes the same store to files:
#
#   bench/compare_outlook.sh DIR [COPIES] [RUNS]
#
# DIR holds real messages, one a file, at any depth. They are written as an Outlook store, COPIES
# times over (default 2). Each of RUNS rounds (default 3) times "tarnwick-cli load" and
# "readpst -e" on it, each from scratch. Printed are medians: messages a second, the ratio to ours,
# and the peak memory of the load's larger process.
set -euo pipefail
[ $# -ge 1 ] || { sed -n '2,9p' "$0"; exit 2; }
mail=$(realpath "$1")
copies=${2:-2}
runs=${3:-3}
cd "$(dirname "$0")/.."
./cmake/setup.sh bench
cmake --preset release >/dev/null
cmake --build --preset release --target tarnwick-cli tarnwick-make-outlook-store >/dev/null
bin=$PWD/build/release/bin

work=$(mktemp -d "${TMPDIR:-/tmp}/tarnwick-compare-XXXXXX")
trap 'rm -rf "$work"' EXIT
unset TARNWICK_HOME TARNWICK_PROFILE TARNWICK_PST_READER
mkdir "$work/profile"
count=$("$bin/tarnwick-make-outlook-store" "$mail" "$copies" "$work/profile/bench.pst")

timed() { # NAME COMMAND...
  local name=$1
  shift
  sync
  /usr/bin/time -o "$work/$name.times" -a -f '%e %U %S %M' "$@" >"$work/$name.out" 2>&1 ||
    { cat "$work/$name.out" >&2; exit 1; }
}

for ((run = 1; run <= runs; run++)); do
  rm -rf "$work/home" "$work/files"
  mkdir "$work/files"
  # What is made once in a program's life is not part of the load.
  "$bin/tarnwick-cli" --home "$work/home" list >/dev/null
  timed tarnwick "$bin/tarnwick-cli" --home "$work/home" --profile "$work/profile" load --accept all
  timed readpst readpst -q -e -o "$work/files" "$work/profile/bench.pst"
done
tail -n 1 "$work/tarnwick.out"

median() { # FILE COLUMNS-AS-AWK-EXPRESSION
  awk "{ print $2 }" "$1" | sort -n |
    awk '{ v[NR] = $1 } END { print NR % 2 ? v[(NR + 1) / 2] : (v[NR / 2] + v[NR / 2 + 1]) / 2 }'
}
base=$(median "$work/tarnwick.times" '$1')
echo "$count messages, medians of $runs runs"
printf '%-10s %10s %12s %12s %s\n' program seconds 'cpu seconds' messages/s 'load is faster by'
for name in tarnwick readpst; do
  echo "$name $(median "$work/$name.times" '$1') $(median "$work/$name.times" '$2 + $3') $count $base" |
    awk '{ printf "%-10s %10.3f %12.3f %12.0f %.2f\n", $1, $2, $3, $4 / $2, $2 / $5 }'
done
echo "peak memory of a process of the load: $(median "$work/tarnwick.times" '$4') kB; store: $(du -k "$work/profile/bench.pst" | cut -f1) kB"
