#!/usr/bin/env bash
# Builds the libFuzzer targets with clang and runs each for a bounded time.
#   scripts/run-fuzzers.sh [build-dir] [seconds-per-target]
# Seeds come from tests/data/fuzz/<target>/ when that folder exists. A crash, a
# hang (over 10 s for one input) or a sanitizer report fails the run.
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build-fuzz}
seconds=${2:-60}

CC=clang CXX=clang++ cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DDAYWYN_FUZZ=ON -DDAYWYN_BUILD_APP=OFF -DDAYWYN_BUILD_TESTS=OFF -DDAYWYN_WERROR=OFF >/dev/null
cmake --build "$build" -j "$(nproc)"

status=0
for program in "$build"/fuzz/fuzz_*; do
  [ -x "$program" ] || continue
  name=$(basename "$program" | sed 's/^fuzz_//')
  corpus=$(mktemp -d)
  if [ -d "tests/data/fuzz/$name" ]; then
    cp -r "tests/data/fuzz/$name/." "$corpus/"
  fi
  echo "== fuzzing $name for ${seconds}s"
  if ! TZ=Asia/Kathmandu LC_ALL=C.UTF-8 "$program" "$corpus" -max_total_time="$seconds" \
      -timeout=10 -rss_limit_mb=2048 -print_final_stats=1 -artifact_prefix="$build/" \
      2>"$build/fuzz-$name.log"; then
    tail -n 40 "$build/fuzz-$name.log"
    status=1
  else
    grep -E 'stat::number_of_executed_units|cov:' "$build/fuzz-$name.log" | tail -n 2
  fi
  rm -rf "$corpus"
done
exit $status
