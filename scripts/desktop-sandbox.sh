# Sourced by the scripts that run the real desktop app (screenshots, measurements):
# a temporary folder $root, a private X server on $display, and both removed on exit.
# The caller sets `name` first and may set `on_exit` to end its own processes.
root=$(mktemp -d "${TMPDIR:-/tmp}/daywyn-${name:-app}.XXXXXX")
xvfb_pid=""
on_exit=${on_exit:-}
cleanup() {
  [ -n "$on_exit" ] && eval "$on_exit"
  [ -n "$xvfb_pid" ] && kill "$xvfb_pid" 2>/dev/null || true
  rm -rf "$root"
}
trap cleanup EXIT

display=:$((90 + RANDOM % 400))
Xvfb "$display" -screen 0 1600x1000x24 -nolisten tcp >/dev/null 2>&1 &
xvfb_pid=$!
for _ in $(seq 50); do
  [ -e "/tmp/.X11-unix/X${display#:}" ] && break
  sleep 0.1
done
