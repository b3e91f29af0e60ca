#!/usr/bin/env bash
# Times a start of the window:
#
#   bench/start.sh HOME [RUNS]
#
# HOME is a program's folder, as tarnwick-make-repository makes it. Each of RUNS rounds (default 7)
# starts the program, which lists, paints its window, saves a picture of it and ends. Printed are
# medians: seconds until the list is painted (the whole run without the 0.2 seconds that it waits
# before the picture), seconds of processor time, peak memory. TARNWICK_BENCH_BIN names a folder of
# programs built already. Without DISPLAY the offscreen platform is used.
set -euo pipefail
[ $# -ge 1 ] || { sed -n '2,11p' "$0"; exit 2; }
home=$(realpath "$1")
runs=${2:-7}
cd "$(dirname "$0")/.."
bin=${TARNWICK_BENCH_BIN:-$PWD/build/release/bin}
[ -n "${DISPLAY:-}" ] || export QT_QPA_PLATFORM=offscreen
work=$(mktemp -d "${TMPDIR:-/tmp}/tarnwick-start-XXXXXX")
trap 'rm -rf "$work"' EXIT
export TARNWICK_HOME="$home" TARNWICK_PICTURE="$work/picture.png"
for ((run = 0; run <= runs; run++)); do
  /usr/bin/time -o "$work/measured" -f '%e %U %S %M' "$bin/tarnwick" 2>"$work/errors" ||
    { cat "$work/errors" >&2; exit 1; }
  # The first one warms the system's cache.
  [ "$run" = 0 ] || awk '{ print $1 - 0.2, $2 + $3, $4 }' "$work/measured" >>"$work/times"
done
median() { cut -d' ' -f"$1" "$work/times" | sort -n | awk '{ v[NR] = $1 } END { print v[int((NR + 1) / 2)] }'; }
echo "list painted after $(median 1) s; $(median 2) s of processor; peak memory $(median 3) kB"
