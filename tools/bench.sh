#!/usr/bin/env bash
# Builds the benchmark suite (Release) and runs it: lumxml through its
# exports beside raw Xerces-C and libxml2 on the same generated documents,
# ending with one table of time ratios.
#   bash tools/bench.sh              full sizes, three repetitions, medians in
#                                    the table (about 5 minutes on 2 cores)
#   bash tools/bench.sh --smoke      every benchmark once on small inputs
#                                    (CI: the suite keeps building and running)
# Further arguments go to the suite, e.g. --benchmark_filter=Pull or
# --lumxml_megabytes=50 (see bench/main.cpp).
set -euo pipefail
cd "$(dirname "$0")/.."
bash tools/setup.sh
cmake --preset bench >/dev/null
cmake --build --preset bench -j "$(nproc)"
suite=build/bench/bench/lumxml_bench
if [[ "${1:-}" == --smoke ]]; then
  shift
  exec "$suite" --lumxml_megabytes=1 --lumxml_elements=10000 --lumxml_children=1000,2000,4000 \
    --lumxml_rss_megabytes=2 --benchmark_min_time=0 "$@"
fi
exec "$suite" --benchmark_min_time=0.5 --benchmark_repetitions=3 \
  --benchmark_display_aggregates_only=true "$@"
