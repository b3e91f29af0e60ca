#!/usr/bin/env bash
# Loads the sample profile here and under Wine and moves both repositories to the other system: rows,
# orders, searches by the text index and the saved messages have to be the same everywhere.
# TARNWICK_LINUX names the Linux build's programs (build/debug/bin).
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
cd "$here/../.."
linux="${TARNWICK_LINUX:-$PWD/build/debug/bin}"
cli="$PWD/build/windows/bin/tarnwick-cli.exe"
cmake --build "$(dirname "$linux")" --target tarnwick-cli tarnwick-make-sample
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
export TZ=UTC WINEPREFIX="$work/prefix"
"$linux/tarnwick-make-sample" "$work/profile"

# Dates are shown as Wine's region has them.
on_linux() { LC_ALL=en_US.UTF-8 "$linux/tarnwick-cli" --home "$work/$1" "${@:2}"; }
on_windows() { "$here/wine.sh" "$cli" --home "$work/$1" "${@:2}"; }

# What a repository says of itself to a system.
describe() {
  local system="$1" home="$2" out="$3"
  mkdir -p "$out"
  for order in date subject from-to direction; do
    "on_$system" "$home" list --sort "$order" --json >"$out/by-$order"
  done
  for word in plan report Grüße привет; do
    "on_$system" "$home" list --text "$word" --json >"$out/text-$word"
    "on_$system" "$home" list --search "$word" >"$out/search-$word"
  done
  "on_$system" "$home" check >"$out/check"
  "on_$system" "$home" save --format mbox "$out/saved" --folders >/dev/null
}

load=(--profile "$work/profile" load --accept all)
on_linux made-on-linux "${load[@]}" | tail -1 >"$work/linux.end"
on_windows made-on-windows "${load[@]}" | tail -1 >"$work/windows.end"
diff "$work/linux.end" "$work/windows.end"
describe linux made-on-linux "$work/linux"
describe windows made-on-windows "$work/windows"
cp -r "$work/made-on-linux" "$work/moved-to-windows"
cp -r "$work/made-on-windows" "$work/moved-to-linux"
describe windows moved-to-windows "$work/linux-on-windows"
describe linux moved-to-linux "$work/windows-on-linux"
for other in windows linux-on-windows windows-on-linux; do
  diff -r "$work/linux" "$work/$other"
done
cat "$work/linux.end"
echo "Repositories move between the systems: $(wc -l <"$work/linux/by-date") messages, in every order the same"
