#!/usr/bin/env bash
# Captures task sync as the user sees it into <build>/screenshots/sync/: the set-up in
# Settings › Calendars (setup/: the empty form, finding the task lists, a refused
# password, the lists found), the drawer's sync line and the section once synced with
# a real Radicale server (synced/, two entries in the conflict log; long-log/, the
# most the log keeps), and the drawer with the server gone. Runs a private Radicale,
# X server, session bus and keyring in temporary folders: your own data, keyring and
# servers are never touched.
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
silent_pid=""
on_exit='[ -n "$radicale_pid" ] && kill "$radicale_pid" 2>/dev/null; [ -n "$silent_pid" ] && kill "$silent_pid" 2>/dev/null || true'
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

# A server that takes connections and says nothing for a few seconds: "finding" lasts.
silent_port=$(python3 -c 'import socket; s=socket.socket(); s.bind(("127.0.0.1",0)); print(s.getsockname()[1])')
python3 - "$silent_port" <<'PY' &
import socket, sys, threading, time
server = socket.socket()
server.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
server.bind(("127.0.0.1", int(sys.argv[1])))
server.listen(8)
def hold(connection):
    time.sleep(4)
    connection.close()
end = time.time() + 120
server.settimeout(1)
while time.time() < end:
    try:
        connection, _ = server.accept()
    except socket.timeout:
        continue
    threading.Thread(target=hold, args=(connection,), daemon=True).start()
PY
silent_pid=$!

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
# One task list there already, as a phone app would have made it.
python3 - "$SERVER" <<'PY'
import base64, http.client, sys, urllib.parse
server = urllib.parse.urlparse(sys.argv[1])
connection = http.client.HTTPConnection(server.hostname, server.port)
auth = "Basic " + base64.b64encode(b"ama:secret").decode()
connection.request("MKCOL", "/ama/", headers={"Authorization": auth})
connection.getresponse().read()
body = ('<?xml version="1.0"?><C:mkcalendar xmlns:D="DAV:" xmlns:C="urn:ietf:params:xml:ns:caldav">'
        '<D:set><D:prop><D:displayname>Tasks</D:displayname><C:supported-calendar-component-set>'
        '<C:comp name="VTODO"/></C:supported-calendar-component-set></D:prop></D:set></C:mkcalendar>')
connection.request("MKCALENDAR", "/ama/tasks-from-the-phone/", body, {"Authorization": auth})
status = connection.getresponse().status
sys.exit(0 if status in (200, 201) else 1)
PY
"$PROBE" --task-sync-screenshots "$OUT/setup" "$SERVER" "$SILENT"
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
"$PROBE" --task-sync-screenshots "$OUT/synced"
# The longest log the state keeps, under a long task list address.
python3 - "$XDG_STATE_HOME/Daywyn/sync/state.json" <<'PY'
import json, sys, datetime
path = sys.argv[1]
state = json.load(open(path))
now = datetime.datetime.now(datetime.timezone.utc)
state["conflicts"] = [
    {"at": (now - datetime.timedelta(minutes=7 * (200 - i))).strftime("%Y-%m-%dT%H:%M:%SZ"),
     "field": "title", "keptValue": "Plan week %d with the whole team" % i, "lost": "remote",
     "setAsideValue": "Plan week %d" % i,
     "taskId": "8F0C6A38-6E0A-4C51-9C1B-%012d" % i, "title": "Plan week %d with the whole team" % i}
    for i in range(200)]
state["account"]["collectionUrl"] = state["account"]["serverUrl"] + \
    "ama/a-task-list-with-a-very-long-address-0f8d3c6e-2b1a-4f57-9e0d-5c7b8a9d1e2f/"
json.dump(state, open(path, "w"))
PY
"$PROBE" --task-sync-screenshots "$OUT/long-log"
INSIDE
)
env -u DBUS_SESSION_BUS_ADDRESS -u WAYLAND_DISPLAY \
  DISPLAY="$display" QT_QPA_PLATFORM=xcb HOME="$home" XDG_DATA_HOME="$home/data" \
  XDG_CONFIG_HOME="$home/config" XDG_STATE_HOME="$home/state" XDG_CACHE_HOME="$home/cache" \
  XDG_RUNTIME_DIR="$home/runtime" DAYWYN="$daywyn" PROBE="$probe" OUT="$out" \
  SERVER="http://127.0.0.1:$port/" SILENT="http://127.0.0.1:$silent_port/" \
  dbus-run-session -- timeout 240 bash -c "$inside" 2> >(grep -v 'fd limit' >&2)

# The server gone: the first pass of the next start fails and says so.
kill "$radicale_pid"; wait "$radicale_pid" 2>/dev/null || true; radicale_pid=""
env -u DBUS_SESSION_BUS_ADDRESS -u WAYLAND_DISPLAY \
  DISPLAY="$display" QT_QPA_PLATFORM=xcb HOME="$home" XDG_DATA_HOME="$home/data" \
  XDG_CONFIG_HOME="$home/config" XDG_STATE_HOME="$home/state" XDG_CACHE_HOME="$home/cache" \
  XDG_RUNTIME_DIR="$home/runtime" \
  dbus-run-session -- bash -c "printf 'shots' | gnome-keyring-daemon --unlock --components=secrets >/dev/null; sleep 0.5; timeout 60 '$probe' --screenshot '$out/drawer-failed.png'" \
  2> >(grep -v 'fd limit' >&2)
echo "Wrote the sync screenshots to $out"
