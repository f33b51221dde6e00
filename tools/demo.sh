#!/usr/bin/env bash
# Builds lumxml and its demo host and runs the host on a bundled example.
set -euo pipefail
cd "$(dirname "$0")/.."
bash tools/setup.sh
cmake --preset dev >/dev/null
cmake --build --preset dev -j "$(nproc)" --target lumxml lumxml-host
host=build/dev/tools/lumxml-host/lumxml-host
"$host" --library build/dev/liblumxml.so info --codepage ISO-8859-1
