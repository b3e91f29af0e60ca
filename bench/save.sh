#!/usr/bin/env bash
# Measures saving messages in each form beside a plain copy of the same files, in one run:
#
#   bench/save.sh DIR [COPIES] [RUNS]
#
# DIR holds real messages, one a file, at any depth. They are written as an Outlook Express store,
# COPIES times over (default 4), and loaded. Each of RUNS rounds (default 5) saves all of them as
# .eml files, mbox and Maildir, and copies the .eml files with "cp -r -p". Printed are medians:
# seconds, seconds of processor time, messages a second, the ratio to cp (1 is as fast, more is
# faster), and peak memory. TARNWICK_BENCH_BIN names a folder of programs built already.
set -euo pipefail
[ $# -ge 1 ] || { sed -n '2,10p' "$0"; exit 2; }
mail=$(realpath "$1")
copies=${2:-4}
runs=${3:-5}
cd "$(dirname "$0")/.."
. bench/timing.sh
prepare save tarnwick-cli tarnwick-make-store
"$bin/tarnwick-make-store" "$mail" "$copies" "$work/maildir" "$work/profile" >/dev/null
rm -rf "$work/maildir"
"$bin/tarnwick-cli" --home "$work/home" --profile "$work/profile" load --accept all | tail -n 1
count=$("$bin/tarnwick-cli" --home "$work/home" list | wc -l)

for ((run = 1; run <= runs; run++)); do
  rm -rf "$work"/saved-* "$work/copy"
  for form in eml mbox maildir; do
    timed "$form" "$bin/tarnwick-cli" --home "$work/home" save --format "$form" "$work/saved-$form"
  done
  timed cp cp -r -p "$work/saved-eml" "$work/copy"
done
[ "$(find "$work/saved-eml" -type f | wc -l)" = "$count" ]
[ "$(find "$work/saved-maildir/cur" -type f | wc -l)" = "$count" ]

base=$(median "$work/cp.times")
echo "$count messages of $(du -k --apparent-size -s "$work/saved-eml" | cut -f1) kB, medians of $runs runs"
printf '%-10s %10s %10s %12s %8s %12s\n' form seconds 'of cpu' messages/s ratio 'memory kB'
for name in eml mbox maildir cp; do
  echo "$name $(median "$work/$name.times") $(median "$work/$name.cpu") $count $base" \
    "$(median "$work/$name.memory")" |
    awk '{ printf "%-10s %10.2f %10.2f %12.0f %8.2f %12d\n", $1, $2, $3, $4 / $2, $5 / $2, $6 }'
done
