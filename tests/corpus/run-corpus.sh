#!/usr/bin/env bash
# run-corpus.sh VIGNAR_CLI CORPUS OUT [LAYOUT…]
# Makes the sheets of everything that make-corpus.sh made, in all four layouts or in
# those named, and checks what a user and his disk would see. The sheets stay in OUT,
# to be looked at. Exit status 0: nothing to complain of.
set -euo pipefail
[ $# -ge 3 ] || { echo "usage: $0 VIGNAR_CLI CORPUS OUT [LAYOUT…]" >&2; exit 2; }
cli=$(realpath -- "$1")
corpus=$(realpath -- "$2")
mkdir -p "$3"
out=$(realpath -- "$3")
layouts=("${@:4}")
[ ${#layouts[@]} -gt 0 ] || layouts=(big med min mix)

home=$(mktemp -d "${TMPDIR:-/tmp}/vignar-corpus.XXXXXX")
trap 'rm -rf -- "$home"' EXIT
mkdir "$home/tmp"
faults=0
fault() { printf 'FAULT %s\n' "$*" >&2; faults=$((faults + 1)); }

# The program alone gets the private home, so that its processes can be told by it.
vignar() {
    env -u XDG_RUNTIME_DIR HOME="$home" TMPDIR="$home/tmp" \
        XDG_CONFIG_HOME="$home/config" XDG_STATE_HOME="$home/state" \
        XDG_DATA_HOME="$home/data" XDG_CACHE_HOME="$home/cache" "$cli" "$@" </dev/null
}

# make_sheets KIND LAYOUT EXIT_STATUS: runs over everything in CORPUS/KIND, each source
# named as a user in that folder would. The checks below see the variables set here.
make_sheets() {
    local kind=$1 layout=$2 what="$1 $2" status=0
    folder=$out/$kind-$layout
    lines=$out/$kind-$layout.jsonl
    rm -rf -- "$folder"
    mkdir "$folder"
    (cd "$corpus/$kind" && vignar sheet -o "$folder" -l "$layout" --existing replace --json -- *) \
        >"$lines" 2>"$out/$kind-$layout.err" || status=$?
    [ "$status" -eq "$3" ] || fault "$what: exit status $status instead of $3"
    check_lines
    check_destination
    check_traces
}

# One line for each source, with the status that its folder stands for.
check_lines() {
    local sources wanted=made
    [ "$kind" = good ] || wanted=refused
    sources=$(find "$corpus/$kind" -mindepth 1 -maxdepth 1 -printf x | wc -c)
    [ "$(wc -l <"$lines")" -eq "$sources" ] ||
        fault "$what: $(wc -l <"$lines") lines for $sources sources"
    while IFS= read -r line; do
        fault "$what: not $wanted: $line"
    done < <(jq -c --arg wanted "$wanted" \
        'select(.status != $wanted) | {source, status, reason}' "$lines")
    [ "$kind" = good ] || [ "$(jq -c 'select(.reason == "" or .reason == null)' "$lines")" = "" ] ||
        fault "$what: a refusal without a reason"
    [ "$(jq -r '.sheet // empty | @json' "$lines" | sort | uniq -d)" = "" ] ||
        fault "$what: two sources share one sheet"
}

# The sheets and the disk pictures that the lines name, whole, and nothing else.
check_destination() {
    local sheet width
    while IFS= read -r -d '' sheet; do
        width=$(ffprobe -v error -show_entries stream=width -of csv=p=0 "file:$sheet" 2>&1) || true
        [ "$width" = 1280 ] || fault "$what: $sheet is '$width' wide"
    done < <(jq -j '.sheet // empty | . + "\u0000"' "$lines")
    cmp -s <(jq -j '.sheet, .diskPicture | values | . + "\u0000"' "$lines" | sort -z) \
        <(find "$folder" -mindepth 1 -print0 2>/dev/null | sort -z) ||
        fault "$what: $folder holds other things than its sheets: $(find "$folder" | head -n 100)"
}

check_traces() {
    local left
    left=$(find "$home/tmp" -mindepth 1)
    [ -z "$left" ] || fault "$what: left in the temporary folder: $left"
    left=$(grep -lzsx "HOME=$home" /proc/[0-9]*/environ || true)
    [ -z "$left" ] || fault "$what: still running: $left"
    left=$(find "$corpus" "$out" "$home" . -maxdepth 3 -name 'pwned*')
    [ -z "$left" ] || fault "$what: a file name was executed: $left"
}

for layout in "${layouts[@]}"; do
    make_sheets good "$layout" 0
done
make_sheets bad "${layouts[0]}" 1

echo "$faults faults; the sheets are in $out"
[ "$faults" -eq 0 ]
