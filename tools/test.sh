#!/usr/bin/env bash
# Builds lumxml and runs every test. With --sanitize, in an
# AddressSanitizer + UndefinedBehaviorSanitizer build, with stack
# use-after-return detection and leak checking on and no leak suppressed:
# any leak, lumxml's or Xerces', fails the run.
set -euo pipefail
cd "$(dirname "$0")/.."
bash tools/setup.sh
preset=dev
if [[ "${1:-}" == "--sanitize" ]]; then
  preset=asan
  export ASAN_OPTIONS="halt_on_error=1:detect_leaks=1:abort_on_error=1:detect_stack_use_after_return=1"
  export UBSAN_OPTIONS="halt_on_error=1:print_stacktrace=1"
fi
cmake --preset "$preset"
cmake --build --preset "$preset" -j "$(nproc)"
ctest --preset "$preset"
