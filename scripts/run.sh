#!/usr/bin/env bash
# Installs what is missing, builds, and starts the application. With no
# DISPLAY set it runs on an Xvfb of its own.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh
scripts/build.sh

if [[ -n ${DISPLAY:-} ]]; then
  exec build/bin/tosvar "$@"
fi
echo "run.sh: no DISPLAY set; starting the application on its own Xvfb, with a tray"
# trayer is the tray the icon and its menu live in.
exec xvfb-run --auto-servernum --server-args="-screen 0 1920x1080x24" \
  dbus-run-session -- bash -c '
    echo "run.sh: the application runs on DISPLAY=$DISPLAY"
    trayer --edge top --align right --widthtype request --height 28 --transparent false &
    exec build/bin/tosvar "$@"' run.sh "$@"
