#!/usr/bin/env bash
# Renders the application icon's PNG sizes from its SVG (needs rsvg-convert from
# librsvg2-bin). The PNGs are committed, so a build does not need the tool; run this
# after changing data/icons/hicolor/scalable/apps/daywyn.svg.
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
icons="$here/data/icons/hicolor"
for size in 16 22 24 32 48 64 128 256 512; do
  mkdir -p "$icons/${size}x${size}/apps"
  rsvg-convert -w "$size" -h "$size" "$icons/scalable/apps/daywyn.svg" \
    -o "$icons/${size}x${size}/apps/daywyn.png"
done
