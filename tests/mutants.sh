#!/usr/bin/env bash
# Do the tests notice faults? Puts the one-line faults of tests/mutants.txt, one at a time, into a copy
# of the sources under build/mutants, runs the tests that should notice, and tells which faults
# nothing noticed. "tests/mutants.sh WORD" tries those whose first line holds the word. Some ten
# seconds a fault; the first run builds everything.
#
# A fault is caught when the tests fail or run out of time or memory. One that does not compile,
# whose sound text does not stand in its file exactly once, or whose tests fail without it, is
# reported as stale: the list needs mending.
set -euo pipefail
cd "$(dirname "$0")/.."
word="${1:-}"
list="$PWD/tests/mutants.txt"
copy="$PWD/build/mutants"
build="$copy/source/build/debug"  # placed as in the checkout, so that ccache knows the objects
export LC_ALL=C.UTF-8 QT_QPA_PLATFORM=offscreen TARNWICK_ENGINE_CACHE="$PWD/build/engine-cache"

# The copy lies two folders deep, so that the tests find the real mail where the checkout has it.
mkdir -p "$copy/source"
git ls-files -z | tar --null --ignore-failed-read -T - -cf - | tar -C "$copy/source" -xf -
rm -rf "$copy/shared" && ln -s "$PWD/../shared" "$copy/shared"
quick=""  # each fault links its test program anew
if command -v ld.lld >/dev/null; then quick="-fuse-ld=lld"; fi
cmake -S "$copy/source" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Debug \
      -DCMAKE_CXX_FLAGS_DEBUG=-g0 -DCMAKE_EXE_LINKER_FLAGS="$quick" >/dev/null
ninja -C "$build" >/dev/null

# run_tests PROGRAM FILTER: whether they pass. A fault may make a test grow without end.
run_tests() {
  (ulimit -v 8000000; timeout 120 "$build/tests/$1" --gtest_filter="$2" >"$copy/log" 2>&1)
}

# place_fault NUMBER: puts fault NUMBER in; prints the line that it changes.
place_fault() {
  python3 - "$list" "$copy/source" "$1" <<'PY'
import sys
list_path, source, number = sys.argv[1], sys.argv[2], int(sys.argv[3])
blocks = [b for b in open(list_path, encoding="utf-8").read().split("\n@ ")[1:]]
lines = blocks[number].split("\n")
file = lines[0].split("|")[0].strip()
sound = "\n".join(l[2:] for l in lines[1:] if l.startswith("- "))
fault = "\n".join(l[2:] for l in lines[1:] if l.startswith("+ "))
text = open(f"{source}/{file}", encoding="utf-8").read()
print("       ", sound.split("\n")[0].strip())
if text.count(sound) != 1:
    sys.exit(1)
open(f"{source}/{file}", "w", encoding="utf-8").write(text.replace(sound, fault))
PY
}

# The sound text comes back however the run ends; it is newer than what was built of the fault.
placed=""
restore() {
  if [ -n "$placed" ]; then cp "$placed" "$copy/source/$placed"; fi
  placed=""
}
trap restore EXIT

caught=0 missed=0 stale=0
declare -A sound  # whether the tests of a program and filter pass as things are
total=$(grep -c '^@ ' "$list")
for ((i = 0; i < total; i++)); do
  head=$(grep '^@ ' "$list" | sed -n "$((i + 1))s/^@ //p")
  [[ "$head" == *"$word"* ]] || continue
  IFS='|' read -r file program filter <<<"${head// /}"
  if [ -z "${sound[$program $filter]:-}" ]; then
    ninja -C "$build" "tests/$program" >/dev/null
    if run_tests "$program" "$filter"; then sound[$program $filter]=yes; else
      sound[$program $filter]=no; fi
  fi
  if [ "${sound[$program $filter]}" = no ]; then
    echo "stale   $head (the tests fail without the fault)"
    stale=$((stale + 1))
    continue
  fi
  placed="$file"
  if ! changed=$(place_fault "$i"); then
    echo "stale   $head (the sound text is not there once)"$'\n'"$changed"
    stale=$((stale + 1))
  elif ! ninja -C "$build" "tests/$program" >"$copy/log" 2>&1; then
    echo "stale   $head (does not compile)"$'\n'"$changed"
    stale=$((stale + 1))
  elif run_tests "$program" "$filter"; then
    echo "MISSED  $head"$'\n'"$changed"
    missed=$((missed + 1))
  else
    echo "caught  $head"
    caught=$((caught + 1))
  fi
  restore
done
echo "$caught of $((caught + missed)) caught, $stale stale"
[ "$missed" -eq 0 ] && [ "$stale" -eq 0 ]
