#!/usr/bin/env bash
# Measures the desktop app as a whole process with a 5,000-task state file, on a
# private X server and session bus in temporary folders:
#   start   the median wall and CPU time of a process that starts, shows the drawer's
#           first frame and leaves (daywyn-probe --exit-when-ready: the app as
#           daywyn-app starts it), its median peak resident memory, and what the probe
#           itself reports at that frame;
#   floor   the same figures for the least a Qt Quick Controls window costs here: a
#           small program showing a list of 20 check boxes with the same renderer,
#           started the same way, run after each start of the app;
#   idle    resident memory and CPU use over 60 s with the drawer hidden, as a user
#           who has finished the welcome runs it (the first launch's welcome window
#           is a window of its own, open until it is finished).
# A build from before daywyn-probe existed is started the way it was then: its own
# program with DAYWYN_EXIT_WHEN_READY=1. No run can hang: each has a time limit.
# Usage: scripts/measure-desktop.sh [build] [runs]
set -euo pipefail

build=${1:-build}
runs=${2:-7}
here=$(cd "$(dirname "$0")/.." && pwd)
binary="$here/$build/daywyn"
probe="$here/$build/daywyn-probe"
[ -x "$binary" ] || { echo "Build Daywyn first: $binary is missing." >&2; exit 1; }
if [ -x "$probe" ]; then
  ready=("$probe" --exit-when-ready)
elif grep -q DAYWYN_EXIT_WHEN_READY "$here/$build/daywyn-app" "$binary" 2>/dev/null; then
  ready=(env DAYWYN_EXIT_WHEN_READY=1 "$binary")
else
  echo "Build Daywyn with its tests first: $probe is missing." >&2
  exit 1
fi

name=measure
app_pid=""
on_exit='[ -n "$app_pid" ] && kill "$app_pid" 2>/dev/null || true'
. "$here/scripts/desktop-sandbox.sh"

mkdir -p "$root/data/Daywyn" "$root/config" "$root/cache" "$root/runtime"
chmod 700 "$root/runtime"
"$here/scripts/seed-state.py" "$root/data/Daywyn/daywyn.json" --bulk 4989

in_sandbox() {
  env -u DBUS_SESSION_BUS_ADDRESS -u WAYLAND_DISPLAY DISPLAY="$display" QT_QPA_PLATFORM=xcb \
    HOME="$root" XDG_DATA_HOME="$root/data" XDG_CONFIG_HOME="$root/config" \
    XDG_CACHE_HOME="$root/cache" XDG_RUNTIME_DIR="$root/runtime" "$@"
}
median() { sort -n | awk '{ a[NR] = $1 } END { print a[int((NR + 1) / 2)] }'; }

# The toolkit's floor: a window of Qt Quick Controls, shown once, then gone.
cat > "$root/floor.cpp" <<'CPP'
#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQuickWindow>
int main(int argc, char** argv) {
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    QGuiApplication app(argc, argv);
    QQmlApplicationEngine engine;
    engine.loadData(R"(import QtQuick
import QtQuick.Controls
ApplicationWindow {
    visible: true; width: 360; height: 640
    ListView { anchors.fill: parent; model: 20; delegate: CheckDelegate { text: "Task " + index } }
    onFrameSwapped: Qt.quit()
})");
    return app.exec();
}
CPP
floor_program=""
# shellcheck disable=SC2046
if c++ -O2 -fPIC -std=c++17 -o "$root/floor" "$root/floor.cpp" \
  $(pkg-config --cflags --libs Qt6Quick Qt6Qml Qt6Gui Qt6Core) 2>"$root/floor.err"; then
  floor_program="$root/floor"
  in_sandbox timeout 60 dbus-run-session -- "$floor_program" 2>/dev/null || true
fi

# The first run fills Qt's QML cache, as the first launch after installing does.
in_sandbox timeout 120 dbus-run-session -- "${ready[@]}" 2>/dev/null || true
times="$root/times"
for run in $(seq "$runs"); do
  if ! in_sandbox timeout 120 dbus-run-session -- \
    /usr/bin/time -f "%e %M %U %S" -o "$times.one" "${ready[@]}" 2>"$root/err"; then
    echo "Run $run did not reach the drawer's first frame:" >&2
    cat "$root/err" >&2
    exit 1
  fi
  cat "$times.one" >> "$times"
  # The probe also says what its first frame cost, before the app winds down.
  sed -n 's/^Drawer ready after \([0-9]*\) ms, \([0-9]*\) ms CPU\.$/\1 \2/p' "$root/err" >> "$root/ready"
  if [ -n "$floor_program" ]; then
    in_sandbox timeout 60 dbus-run-session -- \
      /usr/bin/time -f "%e %M %U %S" -o "$times.one" "$floor_program" 2>/dev/null &&
      cat "$times.one" >> "$root/floor.times"
  fi
done
# CPU time (user + system) barely depends on what else the machine is doing; wall
# time does, so both are shown.
echo "start to drawer ready: median $(cut -d' ' -f1 "$times" | median) s wall," \
     "$(awk '{ print $3 + $4 }' "$times" | median) s CPU over $runs runs" \
     "(peak RSS median $(cut -d' ' -f2 "$times" | median) KB; load $(cut -d' ' -f1 /proc/loadavg))"
if [ -s "$root/floor.times" ]; then
  echo "  floor, a bare Qt Quick Controls window: median" \
       "$(cut -d' ' -f1 "$root/floor.times" | median) s wall," \
       "$(awk '{ print $3 + $4 }' "$root/floor.times" | median) s CPU" \
       "(peak RSS median $(cut -d' ' -f2 "$root/floor.times" | median) KB)"
fi
if [ -s "$root/ready" ]; then
  echo "  of which to the first frame: median $(cut -d' ' -f2 "$root/ready" | median) ms CPU" \
       "(from exec), $(cut -d' ' -f1 "$root/ready" | median) ms wall (from main)"
fi

# Idle: the app as a user runs it, past the welcome, drawer hidden, for 60 seconds.
mkdir -p "$root/config/Daywyn"
printf '[General]\nonboardingCompleted=true\n' >> "$root/config/Daywyn/Daywyn.conf"
# The app writes its own process id, so only that process is looked at and ended.
in_sandbox dbus-run-session -- sh -c 'echo $$ > "$1"; exec "$2"' sh "$root/app.pid" "$binary" \
  2>/dev/null &
sleep 5
app_pid=$(cat "$root/app.pid" 2>/dev/null || true)
[ -n "$app_pid" ] && [ -e "/proc/$app_pid" ] || { echo "The app did not start." >&2; exit 1; }
ticks() { awk '{ print $14 + $15 }' "/proc/$app_pid/stat"; }
hz=$(getconf CLK_TCK)
before=$(ticks)
sleep 60
after=$(ticks)
rss=$(awk '/VmRSS/ { print $2 }' "/proc/$app_pid/status")
echo "idle with the drawer hidden: RSS ${rss} KB," \
     "CPU $(awk -v t=$((after - before)) -v hz="$hz" 'BEGIN { printf "%.3f", 100 * t / hz / 60 }') %" \
     "over 60 s"
