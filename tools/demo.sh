#!/usr/bin/env bash
# Builds lumxml and its demo host and runs the host, as a host runtime would,
# on the bundled example catalogue: start-up, load, a walk through the node
# methods, a save, the pull reader and the writer.
set -euo pipefail
cd "$(dirname "$0")/.."
bash tools/setup.sh
cmake --preset dev >/dev/null
cmake --build --preset dev -j "$(nproc)" --target lumxml lumxml-host
host=(build/dev/tools/lumxml-host/lumxml-host --library build/dev/liblumxml.so)
step() { echo; echo "\$ lumxml-host $*"; "${host[@]}" "$@"; }
step info --codepage ISO-8859-1
step load examples/catalog.xml --validate
step dom examples/catalog.xml
step save examples/catalog.xml --encoding UTF-8 --to memory
step sax examples/sax-events.xml
step write --formatted --strict
