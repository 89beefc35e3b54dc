#!/usr/bin/env bash
# Measures `daywyn sync` as whole processes against a real Radicale server on
# 127.0.0.1 (temporary storage, its default fsync on), with a 2,000-task state file:
#   upload  the first pass of a fresh task list: every task sent (one PUT each);
#   idle    a pass with nothing changed on either side;
# and counts the HTTP requests an idle pass makes and the time Radicale itself spent on
# them (and on the upload's PUTs), from Radicale's log. The password
# sits in a gnome-keyring on a private session bus, as on a desktop.
# Prints medians in milliseconds (wall, CPU of the daywyn processes).
# Usage: scripts/measure-sync.sh [build] [idle runs] [upload runs] [tasks]
# With 0 upload runs the tasks are placed on the server instead and received first.
# With RADICALE_PROFILE=PREFIX, Radicale's requests are profiled and saved per method
# as PREFIX.PUT, PREFIX.PROPFIND, ... (scripts/profile-radicale.py).
set -euo pipefail

build=${1:-build}
runs=${2:-11}
uploads=${3:-1}
wanted=${4:-2000}
here=$(cd "$(dirname "$0")/.." && pwd)
daywyn="$here/$build/daywyn"
[ -x "$daywyn" ] && [ -x "$here/$build/daywyn-sync" ] ||
  { echo "Build Daywyn first: $daywyn or daywyn-sync is missing." >&2; exit 1; }
command -v radicale > /dev/null || { echo "Install radicale (scripts/install-deps.sh)." >&2; exit 1; }

root=$(mktemp -d "${TMPDIR:-/tmp}/daywyn-measure-sync.XXXXXX")
server_pid=""
cleanup() {
  [ -n "$server_pid" ] && kill "$server_pid" 2> /dev/null && wait "$server_pid" 2> /dev/null || true
  rm -rf "$root"
}
trap cleanup EXIT
mkdir -p "$root/data/Daywyn" "$root/state" "$root/runtime" "$root/config" "$root/home"
chmod 700 "$root/runtime"

port=$(/usr/bin/python3 -c 'import socket; s = socket.socket(); s.bind(("127.0.0.1", 0)); print(s.getsockname()[1])')
echo "ama:secret" > "$root/users"
cat > "$root/radicale.conf" <<CONF
[server]
hosts = 127.0.0.1:$port
[auth]
type = htpasswd
htpasswd_filename = $root/users
htpasswd_encryption = plain
[rights]
type = owner_only
[storage]
filesystem_folder = $root/storage
[web]
type = none
[logging]
level = info
CONF
if [ -n "${RADICALE_PROFILE:-}" ]; then
  /usr/bin/python3 "$here/scripts/profile-radicale.py" "$RADICALE_PROFILE" \
    --config "$root/radicale.conf" 2> "$root/radicale.log" &
else
  radicale --config "$root/radicale.conf" 2> "$root/radicale.log" &
fi
server_pid=$!
for _ in $(seq 100); do
  (exec 3<> "/dev/tcp/127.0.0.1/$port") 2> /dev/null && break
  sleep 0.1
done

state="$root/data/Daywyn/daywyn.json"
if [ "$uploads" -gt 0 ]; then
  # The seeded drawer holds 11 tasks of its own.
  "$here/scripts/seed-state.py" "$state" --bulk $((wanted - 11)) > /dev/null
else
  # No upload to wait for (Radicale takes minutes for thousands of new objects): the task
  # list is written straight into the server's storage, as another client would have
  # left it (with sessions and a checklist as Daywyn's own properties), and the first
  # pass receives it.
  "$here/scripts/seed-state.py" "$state" > /dev/null
  /usr/bin/python3 - "$root/storage/collection-root/ama/seeded" "$wanted" <<'PY'
import json, os, sys, uuid
folder, count = sys.argv[1], int(sys.argv[2])
os.makedirs(folder)
with open(os.path.join(folder, ".Radicale.props"), "w") as f:
    json.dump({"tag": "VCALENDAR", "D:displayname": "Seeded",
               "C:supported-calendar-component-set": "VTODO"}, f)
for i in range(count):
    uid = str(uuid.uuid4()).upper()
    sessions = json.dumps([{"id": str(uuid.uuid4()).upper(), "start": "2026-01-05T09:00:00Z",
                            "end": "2026-01-05T09:40:00Z"}])
    checklist = json.dumps([{"id": str(uuid.uuid4()).upper(), "title": "Step %d" % n,
                             "isComplete": True} for n in range(2)])
    with open(os.path.join(folder, uid + ".ics"), "w", newline="") as f:
        f.write("\r\n".join([
            "BEGIN:VCALENDAR", "VERSION:2.0", "PRODID:-//Seed//EN", "BEGIN:VTODO",
            "UID:" + uid, "DTSTAMP:20260105T100000Z", "CREATED:20260105T080000Z",
            "LAST-MODIFIED:20260105T100000Z", "SUMMARY:Archived task %d" % i,
            "STATUS:COMPLETED", "COMPLETED:20260105T094000Z", "X-DAYWYN-ESTIMATED-MINUTES:45",
            "X-DAYWYN-SESSIONS:" + sessions, "X-DAYWYN-CHECKLIST:" + checklist,
            "END:VTODO", "END:VCALENDAR", ""]))
PY
  # Radicale parses each new object once, on the first request that reads the list:
  # done here, so that no pass of Daywyn waits for it.
  /usr/bin/python3 - "$port" <<'PY'
import base64, sys, urllib.request
request = urllib.request.Request(
    "http://127.0.0.1:%s/ama/seeded/" % sys.argv[1], method="PROPFIND", headers={
        "Depth": "0", "Authorization": "Basic " + base64.b64encode(b"ama:secret").decode()})
urllib.request.urlopen(request, timeout=600).read()
PY
fi
export HOME="$root/home" XDG_DATA_HOME="$root/data" XDG_STATE_HOME="$root/state" \
  XDG_CONFIG_HOME="$root/config" XDG_RUNTIME_DIR="$root/runtime"
unset DISPLAY WAYLAND_DISPLAY
# Written once by Daywyn itself, so that the file is in the current format already.
env -u DBUS_SESSION_BUS_ADDRESS "$daywyn" add "Seeded" > /dev/null
tasks=$(/usr/bin/python3 -c 'import json, sys; print(len(json.load(open(sys.argv[1]))["tasks"]))' "$state")

cat > "$root/launch.c" <<'C'
#include <stdio.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>
/* Runs argv[1..] once, output kept; prints the wall and CPU time (user + system of the
   process and its children, here daywyn-sync) in ms to fd 3. */
int main(int argc, char** argv) {
    (void)argc;
    struct timespec a, b;
    clock_gettime(CLOCK_MONOTONIC, &a);
    pid_t pid = fork();
    if (pid == 0) {
        execv(argv[1], argv + 1);
        _exit(127);
    }
    int status = 0;
    waitpid(pid, &status, 0);
    clock_gettime(CLOCK_MONOTONIC, &b);
    struct rusage usage;
    getrusage(RUSAGE_CHILDREN, &usage);
    dprintf(3, "%.3f %.3f\n", (b.tv_sec - a.tv_sec) * 1e3 + (b.tv_nsec - a.tv_nsec) / 1e6,
            (usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) * 1e3 +
                (usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e3);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1;
}
C
cc -O2 -o "$root/launch" "$root/launch.c"

cat > "$root/inside.sh" <<SH
#!/usr/bin/env bash
set -euo pipefail
# The time Radicale says it spent on the requests logged on stdin, in ms.
server_ms() { awk '/response status/ { for (i = 1; i < NF; ++i) if (\$i == "in") t += \$(i + 1) }
  END { printf "%.1f\\n", t * 1000 }'; }
echo -n test-password | gnome-keyring-daemon --foreground --unlock --components=secrets \
  > /dev/null 2>&1 &
keyring=\$!
trap 'kill \$keyring 2> /dev/null || true' EXIT
for _ in \$(seq 100); do
  busctl --user status org.freedesktop.secrets > /dev/null 2>&1 && break
  sleep 0.05
done
for i in \$(seq $uploads); do
  echo secret | "$daywyn" sync setup "http://127.0.0.1:$port/" --user ama --password-stdin \
    --list "Upload \$i" > /dev/null
  "$root/launch" "$daywyn" sync 3>> "$root/upload.times" > "$root/upload.out"
done
if [ "$uploads" -eq 0 ]; then
  echo secret | "$daywyn" sync setup "http://127.0.0.1:$port/" --user ama --password-stdin \
    --list Seeded > /dev/null
fi
"$daywyn" sync > /dev/null
for _ in \$(seq $runs); do
  "$root/launch" "$daywyn" sync 3>> "$root/idle.times" > "$root/idle.out"
done
before=\$(grep -c ' request for ' "$root/radicale.log" || true)
lines=\$(wc -l < "$root/radicale.log")
"$daywyn" sync > /dev/null
after=\$(grep -c ' request for ' "$root/radicale.log" || true)
echo \$((after - before)) > "$root/idle.requests"
tail -n +\$((lines + 1)) "$root/radicale.log" | server_ms > "$root/idle.server"
SH
chmod +x "$root/inside.sh"
dbus-run-session -- "$root/inside.sh"

median() { awk -v c="${2:-1}" '{ print $c }' "$1" | sort -n |
  awk '{ a[NR] = $1 } END { print a[int((NR + 1) / 2)] }'; }
[ "$uploads" -gt 0 ] || tasks=$((tasks + wanted))
echo "Radicale $(radicale --version) on 127.0.0.1, $tasks tasks; medians in ms (wall, CPU)"
[ "$uploads" -eq 0 ] ||
  printf "  first upload (%d runs)        %9.1f %9.1f   (%s)\n" "$uploads" \
    "$(median "$root/upload.times")" "$(median "$root/upload.times" 2)" "$(cat "$root/upload.out")"
printf "  pass, nothing changed (%d)    %9.1f %9.1f   (%s)\n" "$runs" \
  "$(median "$root/idle.times")" "$(median "$root/idle.times" 2)" "$(cat "$root/idle.out")"
echo "  HTTP requests of a pass with nothing changed: $(cat "$root/idle.requests")"
# Radicale's own time for each request, from its log: how much of a pass is the server's.
put_ms() { grep 'PUT response status' "$root/radicale.log" | sed 's/.* in \([0-9.]*\) seconds.*/\1/' |
  awk '{ print $1 * 1000 }'; }
middle() { sort -n | awk '{ a[NR] = $1 } END { printf "%.0f", a[int((NR + 1) / 2)] }'; }
echo "  Radicale's own time (its log): the upload's PUTs $(put_ms | awk '{ t += $1 } END {
  printf "%.1f", t / 1000 }') s in all, median $(put_ms | head -n 100 | middle) ms for the first" \
  "100 and $(put_ms | tail -n 100 | middle) ms for the last 100; a quiet pass's requests" \
  "$(cat "$root/idle.server") ms"
