#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#
# What is recovered of worn Outlook stores, beside an ordinary load of them and what readpst (Debian
# package pst-utils) writes with deleted items asked for, where it is installed:
#
#   bench/rescue_outlook.sh [MESSAGES]
#
# For each kind of store, Unicode and ANSI: how many of the messages an ordinary load stores; of those
# that load --rescue gives how many are whole, parts of one, and mixed of several; and how many letters
# readpst -D -e writes that are of one message, whole or not, and mixed. Then the processor time that the search adds to a load of a large sound store, beside
# plain reads of the file. TARNWICK_BENCH_BIN names a folder of programs built already.
set -euo pipefail
messages=${1:-1000}
cd "$(dirname "$0")/.."
. bench/timing.sh
prepare rescue-outlook tarnwick-cli tarnwick-worn-outlook
readpst=$(command -v readpst || true)

cli() { "$bin/tarnwick-cli" --home "$work/home" "$@"; }
load() { cli --profile "$work/store" load --full --accept all "$@" 2>/dev/null | tail -n 1; }

printf '%-14s %-8s %7s | %6s %6s %6s | %s\n' kind format load whole parts mixed 'readpst: letters mixed'
for kind in sound deleted-half deleted headless index-10 index-50 index-90 cut-10 cut-20 cut-30 \
  cut-40 cut-50 cut-60 cut-70 cut-80 cut-90; do
  for format in unicode ansi; do
    rm -rf "$work"/*
    mkdir -p "$work/store" "$work/out" "$work/other"
    "$bin/tarnwick-worn-outlook" make $kind $format "$messages" "$work/store/mail.pst"
    plain=$(load | sed -n 's/.*[^y] stored \([0-9]*\),.*/\1/p')
    rm -rf "$work/home"
    load --rescue >/dev/null
    cli save --format eml "$work/out" >/dev/null || true
    other='not installed'
    if [ -n "$readpst" ]; then
      timeout 300 "$readpst" -D -e -q -o "$work/other" "$work/store/mail.pst" >/dev/null 2>&1 || true
      other=$("$bin/tarnwick-worn-outlook" judge "$work/other" | awk '{ print $1 + $2, $3 }')
    fi
    read -r whole parts mixed < <("$bin/tarnwick-worn-outlook" judge "$work/out")
    printf '%-14s %-8s %7s | %6s %6s %6s | %s\n' $kind $format "${plain:-0}" "$whole" "$parts" "$mixed" "$other"
  done
done

rm -rf "$work"/*
mkdir -p "$work/store"
"$bin/tarnwick-worn-outlook" make sound unicode $((messages * 10)) "$work/store/mail.pst"
load >/dev/null
piped() { cat "$1" | cat >/dev/null; }
TIMEFORMAT='%U %S'
for what in plain load rescue; do
  for run in 1 2 3 4 5; do
    case $what in
      plain) command=(piped "$work/store/mail.pst") ;;
      load) command=(load) ;;
      rescue) command=(load --rescue) ;;
    esac
    { time "${command[@]}" >/dev/null; } 2>&1 | awk '{ print $1 + $2 }'
  done | sort -n | sed -n 3p >"$work/$what"
done
size=$(stat -c %s "$work/store/mail.pst")
echo "$size $(cat "$work/plain" "$work/load" "$work/rescue" | tr '\n' ' ')" |
  awk '{ printf "%.0f MB: read through a pipe %.3f s, load %.3f s, with the search %.3f s: %.1f reads more\n",
         $1 / 1e6, $2, $3, $4, ($4 - $3) / $2 }'
