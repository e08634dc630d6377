#!/usr/bin/env bash
# Makes edges of the world's coastlines and draws them, in red over the triangulation:   demo.sh PROGRAM OUTPUT_FOLDER
set -euo pipefail

program=$1
folder=$2
data=$(dirname "$0")/../data/coast_50m.seg

mkdir -p "$folder"
"$program" constrain "$data" --ps "$folder/coast.ps"
echo
echo "The triangulated coastlines: $folder/coast.ps"
if command -v gs >/dev/null 2>&1; then
    gs -q -dNOPAUSE -dBATCH -sDEVICE=png16m -r300 -dDownScaleFactor=2 -sOutputFile="$folder/coast.png" "$folder/coast.ps"
    echo "The same as a bitmap:        $folder/coast.png"
else
    echo "With ghostscript (gs) there would be a PNG too."
fi
