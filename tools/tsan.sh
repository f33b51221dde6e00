#!/usr/bin/env bash
# The threads test (documents, pull readers and writers on four threads at
# once) in a ThreadSanitizer build; any report fails. Builds only that test.
set -euo pipefail
cd "$(dirname "$0")/.."
export TSAN_OPTIONS="halt_on_error=1:exitcode=66:second_deadlock_stack=1"
cmake --preset tsan >/dev/null
cmake --build --preset tsan --target api_threads_test -j "$(nproc)"
ctest --preset tsan -R '^Threads\.'
