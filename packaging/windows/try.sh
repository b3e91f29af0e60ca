#!/usr/bin/env bash
# Tries what pack.sh has made as a stranger would, under Wine in a fresh prefix and a virtual display:
# installs it silently, starts it on the sample profile, loads, lists, opens a letter, takes pictures,
# removes it again; the mail has to be there afterwards. The portable program likewise, without setup.
# Pictures are left in build/windows/pictures. TARNWICK_LINUX names the Linux build's programs
# (build/debug/bin), of which one makes the sample.
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
cd "$here/../.."
build="$PWD/build/windows"
linux="${TARNWICK_LINUX:-$PWD/build/debug/bin}"
pictures="$build/pictures"
mkdir -p "$pictures"
cmake --build "$(dirname "$linux")" --target tarnwick-make-sample
work="$(mktemp -d)"
# Wine shows the files of HOME as the person's documents.
mkdir "$work/home"
export HOME="$work/home" WINEPREFIX="$work/prefix" WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml=" LC_ALL=C.UTF-8
wine="$(command -v wine64 || echo /usr/lib/wine/wine64)"
clean_up() {
  /usr/lib/wine/wineserver64 -k || true
  [ -z "${display:-}" ] || kill "$display" || true
  rm -rf "$work"
}
trap clean_up EXIT
fail() { echo "$1" >&2; exit 1; }

number=99
while [ -e "/tmp/.X$number-lock" ]; do number=$((number + 1)); done
Xvfb ":$number" -screen 0 1280x800x24 >/dev/null 2>&1 &
display=$!
export DISPLAY=":$number"
"$wine" wineboot --init >/dev/null 2>&1
# Wine's own font, which stands for those of Windows, is not found where Debian puts it. Another may be
# a mathematical one, of so tall letters that fields of one line show none.
cp /usr/share/wine/fonts/tahoma*.ttf "$WINEPREFIX/drive_c/windows/Fonts/"
"$linux/tarnwick-make-sample" "$work/profile"

user="$WINEPREFIX/drive_c/users/$(id -un)"
installed="$user/AppData/Local/Programs/Tarnwick"
mail="$user/AppData/Local/tarnwick"

# Waits until the screen shows more than a plain desktop, and leaves a picture of it.
screen() {
  for ((i = 0; i < 60; ++i)); do
    import -window root "$pictures/$1"
    [ "$(identify -format %k "$pictures/$1")" -lt 60 ] || return 0
    sleep 2
  done
  fail "$2 shows no window"
}

# The whole screen with the list, a letter opened out of it, the options and the choice of a file; a
# second start calls the first.
screens() {
  "$wine" explorer /desktop=try,1280x800 "$("$wine" winepath -w "$1" | tr -d '\r')" &
  local program=$!
  screen list.png "$1"
  sleep 10
  import -window root "$pictures/list.png"
  xdotool mousemove 400 400 click 1
  sleep 2
  xdotool key ctrl+Return
  sleep 6
  import -window root "$pictures/letter.png"
  timeout 60 "$wine" "$1" || fail "a second start does not end"
  xdotool key alt+t sleep 1 key o sleep 5
  import -window root "$pictures/options.png"
  xdotool key Escape sleep 2 key ctrl+o sleep 5
  import -window root "$pictures/files.png"
  /usr/lib/wine/wineserver64 -k
  wait "$program" || true
}

# Runs a program's window on a home for a picture, which it takes itself.
picture() {
  TARNWICK_PICTURE="$pictures/$2" "$wine" "$1" || fail "$1 has no window"
  [ -s "$pictures/$2" ] || fail "no picture $2"
}

"$wine" "$build/tarnwick-setup.exe" /S
[ -e "$installed/bin/tarnwick.exe" ] || fail "nothing was installed"
ls "$user/AppData/Roaming/Microsoft/Windows/Start Menu/Programs/Tarnwick.lnk" >/dev/null
"$wine" "$installed/bin/tarnwick-cli.exe" --profile "$work/profile" load --accept all | tail -1
"$wine" "$installed/bin/tarnwick-cli.exe" list >"$work/list"
[ "$(wc -l <"$work/list")" -gt 10 ] || fail "the list is short"
picture "$installed/bin/tarnwick.exe" installed.png
colours='HKCU\Software\Microsoft\Windows\CurrentVersion\Themes\Personalize'
"$wine" reg add "$colours" /v AppsUseLightTheme /t REG_DWORD /d 0 /f >/dev/null
picture "$installed/bin/tarnwick.exe" dark.png
"$wine" reg delete "$colours" /v AppsUseLightTheme /f >/dev/null
screens "$installed/bin/tarnwick.exe"
echo "of somebody" >"$installed/own.txt"

# Installing over it and removing it leave what is not theirs.
"$wine" "$build/tarnwick-setup.exe" /S
"$wine" "$installed/uninstall.exe" /S
for ((i = 0; i < 60; ++i)); do  # it goes on from a copy of itself
  [ -e "$installed/uninstall.exe" ] || break
  sleep 1
done
[ -e "$installed/own.txt" ] || fail "somebody's file was removed"
[ ! -e "$installed/bin" ] || fail "something was left: $(find "$installed")"
[ -e "$mail/Tarnwick.twr" ] || fail "the mail was removed"

(cd "$work" && cmake -E tar xf "$build/tarnwick-portable.zip")
"$wine" "$work/Tarnwick/tarnwick-cli.exe" --profile "$work/profile" load --accept all | tail -1
[ -e "$work/Tarnwick/Tarnwick.twr" ] || fail "the portable program keeps its mail elsewhere"
"$wine" "$work/Tarnwick/tarnwick-cli.exe" list | diff - "$work/list"
picture "$work/Tarnwick/tarnwick.exe" portable.png
echo "Installed, tried and removed; the mail was kept. Pictures: $pictures"
