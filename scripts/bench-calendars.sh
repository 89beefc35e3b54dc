#!/usr/bin/env bash
# Runs the calendar benchmark with a private session bus and a temporary home, so the
# Evolution Data Server it starts (by D-Bus activation) holds only the benchmark's ten
# seeded calendars and your own calendars are never touched.
set -euo pipefail
build=${1:-build-bench}
repetitions=${BENCH_REPETITIONS:-7}
program="$build/bench/bench_Calendars"
[ -x "$program" ] || { echo "Build the benchmark first: $program is missing." >&2; exit 1; }
root=$(mktemp -d "${TMPDIR:-/tmp}/daywyn-bench-calendars.XXXXXX")
trap 'rm -rf "$root"' EXIT
mkdir -p "$root/home" "$root/data" "$root/config" "$root/cache" "$root/runtime"
chmod 700 "$root/runtime"
env -u DBUS_SESSION_BUS_ADDRESS HOME="$root/home" XDG_DATA_HOME="$root/data" \
  XDG_CONFIG_HOME="$root/config" XDG_CACHE_HOME="$root/cache" XDG_RUNTIME_DIR="$root/runtime" \
  GSETTINGS_BACKEND=memory TZ=Asia/Kathmandu LC_ALL=C.UTF-8 DAYWYN_BENCH_SANDBOX=1 \
  dbus-run-session -- "$program" --benchmark_repetitions="$repetitions" \
    --benchmark_report_aggregates_only=true --benchmark_display_aggregates_only=true \
    2> >(grep -v 'fd limit\|dbus-daemon' >&2)
