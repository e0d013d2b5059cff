#!/usr/bin/env bash
# compare-passes.sh VIGNAR_CLI CORPUS OUT [LAYOUT…]
# Makes the sheets of all good clips of the corpus twice, by the plain passes and by
# their quick form, and names every source whose two sheets differ in any pixel or in
# the number of missing pictures. Exit status 0: none differs.
set -euo pipefail
[ $# -ge 3 ] || { echo "usage: $0 VIGNAR_CLI CORPUS OUT [LAYOUT…]" >&2; exit 2; }
cli=$(realpath -- "$1")
corpus=$(realpath -- "$2")/good
mkdir -p "$3"
out=$(realpath -- "$3")
layouts=("${@:4}")
[ ${#layouts[@]} -gt 0 ] || layouts=(big med min mix)

# Any character may be in a name, also those that ffmpeg reads as patterns.
pixels() { ffmpeg -nostdin -v error -f image2 -pattern_type none -i "file:$1" -f md5 -; }

# The date of a source stands on its sheet, and its folder too: both are the same twice.
make_sheets() {
    mkdir -p "$out/$1-$2"
    (cd "$corpus" && "$cli" sheet -o "$out/$1-$2" -l "$2" --existing replace --json \
        --set "prefPlainPasses=$3" --set prefMultimediaHd=0 -- *) >"$out/$1-$2.jsonl" 2>"$out/$1-$2.err" || true
}

differing=0
for layout in "${layouts[@]}"; do
    make_sheets plain "$layout" 1
    make_sheets fast "$layout" 0
    while IFS= read -r -d '' plain && IFS= read -r -d '' fast && IFS= read -r -d '' numbers; do
        if [ "$numbers" = same ] && drawn=$(pixels "$plain") && [ "$drawn" = "$(pixels "$fast")" ]; then
            continue
        fi
        echo "DIFFERS $layout: $fast ($numbers)"
        differing=$((differing + 1))
    done < <(paste -d '\n' "$out/plain-$layout.jsonl" "$out/fast-$layout.jsonl" |
        jq -js '_nwise(2) | [.[0].sheet, .[1].sheet,
            (if .[0].missing == .[1].missing then "same" else "\(.[0].missing) missing, \(.[1].missing) fast" end)]
            | map("\(.)\u0000") | add')
    echo "$layout: $(jq -s 'map(.seconds) | add' "$out/plain-$layout.jsonl") s plain," \
        "$(jq -s 'map(.seconds) | add' "$out/fast-$layout.jsonl") s fast"
done
echo "$differing differ"
[ "$differing" -eq 0 ]
