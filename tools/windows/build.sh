#!/usr/bin/env bash
# Cross-builds lumxml.dll, lumxml-host.exe and the tests for 64-bit Windows
# with MinGW-w64, from the same sources as the Linux build.
#
# Xerces-C and ICU have no Windows build in Debian, so their Debian source
# packages are built here as static libraries (and GoogleTest from
# /usr/src/googletest), once, into a cache folder keyed on their versions:
#   $LUMXML_WINDOWS_CACHE (default /var/cache/lumxml-windows)
# Nothing of their sources ever enters this repository.
#
# Environment: LUMXML_WINDOWS_CACHE, LUMXML_WINDOWS_BUILD (build folder,
# default build/windows), LUMXML_WINDOWS_JOBS (default 2).
set -euo pipefail
cd "$(dirname "$0")/../.."
ROOT=$PWD

CACHE=${LUMXML_WINDOWS_CACHE:-/var/cache/lumxml-windows}
BUILD=${LUMXML_WINDOWS_BUILD:-$ROOT/build/windows}
JOBS=${LUMXML_WINDOWS_JOBS:-2}
TOOLCHAIN=$ROOT/cmake/mingw-w64-x86_64.cmake
TRIPLET=x86_64-w64-mingw32

ICU_VERSION=72.1
XERCES_VERSION=3.2.4
GTEST_VERSION=1.12.1
# Bumped whenever the way a dependency is built changes, so an old cache
# entry is not taken for a new one.
RECIPE=1
ICU_PREFIX=$CACHE/icu-$ICU_VERSION-r$RECIPE
XERCES_PREFIX=$CACHE/xerces-c-$XERCES_VERSION-icu-$ICU_VERSION-r$RECIPE
GTEST_PREFIX=$CACHE/googletest-$GTEST_VERSION-r$RECIPE
WORK=$CACHE/work

log() { printf '== windows: %s\n' "$*"; }

# Runs a noisy step with its output in $WORK/logs/<name>.log; shows the end
# of that log when the step fails.
quietly() {
  local name=$1
  shift
  mkdir -p "$WORK/logs"
  if ! "$@" >"$WORK/logs/$name.log" 2>&1; then
    tail -n 40 "$WORK/logs/$name.log" >&2
    echo "windows build step '$name' failed; whole log: $WORK/logs/$name.log" >&2
    exit 1
  fi
}

# ---- Debian packages ------------------------------------------------------

install_packages() {
  local packages=(cmake dpkg-dev icu-devtools googletest g++-mingw-w64-x86-64-posix
                  gcc-mingw-w64-x86-64-posix binutils-mingw-w64-x86-64 wine wine64)
  local missing=() p
  for p in "${packages[@]}"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" ||
      missing+=("$p")
  done
  if ((${#missing[@]})); then
    log "installing ${missing[*]}"
    export DEBIAN_FRONTEND=noninteractive
    apt-get update -qq
    apt-get install -y -qq "${missing[@]}" >/dev/null
  fi
  local tools_version
  tools_version=$(dpkg-query -W -f='${Version}' icu-devtools)
  if [[ "$tools_version" != "$ICU_VERSION"* ]]; then
    echo "icu-devtools is $tools_version; the data tools must be ICU $ICU_VERSION" >&2
    exit 1
  fi
}

# Debian's source archive (bookworm, main), needed once for apt-get source.
ensure_deb_src() {
  local list=/etc/apt/sources.list.d/lumxml-deb-src.sources
  if ! apt-cache showsrc xerces-c 2>/dev/null | grep -q '^Package: xerces-c'; then
    log "adding a deb-src entry for Debian bookworm main"
    cat >"$list" <<'EOF'
Types: deb-src
URIs: http://deb.debian.org/debian
Suites: bookworm
Components: main
Signed-By: /usr/share/keyrings/debian-archive-keyring.gpg
EOF
    apt-get update -qq
  fi
}

# Unpacks Debian's source package $1 (upstream version $2) into $WORK and
# prints the folder.
debian_source() {
  local package=$1 version=$2
  mkdir -p "$WORK/sources"
  if ! (cd "$WORK/sources" && apt-get source --download-only -qq "$package" >/dev/null 2>&1); then
    echo "apt-get source $package failed" >&2
    exit 1
  fi
  local dsc
  dsc=$(ls "$WORK/sources/${package}_${version}"*.dsc 2>/dev/null | head -n1 || true)
  if [[ -z "$dsc" ]]; then
    echo "Debian's source package $package is not version $version" >&2
    exit 1
  fi
  local folder=$WORK/sources/$package-$version
  rm -rf "$folder"
  # apt has checked the files against the signed archive index already.
  if ! dpkg-source --no-check -x "$dsc" "$folder" >/dev/null 2>&1; then
    echo "dpkg-source could not unpack $dsc" >&2
    exit 1
  fi
  echo "$folder"
}

# ---- ICU: common library + converter data, static ---------------------------

prepare_icu() {
  [[ -f "$ICU_PREFIX/.complete" ]] && return
  log "building static ICU $ICU_VERSION for Windows into $ICU_PREFIX"
  ensure_deb_src
  local source native cross
  source=$(debian_source icu "$ICU_VERSION")/source
  native=$WORK/icu-native
  cross=$WORK/icu-cross
  rm -rf "$native" "$cross" "$ICU_PREFIX"
  mkdir -p "$native/bin" "$cross"

  # A cross build reads the build machine's settings from a configured
  # native folder; its tools are Debian's icu-devtools of the same version.
  (cd "$native" && quietly icu-native "$source/configure" --disable-tests --disable-samples \
     --disable-extras && quietly icu-native-config make config/icucross.mk config/icucross.inc)
  local tool
  for tool in icupkg pkgdata genccode gencmn gencnval makeconv genrb gensprep gennorm2 \
              genbrk gencfu gendict icuinfo; do
    ln -sf "$(command -v "$tool" || echo "/usr/sbin/$tool")" "$native/bin/$tool"
  done

  (cd "$cross" && CC=$TRIPLET-gcc-posix CXX=$TRIPLET-g++-posix \
     CFLAGS="-O2" CXXFLAGS="-O2 -std=c++17" \
     quietly icu-configure "$source/configure" --host=$TRIPLET --with-cross-build="$native" \
       --prefix="$ICU_PREFIX" --enable-static --disable-shared \
       --with-data-packaging=static --disable-tools --disable-tests --disable-samples \
       --disable-extras --disable-layoutex --disable-icuio)
  # The top-level make would make these; only two of its parts are built.
  mkdir -p "$cross/lib" "$cross/bin"
  quietly icu-make make -C "$cross" -j"$JOBS" stubdata common
  quietly icu-install make -C "$cross/common" install

  # lumxml needs ICU only for code page converters: its data library is
  # ICU's archive cut down to the converter tables and the alias table,
  # turned into MinGW assembly (38 MB of DLL become 12 MB).
  local data=$WORK/icu-data archive=$source/data/in/icudt${ICU_VERSION%%.*}l.dat
  rm -rf "$data" && mkdir -p "$data/items"
  icupkg --list "$archive" | grep -E '(\.cnv|^cnvalias\.icu)$' >"$data/keep.txt"
  quietly icu-data-extract icupkg -x "$data/keep.txt" -d "$data/items" "$archive"
  quietly icu-data-package icupkg -tl -s "$data/items" -a "$data/keep.txt" new \
    "$data/icudt${ICU_VERSION%%.*}l.dat"
  quietly icu-data-genccode genccode -a gcc-mingw64 -e "icudt${ICU_VERSION%%.*}" -d "$data" \
    "$data/icudt${ICU_VERSION%%.*}l.dat"
  quietly icu-data-assemble $TRIPLET-gcc-posix -c -o "$data/icudata.o" \
    "$data/icudt${ICU_VERSION%%.*}l_dat.S"
  rm -f "$ICU_PREFIX/lib/libsicudt.a"
  $TRIPLET-ar rcs "$ICU_PREFIX/lib/libsicudt.a" "$data/icudata.o"
  wc -l <"$data/keep.txt" >"$ICU_PREFIX/data-items.txt"

  rm -rf "$native" "$cross" "$data" "$WORK/sources"
  touch "$ICU_PREFIX/.complete"
}

# ---- Xerces-C: static, ICU transcoder, WinSock, messages built in ----------

prepare_xerces() {
  [[ -f "$XERCES_PREFIX/.complete" ]] && return
  log "building static Xerces-C $XERCES_VERSION for Windows into $XERCES_PREFIX"
  ensure_deb_src
  local source build=$WORK/xerces-build
  source=$(debian_source xerces-c "$XERCES_VERSION")
  rm -rf "$build" "$XERCES_PREFIX"
  quietly xerces-configure cmake -S "$source" -B "$build" -DCMAKE_TOOLCHAIN_FILE="$TOOLCHAIN" \
    -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX="$XERCES_PREFIX" \
    -DBUILD_SHARED_LIBS=OFF -Dtranscoder=icu -Dnetwork-accessor=winsock \
    -Dmessage-loader=inmemory -Dxmlch-type=char16_t \
    -DICU_INCLUDE_DIR="$ICU_PREFIX/include" \
    -DICU_UC_LIBRARY_RELEASE="$ICU_PREFIX/lib/libsicuuc.a" \
    -DICU_DATA_LIBRARY_RELEASE="$ICU_PREFIX/lib/libsicudt.a" \
    -DCMAKE_CXX_FLAGS="-DU_STATIC_IMPLEMENTATION" \
    -DCMAKE_C_FLAGS="-DU_STATIC_IMPLEMENTATION"
  # Only the library: its samples and tests include <Windows.h>, which a
  # case-sensitive file system does not find.
  quietly xerces-make cmake --build "$build" --target xerces-c -j"$JOBS"
  # The library part only (Debian's source has no prebuilt HTML documentation).
  quietly xerces-install cmake --install "$build/src"
  rm -rf "$build" "$WORK/sources"
  touch "$XERCES_PREFIX/.complete"
}

# ---- GoogleTest, from Debian's googletest package --------------------------

prepare_gtest() {
  [[ -f "$GTEST_PREFIX/.complete" ]] && return
  log "building GoogleTest $GTEST_VERSION for Windows into $GTEST_PREFIX"
  local installed build=$WORK/gtest-build
  installed=$(dpkg-query -W -f='${Version}' googletest)
  if [[ "$installed" != "$GTEST_VERSION"* ]]; then
    echo "Debian's googletest is $installed, not $GTEST_VERSION" >&2
    exit 1
  fi
  rm -rf "$build" "$GTEST_PREFIX"
  quietly gtest-configure cmake -S /usr/src/googletest -B "$build" -DCMAKE_TOOLCHAIN_FILE="$TOOLCHAIN" \
    -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX="$GTEST_PREFIX" \
    -DBUILD_GMOCK=OFF -Dgtest_disable_pthreads=OFF
  quietly gtest-make cmake --build "$build" -j"$JOBS"
  quietly gtest-install cmake --install "$build"
  rm -rf "$build"
  touch "$GTEST_PREFIX/.complete"
}

# ---- lumxml ----------------------------------------------------------------

build_lumxml() {
  log "building lumxml.dll, lumxml-host.exe and the tests in $BUILD"
  cmake -S "$ROOT" -B "$BUILD" -DCMAKE_TOOLCHAIN_FILE="$TOOLCHAIN" \
    -DCMAKE_BUILD_TYPE=Release -DLUMXML_WERROR=ON \
    -DXercesC_DIR="$XERCES_PREFIX/cmake" -DGTest_DIR="$GTEST_PREFIX/lib/cmake/GTest" \
    -DICU_INCLUDE_DIR="$ICU_PREFIX/include" \
    -DICU_UC_LIBRARY_RELEASE="$ICU_PREFIX/lib/libsicuuc.a" \
    -DICU_DATA_LIBRARY_RELEASE="$ICU_PREFIX/lib/libsicudt.a" \
    -DCMAKE_CROSSCOMPILING_EMULATOR="${LUMXML_WINE64:-/usr/lib/wine/wine64}"
  cmake --build "$BUILD" -j"$JOBS"
}

install_packages
mkdir -p "$CACHE"
prepare_icu
prepare_xerces
prepare_gtest
# "deps" prepares the cache only.
[[ "${1:-}" == deps ]] && exit 0
build_lumxml
log "done: $BUILD/bin/lumxml.dll"
