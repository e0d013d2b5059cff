#!/bin/sh
# Runs one program with a home, configuration, state and temporary folder of its
# own, so that a test can neither see nor touch what belongs to the user.
set -eu
home=$(mktemp -d "${TMPDIR:-/tmp}/vignar-test.XXXXXX")
mkdir -p "$home/tmp" "$home/run"
chmod 700 "$home/run"
export HOME="$home" TMPDIR="$home/tmp" XDG_RUNTIME_DIR="$home/run"
export XDG_CONFIG_HOME="$home/.config" XDG_STATE_HOME="$home/.local/state"
export XDG_DATA_HOME="$home/.local/share" XDG_CACHE_HOME="$home/.cache"
status=0
"$@" || status=$?
rm -rf "$home"
exit "$status"
