#!/usr/bin/env bash
# Measures backup, restore, export and merge beside what they are held against, in one run:
#
#   bench/maintenance.sh DIR [COPIES] [RUNS]
#
# DIR holds real messages, one a file, at any depth. They are written as an Outlook Express store,
# COPIES times over (default 4), and loaded. Each of RUNS rounds (default 3) times the load, a plain
# cp of the repository file, the engine's own VACUUM INTO, and the four commands. Printed are
# medians: seconds, seconds of processor time, messages a second, the ratio to the yardstick (the
# slower of cp and VACUUM INTO for backup and restore, the load for export and merge; 1 is as fast,
# more is faster), and peak memory. At the end the repository and the one that was merged into must
# list the same number of messages. TARNWICK_BENCH_BIN names a folder of programs built already.
set -euo pipefail
[ $# -ge 1 ] || { sed -n '2,12p' "$0"; exit 2; }
mail=$(realpath "$1")
copies=${2:-4}
runs=${3:-3}
cd "$(dirname "$0")/.."
. bench/timing.sh
prepare maintenance tarnwick-cli tarnwick-make-store tarnwick-vacuum
count=$("$bin/tarnwick-make-store" "$mail" "$copies" "$work/maildir" "$work/profile")
rm -rf "$work/maildir"

cli() { # HOME COMMAND...
  local home=$1
  shift
  echo "$bin/tarnwick-cli" --home "$work/$home" --yes "$@"
}

for ((run = 1; run <= runs; run++)); do
  rm -rf "$work"/home "$work"/other "$work"/*.twb "$work"/copy.twr
  for home in home other; do "$bin/tarnwick-cli" --home "$work/$home" list >/dev/null; done
  timed load "$bin/tarnwick-cli" --home "$work/home" --profile "$work/profile" load --accept all
  timed cp cp "$work/home/Tarnwick.twr" "$work/copy.twr"
  rm "$work/copy.twr"
  timed vacuum "$bin/tarnwick-vacuum" "$work/home/Tarnwick.twr" "$work/copy.twr"
  rm "$work/copy.twr"
  timed backup $(cli home backup "$work/full.twb")
  timed restore $(cli home restore "$work/full.twb")
  timed export $(cli home export "$work/part.twb")
  timed merge $(cli other merge --accept all "$work/part.twb")
done

slower=$(printf '%s\n' "$(median "$work/cp.times")" "$(median "$work/vacuum.times")" | sort -n | tail -n 1)
load=$(median "$work/load.times")
echo "$count messages, medians of $runs runs; repository: $(du -k "$work/home/Tarnwick.twr" | cut -f1) kB"
printf '%-10s %10s %10s %12s %8s %12s\n' operation seconds 'of cpu' messages/s ratio 'memory kB'
for name in load cp vacuum backup restore export merge; do
  case $name in
    backup | restore) against=$slower ;;
    export | merge) against=$load ;;
    *) against=0 ;;
  esac
  echo "$name $(median "$work/$name.times") $(median "$work/$name.cpu") $count $against" \
    "$(median "$work/$name.memory")" |
    awk '{
      seconds = $2 < 0.01 ? 0.01 : $2
      ratio = $5 + 0 == 0 ? "-" : sprintf("%.2f", $5 / seconds)
      printf "%-10s %10.2f %10.2f %12.0f %8s %12d\n", $1, $2, $3, $4 / seconds, ratio, $6
    }'
done
listed=$("$bin/tarnwick-cli" --home "$work/home" list | wc -l)
merged=$("$bin/tarnwick-cli" --home "$work/other" list | wc -l)
echo "listed: $listed, in the repository merged into: $merged"
[ "$listed" = "$merged" ]
