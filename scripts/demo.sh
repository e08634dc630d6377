#!/usr/bin/env bash
# Makes edges of the world's coastlines, draws them in red over the triangulation, and then the land between them, filled:
#   demo.sh BUILD_FOLDER OUTPUT_FOLDER
set -euo pipefail

build=$1
folder=$2
data=$(dirname "$0")/../data/coast_50m.seg

# As a bitmap too, where that is possible; the path of the best picture there is goes to standard output.
picture() {
    if ! command -v gs >/dev/null 2>&1; then
        echo "$folder/$1.ps"
        return
    fi
    gs -q -dNOPAUSE -dBATCH -sDEVICE=png16m -r300 -dDownScaleFactor=2 -sOutputFile="$folder/$1.png" "$folder/$1.ps"
    echo "$folder/$1.png"
}

mkdir -p "$folder"
"$build/tools/norvik2d" constrain "$data" --ps "$folder/coast.ps"
echo
"$build/examples/landAndSea" "$data" "$folder/land.ps"
echo
echo "The triangulated coastlines:       $(picture coast)"
echo "Open this, land filled, sea empty: $(picture land)"
command -v gs >/dev/null 2>&1 || echo "With ghostscript (gs) there would be PNG files too."
