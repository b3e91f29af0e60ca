#!/usr/bin/env bash
# Builds the Debian package and tries it as a stranger would: with a fresh home.
#
#   packaging/try_deb.sh             unpacks it into a scratch folder and runs it from there
#   packaging/try_deb.sh --install   installs it on this machine, runs it as the user "nobody" and
#                                    removes it again; needs root, best in a container
#
# TARNWICK_BUILD names a build folder other than build/release.
set -euo pipefail
cd "$(dirname "$0")/.."
build="${TARNWICK_BUILD:-build/release}"
mode="${1:-}"

./cmake/setup.sh deb
[ -f "$build/CMakeCache.txt" ] || cmake --preset release -DTARNWICK_BENCH=OFF
targets=(tarnwick-cli tarnwick_databases tarnwick_help tarnwick_man)
if grep -q '^TARNWICK_WINDOWS:BOOL=ON' "$build/CMakeCache.txt"; then targets+=(tarnwick); fi
cmake --build "$build" --target "${targets[@]}"

scratch="$(mktemp -d)"
installed=
clean_up() {
  [ -z "$installed" ] || dpkg -r tarnwick >/dev/null || true
  rm -rf "$scratch"
}
trap clean_up EXIT
chmod 755 "$scratch"

cpack -G DEB --config "$build/CPackConfig.cmake" -B "$scratch/package" >"$scratch/cpack.log" ||
  { cat "$scratch/cpack.log"; exit 1; }
deb="$(ls "$scratch"/package/*.deb)"
dpkg-deb --info "$deb"
dpkg-deb --contents "$deb"

as_user=()
if [ "$mode" = "--install" ]; then
  if dpkg-query -W -f='${Status}' tarnwick 2>/dev/null | grep -q 'ok installed'; then
    echo "tarnwick is installed on this machine already; nothing has been touched." >&2
    exit 1
  fi
  installed=yes
  dpkg -i "$deb"
  usr=/usr
  as_user=(setpriv --reuid=nobody --regid=nogroup --clear-groups)
else
  dpkg-deb --extract "$deb" "$scratch/root"
  usr="$scratch/root/usr"
fi

# A home that nothing has ever been written to, and no word of this user's settings.
mkdir "$scratch/home"
[ -z "$installed" ] || chown nobody:nogroup "$scratch/home"
fresh() {
  (cd "$scratch/home" && "${as_user[@]}" env -i PATH="$usr/bin:/usr/bin:/bin" LANG=C.UTF-8 \
    HOME="$scratch/home" QT_QPA_PLATFORM=offscreen "$@")
}
fail() {
  echo "FAILED: $1" >&2
  exit 1
}

printf 'From: Ann Lee <ann@example.org>\r\nTo: bob@example.org\r\nSubject: Garden plan\r\nDate: %s\r\n\r\n%s\r\n' \
  'Mon, 5 Jan 2004 10:20:30 +0000' 'Tulips first.' >"$scratch/letter.eml"
chmod 644 "$scratch/letter.eml"

echo "--- first start, with a fresh home"
fresh tarnwick-cli --version
fresh tarnwick-cli --yes take "$scratch/letter.eml"
[ "$(fresh tarnwick-cli list | cut -f 6)" = "Garden plan" ] || fail "the letter is not listed"
[ "$(fresh tarnwick-cli show 1 --text | tr -d '\r')" = "Tulips first." ] || fail "its text differs"
fresh tarnwick-cli show 1 --raw | cmp - "$scratch/letter.eml" || fail "its original differs"
data="$scratch/home/.local/share/tarnwick"
for file in Tarnwick.twr emlParameter.twr LogEvent/Tarnwick.log; do
  [ -f "$data/$file" ] || fail "$file is not in the user's data folder"
done
if [ -x "$usr/bin/tarnwick" ]; then
  # It comes up, lists the letter, leaves a picture and ends by itself.
  fresh TARNWICK_PICTURE="$scratch/home/window.png" timeout 60 tarnwick || fail "no window"
  [ -s "$scratch/home/window.png" ] || fail "the window left no picture"
  fresh tarnwick-cli list >/dev/null || fail "the repository does not open after the window"
fi
[ -f "$usr/share/tarnwick/help/index.html" ] || fail "the help is not there"
[ -f "$usr/share/doc/tarnwick/copyright" ] || fail "the licences are not there"

if [ -n "$installed" ]; then
  echo "--- removal"
  dpkg -r tarnwick
  installed=
  for left in /usr/bin/tarnwick /usr/bin/tarnwick-cli /usr/share/tarnwick /usr/share/doc/tarnwick; do
    [ ! -e "$left" ] || fail "$left is left behind"
  done
  [ -f "$data/Tarnwick.twr" ] || fail "the removal took the user's mail with it"
fi
[ ! -f "$scratch/home/window.png" ] || cp "$scratch/home/window.png" "$build/"
cp "$deb" "$build/"
echo "OK: $build/$(basename "$deb")"
