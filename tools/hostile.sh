#!/usr/bin/env bash
# Hostile documents against lumxml under the hardened settings (expansion
# limit 50000, no default entity resolution, an entity directory): each
# document on each path (DOM load, SAX pull to the end, and for some load +
# save + load + save) in its own process under a time and an address-space
# limit. Prints a table of processor time (user + system, of the whole
# process: the machine may be shared), peak memory above what the process
# used before the call, and outcome.
#
#   bash tools/hostile.sh            # every document, 10 s of processor time and 4 GiB each
#   bash tools/hostile.sh --short    # the few-MB documents, 5 s and 2 GiB each (CI);
#                                    # fails on a kill, a crash, more than 200 MB or
#                                    # a save that does not read back
#
# LUMXML_HOSTILE_PRESET chooses the build (default dev).
set -euo pipefail
cd "$(dirname "$0")/.."
preset="${LUMXML_HOSTILE_PRESET:-dev}"
seconds=10
address_mb=4096
short=()
if [[ "${1:-}" == "--short" ]]; then
  seconds=5
  address_mb=2048
  short=(--short --check)
fi
cmake --preset "$preset" >/dev/null
cmake --build --preset "$preset" --target lumxml-hostile -j "$(nproc)" >/dev/null
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
python3 tools/hostile/hostile.py --driver "build/$preset/tools/hostile/lumxml-hostile" \
  --work "$work" --seconds "$seconds" --address-mb "$address_mb" "${short[@]}"
