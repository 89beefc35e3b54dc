#!/usr/bin/env bash
# Runs Qt tests on a private X server with a window manager, where windows, focus
# and window-manager hints are real: Xvfb plus openbox, then ctest with
# DAYWYN_TEST_QPA=xcb so scripts/hermetic-test.sh keeps the display.
#   scripts/test-under-x11.sh [build] [ctest regex]   (default: DrawerReminderPopout)
set -euo pipefail

build=${1:-build}
pattern=${2:-DrawerReminderPopout}
here=$(cd "$(dirname "$0")/.." && pwd)

name=x11-tests
wm_pid=""
on_exit='[ -n "$wm_pid" ] && kill "$wm_pid" 2>/dev/null || true'
. "$here/scripts/desktop-sandbox.sh"

DISPLAY="$display" openbox >/dev/null 2>&1 &
wm_pid=$!
sleep 0.5

cd "$here/$build"
DISPLAY="$display" DAYWYN_TEST_QPA=xcb DAYWYN_TEST_KEEP_DISPLAY=1 \
  ctest -R "$pattern" --output-on-failure
