# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#
# What the scripts here measure with; read in by them, with the program's root as the folder.

# Builds the programs, unless TARNWICK_BENCH_BIN names a folder of them, and makes a folder for the
# run; $bin and $work are where they are. NAME is the script's.
prepare() { # NAME PROGRAM...
  if [ -z "${TARNWICK_BENCH_BIN:-}" ]; then
    ./cmake/setup.sh
    cmake --preset release >/dev/null
    cmake --build --preset release --target "${@:2}" >/dev/null
  fi
  bin=${TARNWICK_BENCH_BIN:-$PWD/build/release/bin}
  work=$(mktemp -d "${TMPDIR:-/tmp}/tarnwick-$1-XXXXXX")
  trap 'rm -rf "$work"' EXIT
  unset TARNWICK_HOME TARNWICK_PROFILE
}

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
