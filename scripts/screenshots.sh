#!/usr/bin/env bash
# Captures the drawer, light and dark, into <build>/screenshots/ from a seeded state
# file with tasks in every section: as it opens, scrolled to its end, and the whole
# screen with the handle. Runs the app (as daywyn-probe, the test build's copy of
# daywyn-app with the screenshot hooks) on a private X server (Xvfb) and session bus,
# in temporary data and settings folders: your own data is never touched.
set -euo pipefail

build=${1:-build}
here=$(cd "$(dirname "$0")/.." && pwd)
binary="$here/$build/daywyn-probe"
out="$here/$build/screenshots"
[ -x "$binary" ] || { echo "Build Daywyn with its tests first: $binary is missing." >&2; exit 1; }
mkdir -p "$out"

name=shots
. "$here/scripts/desktop-sandbox.sh"

for theme in light dark; do
  home="$root/$theme"
  mkdir -p "$home/data/Daywyn" "$home/config/Daywyn" "$home/cache" "$home/runtime"
  chmod 700 "$home/runtime"
  "$here/scripts/seed-state.py" "$home/data/Daywyn/daywyn.json"
  # Two calendars with today's events (integration on): the drawer's event rows.
  "$here/scripts/seed-calendars.py" "$home/data/Daywyn/calendars" "$home/data/Daywyn/daywyn.json"
  printf '[General]\nappearance=%s\n' "$theme" > "$home/config/Daywyn/Daywyn.conf"
  env -u DBUS_SESSION_BUS_ADDRESS -u WAYLAND_DISPLAY \
    DISPLAY="$display" QT_QPA_PLATFORM=xcb HOME="$home" XDG_DATA_HOME="$home/data" \
    XDG_CONFIG_HOME="$home/config" XDG_CACHE_HOME="$home/cache" XDG_RUNTIME_DIR="$home/runtime" \
    dbus-run-session -- timeout 30 "$binary" --screenshot "$out/drawer-$theme.png" 2> >(grep -v 'fd limit' >&2)
  echo "Wrote $out/drawer-$theme.png, drawer-$theme-end.png and drawer-$theme-screen.png"
done

# Quick Add with a typed line, every settings page and the welcome window, each theme.
for theme in light dark; do
  home="$root/$theme"
  folder="$out"
  [ "$theme" = light ] || folder="$out/dark"
  env -u DBUS_SESSION_BUS_ADDRESS -u WAYLAND_DISPLAY \
    DISPLAY="$display" QT_QPA_PLATFORM=xcb HOME="$home" XDG_DATA_HOME="$home/data" \
    XDG_CONFIG_HOME="$home/config" XDG_CACHE_HOME="$home/cache" XDG_RUNTIME_DIR="$home/runtime" \
    dbus-run-session -- timeout 60 "$binary" --settings-screenshots "$folder" 2> >(grep -v 'fd limit' >&2)
  echo "Wrote Quick Add, settings and welcome screenshots to $folder"
done
