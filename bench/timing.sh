# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#
# What the scripts here measure with; read in by them. REQUIRES: $work, a folder of the run's own.

# Runs a command; adds seconds by the clock, seconds of processor time and peak memory (kB) as lines
# to $work/NAME.times, .cpu and .memory. What it printed is in $work/NAME.out.
timed() { # NAME COMMAND...
  local name=$1
  shift
  sync
  /usr/bin/time -o "$work/measured" -f '%e %U %S %M' "$@" >"$work/$name.out" 2>&1 ||
    { cat "$work/$name.out" >&2; exit 1; }
  read -r wall user system memory < <(tail -n 1 "$work/measured")
  echo "$wall" >>"$work/$name.times"
  echo "$user $system" | awk '{ print $1 + $2 }' >>"$work/$name.cpu"
  echo "$memory" >>"$work/$name.memory"
}

# Of the numbers in a file, one a line.
median() { sort -n "$1" | awk '{ v[NR] = $1 } END { print NR % 2 ? v[(NR + 1) / 2] : (v[NR / 2] + v[NR / 2 + 1]) / 2 }'; }
