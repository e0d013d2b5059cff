#!/bin/sh
# with-screen.sh COMMAND…   Runs it with a screen, a window manager and a bus of its own; ends
# with 77 where one of them is not installed.
set -eu
for tool in Xvfb openbox xdotool dbus-run-session; do
    command -v "$tool" >/dev/null || exit 77
done
folder=$(mktemp -d "${TMPDIR:-/tmp}/vignar-screen.XXXXXX")
mkfifo "$folder/display"
Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp \
    3>"$folder/display" 2>"$folder/screen.log" &
screen=$!
trap 'kill "$screen" 2>/dev/null || :; wait "$screen" || :; rm -rf "$folder"' EXIT
trap 'exit 143' TERM INT
read -r number <"$folder/display"
export DISPLAY=":$number" LC_ALL=C.UTF-8 QT_QPA_PLATFORM=xcb
unset WAYLAND_DISPLAY QT_QPA_PLATFORMTHEME XDG_CURRENT_DESKTOP
status=0
dbus-run-session -- sh -c 'openbox & manager=$!; "$@"; status=$?; kill "$manager"; exit $status' \
    sh "$@" || status=$?
exit "$status"
