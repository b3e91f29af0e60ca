#!/usr/bin/env bash
# Installs what cmake/packages.txt names and this machine lacks; with an argument ("bench") also what
# cmake/packages-ARGUMENT.txt names. Needs apt; asks for sudo only when something is missing.
set -euo pipefail
cd "$(dirname "$0")/.."

lists=(cmake/packages.txt)
[ $# -eq 0 ] || lists+=("cmake/packages-$1.txt")
missing=()
while read -r package; do
  case "$package" in '' | '#'*) continue ;; esac
  # Node.js may stand beside apt's own; what counts is that npm can be called.
  case "$package" in
    nodejs) command -v node >/dev/null && continue ;;
    npm) command -v npm >/dev/null && continue ;;
  esac
  dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing+=("$package")
done < <(cat "${lists[@]}")

[ ${#missing[@]} -eq 0 ] && exit 0

if ! command -v apt-get >/dev/null; then
  echo "Please install: ${missing[*]}" >&2
  exit 1
fi
root=()
[ "$(id -u)" -eq 0 ] || root=(sudo)
echo "Installing: ${missing[*]}"
"${root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get update -q
"${root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends "${missing[@]}"
