#!/usr/bin/env bash
# Makes edges of the world's coastlines, draws them in red over the triangulation, then the land between them, filled, and
# fills one island with triangles of good shape:
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

# Iceland's coast, as it would be drawn there: degrees of longitude are shorter than those of latitude.
iceland() {
    awk '$1 > -25 && $1 < -13 && $2 > 63 && $2 < 67 { f = cos(65 * 3.14159265 / 180); print f * $1, $2, f * $3, $4 }' \
        CONVFMT=%.9g OFMT=%.9g "$data"
}

mkdir -p "$folder"
"$build/tools/norvik2d" constrain "$data" --ps "$folder/coast.ps"
echo
"$build/examples/landAndSea" "$data" "$folder/land.ps"
echo
iceland >"$folder/iceland.seg"
"$build/tools/norvik2d" mesh "$folder/iceland.seg" --min-angle 28 --grow 2 --check --ps "$folder/iceland.ps"
echo
echo "The triangulated coastlines:        $(picture coast)"
echo "Land filled, sea empty:             $(picture land)"
echo "Open this, Iceland as quality mesh: $(picture iceland)"
command -v gs >/dev/null 2>&1 || echo "With ghostscript (gs) there would be PNG files too."
