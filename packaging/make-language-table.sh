#!/usr/bin/env bash
# make-language-table.sh [FOLDER] >src/analysis/languageTable.inc
# Prints the rows {name, code} of the language table from the lists of Debian's package
# iso-codes (FOLDER: where its JSON files are). Needed only when ISO 639-2 changes.
set -euo pipefail
folder=${1-/usr/share/iso-codes/json}

echo "// Made by packaging/make-language-table.sh from ISO 639-2."
# Groups of languages (ISO 639-5) and the special codes are no languages. Where a name has
# alternatives, the first is taken. The bibliographic code, where there is one, comes
# second, under the name with a blank at its end.
jq -r --slurpfile groups "$folder/iso_639-5.json" '
    ([$groups[0]["639-5"][].alpha_3] + ["mis", "mul", "und", "zxx", "qaa-qtz", "him"]) as $left_out
    | {vie: "Viêt Namese"} as $renamed
    | .["639-2"][]
    | select(.alpha_3 | IN($left_out[]) | not)
    | ($renamed[.alpha_3] // (.name | split("; ")[0])) as $name
    | [$name, .alpha_3], (select(.bibliographic) | [$name + " ", .bibliographic])
    | "{u\"\(.[0])\", u\"\(.[1])\"},"' "$folder/iso_639-2.json"
# A group of languages that has an entry without a code.
echo '{u"Bihari", u"--"},'
