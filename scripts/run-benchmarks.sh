#!/usr/bin/env bash
# Runs every benchmark program of a Release build and prints medians of repeated
# runs, then Python's json module on the same state files for comparison.
set -euo pipefail
build=${1:-build-bench}
export DAYWYN_BENCH_DIR=${DAYWYN_BENCH_DIR:-/var/tmp/daywyn-bench}
repetitions=${BENCH_REPETITIONS:-7}
status=0
for program in "$build"/bench/bench_*; do
  [ -x "$program" ] || continue
  echo "== $(basename "$program")"
  TZ=Asia/Kathmandu LC_ALL=C.UTF-8 "$program" \
    --benchmark_repetitions="$repetitions" \
    --benchmark_report_aggregates_only=true \
    --benchmark_display_aggregates_only=true 2>&1 | grep -E 'median|^Benchmark|^-' || status=1
done
echo "== Python's json module on the same state files"
for n in 1000 5000 20000; do
  file="$DAYWYN_BENCH_DIR/state-$n.json"
  [ -f "$file" ] && python3 "$(dirname "$0")/../bench/python_json_baseline.py" "$file" "$repetitions"
done
exit $status
