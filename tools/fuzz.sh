#!/usr/bin/env bash
# Builds the libFuzzer targets (clang, ASan + UBSan) and runs each one for a
# bounded time over a copy of its corpus. Any finding fails the run; the
# input that caused it is left in build/fuzz/findings/.
#   bash tools/fuzz.sh [SECONDS_PER_TARGET]   (default 60)
set -euo pipefail
cd "$(dirname "$0")/.."
bash tools/setup.sh
seconds="${1:-60}"
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz -j "$(nproc)"
work=build/fuzz/run
findings=build/fuzz/findings
rm -rf "$work"
mkdir -p "$work" "$findings"
export ASAN_OPTIONS="detect_leaks=1:abort_on_error=1"
status=0
for target in dom_load sax_pull writer node_methods attr_list; do
  cp -r "fuzz/corpus/$target" "$work/$target"
  echo "== fuzz_$target for ${seconds}s"
  if ! build/fuzz/fuzz/fuzz_$target "$work/$target" -dict=fuzz/xml.dict \
        -max_total_time="$seconds" -rss_limit_mb=4096 -timeout=30 \
        -artifact_prefix="$findings/$target-" -print_final_stats=1 \
        >"$work/$target.log" 2>&1; then
    echo "FINDING in fuzz_$target:"; tail -40 "$work/$target.log"
    status=1
  fi
  grep -E "stat::number_of_executed_units|stat::peak_rss_mb" "$work/$target.log" || true
done
exit $status
