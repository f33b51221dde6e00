#!/usr/bin/env bash
# Runs the tests of the Windows build (tools/windows/build.sh) under Wine.
#
# One Wine prefix and one persistent wineserver serve the whole ctest run;
# without them every test process would pay Wine's start-up (~3 s) and
# ctest can hang on a server that keeps its output pipes open. Both are
# started with their standard input and output away from ctest's pipes, and
# the server is stopped at the end whatever happens.
set -euo pipefail
cd "$(dirname "$0")/../.."
BUILD=${LUMXML_WINDOWS_BUILD:-$PWD/build/windows}
WINE64=${LUMXML_WINE64:-/usr/lib/wine/wine64}
WINESERVER=${LUMXML_WINESERVER:-/usr/lib/wine/wineserver64}
[[ -x "$WINESERVER" ]] || WINESERVER=$(command -v wineserver)

export WINEPREFIX=${LUMXML_WINEPREFIX:-$BUILD/wine}
export WINEARCH=win64
export WINEDEBUG=-all
# No .NET or HTML engine: nothing here needs them, and wineboot would try to
# install them.
export WINEDLLOVERRIDES="mscoree=;mshtml="
unset DISPLAY

mkdir -p "$WINEPREFIX"
"$WINESERVER" -p </dev/null >/dev/null 2>&1
trap '"$WINESERVER" -k </dev/null >/dev/null 2>&1 || true' EXIT
"$WINE64" wineboot -i </dev/null >/dev/null 2>&1

# A test that hangs under Wine fails after 5 minutes instead of holding CI.
# A failed test runs once more: Wine itself now and then fails to start a
# process ("could not load kernel32.dll, status c000011f"), which says
# nothing about lumxml; a real failure fails twice.
ctest --test-dir "$BUILD" --output-on-failure --timeout 300 --repeat until-pass:2 \
  -j "${LUMXML_WINDOWS_TEST_JOBS:-2}" "$@"
