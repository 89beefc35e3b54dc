#!/usr/bin/env bash
# Runs one test program in a sealed environment: its own HOME and XDG folders, an
# unusual time zone (Asia/Kathmandu, +05:45) so that an accidental read of the
# machine's zone fails, a fixed locale, Qt's offscreen platform, and for Qt and
# integration programs a private D-Bus session bus. Used by CTest for every test.
set -u

root=$(mktemp -d "${TMPDIR:-/tmp}/daywyn-test.XXXXXX")
cleanup() { rm -rf "$root"; }
trap cleanup EXIT

mkdir -p "$root/home" "$root/data" "$root/config" "$root/state" "$root/cache" "$root/runtime"
chmod 700 "$root/runtime"

export HOME="$root/home"
export XDG_DATA_HOME="$root/data"
export XDG_CONFIG_HOME="$root/config"
export XDG_STATE_HOME="$root/state"
export XDG_CACHE_HOME="$root/cache"
export XDG_RUNTIME_DIR="$root/runtime"
export TZ="Asia/Kathmandu"
export LC_ALL="C.UTF-8"
export LANG="C.UTF-8"
export QT_QPA_PLATFORM="${DAYWYN_TEST_QPA:-offscreen}"
export DAYWYN_HERMETIC=1
unset DBUS_SESSION_BUS_ADDRESS WAYLAND_DISPLAY
[ -n "${DAYWYN_TEST_KEEP_DISPLAY:-}" ] || unset DISPLAY

program=$(basename "$1")
case "$program" in
  *_qt|test_integration*)
    # The session services of the sealed home and of the machine, except a machine's
    # notification daemon (dunst, say): the tests bring their own server, or start a
    # real one on purpose.
    mkdir -p "$root/dbus-services"
    for service in /usr/share/dbus-1/services/*.service; do
      grep -qx 'Name=org.freedesktop.Notifications' "$service" ||
        ln -s "$service" "$root/dbus-services/"
    done
    cat > "$root/session.conf" <<CONF
<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <keep_umask/>
  <listen>unix:tmpdir=/tmp</listen>
  <auth>EXTERNAL</auth>
  <servicedir>$XDG_DATA_HOME/dbus-1/services</servicedir>
  <servicedir>$root/dbus-services</servicedir>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
CONF
    dbus-run-session --config-file="$root/session.conf" -- "$@"
    ;;
  *)
    "$@"
    ;;
esac
