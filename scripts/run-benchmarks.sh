#!/usr/bin/env bash
# Runs every benchmark program of a Release build and prints medians of repeated runs.
set -euo pipefail
build=${1:-build-bench}
status=0
for program in "$build"/bench/bench_*; do
  [ -x "$program" ] || continue
  echo "== $(basename "$program")"
  TZ=Asia/Kathmandu LC_ALL=C.UTF-8 "$program" \
    --benchmark_repetitions="${BENCH_REPETITIONS:-7}" \
    --benchmark_report_aggregates_only=true \
    --benchmark_display_aggregates_only=true || status=1
done
exit $status
