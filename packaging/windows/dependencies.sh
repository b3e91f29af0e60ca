#!/usr/bin/env bash
# Builds the libraries that Tarnwick needs for Windows out of Debian's source packages, static, once:
# what stands in the folder already is left alone. TARNWICK_WINDOWS_DEPS names another folder than
# build/windows-deps, which several checkouts may share.
#
#   dependencies.sh [LIBRARY...]     these alone (those of sources.txt); without qt6-base there is no window
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
deps="${TARNWICK_WINDOWS_DEPS:-$here/../../build/windows-deps}"
mkdir -p "$deps"
deps="$(cd "$deps" && pwd)"
root="$deps/root"
host=x86_64-w64-mingw32
jobs="$(nproc)"
launcher=()
if command -v ccache >/dev/null; then launcher=(ccache); fi
export CC="${launcher[*]} $host-gcc-posix" CXX="${launcher[*]} $host-g++-posix"
export CFLAGS="-O2" CXXFLAGS="-O2 -std=gnu++17"
mkdir -p "$root/include" "$root/lib" "$root/done"

version_of() { awk -v name="$1" '$1 == name { print $2 }' "$here/sources.txt"; }

# Lists of source packages, of the places that this machine takes its packages from; kept apart from
# the machine's own, which stay as they are.
apt_options=()
prepare_lists() {
  [ ${#apt_options[@]} -eq 0 ] || return 0
  local apt="$deps/apt" codename
  codename="$(. /etc/os-release && echo "$VERSION_CODENAME")"
  mkdir -p "$apt/lists/partial" "$apt/parts"
  rm -f "$apt/parts"/*
  local file
  for file in /etc/apt/sources.list.d/*.sources; do
    [ -e "$file" ] && grep -q "^Suites:.*$codename" "$file" || continue
    sed 's/^Types:.*/Types: deb-src/' "$file" >"$apt/parts/$(basename "$file")"
  done
  for file in /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
    [ -e "$file" ] || continue
    sed -n "s/^deb\(.* $codename\)/deb-src\1/p" "$file" >"$apt/parts/of-$(basename "$file" .list).list"
  done
  apt_options=(-o "Dir::Etc::sourcelist=/dev/null" -o "Dir::Etc::sourceparts=$apt/parts"
               -o "Dir::State::lists=$apt/lists" -o "APT::Sandbox::User=root"
               -o "APT::Update::Error-Mode=any" -o "Acquire::Retries=3")
  apt-get "${apt_options[@]}" -q update
}

# Stands there once a library is built and installed.
mark_of() { echo "$root/done/$1-$(version_of "$1")"; }

# Where the description of a library's source package lies.
dsc_of() {
  local version
  version="$(version_of "$1")"
  echo "$deps/sources/$1/${1}_${version#*:}.dsc"
}

# Fetches a library's source package where it is going to be built.
fetch() {
  local dsc package
  package="$1=$(version_of "$1")"
  dsc="$(dsc_of "$1")"
  [ ! -e "$(mark_of "$1")" ] && [ ! -e "$dsc" ] || return 0
  prepare_lists
  mkdir -p "${dsc%/*}"
  (cd "${dsc%/*}" && apt-get "${apt_options[@]}" -q --download-only source "$package") || {
    echo "The sources of $package can't be had from where this machine's packages come." >&2
    exit 1
  }
}

# Unpacks a library's source package; its folder stands in $source.
unpack() {
  local dsc hash
  dsc="$(dsc_of "$1")"
  hash="$(awk -v name="$1" '$1 == name { print $3 }' "$here/sources.txt")"
  echo "$hash  $dsc" | sha256sum --check --quiet
  source="${dsc%/*}/source"
  rm -rf "$source"
  dpkg-source --no-check -x "$dsc" "$source" >/dev/null  # looks at the hashes of the rest
}

# The data in the library, without what names places, units and zones in all languages: a third less
# in every program.
icu_data() {
  local out="$1" version=72
  local data="icudt${version}l"  # which is the name in front of everything in it, too
  icupkg -tl -l "$source/source/data/in/$data.dat" |
    grep -E '^(lang|region|unit|zone|rbnf|translit)/' >"$out/left-out.txt"
  icupkg -tl -r "$out/left-out.txt" "$source/source/data/in/$data.dat" "$out/$data.dat"
  (cd "$out" && genccode -a gcc-mingw64 -e "icudt$version" -d . "$data.dat" >/dev/null &&
    $host-gcc-posix -c "${data}_dat.S" -o data.o)
}

build_icu() {
  mkdir -p "$build/lib" "$build/native/bin" "$build/native/config"
  local tool
  for tool in icupkg pkgdata genrb gencnval gencfu genbrk gendict gensprep gennorm2 makeconv; do
    [ ! -e "/usr/bin/$tool" ] || ln -sf "/usr/bin/$tool" "$build/native/bin/$tool"
    [ ! -e "/usr/sbin/$tool" ] || ln -sf "/usr/sbin/$tool" "$build/native/bin/$tool"
  done
  touch "$build/native/config/icucross.mk" "$build/native/config/icucross.inc"
  (cd "$build" &&
    "$source/source/configure" --host=$host --with-cross-build="$build/native" --prefix="$root" \
      --enable-static --disable-shared --disable-tools --disable-tests --disable-samples \
      --disable-extras --disable-icuio --with-data-packaging=static &&
    make -s -j"$jobs" -C common && make -s -j"$jobs" -C i18n) >"$build.log" 2>&1
  icu_data "$build"
  mkdir -p "$root/include/unicode"
  cp "$source"/source/{common,i18n}/unicode/*.h "$root/include/unicode/"
  # By the names that the libraries have elsewhere.
  cp "$build/lib/libsicuuc.a" "$root/lib/libicuuc.a"
  cp "$build/lib/libsicuin.a" "$root/lib/libicui18n.a"
  $host-ar rcs "$root/lib/libicudata.a" "$build/data.o"
}

# Configures, builds and installs with CMake what lies in the folder; further words are options.
with_cmake() {
  local folder="$1"
  shift
  cmake -S "$folder" -B "$build" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$here/../../cmake/windows.cmake" \
    -DCMAKE_INSTALL_PREFIX="$root" -DCMAKE_BUILD_TYPE=Release -DBUILD_SHARED_LIBS=OFF \
    -DCMAKE_{C,CXX}_COMPILER_LAUNCHER="${launcher[*]}" "$@" >"$build.log"
  ninja -j"$jobs" -C "$build" install >>"$build.log"
}

build_libxml2() {
  with_cmake "$source" -DLIBXML2_WITH_{ICONV,LZMA,ZLIB,PYTHON,PROGRAMS,TESTS,FTP,HTTP,DEBUG}=OFF \
    -DLIBXML2_WITH_{MODULES,CATALOG,DOCB,SCHEMAS,SCHEMATRON,XINCLUDE,XPTR,C14N,LEGACY,REGEXPS}=OFF
}

build_libzstd() {
  with_cmake "$source/build/cmake" -DZSTD_BUILD_{SHARED,PROGRAMS}=OFF \
    -DZSTD_{LEGACY,MULTITHREAD}_SUPPORT=OFF
}

build_googletest() { with_cmake "$source"; }

# What packs and unpacks bytes in memory. The makefile for Windows is not in the source package.
build_zlib() {
  mkdir -p "$build"
  (cd "$build" &&
    $CC $CFLAGS -c "$source"/{adler32,compress,crc32,deflate,inf{back,fast,late,trees},trees,uncompr,zutil}.c &&
    $host-ar rcs "$root/lib/libz.a" ./*.o) >"$build.log" 2>&1
  cp "$source"/{zlib,zconf}.h "$root/include/"
}

build_libsodium() {
  (cd "$source" && autoreconf --install) >"$build.log" 2>&1
  mkdir -p "$build"
  (cd "$build" && "$source/configure" --host=$host --prefix="$root" --enable-static --disable-shared &&
    make -s -j"$jobs" install) >>"$build.log" 2>&1
}

# What the windows use of it and no more. Its own tools run on this machine and are Debian's, which is why
# the version is the one that Debian has.
build_qt6_base() {
  local off="dbus network sql xml concurrent testlib icu vulkan direct2d1_1 zstd glib system_zlib pkg_config"
  local feature options=(-DFEATURE_optimize_size=ON)
  off+=" tabletevent"  # asks for a header that the source package leaves out
  for feature in $off; do options+=("-DFEATURE_$feature=OFF"); done
  # With the C library's larger files "stat" would be another word, which is one of Qt's own as well.
  CXXFLAGS="$CXXFLAGS -U_FILE_OFFSET_BITS" \
    with_cmake "$source" -DQT_BUILD_{EXAMPLES,TESTS}=OFF -DINPUT_opengl=no "${options[@]}"
}

# The licences of a library and of what it bears in itself, for those who get the programs.
keep_licence() {
  mkdir -p "$root/licences"
  cp "$source/debian/copyright" "$root/licences/$1.txt"
}

build_one() {
  local library="$1" mark source build started=$SECONDS
  mark="$(mark_of "$library")"
  # Others may build into the same folder at this moment.
  exec 9>"$deps/$library.lock"
  flock 9
  [ ! -e "$mark" ] || return 0
  echo "Building $library $(version_of "$library") for Windows"
  unpack "$library"
  build="$deps/sources/$library/build"
  rm -rf "$build"
  "build_${library//-/_}"
  keep_licence "$library"
  touch "$mark"
  rm -rf "$deps/sources/$library"
  echo "  $((SECONDS - started)) s"
}

libraries=("$@")
[ $# -gt 0 ] || mapfile -t libraries < <(awk '!/^#/ && NF { print $1 }' "$here/sources.txt")
exec 8>"$deps/fetch.lock"
flock 8
for library in "${libraries[@]}"; do fetch "$library"; done
exec 8>&-

# All at once, as much of it is configuring, which keeps one processor busy; Qt by itself.
builds=()
failed=0
for library in "${libraries[@]}"; do
  [ "$library" != qt6-base ] || continue
  build_one "$library" &
  builds+=($!)
done
for build in ${builds[@]:+"${builds[@]}"}; do wait "$build" || failed=1; done
[ "$failed" -eq 0 ] || exit 1
case " ${libraries[*]} " in *" qt6-base "*) build_one qt6-base ;; esac
