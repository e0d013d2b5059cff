#!/bin/sh
# screenshots.sh BUILD_FOLDER OUTPUT_FOLDER
# Pictures of the window in every look: both languages, light and dark, both scales,
# and one that reads from right to left.
set -eu
here=$(CDPATH='' cd -- "$(dirname -- "$0")" && pwd)
build=$1
output=$2
cmake --build "$build" --target shell_screenshots
mkdir -p "$output"
output=$(CDPATH='' cd -- "$output" && pwd)
shoot() {
    scale=$1
    shift
    QT_QPA_PLATFORM=offscreen QT_SCALE_FACTOR=$scale \
        "$here/../support/run-isolated.sh" "$build/bin/shell_screenshots" "$output" "$@"
}
shoot 1 en light
shoot 2 en dark
shoot 2 fr light
shoot 1 fr dark
shoot 1 en light rtl
