#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#
# What is recovered of worn stores, beside what "undbx --recover" (Debian package undbx) recovers of
# the same files where it is installed:
#
#   bench/rescue.sh [MESSAGES]
#
# For each kind of store: its intact messages (all of whose text still stands in the file), how many
# of these were recovered, and of all that was recovered how many are whole messages, beginnings of
# messages, and wrong: neither. Then the time that the look for lost messages adds to a load, beside
# plain reads of the file. TARNWICK_BENCH_BIN names a folder of programs built already, UNDBX the
# other program.
set -euo pipefail
messages=${1:-1000}
cd "$(dirname "$0")/.."
. bench/timing.sh
prepare rescue tarnwick-cli tarnwick-worn-store
undbx=${UNDBX:-$(command -v undbx || true)}

cli() { "$bin/tarnwick-cli" --home "$work/home" "$@"; }
load() { cli --profile "$work/store" load --accept all "$@" >/dev/null 2>&1 || true; }

printf '%-16s %7s | %-25s | %s\n' '' '' 'tarnwick' 'undbx --recover'
printf '%-16s %7s | %6s %6s %5s %5s | %6s %6s %5s %5s\n' kind intact found whole parts wrong \
  found whole parts wrong
for kind in sound overwritten-10 overwritten-50 overwritten-90 deleted deleted-half deleted-reused \
  headless piece cut-10 cut-20 cut-30 cut-40 cut-50 cut-60 cut-70 cut-80 cut-90; do
  rm -rf "$work/store" "$work/home" "$work/out" "$work/other"
  mkdir -p "$work/out" "$work/other"
  "$bin/tarnwick-worn-store" make $kind "$messages" "$work/store"
  load --rescue
  cli save --format eml "$work/out" --folders >/dev/null || true
  read -r intact found whole parts wrong < <("$bin/tarnwick-worn-store" judge $kind "$messages" "$work/out")
  other='not installed'
  if [ -n "$undbx" ]; then
    timeout 300 "$undbx" --recover "$work/store/Inbox.dbx" "$work/other" >/dev/null 2>&1 || true
    read -r _ a b c d < <("$bin/tarnwick-worn-store" judge $kind "$messages" "$work/other")
    other=$(printf '%6s %6s %5s %5s' "$a" "$b" "$c" "$d")
  fi
  printf '%-16s %7s | %6s %6s %5s %5s | %s\n' $kind "$intact" "$found" "$whole" "$parts" "$wrong" "$other"
done

# A large store, all of it stored already and none of it lost: what is left is the look. Processor
# time; the disk reads the file once more.
rm -rf "$work/store" "$work/home"
"$bin/tarnwick-worn-store" make sound $((messages * 40)) "$work/store"
load
piped() { cat "$1" | cat >/dev/null; }
TIMEFORMAT='%U %S'
for what in plain load rescue; do
  for run in 1 2 3 4 5; do
    case $what in
      plain) command=(piped "$work/store/Inbox.dbx") ;;
      load) command=(load) ;;
      rescue) command=(load --rescue) ;;
    esac
    { time "${command[@]}"; } 2>&1 | awk '{ print $1 + $2 }'
  done | sort -n | sed -n 3p >"$work/$what"
done
size=$(stat -c %s "$work/store/Inbox.dbx")
echo "$size $(cat "$work/plain" "$work/load" "$work/rescue" | tr '\n' ' ')" |
  awk '{ printf "%.0f MB: read through a pipe %.3f s, load %.3f s, with the look %.3f s: %.1f reads more\n",
         $1 / 1e6, $2, $3, $4, ($4 - $3) / $2 }'
