#!/usr/bin/env bash
# Checks the Debian package `make package` built: lintian finds no errors, the desktop
# entry and the AppStream metainfo validate, and the program unpacked into a scratch
# root runs (`daywyn --version`). Usage: scripts/check-package.sh [build folder]
set -euo pipefail

build=${1:-build}
here=$(cd "$(dirname "$0")/.." && pwd)
shopt -s nullglob
packages=("$here/$build"/daywyn_*_amd64.deb)
[ ${#packages[@]} -eq 1 ] || { echo "Expected one daywyn_*_amd64.deb in $build; run make package." >&2; exit 1; }
package=${packages[0]}
echo "Checking $(basename "$package")"

root=$(mktemp -d "${TMPDIR:-/tmp}/daywyn-package.XXXXXX")
trap 'rm -rf "$root"' EXIT

# Errors fail the check; warnings are shown for the record.
lintian --allow-root --tag-display-limit 0 "$package" | tee "$root/lintian.txt"
if grep -q '^E:' "$root/lintian.txt"; then
  echo "lintian reported errors." >&2
  exit 1
fi

dpkg-deb -x "$package" "$root/install"
for required in usr/bin/daywyn usr/libexec/daywyn/daywyn-app \
    usr/libexec/daywyn/daywyn-command-line.so usr/libexec/daywyn/daywyn-transcribe \
    usr/share/applications/daywyn.desktop \
    usr/share/dbus-1/services/org.daywyn.Daywyn.service \
    usr/share/metainfo/org.daywyn.Daywyn.metainfo.xml \
    usr/share/icons/hicolor/scalable/apps/daywyn.svg \
    usr/share/icons/hicolor/48x48/apps/daywyn.png \
    usr/share/icons/hicolor/256x256/apps/daywyn.png \
    usr/share/doc/daywyn/copyright; do
  [ -e "$root/install/$required" ] || { echo "The package lacks /$required." >&2; exit 1; }
done
desktop-file-validate "$root/install/usr/share/applications/daywyn.desktop"
appstreamcli validate --no-net "$root/install/usr/share/metainfo/org.daywyn.Daywyn.metainfo.xml"

version=$(env -u DISPLAY -u WAYLAND_DISPLAY "$root/install/usr/bin/daywyn" --version)
echo "Installed program: $version"
case "$version" in
  "Daywyn "*) ;;
  *) echo "The installed program did not print its version." >&2; exit 1 ;;
esac
# A verb runs in daywyn-command-line.so and `transcribe` in a program of its own, both
# found beside the installed daywyn-app.
transcribe=$(env -u DISPLAY -u WAYLAND_DISPLAY "$root/install/usr/bin/daywyn" transcribe \
  "$root/missing.wav" 2>&1 || true)
case "$transcribe" in
  "Daywyn could not open $root/missing.wav.") ;;
  *) echo "The installed program did not reach daywyn-transcribe: $transcribe" >&2; exit 1 ;;
esac
echo "The package is good."
