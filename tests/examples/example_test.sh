#!/usr/bin/env bash
# Runs an example in a new folder. Its output must be as expected, where * stands for anything, and its picture must be there.
#   example_test.sh PROGRAM EXPECTED_OUTPUT FOLDER [ARGUMENT...]
set -euo pipefail

program=$1 expected=$2 folder=$3
shift 3
rm -rf "$folder"
mkdir -p "$folder"
cd "$folder"
"$program" "$@" >output.txt

# Pictures announce themselves, and messages are coloured.
mapfile -t lines < <(sed -e '/^Visualizer2:: Writing/d' -e 's/\x1b\[[0-9;]*m//g' output.txt)
mapfile -t patterns <"$expected"

numFaults=0
fault() {
    echo "${program##*/}: $1"
    numFaults=$((numFaults + 1))
}

[[ ${#lines[@]} -eq ${#patterns[@]} ]] || fault "${#lines[@]} lines instead of ${#patterns[@]}"
for i in "${!lines[@]}"; do
    # Unquoted, because the right side is a pattern.
    # shellcheck disable=SC2053
    [[ ${lines[i]} == ${patterns[i]:-} ]] || fault "line $((i + 1)) is \"${lines[i]}\", not \"${patterns[i]:-}\""
done

picture=${program##*/}.ps
grep -q lineto "$picture" && grep -q '^showpage$' "$picture" || fault "nothing is drawn in $picture"
exit $((numFaults > 0))
