#!/usr/bin/env bash
# Captures the About page mid-download and after a verified download into
# <build>/screenshots/: runs the About page test on a private X server, where its local
# HTTPS server holds the package back part-way so the progress can be seen.
#   scripts/update-screenshots.sh [build]
set -euo pipefail

build=${1:-build}
here=$(cd "$(dirname "$0")/.." && pwd)
out="$here/$build/screenshots"
mkdir -p "$out"
DAYWYN_UPDATE_SCREENSHOTS="$out" "$here/scripts/test-under-x11.sh" "$build" 'AboutPage\.'
echo "Wrote $out/about-downloading.png and $out/about-downloaded.png"
