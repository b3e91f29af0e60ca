#!/usr/bin/env bash
# Compares a whole load with other programs that take the same mail in, side by side in one run:
#
#   bench/compare.sh DIR [COPIES] [RUNS]
#
# DIR holds real messages, one a file, at any depth. They are written as a maildir and as an Outlook
# Express store, COPIES times over (each copy with Message-IDs of its own; default 4). Each of RUNS
# rounds (default 5) times "tarnwick-cli load" on the store, and "mu index", "notmuch new" and
# "cp -r" on the maildir, each from scratch. Printed are medians: messages a second, the ratio to
# ours, and the peak memory of the load. BEFORE=FILE names another tarnwick-cli, beside the one that
# is built, for the same load; "one core" is ours on one processor.
set -euo pipefail
[ $# -ge 1 ] || { sed -n '2,12p' "$0"; exit 2; }
mail=$(realpath "$1")
copies=${2:-4}
runs=${3:-5}
cd "$(dirname "$0")/.."
./cmake/setup.sh bench
cmake --preset release >/dev/null
cmake --build --preset release --target tarnwick-cli tarnwick-make-store >/dev/null
bin=$PWD/build/release/bin

work=$(mktemp -d "${TMPDIR:-/tmp}/tarnwick-compare-XXXXXX")
trap 'rm -rf "$work"' EXIT
export HOME="$work/user" NOTMUCH_CONFIG="$work/notmuch-config" XDG_CACHE_HOME="$work/cache"
unset TARNWICK_HOME TARNWICK_PROFILE
mkdir -p "$HOME"
count=$("$bin/tarnwick-make-store" "$mail" "$copies" "$work/maildir" "$work/profile")

now() { date +%s.%N; }
timed() { # NAME COMMAND...
  local name=$1 begin end
  shift
  sync
  begin=$(now)
  "$@" >"$work/$name.out" 2>&1 || { cat "$work/$name.out" >&2; exit 1; }
  end=$(now)
  echo "$begin $end" | awk '{ printf "%.4f\n", $2 - $1 }' >>"$work/$name.times"
}
load() { # NAME COMMAND...
  local name=$1
  shift
  rm -rf "$work/home"
  # What is made once in a program's life is not part of the load.
  "$@" --home "$work/home" list >/dev/null
  timed "$name" /usr/bin/time -o "$work/$name.cost" -a -f '%M %U %S' \
    "$@" --home "$work/home" --profile "$work/profile" load --accept all
}
mu_index() { mu index --quiet; }

loads=(tarnwick one-core)
for ((run = 1; run <= runs; run++)); do
  rm -rf "$work/cache" "$work/copy" "$work/maildir/.notmuch"
  if [ -n "${BEFORE:-}" ]; then
    loads=(tarnwick one-core before)
    load before "$BEFORE"
  fi
  load one-core taskset -c 0 "$bin/tarnwick-cli"
  load tarnwick "$bin/tarnwick-cli"
  mu init --quiet --maildir="$work/maildir" >/dev/null
  timed mu mu_index
  printf '[database]\npath=%s\n[user]\nname=a\nprimary_email=a@example.org\n' "$work/maildir" >"$NOTMUCH_CONFIG"
  timed notmuch notmuch new --quiet
  timed cp cp -r "$work/maildir" "$work/copy"
done
tail -n 1 "$work/tarnwick.out"

median() { sort -n "$1" | awk '{ v[NR] = $1 } END { print NR % 2 ? v[(NR + 1) / 2] : (v[NR / 2] + v[NR / 2 + 1]) / 2 }'; }
base=$(median "$work/tarnwick.times")
echo "$count messages, medians of $runs runs"
printf '%-14s %10s %14s %s\n' program seconds messages/s 'load is faster by'
for name in "${loads[@]}" mu notmuch cp; do
  echo "$name $(median "$work/$name.times") $count $base" |
    awk '{ printf "%-14s %10.3f %14.0f %.2f\n", $1, $2, $3 / $2, $2 / $4 }'
done
for name in "${loads[@]}"; do
  awk '{ print $1 }' "$work/$name.cost" >"$work/memory"
  awk '{ print $2 + $3 }' "$work/$name.cost" >"$work/processor"
  echo "$name: $(median "$work/processor") s of processor, peak memory $(median "$work/memory") kB"
done
echo "repository: $(du -k "$work/home/Tarnwick.twr" | cut -f1) kB; mail: $(du -k --apparent-size -s "$work/maildir/cur" | cut -f1) kB"
