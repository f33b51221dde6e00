#!/usr/bin/env bash
# Builds lumxml as a host integrator meets it, on a clean build folder:
#   1. configure and build a release (no tests), install to a staging prefix;
#   2. check what was installed: SONAME, version macros, the header alone
#      in C99 and in C++17, the demo host run from the prefix;
#   3. build the examples out of tree against the prefix, once through
#      find_package(lumxml) and once through pkg-config, and run them;
#   4. build the Debian package with cpack, list it, install it with dpkg
#      into a scratch root and build one example against that root;
#      lintian runs on it when it is installed (its findings are shown,
#      not judged).
# Environment: LUMXML_PACKAGE_BUILD (work folder, default build/package),
# LUMXML_PACKAGE_REUSE=1 keeps the release build of an earlier run.
set -euo pipefail
cd "$(dirname "$0")/.."
ROOT=$PWD
WORK=${LUMXML_PACKAGE_BUILD:-$ROOT/build/package}
BUILD=$WORK/build
STAGE=$WORK/stage
JOBS=${LUMXML_PACKAGE_JOBS:-$(nproc)}

log() { printf '== package: %s\n' "$*"; }
fail() {
  echo "package check failed: $*" >&2
  exit 1
}

if [[ "${LUMXML_PACKAGE_REUSE:-0}" == 1 ]]; then
  find "$WORK" -mindepth 1 -maxdepth 1 ! -name build -exec rm -rf {} + 2>/dev/null || true
  rm -f "$BUILD"/lumxml_*.deb
else
  rm -rf "$WORK"
fi
mkdir -p "$WORK"

# ---- 1. build and install ---------------------------------------------------

log "configure and build (release, no tests) in $BUILD"
cmake -S "$ROOT" -B "$BUILD" -DCMAKE_BUILD_TYPE=Release -DLUMXML_WERROR=ON \
  -DLUMXML_TESTS=OFF >"$WORK/configure.log"
cmake --build "$BUILD" -j "$JOBS" >"$WORK/build.log"
log "install to $STAGE"
cmake --install "$BUILD" --prefix "$STAGE" >"$WORK/install.log"

# ---- 2. what was installed ---------------------------------------------------

version=$(sed -n 's/^#define LUMXML_VERSION_STRING "\(.*\)"$/\1/p' "$ROOT/include/lumxml.h")
major=${version%%.*}
for file in "lib/liblumxml.so.$version" "lib/liblumxml.so.$major" lib/liblumxml.so \
            include/lumxml.h lib/cmake/lumxml/lumxmlConfig.cmake \
            lib/cmake/lumxml/lumxmlConfigVersion.cmake lib/cmake/lumxml/lumxmlTargets.cmake \
            lib/pkgconfig/lumxml.pc bin/lumxml-host share/doc/lumxml/api.md \
            share/doc/lumxml/lumxml-host.md; do
  [[ -e "$STAGE/$file" ]] || fail "$file is not installed"
done
soname=$(readelf -d "$STAGE/lib/liblumxml.so.$version" | sed -n 's/.*Library soname: \[\(.*\)\]/\1/p')
[[ "$soname" == "liblumxml.so.$major" ]] || fail "SONAME is '$soname'"
exports=$(nm -D --defined-only "$STAGE/lib/liblumxml.so.$version" | grep -c ' T lum')
[[ "$exports" == 26 ]] || fail "$exports exports instead of 26"
log "liblumxml.so.$version, SONAME $soname, $exports exports"

# The installed header compiles alone, as C99 and as C++17, and its
# version macros are the package's.
header_check() {
  local language=$1 standard=$2 compiler=$3 source=$WORK/header_alone.$4
  cat >"$source" <<EOF
#include <lumxml.h>
#if LUMXML_VERSION_MAJOR != $major
#error "LUMXML_VERSION_MAJOR does not match the package"
#endif
int main(void) { return LUM_NODE_CHILD_AT == 8 && LUMXML_VERSION >= 10000 ? 0 : 1; }
EOF
  "$compiler" -x "$language" -std="$standard" -Wall -Wextra -pedantic -Werror \
    -I"$STAGE/include" "$source" -o "$WORK/header_alone_$4"
  "$WORK/header_alone_$4" || fail "the header's constants in $standard"
}
header_check c c99 cc c
header_check c++ c++17 c++ cpp
log "lumxml.h compiles alone as C99 and C++17"

# The demo host, run from the prefix, loads the library of the prefix.
host_check() {
  local host=$1 library=$2 out=$WORK/host-info.txt
  (cd "$WORK" && env -u LUMXML_LIBRARY "$host" info) >"$out" 2>&1 ||
    fail "$host info: $(cat "$out")"
  local loaded
  loaded=$(sed -n 's/^library: //p' "$out")
  [[ -n "$loaded" && "$(realpath "$loaded")" == "$(realpath "$library")" ]] &&
    grep -q "26 of 26" "$out" && grep -q "error code 0" "$out" ||
    fail "$host info: $(cat "$out")"
}
host_check "$STAGE/bin/lumxml-host" "$STAGE/lib/liblumxml.so.$major"
log "the installed lumxml-host loads $STAGE/lib/liblumxml.so.$major"

# ---- 3. the examples, out of tree, both ways --------------------------------

log "examples through find_package(lumxml)"
cmake -S "$ROOT/examples" -B "$WORK/examples-cmake" -DCMAKE_PREFIX_PATH="$STAGE" \
  -DLUMXML_WERROR=ON >"$WORK/examples-cmake.log"
cmake --build "$WORK/examples-cmake" -j "$JOBS" >>"$WORK/examples-cmake.log"
ctest --test-dir "$WORK/examples-cmake" --output-on-failure >>"$WORK/examples-cmake.log" ||
  fail "examples through find_package: $(tail -n 30 "$WORK/examples-cmake.log")"

log "examples through pkg-config"
mkdir -p "$WORK/examples-pkg-config"
(cd "$WORK/examples-pkg-config" &&
   PKG_CONFIG_PATH="$STAGE/lib/pkgconfig" make -s -f "$ROOT/examples/Makefile" \
     CFLAGS="-O2 -Werror") >"$WORK/examples-pkg-config.log" 2>&1 ||
  fail "examples through pkg-config: $(cat "$WORK/examples-pkg-config.log")"
for example in load_walk save_memory pull_events sax_writer; do
  LD_LIBRARY_PATH="$STAGE/lib" "$WORK/examples-pkg-config/$example" \
    >"$WORK/examples-pkg-config/$example.out" ||
    fail "$example built through pkg-config: $(tail -n 20 "$WORK/examples-pkg-config/$example.out")"
done

# ---- 4. the Debian package ----------------------------------------------------

log "cpack -G DEB"
(cd "$BUILD" && cpack -G DEB >"$WORK/cpack.log") || fail "cpack: $(tail -n 30 "$WORK/cpack.log")"
deb=$(ls "$BUILD"/lumxml_*.deb)
dpkg-deb --info "$deb" >"$WORK/deb-info.txt"
dpkg-deb --contents "$deb" >"$WORK/deb-contents.txt"
depends=$(dpkg-deb --field "$deb" Depends)
[[ "$depends" == *libxerces-c3.2* && "$depends" == *libicu72* ]] ||
  fail "the package depends on '$depends'"
grep -q "usr/lib/liblumxml.so.$version" "$WORK/deb-contents.txt" ||
  fail "the package lacks liblumxml.so.$version: $(cat "$WORK/deb-contents.txt")"
log "$(basename "$deb"): Depends: $depends"

# dpkg installs it into a scratch root whose package database is a copy of
# this machine's, so the dependencies are checked against Debian 12's
# installed packages; the package's ldconfig call is all it runs on the machine.
SCRATCH=$WORK/root
mkdir -p "$SCRATCH/var/lib/dpkg/info" "$SCRATCH/var/lib/dpkg/updates" \
  "$SCRATCH/var/lib/dpkg/triggers"
cp /var/lib/dpkg/status "$SCRATCH/var/lib/dpkg/status"
touch "$SCRATCH/var/lib/dpkg/available"
if dpkg --root="$SCRATCH" --force-script-chrootless --force-not-root --no-triggers \
     -i "$deb" >"$WORK/dpkg.log" 2>&1; then
  dpkg --root="$SCRATCH" -s lumxml | grep -q "Status: install ok" ||
    fail "dpkg does not list lumxml as installed"
  [[ -e "$SCRATCH/usr/lib/liblumxml.so.$version" ]] || fail "dpkg installed no library"
  log "dpkg -i into $SCRATCH: installed"
  host_check "$SCRATCH/usr/bin/lumxml-host" "$SCRATCH/usr/lib/liblumxml.so.$major"
  # One example against the package's files, through its CMake package.
  cmake -S "$ROOT/examples" -B "$WORK/examples-deb" -DCMAKE_PREFIX_PATH="$SCRATCH/usr" \
    >"$WORK/examples-deb.log"
  cmake --build "$WORK/examples-deb" --target load_walk >>"$WORK/examples-deb.log"
  "$WORK/examples-deb/load_walk" >/dev/null || fail "load_walk against the package's files"
  log "an example builds and runs against the package's files"
else
  cat "$WORK/dpkg.log" >&2
  fail "dpkg -i into a scratch root"
fi

# lintian from Debian's archive when it is not there yet (LUMXML_PACKAGE_LINTIAN=0
# leaves it out).
if [[ "${LUMXML_PACKAGE_LINTIAN:-1}" != 0 ]] && ! command -v lintian >/dev/null &&
   [[ "$(apt-cache policy lintian 2>/dev/null)" == *"Candidate: "[0-9]* ]]; then
  log "installing lintian"
  DEBIAN_FRONTEND=noninteractive apt-get install -y -qq lintian >"$WORK/lintian-install.log" 2>&1 ||
    log "lintian could not be installed (see $WORK/lintian-install.log)"
fi
if [[ "${LUMXML_PACKAGE_LINTIAN:-1}" != 0 ]] && command -v lintian >/dev/null; then
  log "lintian (findings are shown, not judged)"
  lintian --tag-display-limit 0 "$deb" || true
else
  log "lintian is not at hand; skipped"
fi
log "done"
