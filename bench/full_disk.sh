#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#
# What a full disk does, by how full it is:
#
#   bench/full_disk.sh DIR [LEVELS]
#
# DIR holds real messages, one a file, at any depth; 300 of them and one of 6 MB are taken. Load (from
# Outlook Express and from Outlook), merge, restore, backup and export run on file systems of LEVELS
# sizes (default 24), from one with no room left to one with enough. Of each run it is looked at
#
#   - whether the exit status says what came of it, and one line at most tells of the full disk,
#   - whether the counts add up, and what is said to be stored is what the repository lists,
#   - whether the repository opens, and what check says of it,
#   - whether the same command, run again with room, does the rest.
#
# Printed are every run, and then the table of docs/reliability.md. The exit status is 1 when
# something did not hold. The file systems are tmpfs in a mount namespace of the script's own: it
# needs root, or a system that allows unprivileged namespaces. TARNWICK_BENCH_BIN names a folder of
# programs built already.
set -euo pipefail
[ $# -ge 1 ] || { sed -n '5,22p' "$0"; exit 2; }
mail=$(realpath "$1")
levels=${2:-24}
cd "$(dirname "$0")/.."
if [ -z "${TARNWICK_FULL_DISK:-}" ]; then
  if [ -z "${TARNWICK_BENCH_BIN:-}" ]; then
    ./cmake/setup.sh
    cmake --preset release >/dev/null
    cmake --build --preset release --target tarnwick-cli tarnwick-reader tarnwick-make-store \
      tarnwick-make-outlook-store >/dev/null
  fi
  exec env TARNWICK_FULL_DISK=1 unshare --mount --map-root-user bench/full_disk.sh "$mail" "$levels"
fi
bin=$(realpath "${TARNWICK_BENCH_BIN:-build/release/bin}")
unset TARNWICK_HOME TARNWICK_PROFILE

work=$(mktemp -d "${TMPDIR:-/tmp}/tarnwick-full-disk-XXXXXX")
disk=$work/disk
trap 'umount "$disk" 2>/dev/null || true; rm -rf "$work"' EXIT
mkdir -p "$work/mail" "$work/outlook" "$work/few" "$disk"

cli() { # HOME COMMAND...
  local home=$1
  shift
  "$bin/tarnwick-cli" --home "$home" --yes "$@"
}

# What is loaded, merged and restored.
find "$mail" -type f -size -200k | sort | awk 'NR % 3 == 0 && ++n <= 300' |
  cat -n | while read -r n file; do cp "$file" "$work/mail/$(printf '%04d' "$n").eml"; done
{
  printf 'From: Ann <ann@example.org>\r\nTo: bob@example.org\r\nSubject: large\r\n'
  printf 'Message-ID: <large@example.org>\r\nDate: Mon, 5 Jan 2004 10:00:00 +0000\r\n\r\n'
  head -c 4500000 /dev/urandom | base64 -w 76 | sed 's/$/\r/'
} >"$work/mail/0150b.eml"
"$bin/tarnwick-make-store" "$work/mail" 1 "$work/maildir" "$work/profile" >/dev/null
"$bin/tarnwick-make-outlook-store" "$work/mail" 300 "$work/outlook/Outlook.pst" unicode >/dev/null
cp "$work"/mail/000[1-9].eml "$work/few"
for home in empty full few; do cli "$work/$home" list >/dev/null; done
cli "$work/full" --profile "$work/profile" load --accept all >/dev/null
cli "$work/few" take "$work"/few/*.eml >/dev/null
cli "$work/full" backup "$work/full.twb" >/dev/null 2>&1
cli "$work/full" export "$work/part.twb" >/dev/null 2>&1

rows() { cli "$1" list 2>/dev/null | wc -l; }
number() { sed -n "s/.*\b$1 \([0-9]*\).*/\1/p" <<<"$2" | tail -n 1; }

# The operations: where each begins, and what it runs in $disk/home.
start_of() { case $1 in load | outlook | merge) echo empty ;; restore) echo few ;; *) echo full ;; esac; }
run_it() {
  case $1 in
    load) cli "$disk/home" --profile "$work/profile" load --accept all ;;
    outlook) cli "$disk/home" --profile "$work/outlook" load --accept all ;;
    merge) cli "$disk/home" merge --accept all --duplicates skip "$work/part.twb" ;;
    restore) cli "$disk/home" restore "$work/full.twb" ;;
    backup) cli "$disk/home" backup "$disk/made.twb" ;;
    export) cli "$disk/home" export "$disk/made.twb" ;;
  esac
}

faults=0
wrong() {
  faults=$((faults + 1))
  echo "   WRONG: $*"
}

# What must hold of a run that ended with $status and printed $said.
judge() { # OPERATION TOTAL FORMER
  local now stored
  now=$(rows "$disk/home") || wrong "it can't be listed"
  if [ -z "$said" ] && [ "$status" = 1 ] && [ "$now" = "$3" ]; then
    # No room to begin with: the start says so.
    [ -s "$work/errors" ] || wrong "it ended without a word"
    return
  fi
  case $1 in
    load | outlook)
      stored=$(number ', stored' "$said")
      [ -n "$stored" ] || { wrong "no counts"; return; }
      awk -F'[ ,]+' '{ exit $2 != $4 + $7 + $9 + $11 + $13 + $16 }' <<<"$said" || wrong "no sum"
      [ "$stored" = "$now" ] || wrong "stored $stored, listed $now"
      [ "$(number unreadable "$said")" = 0 ] || wrong "unreadable"
      ;;
    merge)
      stored=$(number imported "$said")
      [ "$stored" = "$now" ] || wrong "imported $stored, listed $now"
      [ $((stored + $(number 'not reached' "$said"))) = "$2" ] || wrong "no sum"
      ;;
    restore) [ "$now" = "$3" ] || [ "$now" = "$2" ] || [ -f "$disk"/home/*before* ] ||
      wrong "listed $now, and no copy" ;;
    *) [ "$now" = "$2" ] || wrong "listed $now" ;;
  esac
  if [ "$status" = 0 ]; then
    case $1 in
      load | outlook | merge | restore) [ "$now" = "$2" ] || wrong "done, and listed $now" ;;
      *) [ -f "$disk/made.twb" ] || wrong "done, and no file" ;;
    esac
  else
    # The engine's own words for it in a box would be one box a message.
    [ "$(grep -ci 'disk is full\|disk full\|enough free space' "$work/errors")" = 1 ] ||
      wrong "boxes: $(cat "$work/errors")"
    case $1 in backup | export) [ ! -f "$disk/made.twb" ] || wrong "failed, and a file" ;; esac
  fi
}

table=""
for operation in load outlook merge restore backup export; do
  start=$work/$(start_of "$operation")
  former=$(rows "$start")
  # How much room it takes from beginning to end.
  mount -t tmpfs -o size=1g tmpfs "$disk"
  cp -r "$start" "$disk/home"
  base=$(df -k --output=used "$disk" | tail -n 1)
  run_it "$operation" >/dev/null 2>&1
  total=$(rows "$disk/home")
  need=$(($(df -k --output=used "$disk" | tail -n 1) - base))
  umount "$disk"
  [ "$operation" = backup ] || [ "$operation" = export ] || need=$((need * 2))
  [ "$operation" != restore ] || need=$((need + base))
  done_at='' failed=0 half=0 least='' most=''
  echo "$operation: from $base kB, $former messages"
  for ((level = 0; level < levels; level++)); do
    room=$((need * 5 / 4 * level / (levels - 1)))
    mount -t tmpfs -o size=$((base + room))k tmpfs "$disk"
    cp -r "$start" "$disk/home"
    status=0
    said=$(run_it "$operation" 2>"$work/errors") || status=$?
    mount -o remount,size=2g "$disk"
    printf '%8d kB  exit %d  %s\n' "$room" "$status" "$(tail -n 1 <<<"$said")"
    said=$(tail -n 1 <<<"$said")
    checked=0
    cli "$disk/home" check >"$work/check" 2>&1 || checked=$?
    judge "$operation" "$total" "$former"
    if [ "$checked" != 0 ]; then
      half=$((half + 1))
      echo "   check: $(tail -n 1 "$work/check")"
    fi
    if [ "$status" = 0 ]; then
      done_at=${done_at:-$room}
    else
      failed=$((failed + 1))
      stored=$(number ', stored' "$said")$(number imported "$said")
      [ -z "$stored" ] || { [ -n "$least" ] && [ "$stored" -ge "$least" ]; } || least=$stored
      [ -z "$stored" ] || { [ -n "$most" ] && [ "$stored" -le "$most" ]; } || most=$stored
      rm -f "$disk/made.twb"
      run_it "$operation" >/dev/null 2>"$work/errors" || wrong "again: $(cat "$work/errors")"
      [ "$(rows "$disk/home")" = "$total" ] || wrong "again: listed $(rows "$disk/home")"
      cli "$disk/home" check >/dev/null 2>&1 || wrong "again: check"
    fi
    umount "$disk"
  done
  table+="| $operation | $levels | $failed | ${least:--} to ${most:--} of $total | $half | ${done_at:--} |"$'\n'
done
echo
echo "| operation | levels | ended by the full disk | stored until then | half messages | done from kB |"
echo "| --- | ---: | ---: | ---: | ---: | ---: |"
printf '%s' "$table"
echo
echo "$faults faults"
[ "$faults" = 0 ]
