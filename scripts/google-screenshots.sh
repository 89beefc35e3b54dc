#!/usr/bin/env bash
# Captures the Calendars settings page with two connected Google accounts into
# <build>/screenshots/: runs the Google end-to-end test on a private X server, which
# signs both accounts in against its fake Google before showing the page.
#   scripts/google-screenshots.sh [build]
set -euo pipefail

build=${1:-build}
here=$(cd "$(dirname "$0")/.." && pwd)
out="$here/$build/screenshots"
mkdir -p "$out"
DAYWYN_GOOGLE_SCREENSHOTS="$out" "$here/scripts/test-under-x11.sh" "$build" 'GoogleCalendars'
echo "Wrote $out/calendars-google.png"
