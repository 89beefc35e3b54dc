#!/usr/bin/env bash
# Captures task sync as the user sees it into <build>/screenshots/sync/: the drawer's
# sync line and the Calendars settings page, once synced with a real Radicale server
# (with two entries in the conflict log) and once with the server gone. Runs a private
# Radicale, X server, session bus and keyring in temporary folders: your own data,
# keyring and servers are never touched.
set -euo pipefail

build=${1:-build}
here=$(cd "$(dirname "$0")/.." && pwd)
probe="$here/$build/daywyn-probe"
daywyn="$here/$build/daywyn"
out="$here/$build/screenshots/sync"
[ -x "$probe" ] && [ -x "$daywyn" ] || { echo "Build Daywyn with its tests first." >&2; exit 1; }
mkdir -p "$out"

name=sync-shots
radicale_pid=""
on_exit='[ -n "$radicale_pid" ] && kill "$radicale_pid" 2>/dev/null || true'
. "$here/scripts/desktop-sandbox.sh"

port=$(python3 -c 'import socket; s=socket.socket(); s.bind(("127.0.0.1",0)); print(s.getsockname()[1])')
mkdir -p "$root/radicale/storage"
printf 'ama:secret\n' > "$root/radicale/users"
cat > "$root/radicale/config" <<CONFIG
[server]
hosts = 127.0.0.1:$port
[auth]
type = htpasswd
htpasswd_filename = $root/radicale/users
htpasswd_encryption = plain
delay = 0
[rights]
type = owner_only
[storage]
filesystem_folder = $root/radicale/storage
[web]
type = none
[logging]
level = warning
CONFIG
radicale --config "$root/radicale/config" &
radicale_pid=$!
for _ in $(seq 100); do
  python3 -c "import socket; socket.create_connection(('127.0.0.1',$port),0.2)" 2>/dev/null && break
  sleep 0.1
done

home="$root/home"
mkdir -p "$home/data/Daywyn" "$home/config/Daywyn" "$home/state" "$home/cache" "$home/runtime"
chmod 700 "$home/runtime"
"$here/scripts/seed-state.py" "$home/data/Daywyn/daywyn.json"

# Inside one private session: a keyring, the set-up, a first pass, two conflicts in the
# log (as a machine that lost two races would have them), then the pictures.
inside=$(cat <<'INSIDE'
set -euo pipefail
printf 'shots' | gnome-keyring-daemon --unlock --components=secrets >/dev/null
for _ in $(seq 50); do
  busctl --user status org.freedesktop.secrets >/dev/null 2>&1 && break
  sleep 0.1
done
printf 'secret\n' | "$DAYWYN" sync setup "$SERVER" --user ama --password-stdin
"$DAYWYN" sync
python3 - "$XDG_STATE_HOME/Daywyn/sync/state.json" <<'PY'
import json, sys, datetime
path = sys.argv[1]
state = json.load(open(path))
now = datetime.datetime.now(datetime.timezone.utc)
def at(minutes):
    return (now - datetime.timedelta(minutes=minutes)).strftime("%Y-%m-%dT%H:%M:%SZ")
state["conflicts"] = [
    {"at": at(95), "field": "estimatedMinutes", "keptValue": "45 min", "lost": "remote",
     "setAsideValue": "30 min", "taskId": "8F0C6A38-6E0A-4C51-9C1B-1D1D3B0E2A11",
     "title": "Review the quarterly report"},
    {"at": at(12), "field": "title", "keptValue": "Call Ama about the trip", "lost": "local",
     "setAsideValue": "Call Ama", "taskId": "0B7D1F52-5A0B-4E7E-8F0B-6C2E4B9A3D22",
     "title": "Call Ama about the trip"},
]
json.dump(state, open(path, "w"))
PY
"$PROBE" --screenshot "$OUT/drawer-synced.png"
"$PROBE" --settings-screenshots "$OUT/synced"
INSIDE
)
env -u DBUS_SESSION_BUS_ADDRESS -u WAYLAND_DISPLAY \
  DISPLAY="$display" QT_QPA_PLATFORM=xcb HOME="$home" XDG_DATA_HOME="$home/data" \
  XDG_CONFIG_HOME="$home/config" XDG_STATE_HOME="$home/state" XDG_CACHE_HOME="$home/cache" \
  XDG_RUNTIME_DIR="$home/runtime" DAYWYN="$daywyn" PROBE="$probe" OUT="$out" \
  SERVER="http://127.0.0.1:$port/" \
  dbus-run-session -- timeout 120 bash -c "$inside" 2> >(grep -v 'fd limit' >&2)

# The server gone: the first pass of the next start fails and says so.
kill "$radicale_pid"; wait "$radicale_pid" 2>/dev/null || true; radicale_pid=""
env -u DBUS_SESSION_BUS_ADDRESS -u WAYLAND_DISPLAY \
  DISPLAY="$display" QT_QPA_PLATFORM=xcb HOME="$home" XDG_DATA_HOME="$home/data" \
  XDG_CONFIG_HOME="$home/config" XDG_STATE_HOME="$home/state" XDG_CACHE_HOME="$home/cache" \
  XDG_RUNTIME_DIR="$home/runtime" \
  dbus-run-session -- bash -c "printf 'shots' | gnome-keyring-daemon --unlock --components=secrets >/dev/null; sleep 0.5; timeout 60 '$probe' --screenshot '$out/drawer-failed.png'" \
  2> >(grep -v 'fd limit' >&2)
echo "Wrote the sync screenshots to $out"
