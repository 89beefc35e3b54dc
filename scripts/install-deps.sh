#!/usr/bin/env bash
# Installs every Debian 12 package Daywyn needs to build, test and run.
# Idempotent: packages already present are skipped, and the package lists are
# refreshed only when something is missing. Uses sudo only when not root.
set -euo pipefail

packages=(
  # toolchain
  g++ cmake ninja-build pkg-config make git clang-format
  # core libraries
  libicu-dev rapidjson-dev
  # reading every JSON document (On-Demand parser)
  libsimdjson-dev
  # tests, benchmarks, fuzzing
  libgtest-dev libgmock-dev libbenchmark-dev clang libclang-rt-14-dev python3
  # desktop app
  qt6-base-dev qt6-declarative-dev qt6-svg-dev qt6-multimedia-dev libgl-dev
  qml6-module-qtquick qml6-module-qtquick-controls qml6-module-qtquick-layouts
  qml6-module-qtquick-window qml6-module-qtquick-dialogs qml6-module-qt-labs-platform
  qml6-module-qtqml-workerscript qml6-module-qtquick-templates qml6-module-qtqml
  qml6-module-qttest qt6-qpa-plugins libxcb1-dev
  # the non-native file dialogs (Settings › Reports export) list folders with this
  qml6-module-qt-labs-folderlistmodel
  # hermetic test environment: a private session bus, a virtual display
  dbus dbus-bin xvfb xauth x11-utils xdotool openbox
  # the command line's session-bus client (sd-bus), lighter than loading Qt; zsh and
  # groff check the generated completion and manual page
  libsystemd-dev zsh groff-base
  # measuring the desktop app (scripts/measure-desktop.sh)
  time
  # a real notification daemon for the delivery test (tests/integration)
  dunst
  # hashing (Nettle); updates and packaging: the manifest reader, the icon's PNG sizes,
  # checks of the .deb; the openssl tool makes the local HTTPS test servers' certificates
  nettle-dev openssl libsimdjson-dev librsvg2-bin lintian desktop-file-utils appstream
  # whole-screen captures of the running app (scripts/screenshots.sh: handle, Quick Add)
  imagemagick
  # resizing the private X screen in the drawer placement test (xrandr)
  x11-xserver-utils
  # system calendars: Evolution Data Server through libecal, .ics folders through libical
  libecal2.0-dev libical-dev evolution-data-server
  # Google accounts in the Secret Service; the keyring and secret-tool for its tests
  libsecret-1-dev gnome-keyring libsecret-tools curl
  # task sync: a real CalDAV server for the sync tests and measurements
  radicale
  # voice capture: on-device speech recognition, and the speech and virtual
  # microphone the voice tests record with
  libpocketsphinx-dev pocketsphinx-en-us pocketsphinx-testdata flite sox pulseaudio pulseaudio-utils
)

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$p")
  fi
done

if [ ${#missing[@]} -eq 0 ]; then
  exit 0
fi

sudo=""
if [ "$(id -u)" -ne 0 ]; then
  sudo="sudo"
fi

echo "Installing: ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
# Another installer (a parallel build, the desktop's updater) may hold the package
# lock for a while: wait for it rather than fail.
apt_get=($sudo apt-get -o DPkg::Lock::Timeout=600)
"${apt_get[@]}" update -qq
"${apt_get[@]}" install -y -qq --no-install-recommends "${missing[@]}"
