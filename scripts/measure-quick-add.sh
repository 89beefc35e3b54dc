#!/usr/bin/env bash
# Measures global quick capture on a private X server with openbox and a 5,000-task
# state file: the time from the Ctrl+Alt+Space press reaching Daywyn to the Quick Add
# panel in front with its field focused and drawn, and from Enter to the task saved
# and the panel closed, each as the median over N presses (the first press, which
# builds the panel, is reported on its own). Times come from the app's
# DAYWYN_QUICK_ADD_LOG hook.
# Usage: scripts/measure-quick-add.sh [build] [presses]
set -euo pipefail

build=${1:-build}
presses=${2:-20}
here=$(cd "$(dirname "$0")/.." && pwd)
binary="$here/$build/daywyn"
[ -x "$binary" ] || { echo "Build Daywyn first: $binary is missing." >&2; exit 1; }

root=$(mktemp -d "${TMPDIR:-/tmp}/daywyn-quick-add.XXXXXX")
pids=()
app=
cleanup() {
  [ -n "$app" ] && kill -- "-$app" 2>/dev/null || true
  for pid in "${pids[@]}"; do kill "$pid" 2>/dev/null || true; done
  rm -rf "$root"
}
trap cleanup EXIT

Xvfb -displayfd 3 -screen 0 1600x1000x24 -nolisten tcp 3>"$root/display" >/dev/null 2>&1 &
pids+=($!)
for _ in $(seq 100); do [ -s "$root/display" ] && break; sleep 0.05; done
export DISPLAY=":$(head -1 "$root/display")"
openbox --sm-disable >/dev/null 2>&1 &
pids+=($!)
for _ in $(seq 100); do xprop -root _NET_SUPPORTING_WM_CHECK 2>/dev/null | grep -q window && break; sleep 0.05; done
xmessage -name holder "Another application" &
pids+=($!)

mkdir -p "$root/data/Daywyn" "$root/config" "$root/cache" "$root/runtime"
chmod 700 "$root/runtime"
"$here/scripts/seed-state.py" "$root/data/Daywyn/daywyn.json" --bulk 4989
log="$root/app.log"
# In a session of its own, so that cleanup also ends the bus daemon that
# dbus-run-session starts: left behind, it would keep this script's output open.
setsid env -u DBUS_SESSION_BUS_ADDRESS -u WAYLAND_DISPLAY QT_QPA_PLATFORM=xcb DAYWYN_QUICK_ADD_LOG=1 \
  HOME="$root" XDG_DATA_HOME="$root/data" XDG_CONFIG_HOME="$root/config" \
  XDG_CACHE_HOME="$root/cache" XDG_RUNTIME_DIR="$root/runtime" \
  dbus-run-session -- "$binary" 2>"$log" </dev/null >/dev/null &
app=$!

wait_for() { # text count
  for _ in $(seq 400); do
    [ "$(grep -c "$1" "$log" || true)" -ge "$2" ] && return 0
    sleep 0.025
  done
  echo "Gave up waiting for \"$1\" ($2); the app said:" >&2; cat "$log" >&2; exit 1
}
wait_for "Quick capture status: active" 1

for i in $(seq 0 "$presses"); do
  xdotool key ctrl+alt+space
  wait_for "Quick Add ready after" $((i + 1))
  xdotool type --delay 2 "Measured task $i"
  xdotool key Return
  wait_for "Quick Add saved and closed" $((i + 1))
  sleep 0.1
done

median() { sort -n | awk '{ a[NR] = $1 } END { print a[int((NR + 1) / 2)] }'; }
ready=$(grep "Quick Add ready after" "$log" | awk '{ print $5 }')
saved=$(grep "Quick Add saved and closed" "$log" | awk '{ print $7 }')
echo "first press (builds the panel): ready after $(echo "$ready" | head -1) ms"
echo "press to panel ready: median $(echo "$ready" | tail -n +2 | median) ms over $presses presses"
echo "Enter to saved and closed (5,000 tasks): median $(echo "$saved" | tail -n +2 | median) ms" \
     "over $presses presses"
