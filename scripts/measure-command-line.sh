#!/usr/bin/env bash
# Measures the daywyn command line as whole processes with a 5,000-task state file
# (scripts/seed-state.py) in a temporary data folder, each run timed from fork to exit
# by a small C launcher, the rounds interleaved so a busy machine slows all alike:
#   floor    a tiny C program that reads the state file and writes the same bytes to
#            a temporary file, fsyncs it and renames it into place;
#   python   Python's json load of the file, a sorted pretty dump, fsync and rename;
#   add      `daywyn add` (no app running: one durable save of the whole file);
#   today    `daywyn today` (reads only);
#   version  `daywyn --version` (answered by the C program without loading the command
#            line), beside an empty C program (what any process costs);
#   bus      `daywyn add` handed to a running app over a private session bus, with the
#            CPU time the app's main thread spent per add.
# Prints the median of each in milliseconds and the ratios.
# Usage: scripts/measure-command-line.sh [build] [runs]
set -euo pipefail

build=${1:-build}
runs=${2:-21}
here=$(cd "$(dirname "$0")/.." && pwd)
daywyn="$here/$build/daywyn"
[ -x "$daywyn" ] || { echo "Build Daywyn first: $daywyn is missing." >&2; exit 1; }

root=$(mktemp -d "${TMPDIR:-/tmp}/daywyn-measure.XXXXXX")
app_pid=""
cleanup() {
  [ -n "$app_pid" ] && kill "$app_pid" 2>/dev/null || true
  rm -rf "$root"
}
trap cleanup EXIT
mkdir -p "$root/data/Daywyn" "$root/copy" "$root/runtime" "$root/config"
chmod 700 "$root/runtime"
state="$root/data/Daywyn/daywyn.json"
"$here/scripts/seed-state.py" "$state" --bulk 4989
# Written once by Daywyn itself, so that the file is in the current format already.
env -u DBUS_SESSION_BUS_ADDRESS XDG_RUNTIME_DIR="$root/runtime" XDG_DATA_HOME="$root/data" \
  "$daywyn" add "Seeded" > /dev/null

cat > "$root/launch.c" <<'C'
#include <fcntl.h>
#include <stdio.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>
/* Runs argv[1..] once with output to /dev/null; prints the wall time and the CPU
   time (user + system) in ms. */
int main(int argc, char** argv) {
    (void)argc;
    struct timespec a, b;
    clock_gettime(CLOCK_MONOTONIC, &a);
    pid_t pid = fork();
    if (pid == 0) {
        int null = open("/dev/null", O_WRONLY);
        dup2(null, 1);
        dup2(null, 2);
        execv(argv[1], argv + 1);
        _exit(127);
    }
    int status = 0;
    struct rusage usage;
    wait4(pid, &status, 0, &usage);
    clock_gettime(CLOCK_MONOTONIC, &b);
    printf("%.3f %.3f\n", (b.tv_sec - a.tv_sec) * 1e3 + (b.tv_nsec - a.tv_nsec) / 1e6,
           (usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) * 1e3 +
               (usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e3);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1;
}
C
cat > "$root/floor.c" <<'C'
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>
/* floor SOURCE TARGET: the same bytes, durably replaced. */
int main(int argc, char** argv) {
    if (argc != 3) return 2;
    int in = open(argv[1], O_RDONLY);
    struct stat info;
    if (in < 0 || fstat(in, &info) != 0) return 1;
    char* bytes = malloc((size_t)info.st_size);
    if (read(in, bytes, (size_t)info.st_size) != info.st_size) return 1;
    char temp[4096];
    snprintf(temp, sizeof temp, "%s.tmp", argv[2]);
    int out = open(temp, O_WRONLY | O_CREAT | O_TRUNC, 0600);
    if (out < 0 || write(out, bytes, (size_t)info.st_size) != info.st_size) return 1;
    if (fsync(out) != 0 || close(out) != 0) return 1;
    return rename(temp, argv[2]) == 0 ? 0 : 1;
}
C
cat > "$root/python.py" <<'PY'
import json, os, sys
with open(sys.argv[1]) as f:
    state = json.load(f)
temp = sys.argv[2] + ".tmp"
with open(temp, "w") as f:
    json.dump(state, f, sort_keys=True, indent=2)
    f.flush()
    os.fsync(f.fileno())
os.rename(temp, sys.argv[2])
PY
cc -O2 -o "$root/launch" "$root/launch.c"
cc -O2 -o "$root/floor" "$root/floor.c"
echo 'int main(void) { return 0; }' > "$root/empty.c"
cc -O2 -o "$root/empty" "$root/empty.c"

in_sandbox() {
  env -u DBUS_SESSION_BUS_ADDRESS -u DISPLAY -u WAYLAND_DISPLAY HOME="$root" \
    XDG_DATA_HOME="$root/data" XDG_CONFIG_HOME="$root/config" XDG_RUNTIME_DIR="$root/runtime" \
    "$@"
}
# The median of one column (1: wall time, 2: CPU time) of a file of runs.
median() { awk -v c="${2:-1}" '{ print $c }' "$1" | sort -n |
  awk '{ a[NR] = $1 } END { print a[int((NR + 1) / 2)] }'; }

python=$(command -v python3)
for _ in $(seq "$runs"); do
  "$root/launch" "$root/floor" "$state" "$root/copy/floor.json" >> "$root/floor.times"
  in_sandbox "$root/launch" "$daywyn" add "Measure the command line" >> "$root/add.times"
  "$root/launch" "$python" "$root/python.py" "$state" "$root/copy/python.json" >> "$root/python.times"
  in_sandbox "$root/launch" "$daywyn" today >> "$root/today.times"
  in_sandbox "$root/launch" "$daywyn" --version >> "$root/version.times"
  "$root/launch" "$root/empty" >> "$root/empty.times"
done

# The same add handed to the running app over a private session bus.
bus_add="n/a"
bus_app="n/a"
if command -v dbus-run-session > /dev/null; then
  cat > "$root/bus.sh" <<SH
#!/usr/bin/env bash
set -u
QT_QPA_PLATFORM=offscreen DAYWYN_HERMETIC=1 "$here/$build/daywyn-app" 2> /dev/null &
app=\$!
# The app must not outlive its bus, whatever happens below.
trap 'kill \$app 2> /dev/null; wait \$app 2> /dev/null' EXIT
for _ in \$(seq 200); do
  busctl --user status org.daywyn.Daywyn > /dev/null 2>&1 && break
  sleep 0.05
done
# The app's main thread, which carries out the verb and saves, in ns on a CPU: on a
# busy machine the wall time mostly measures waiting, this does not.
before=\$(cut -d" " -f1 /proc/\$app/schedstat)
for _ in \$(seq $runs); do
  "$root/launch" "$daywyn" add "Measure the bus" >> "$root/bus.times" || true
done
echo \$(( (\$(cut -d" " -f1 /proc/\$app/schedstat) - before) / $runs )) > "$root/bus.app"
SH
  chmod +x "$root/bus.sh"
  in_sandbox dbus-run-session -- "$root/bus.sh" || true
  [ -s "$root/bus.times" ] && bus_add=$(median "$root/bus.times")
  [ -s "$root/bus.app" ] && bus_app=$(awk '{ printf "%.2f", $1 / 1e6 }' "$root/bus.app")
fi

# On a busy machine the wall time includes waiting for a core; the CPU time (user +
# system) of the process itself is shown beside it.
for what in floor add python today version empty; do
  eval "${what}=\$(median \"\$root/${what}.times\")"
  eval "${what}_cpu=\$(median \"\$root/${what}.times\" 2)"
done
size=$(stat -c %s "$state")
echo "State file: $((size / 1024)) KiB, $runs runs each, medians in ms (wall, CPU)"
printf "  floor (C write+fsync+rename)  %8.2f %8.2f\n" "$floor" "$floor_cpu"
printf "  python json load+dump+fsync   %8.2f %8.2f\n" "$python" "$python_cpu"
printf "  daywyn add                    %8.2f %8.2f\n" "$add" "$add_cpu"
printf "  daywyn today                  %8.2f %8.2f\n" "$today" "$today_cpu"
printf "  daywyn --version              %8.2f %8.2f\n" "$version" "$version_cpu"
printf "  empty C program               %8.2f %8.2f\n" "$empty" "$empty_cpu"
echo   "  daywyn add over the bus       $bus_add (wall; the app's main thread: $bus_app CPU per add, mean)"
awk -v a="$add" -v f="$floor" -v p="$python" 'BEGIN {
  printf "  add: %.2fx the floor, %.1fx faster than Python (wall)\n", a / f, p / a }'
