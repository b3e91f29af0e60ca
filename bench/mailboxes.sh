#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#
# Loads the same messages from an Outlook Express store, an mbox file and a maildir, in one run:
#
#   bench/mailboxes.sh DIR [COPIES] [RUNS]
#
# DIR holds real messages, one a file, at any depth; they are written COPIES times over (default 4).
# Each of RUNS rounds (default 5) loads each into a new home, and the mbox file once more into the home
# that has it already. Printed are medians: seconds, seconds of processor time, messages a second by
# that, peak memory. TARNWICK_BENCH_BIN names a folder of programs built already.
set -euo pipefail
[ $# -ge 1 ] || { sed -n '5,13p' "$0"; exit 2; }
mail=$(realpath "$1")
copies=${2:-4}
runs=${3:-5}
cd "$(dirname "$0")/.."
. bench/timing.sh
prepare mailboxes tarnwick-cli tarnwick-make-store
"$bin/tarnwick-make-store" "$mail" "$copies" "$work/maildir" "$work/dbx" >/dev/null
mkdir -p "$work/maildir/new" "$work/mbox"
cli() { "$bin/tarnwick-cli" --home "$work/$1" "${@:2}"; }
cli first --profile "$work/dbx" load --accept all >/dev/null
cli first save --format mbox "$work/saved" >/dev/null
mv "$work/saved/Tarnwick.mbox" "$work/mbox/Inbox"
kinds="dbx mbox maildir"
for ((run = 1; run <= runs; run++)); do
  for kind in $kinds; do
    rm -rf "$work/home"
    cli home list >/dev/null
    timed $kind "$bin/tarnwick-cli" --home "$work/home" --profile "$work/$kind" load --accept all
    [ $kind = mbox ] || continue
    timed again "$bin/tarnwick-cli" --home "$work/home" --profile "$work/$kind" load --accept all
  done
done

printf '%-14s %9s %9s %12s %9s  %s\n' load seconds cpu 'messages/cpu' kB account
for kind in $kinds again; do
  account=$(grep -a '^found' "$work/$kind.out")
  count=$(echo "$account" | sed 's/^found \([0-9]*\),.*/\1/')
  echo "$kind $(median "$work/$kind.times") $(median "$work/$kind.cpu") $count $(median "$work/$kind.memory")" |
    awk '{ printf "%-14s %9.2f %9.2f %12.0f %9.0f  ", $1, $2, $3, $4 / $3, $5 }'
  echo "$account"
done
