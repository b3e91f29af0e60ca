#!/bin/sh
# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#
# fuzz/run.sh SECONDS [TARGET...]: builds the drivers and runs each of them (all without TARGET) for
# so long, one after the other, on a corpus that stays in build/fuzz/corpus. Prints a line for each:
# inputs tried, places and features of the program that the corpus reaches, its size, and what was
# found; inputs that broke something are left in build/fuzz/found.
set -eu
[ $# -ge 1 ] || { echo "usage: fuzz/run.sh SECONDS [TARGET...]" >&2; exit 2; }
seconds=$1
shift
cd "$(dirname "$0")/.."
[ -f build/fuzz/build.ninja ] || cmake --preset fuzz >/dev/null
if [ $# -eq 0 ]; then
  for source in fuzz/*_fuzz.cc; do
    name=${source#fuzz/}
    set -- "$@" "${name%_fuzz.cc}"
  done
fi
programs=make_fuzz_corpus
for target; do programs="$programs ${target}_fuzz"; done
ninja -C build/fuzz $programs >/dev/null
build/fuzz/bin/make_fuzz_corpus build/fuzz/corpus
mkdir -p build/fuzz/found
status=0
printf '%-9s %11s %6s %7s %7s  %s\n' target inputs cov ft corpus found
for target; do
  [ -d "fuzz/found/$target" ] && cp fuzz/found/"$target"/* "build/fuzz/corpus/$target/"
  dictionary=
  [ -f "fuzz/$target.dict" ] && dictionary=-dict=fuzz/$target.dict
  log=build/fuzz/$target.log
  result=nothing
  build/fuzz/bin/"${target}_fuzz" -max_total_time="$seconds" -timeout=25 -rss_limit_mb=2048 \
    -print_final_stats=1 -artifact_prefix="build/fuzz/found/$target-" $dictionary \
    "build/fuzz/corpus/$target" >"$log" 2>&1 || { result="see $log"; status=1; }
  last=$(grep 'cov: ' "$log" | tail -n 1)
  field() { echo "$last" | sed -n "s/.*$1: \\([^ /]*\\).*/\\1/p"; }
  inputs=$(sed -n 's/stat::number_of_executed_units: *//p' "$log")
  printf '%-9s %11s %6s %7s %7s  %s\n' "$target" "${inputs:-?}" "$(field cov)" "$(field ft)" \
    "$(field corp)" "$result"
done
exit $status
