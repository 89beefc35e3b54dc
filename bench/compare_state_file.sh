#!/usr/bin/env bash
# Runs the state-file benchmark and Python's json module on the same files, side by side.
#   bench/compare_state_file.sh [build-dir] [bench-folder]
set -euo pipefail
build=${1:-build-bench}
export DAYWYN_BENCH_DIR=${2:-/var/tmp/daywyn-bench}
"$build/bench/bench_StateFile" --benchmark_repetitions="${BENCH_REPETITIONS:-7}" \
  --benchmark_report_aggregates_only=true --benchmark_display_aggregates_only=true \
  --benchmark_filter="${BENCH_FILTER:-.}" 2>&1 | grep -E "median|^Run|^-|^Benchmark"
for n in 1000 5000 20000; do
  python3 "$(dirname "$0")/python_json_baseline.py" "$DAYWYN_BENCH_DIR/state-$n.json" \
    "${BENCH_REPETITIONS:-7}"
done
