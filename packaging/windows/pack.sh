#!/usr/bin/env bash
# Packs what build.sh has built: build/windows/tarnwick-setup.exe, which installs it for one user, and
# tarnwick-portable.zip, which keeps the mail beside the program.
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
cd "$here/../.."
build="$PWD/build/windows"
deps="${TARNWICK_WINDOWS_DEPS:-$PWD/build/windows-deps}"
version="$(sed -n 's/^project(tarnwick VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)"
stage="$build/package"
rm -rf "$stage"
cmake --install "$build" --prefix "$stage/Tarnwick" --strip >/dev/null

licences="$stage/Tarnwick/licences"
mkdir "$licences"
mv "$stage/Tarnwick/share/doc/tarnwick/copyright" "$licences/tarnwick.txt"
rm -r "$stage/Tarnwick/share/doc"
for file in "$deps"/root/licences/*.txt; do
  case "$file" in */googletest.txt) ;; *) cp "$file" "$licences/" ;; esac
done
cp /usr/share/doc/gcc-mingw-w64-base/copyright "$licences/gcc.txt"
cp /usr/share/doc/mingw-w64-common/copyright "$licences/mingw-w64.txt"
cp /usr/share/common-licenses/{GPL-3,LGPL-3} "$licences/"
cp "$here/licences-readme.txt" "$licences/README.txt"

# Written where the program is taken apart again: each file by its name and each folder if it is empty.
lists="$build/package-lists"
mkdir -p "$lists"
(cd "$stage/Tarnwick" && find . -type f | sort | sed 's|^\./||; s|/|\\|g; s|.*|Delete "$INSTDIR\\&"|') \
  >"$lists/remove.nsh"
(cd "$stage/Tarnwick" && find . -mindepth 1 -type d | sort -r | sed 's|^\./||; s|/|\\|g; s|.*|RMDir "$INSTDIR\\&"|') \
  >>"$lists/remove.nsh"
size="$(du -sk "$stage/Tarnwick" | cut -f1)"
makensis -V2 -DVERSION="$version" -DSIZE="$size" -DSTAGE="$stage/Tarnwick" -DREMOVE="$lists/remove.nsh" \
  -DICON="$here/../icons/org.tarnwick.Tarnwick.ico" -DOUT="$build/tarnwick-setup.exe" "$here/setup.nsi"

# Programs in front, and nothing that is the person's: unpacking a newer one over it takes no mail along.
# A compiled handbook out of the net would be shown empty; there are the pages.
portable="$stage/portable/Tarnwick"
mkdir -p "$portable"
cp -r "$stage/Tarnwick"/{share,licences} "$portable/"
cp "$stage/Tarnwick"/bin/*.exe "$portable/"
rm -f "$portable/share/tarnwick/help/"*.chm
printf 'Tarnwick keeps your mail in this folder as long as this file is in it.\r\n' >"$portable/portable.txt"
rm -f "$build/tarnwick-portable.zip"
(cd "$stage/portable" && cmake -E tar cf "$build/tarnwick-portable.zip" --format=zip Tarnwick)
(cd "$build" && ls -l tarnwick-setup.exe tarnwick-portable.zip && sha256sum tarnwick-setup.exe tarnwick-portable.zip)
