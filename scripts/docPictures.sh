#!/usr/bin/env bash
# Makes the bitmaps of the documentation from the pictures that the examples write:
#   docPictures.sh BUILD_FOLDER [NAME...]      all of them, or these
# `land` and `iceland` are those of the demo. The plots are cut out of their pages. Needs ghostscript and ImageMagick.
set -euo pipefail

cd "$(dirname "$0")/.."
build=$(realpath "$1")
shift
output=$PWD/docs/pictures

# Twice the usual 55 pixels an inch is legible for most.
declare -A pixelsPerInch=([cutting]=130 [strategies]=130 [iceland]=92 [progress]=90)
# Those that tell nothing in print.
without=(firstTriangles landAndSea errors)

if [[ $# -gt 0 ]]; then
    names=("$@")
else
    mapfile -t names < <(echo land iceland | tr ' ' '\n'; sed -n '/^set(NORVIK2D_EXAMPLES/,/^)/s/^ \+//p' examples/CMakeLists.txt)
fi

# gs_plot DEVICE X Y WIDTH HEIGHT FILE ARGUMENTS...: a rectangle of the page, in points
gs_plot() {
    local device=$1 x=$2 y=$3 width=$4 height=$5 file=$6
    shift 6
    gs -q -dNOPAUSE -dBATCH -sDEVICE="$device" -dDEVICEWIDTHPOINTS="$width" -dDEVICEHEIGHTPOINTS="$height" -dFIXEDMEDIA \
        "$@" -c "<</Install {-$x -$y translate}>> setpagedevice" -f "$file"
}

# picture NAME FILE.ps
picture() {
    # The plot has its place below the text, and only its width or its height is all of it.
    local left=44 bottom=194 width=546 height=494 margin=4 box
    read -r -a box < <(gs_plot bbox $left $bottom $width $height "$2" 2>&1 | sed -n 's/^%%BoundingBox: //p')
    gs_plot png16m $((left + box[0] - margin)) $((bottom + box[1] - margin)) \
        $((box[2] - box[0] + 2 * margin)) $((box[3] - box[1] + 2 * margin)) "$2" \
        -r"${pixelsPerInch[$1]:-110}" -dTextAlphaBits=4 -dGraphicsAlphaBits=4 -sOutputFile="$work/$1.png"
    # Few colours make small files.
    convert "$work/$1.png" +dither -colors 24 -strip -define png:compression-level=9 "png8:$output/$1.png"
}

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$output"
for name in "${names[@]}"; do
    [[ " ${without[*]} " != *" $name "* ]] || continue
    case $name in
        land | iceland) [[ -e $work/iceland.ps ]] || scripts/demo.sh "$build" "$work" >/dev/null ;;
        *) (cd "$work" && "$build/examples/$name" >/dev/null) ;;
    esac
    picture "$name" "$work/$name.ps"
    size=$(stat -c %s "$output/$name.png")
    echo "$name.png: $((size / 1024)) KB"
    [[ $size -le 61440 ]] || echo "    that is more than 60 KB"
done
