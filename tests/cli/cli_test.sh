#!/usr/bin/env bash
# One case of the command-line program's tests:   cli_test.sh CASE PROGRAM DATA_FOLDER
set -euo pipefail

case_name=$1
program=$2
data=$3

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"

fail() {
    echo "FAILED: $1"
    echo "--- status ${status:-?}, standard output:"
    cat out
    echo "--- standard error:"
    cat err
    exit 1
}

# Runs the program; leaves its status in `status`, its output in the files out and err.
run() {
    status=0
    "$program" "$@" >out 2>err || status=$?
}

expect_status() { [[ $status -eq $1 ]] || fail "status $1 expected"; }
expect_line() { grep -qxF -- "$1" out || fail "line \"$1\" expected"; }
expect_lines_in() { [[ $(grep -cE -- "$2" "$1") -eq $3 ]] || fail "$3 lines like $2 expected in $1"; }
expect_no_output() { [[ ! -s out ]] || fail "nothing expected on standard output"; }
expect_silent_error() { [[ ! -s err ]] || fail "nothing expected on standard error"; }

# Runs the program, which must refuse with this status and tell this on standard error.
refused() {
    local expected=$1 text=$2
    shift 2
    run "$@"
    expect_status "$expected"
    grep -qF -- "$text" err || fail "error \"$text\" expected"
}

# The values of lines that are named NAMES, in order. The status is 0, or what `expected` tells.
expect_values() {
    expect_status "${expected:-0}"
    local i=0
    for value in "$@"; do expect_line "${names[i++]}: $value"; done
    grep -qE '^seconds: [0-9.e-]+$' out || fail "seconds expected"
    expect_silent_error
}

expect_summary() {
    local -r names=(points duplicates triangles "hull vertices")
    expect_values "$@"
}

# A little endian file of one int32, one uint64 and doubles that are given as hexadecimal digits, eight bytes each.
binary_file() {
    local type=$1 count=$2
    shift 2
    printf '%b' "\\x$(printf %02x "$type")" '\0\0\0'
    printf '%b' "\\x$(printf %02x "$count")" '\0\0\0\0\0\0\0'
    for hex in "$@"; do
        for i in 14 12 10 8 6 4 2 0; do printf '%b' "\\x${hex:i:2}"; done
    done
}
zero=0000000000000000 one=3ff0000000000000 two=4000000000000000 infinity=7ff0000000000000

summaryOfTextPoints() {
    printf '0 0\n\n  4\t0\r\n4 3\n+0 3e0\n2 1\n0 -0\n2 0' >points.xy
    run triangulate points.xy --check --threads 2
    expect_summary 6 1 5 5
}

summaryOfSegments() {
    printf '0 0 1 0\n1 0 0 1\n0 1 0 0\n' >ring.seg
    run triangulate ring.seg
    expect_summary 3 3 1 3
}

summaryOfBinaryPoints() {
    binary_file 20 3 $zero $zero $one $zero $zero $two >flat
    run triangulate flat
    expect_summary 3 0 1 3
    binary_file 30 3 $zero $zero $two $one $zero $two $zero $one $two >spatial
    run triangulate spatial
    expect_summary 3 0 1 3
}

collinearPointsHaveNoTriangles() {
    printf '0 0\n1 1\n2 2\n' >line.xy
    run triangulate line.xy
    expect_summary 3 0 0 0
    refused 1 "line.ps: no picture, there are no triangles" triangulate line.xy --ps line.ps
    [[ ! -e line.ps ]] || fail "no picture expected"
    : >empty.xy
    run triangulate empty.xy
    expect_summary 0 0 0 0
}

badTextIsToldWithFileAndLine() {
    tells() {
        printf "$2" >"bad.$1"
        refused 1 "bad.$1:$3" triangulate "bad.$1"
        expect_no_output
    }
    tells xy '0 0\n1 abc\n' '2: "abc" is not a number'
    tells xy '0 0\n\n1 0x10\n' '3: "0x10" is not a number'
    tells xy '0 0 0\n' '1: 2 numbers expected, 3 found'
    tells seg '0 0 1 1\n0 0 1\n' '2: 4 numbers expected, 3 found'
    tells xy 'nan 0\n' '1: "nan" is not finite'
    tells xy '0 0\n0 -inf\n' '2: "-inf" is not finite'
    tells xy '0 1e400\n' '1: "1e400" is outside of the range of a double'
    tells xy '0 +-1\n' '1: "+-1" is not a number'
    tells xy '0 \0331\n' '1: "?1" is not a number'
}

badFilesAreTold() {
    refused 1 "missing.xy: can't be read" triangulate missing.xy
    refused 1 ".: is a folder" triangulate .
    binary_file 20 3 $zero $zero $one $zero >short
    refused 1 "short: holds 2 points, its header tells 3" triangulate short
    binary_file 20 1 $zero $infinity >infinite
    refused 1 "infinite: point 1 is not finite" triangulate infinite
    binary_file 21 1 $zero $zero $one $one >segments
    refused 1 "segments: holds segments, not points" triangulate segments
}

wrongUsageIsStatusTwo() {
    printf '0 0\n' >points.xy
    for arguments in "" triangulate "triangulate points.xy --unknown" "triangulate points.xy --threads many" \
        "triangulate points.xy --threads -1" "constrain points.xy --points" \
        "constrain points.xy --points-out points.xy"; do
        run $arguments
        expect_status 2
    done
    for arguments in --help "triangulate --help"; do
        run $arguments
        expect_status 0
    done
}

outputsAreWritten() {
    printf '0 0\n1 0\n0 1\n0 0\n' >points.xy
    run triangulate points.xy --ps picture.ps --points-out out.xy
    expect_lines_in picture.ps 'lineto$' 3
    [[ $(sort out.xy) == $'0 0\n0 1\n1 0' ]] || fail "points expected"
    run triangulate points.xy --points-out out.bin
    [[ $(stat -c %s out.bin) -eq 60 ]] || fail "12 bytes and 3 points of 16 bytes expected"
    run triangulate out.bin
    expect_summary 3 0 1 3
    for option in --ps --points-out; do
        refused 1 "no/such/folder: can't be written" triangulate points.xy $option no/such/folder
    done
}

progressIsForTerminalsOnly() {
    run triangulate "$data/coast_110m.seg" --progress --check
    expect_status 0
    expect_silent_error
    # util-linux's script runs the program on a terminal of its own, where the machine can make one.
    if ! script -qec true /dev/null >/dev/null 2>&1 </dev/null; then
        echo "not tried on a terminal: there is none to be had"
        return 0
    fi
    script -qec "'$program' triangulate '$data/coast_110m.seg' --progress >/dev/null" /dev/null >out </dev/null
    grep -qF '[####' out || fail "a bar expected"
}

# The summary of `constrain` but for the time: given degenerate pieces splits crossings added missing points triangles.
expect_constraints() {
    local -r names=("segments given" degenerate "alive pieces" splits crossings "vertices added" "not enforced" points
        triangles)
    expect_values "$@"
    [[ $(wc -l <out) -eq 10 ]] || fail "nothing but the summary expected"
}

constraintsAreCounted() {
    printf '0 0 4 4\n0 4 4 0\n' >cross.seg
    run constrain cross.seg --threads 2
    expect_constraints 2 0 4 2 1 1 0 5 4
    echo 2 2 >centre.xy
    run constrain cross.seg --points centre.xy
    expect_constraints 2 0 4 2 0 0 0 5 4
    printf '0 0 4 0\n1 0 3 0\n1 0 3 0\n3 0 1 0\n2 2 2 2\n' >overlapping.seg
    run constrain overlapping.seg
    expect_constraints 5 1 3 2 0 0 0 5 3
    run constrain "$data/coast_110m.seg" --check
    expect_line "segments given: 4992"
    expect_line "not enforced: 0"
    expect_status 0
}

conformingSegmentsAreHalved() {
    echo 0 0 4 0 >flat.seg
    printf '2 0.5\n2 -0.5\n' >near.xy
    run constrain flat.seg --points near.xy --conforming
    expect_constraints 1 0 2 1 0 1 0 5 4
    run constrain flat.seg --points near.xy
    expect_constraints 1 0 1 0 0 0 0 4 2
    printf '0 0 4 4\n0 4 4 0\n' >cross.seg
    run constrain cross.seg --conforming
    expect_constraints 2 0 4 2 1 1 0 5 4
}

missingPiecesAreCountedAndFailTheCheck() {
    # Halving these doesn't hit their crossings.
    printf '0 0 5 5\n0 5 7 0.3\n0 1 5 1.7\n' >crossing.seg
    run constrain crossing.seg --conforming
    expect_status 0
    expect_lines_in out '^not enforced: [1-9]' 1
    refused 1 "crossing.seg: the triangulation is not valid" constrain crossing.seg --conforming --check
}

constraintsOfCollinearPointsWait() {
    printf '0 0 1 1\n1 1 3 3\n' >line.seg
    run constrain line.seg
    expect_constraints 2 0 2 0 0 0 2 3 0
    printf '1 1 1 1\n' >point.seg
    run constrain point.seg
    expect_constraints 1 1 0 0 0 0 0 1 0
    : >empty.seg
    run constrain empty.seg
    expect_constraints 0 0 0 0 0 0 0 0 0
}

constraintsAreRed() {
    printf '0 0 4 0\n4 0 4 4\n4 4 0 4\n0 4 0 0\n' >square.seg
    run constrain square.seg --ps square.ps
    expect_lines_in square.ps 'lineto$' 5
    grep -A 20 -E '^1\s+0\s+0\s+setrgbcolor' square.ps >red.ps
    expect_lines_in red.ps 'lineto$' 4
}

badSegmentsAreTold() {
    printf '0 0 1 1\n0 0 1\n' >short.txt
    refused 1 "short.txt:2: 4 numbers expected, 3 found" constrain short.txt
    binary_file 20 1 $zero $zero >points
    refused 1 "points: holds points, not segments" constrain points
    binary_file 21 2 $zero $zero $one $one >short
    refused 1 "short: holds 1 segments, its header tells 2" constrain short
    binary_file 31 1 $zero $zero $one $one $infinity $one >infinite
    refused 1 "infinite: segment 1 is not finite" constrain infinite
    binary_file 21 1 $zero $zero $one $one >segment
    refused 1 "missing.xy: can't be read" constrain segment --points missing.xy
    expect_no_output
    printf '1 0\n' >corner.xy
    run constrain segment --points corner.xy
    expect_constraints 1 0 1 0 0 0 0 3 1
}

# A square, four segments in a row, then another that overlaps it, out of order; and the domain around them.
two_squares() {
    printf '4 4 10 4\n10 4 10 10\n10 10 4 10\n4 10 4 4\n' >squares.seg
    printf '8 6 14 6\n14 12 14 6\n14 12 8 12\n8 12 8 6\n' >>squares.seg
    printf '0 0\n20 0\n20 20\n0 20\n' >domain.xy
}

# Name and area of a zone or result.
expect_zone() { expect_lines_in out "^$1[:,] area $2, triangles [0-9]+, border edges $3\$" 1; }

zonesOfTwoRings() {
    two_squares
    local -rA areas=([union]='64 8' [intersection]='8 4' [difference]='28 6' [symmetric-difference]='56 12')
    for operation in "${!areas[@]}"; do
        run zones squares.seg --points domain.xy --inside --inside "--$operation" --check
        expect_status 0
        expect_line "rings: 2"
        expect_line "segments in no ring: 0"
        expect_line "points: 14"
        expect_zone "zone 2, inside of ring 2" 36 6
        expect_zone "$operation" ${areas[$operation]}
        expect_silent_error
    done
    run zones squares.seg --inside --inside --difference --obj zone.obj --ps zone.ps
    expect_lines_in zone.obj '^v' 6
    expect_lines_in zone.obj '^f' 4
    grep -q 'fill$' zone.ps || fail "a picture expected"
}

zonesAreTakenInTheOrderOfTheCommandLine() {
    two_squares
    run zones squares.seg --points domain.xy --grow 9,9 --outside --grow 1,1 --inside --grow -1,-1 --intersection
    expect_status 0
    expect_zone "zone 1, around a seed" 8 4
    expect_zone "zone 2, outside of ring 1" 364 10
    expect_zone "zone 3, around a seed" 336 12
    expect_zone "zone 4, inside of ring 2" 36 6
    expect_zone "zone 5, around a seed" 0 0
    expect_zone intersection 0 0
}

ringsAreFoundInAnyOrder() {
    # A square with a tail; then another one that has a side in common with it, and a ring of no area.
    printf '10 10 4 10\n10 4 10 10\n4 4 10 4\n4 10 4 4\n8 6 8 6\n0 0 4 4\n' >loose.seg
    run zones loose.seg
    expect_line "rings: 1"
    expect_line "segments in no ring: 1"
    expect_line "degenerate: 1"
    printf '10 4 16 4\n16 4 16 10\n16 10 10 10\n10 10 10 4\n20 0 22 0\n22 0 24 0\n24 0 20 0\n' >>loose.seg
    run zones loose.seg
    expect_line "rings: 2"
    expect_line "segments in no ring: 4"
    expect_zone "ring 1: segments 4" 36 4
    # Two triangles in one run that meets itself at a vertex.
    printf '0 0 0 4\n0 4 2 2\n2 2 4 4\n4 4 4 0\n4 0 2 2\n2 2 0 0\n' >bow.seg
    run zones bow.seg --inside
    expect_zone "zone 1, inside of ring 1" 8 6
    run zones "$data/coast_110m.seg" --check
    expect_status 0
    expect_line "rings: 124"
    expect_line "and 104 more rings"
}

badZonesAreTold() {
    two_squares
    refused 1 "squares.seg: no ring 3 for a zone; 2 are closed, 0 segments are in none" \
        zones squares.seg --inside --outside --inside
    expect_no_output
    printf '0 0 4 0\n4 0 4 4\n4 4 0 3\n' >open.seg
    refused 1 "open.seg: no ring 1 for a zone; 0 are closed, 3 segments are in none" zones open.seg --inside
    printf '0 0 4 4\n4 4 4 0\n4 0 0 4\n0 4 0 0\n' >crossing.seg
    refused 1 "crossing.seg: ring 1 crosses itself, it has no inside" zones crossing.seg --inside
    printf '0 0 4 4\n' >line.seg
    refused 1 "line.seg: no zones, there are no triangles" zones line.seg --grow 1,1
    refused 1 "empty.obj: not written, there are no triangles" zones squares.seg --grow 30,30 --obj empty.obj
    refused 2 "--union: needs two zones" zones squares.seg --inside --union
    refused 2 "" zones squares.seg --inside --inside --union --difference
    for seed in 1 1,x 1,,2 1,2, 1,2,3 1,inf nan,0; do
        refused 2 "--grow: " zones squares.seg --grow "$seed"
    done
}

# The summary of `cut` but for the time: knives pieces missing added points before triangles.
expect_cut() {
    local -r names=(knives "constraint pieces along them" "not enforced" "vertices added" points "triangles before"
        triangles)
    expect_values "$@"
}

knivesAreCounted() {
    printf '0 0\n8 0\n12 12\n0 8\n' >kite.xy
    for shape in "" --keep-shape; do
        # One from corner to corner, across the diagonal, and one across both that begins outside.
        run cut kite.xy --knife 0,0,12,12 --knife -2,2,7,2 --check $shape
        expect_cut 2 7 0 6 10 2 13
    done
    printf '0 0 8 0\n8 0 8 8\n8 8 0 0\n' >triangle.seg
    run cut triangle.seg --knife -1,-1,9,9 --check
    expect_cut 1 3 0 2 5 1 3
}

polygonsAreCutOut() {
    two_squares
    head -n 4 squares.seg >cutter.seg
    for shape in "" --keep-shape; do
        run cut domain.xy --cookie-cutter cutter.seg --check $shape --obj cookie.obj
        expect_cut 0 0 0 4 8 2 10
        expect_zone "cut out" 36 4
        expect_lines_in cookie.obj '^f' 2
    done
}

badCutsAreTold() {
    two_squares
    refused 2 "" cut domain.xy
    for knife in 0,0,1 0,0,1,x 1,1,1,1 0,0,1,1e999; do
        refused 2 "--knife: " cut domain.xy --knife "$knife"
    done
    refused 1 "squares.seg: no simple polygon" cut domain.xy --cookie-cutter squares.seg
    printf '30 30 40 30\n40 30 40 40\n40 40 30 30\n' >far.seg
    refused 1 "far.seg: nothing is cut out, the polygon touches itself or domain.xy has nothing inside of it" \
        cut domain.xy --cookie-cutter far.seg
    printf '0 0\n1 1\n' >line.xy
    refused 1 "line.xy: nothing to cut, there are no triangles" cut line.xy --knife 0,1,1,0
}

# The sides of an upright rectangle, with the first corner below and to the left of the second one.
rectangle() {
    printf '%s\n' "$1 $2 $3 $2" "$3 $2 $3 $4" "$3 $4 $1 $4" "$1 $4 $1 $2"
}

# The summary of `mesh` but for the angles and the time: rings, loose segments, area, border edges, vertices, triangles.
expect_mesh() {
    expect_status 0
    expect_line "rings: $1"
    expect_line "segments in no ring: $2"
    expect_line "domain: area $3, triangles $6, border edges $4"
    expect_line "vertices: $5"
    expect_line "triangles: $6"
    expect_lines_in out '^seconds: ' 1
    expect_silent_error
}

# How many triangles miss a limit, as patterns: at a small angle, at a segment that stays whole. There are no other reasons.
expect_missing() {
    expect_lines_in out "^of these at a small angle of the input: $1\$" 1
    expect_lines_in out "^of these at a segment (too short to split|that must stay whole): $2\$" 1
    expect_line "of these for other reasons: 0"
}
some='[1-9][0-9]*'

meshesKeepTheirLimits() {
    rectangle 0 0 10 10 >square.seg
    run mesh square.seg --max-edge 2 --check
    expect_mesh 1 0 100 32 81 128
    expect_missing 0 0
    expect_line "min edge: 0.0001"
    expect_line "smallest angle: 45"
    expect_lines_in out '^angles of (40 to 50 degrees: 256|90 to 100 degrees: 128)$' 2
    expect_lines_in out '^angles ' 2
    run mesh square.seg --max-edge 2 --obj square.obj --ps square.ps
    expect_lines_in square.obj '^f' 128
    expect_lines_in square.ps 'fill$' 128
    run mesh square.seg --min-angle 30 --max-area 0.01 --grow 1.5 --min-edge 0.001 --check
    expect_missing 0 0
    run mesh "$data/coast_110m.seg" --min-angle 25 --check
    expect_line "rings: 124"
    expect_missing "$some" 0
}

meshesFillWhatAnOddNumberOfRingsContains() {
    (rectangle 0 0 10 10 && rectangle 2 2 8 8 && rectangle 4 4 6 6) >nested.seg
    run mesh nested.seg --check
    expect_mesh 3 0 68 16 16 14
    # A common side is an edge, and no border; of rings that cross each other the common part is left out.
    (rectangle 0 0 10 10 && rectangle 10 0 20 10) >common.seg
    run mesh common.seg --check
    expect_mesh 2 0 200 6 6 4
    (rectangle 0 0 10 10 && rectangle 5 5 15 15) >crossing.seg
    run mesh crossing.seg --check
    expect_mesh 2 0 150 12 10 8
    # Loose segments inside are edges.
    (rectangle 0 0 10 10 && printf '5 -5 5 5\n5 5 7 5\n' && echo 1 1 1 1) >loose.seg
    run mesh loose.seg --min-angle 0 --check
    expect_line "segments in no ring: 2"
    expect_line "degenerate: 1"
    expect_lines_in out '^domain: area 100, .* border edges 5$' 1
}

missedLimitsAreExplained() {
    # A hole in the shape of a needle with its end on a corner.
    (rectangle 0 0 10 10 && printf '0 0 5 1\n5 1 5 5\n5 5 0 0\n') >corner.seg
    run mesh corner.seg
    expect_missing 1 0
    rectangle 0 0 10 0.01 >long.seg
    run mesh long.seg --min-edge 3 --check
    expect_missing 0 "$some"
    run mesh long.seg --no-split --max-edge 0.1
    expect_missing 0 "$some"
    expect_lines_in out 'border edges 4$' 1
    run mesh long.seg
    expect_missing 0 0
}

badMeshesAreTold() {
    printf '0 0 4 4\n4 4 4 0\n' >open.seg
    refused 1 "open.seg: no closed ring, there is no domain" mesh open.seg
    printf '0 0 4 4\n4 4 4 0\n4 0 0 4\n0 4 0 0\n' >bow.seg
    refused 1 "bow.seg: ring 1 crosses itself, it has no inside" mesh bow.seg
    (rectangle 0 0 1 1 && rectangle 0 0 1 1) >twice.seg
    refused 1 "twice.seg: each ring is taken back by another, there is no domain" mesh twice.seg
    expect_no_output
    for arguments in "--min-angle 30.1" "--min-angle -1" "--min-angle nan" "--min-edge 0" "--max-edge -1" \
        "--max-area inf" "--grow 1" "--grid 1,0" "--grid 0,0,1" "--grid 1,0,0" "--grid 1,0,1 --grid 0,1,1"; do
        refused 2 "${arguments%% *}: " mesh twice.seg $arguments
    done
}

# The summary of `check` but for the time: segments degenerate illegal points overlaps ends.
expect_check() {
    local -r names=(segments degenerate "illegal segments" "pairs that cross or touch" "pairs that overlap"
        "pairs with a common end")
    expect_values "$@"
}

illegalPairsAreCountedAndListed() {
    printf '0 0 4 4\n0 4 4 0\n1 1 3 3\n4 0 6 0.5\n9 9 9 9\n5 0.25 5 -1\n0.1 9 0.1 9\n' >streets.seg
    local -r illegal=$'1 2 point 2 2\n1 3 overlap 1 1 3 3\n2 3 point 2 2\n4 6 point 5 0.25'
    run check streets.seg --list pairs.txt
    expected=3 expect_check 7 2 5 3 1 1
    [[ $(cat pairs.txt) == "$illegal" ]] || fail "other pairs expected: $(cat pairs.txt)"
    run check streets.seg --endpoints --list pairs.txt --ps streets.ps
    expect_lines_in streets.ps '^\(Illegal segments: 5\)' 1
    expected=3 expect_check 7 2 5 3 1 1
    [[ $(cat pairs.txt) == "${illegal/4 6/2 4 end 4 0$'\n'4 6}" ]] || fail "other pairs expected: $(cat pairs.txt)"
    printf '0.1 9 1 9\n0.1 9 0 0\n' >corner.seg
    run check corner.seg --list pairs.txt
    expect_check 2 0 0 0 0 1
    [[ ! -s pairs.txt ]] || fail "an empty list expected"
    run check corner.seg --endpoints --list pairs.txt
    expected=3 expect_check 2 0 2 0 0 1
    [[ $(cat pairs.txt) == "1 2 end 0.10000000000000001 9" ]] || fail "all digits expected"
    : >empty.seg
    run check empty.seg --list pairs.txt
    expect_check 0 0 0 0 0 0
}

coastsHaveOneSpike() {
    run check "$data/coast_110m.seg" --progress
    expect_check 4992 0 0 0 0 4988
    run check "$data/coast_50m.seg" --list pairs.txt
    expected=3 expect_check 59202 0 5 2 2 59199
    expect_lines_in pairs.txt ' 20216 (point|overlap) 53.14| 20217 overlap 53.14' 4
}

badChecksAreTold() {
    echo 0 0 1 1 >line.seg
    for option in --ps --list; do
        refused 1 "no/such/folder: can't be written" check line.seg $option no/such/folder
    done
    refused 1 "missing.seg: can't be read" check missing.seg
    refused 2 "" check line.seg --threads 2
}

# What needs a program or a library that isn't there.
skip() {
    echo "SKIPPED: $1"
    exit 77
}

# A square of 10 with a square hole of 2, cut by a diagonal into two regions; the corners are marked.
box_poly() {
    cat >box.poly <<'END'
# counted from 0
8 2 1 1

0 0 0 0.5 1
1 10 0 0.5 1
2 10 10 0.5 1
3 0 10 0.5 1
4 2 2 0.5 0   # the hole
5 4 2 0.5 0
6 4 4 0.5 0
7 2 4 0.5 0
9 1
0 0 1 1
1 1 2 1
2 2 3 1
3 3 0 1
4 4 5 2
5 5 6 2
6 6 7 2
7 7 4 2
8 1 3 0
1
0 3 3
2
0 1 1 7 -1
1 9 9 8.5 0.5
END
}

# The summary of `import` but for the time: area triangles edges points components rings, and points and triangles in all.
expect_imported() {
    expect_line "mesh: area $1, triangles $2, border edges $3"
    local -r names=(points components "border rings" "points in all" "triangles in all")
    expect_values "${@:4}"
}

trianglesAreImported() {
    # Faces with negative numbers, texture coordinates and normals; one of five corners, concave.
    printf 'o x\nv 0 0 7\nv 4 0 8 # end\nv 4 4\nv 2 1\nv 0 4\nvt 0 0\nf 1/1 2/1/1 3//1 -2 5\n' >chevron.obj
    run import chevron.obj --check
    expect_imported 10 3 5 5 1 1 5 4
    run import chevron.obj --keep-box --obj out.obj --ps out.ps
    expect_imported 10 3 5 5 1 1 9 12
    expect_lines_in out.obj '^f' 3
    sed -i 's/^f.*/f 5 4 3 2 1/' chevron.obj
    refused 1 "chevron.obj: triangle 1 runs clockwise, see --reorient" import chevron.obj
    run import chevron.obj --reorient
    expect_imported 10 3 5 5 1 1 5 4
    printf 'v 0 0\nv 4 0\nv 4 4\nv 0 4\nv 9 9\nv 9 8\nv 8 9\nf 1 2 3\nf 1 3 4\nf 6 5 7\n' >two.obj
    run import two.obj
    expect_imported 16.5 3 7 7 2 2 7 6
    printf 'v 0 0\nv 4 0\nv 2 3\nv 2 -3\nv 2 4\nf 1 2 3\nf 1 4 2\nf 1 2 5\n' >three.obj
    refused 1 "three.obj: triangle 1 and triangle 3 lie on the same side of an edge" import three.obj
    printf 'v 0 0\nv 4 0\nv 2 3\nv 0 1\nv 4 1\nv 2 -2\nf 1 2 3\nf 4 6 5\n' >crossing.obj
    refused 1 "crossing.obj: the triangles make no mesh" import crossing.obj
    expect_lines_in out 'selfintersection' 1
}

exportsComeBack() {
    box_poly
    run export box.poly --to b.obj --to b.msh --to b.ele --to b.poly --to b.geojson --to b.vtu --to b.svg
    local -r names=(points triangles holes)
    expect_values 8 8 1
    expect_line "written: b.svg"
    run export box.poly --msh2 --to old.msh
    for file in b.obj b.msh b.ele old.msh; do
        run import $file
        expect_imported 96 8 8 8 1 2 8 10
    done
    for file in b.poly b.geojson b.ele; do
        run export $file --to again.ele
        expect_values 8 8 1
    done
    # Marks and all digits.
    cmp -s b.node again.node || fail "the same vertices expected"
    [[ $(head -n 2 b.node) == $'8 2 0 1\n1 0 0 1' ]] || fail "marks expected"
    expect_lines_in b.ele ' 7$' 7
    expect_lines_in b.ele ' 8.5$' 1
    expect_lines_in b.svg '^<path' 3
    local -r region7='{"region":7.0},"geometry":{"type":"MultiPolygon","coordinates":[[[[0.0,0.0],[10.0,0.0],[0.0,10.0],[0.0,0.0]],[[2.0,2.0],[2.0,4.0],[4.0,4.0],[4.0,2.0],[2.0,2.0]]]]}'
    grep -qF "$region7" b.geojson || fail "a polygon with a hole expected"
    printf '0.1 1e-300\n123456789.12345679 0\n0 1e22\n' >points.xy
    run export points.xy --to points.ele
    run triangulate points.ele --points-out back.bin
    run triangulate points.xy --points-out there.bin
    cmp -s there.bin back.bin || fail "the same doubles expected"
}

bordersThatTouchThemselvesAreDivided() {
    # A ring around a hole that touches the outer corner, and two squares that touch at a corner.
    (rectangle 0 0 9 9 && printf '0 0 4 2\n4 2 2 4\n2 4 0 0\n' && rectangle 9 9 10 10) >touching.seg
    run export touching.seg --inside --to touching.geojson
    local -r rings='[[[[0.0,0.0],[9.0,0.0],[9.0,9.0],[0.0,9.0],[0.0,0.0]],[[0.0,0.0],[2.0,4.0],[4.0,2.0],[0.0,0.0]]],[[[9.0,9.0],[10.0,9.0],[10.0,10.0],[9.0,10.0],[9.0,9.0]]]]'
    grep -qF "$rings" touching.geojson || fail "other rings expected: $(cat touching.geojson)"
}

polyFilesBoundDomains() {
    box_poly
    run mesh box.poly --check
    expect_lines_in out '^domain: area 96,' 1
    run check box.poly
    expect_line "segments: 9"
    # Without a side, all goes that can be reached through the gap.
    sed -e 's/^9 1$/8 1/' -e '/^3 3 0/d' box.poly >open.poly
    run export open.poly --to open.geojson
    expect_line "triangles: 1"
    (head -n 1 box.poly && echo 0 2 && sed -n '/^9 1/,$p' box.poly) >box2.poly
    (echo 8 2 1 1 && sed -n '/^0 0 0 0.5/,/^7/p' box.poly) >box2.node
    run mesh box2.poly --check
    expect_lines_in out '^domain: area 96,' 1
    run triangulate box2.node
    expect_summary 8 0 10 4
    refused 1 "box2.node: holds points, not segments" constrain box2.node
    printf '3 2\n1 0 0\n2 1 0\n3 0 1\n1\n1 1 2\n0\n' >none.poly
    refused 1 "none.poly: the segments enclose nothing" mesh none.poly
}

geoJsonIsRead() {
    cat >all.geojson <<'END'
{"type": "FeatureCollection", "features": [
  {"type": "Feature", "properties": {"name": "x"}, "geometry": {"type": "Polygon", "coordinates":
    [[[0, 0], [9, 0], [9, 9, 5], [0, 9], [0, 0]], [[2, 2], [2, 4], [4, 4], [4, 2], [2, 2]]]}},
  {"type": "Feature", "properties": null, "geometry": null},
  {"type": "Feature", "properties": {}, "geometry": {"type": "GeometryCollection", "geometries": [
    {"type": "LineString", "coordinates": [[5, 5], [6, 6], [7, 5]]},
    {"type": "MultiPoint", "coordinates": [[1, 1], [20, 20]]}]}}]}
END
    run constrain all.geojson --check
    expect_line "segments given: 10"
    expect_line "points: 13"
    run mesh all.geojson --min-angle 0
    expect_lines_in out '^domain: area 77,' 1
    run zones all.geojson --inside --inside --difference
    expect_lines_in out '^difference: area 77,' 1
    run triangulate all.geojson
    expect_line "points: 13"
    tells() {
        echo "$1" >bad.json
        refused 1 "bad.json: $2" constrain bad.json
    }
    tells '{"type": ' 'parse error at line 2, column 1'
    tells '[1e999]' "number overflow"
    tells '[]' "is no GeoJSON object"
    tells '{"type": "Circle", "coordinates": []}' 'the type "Circle" isn'
    tells '{"type": "Point"}' 'no "coordinates"'
    tells '{"type": "Feature", "geometry": {"type": "Point", "coordinates": ["1", 2]}}' "feature 1: a position"
    tells '{"type": "Polygon", "coordinates": [[[0, 0], [1, 0], [0, 1], [0, 2]]]}' "a ring isn't closed"
}

# A square with side 9 in a shapefile and its index.
shape_file() {
    local -r head='0000270a 00000000 00000000 00000000 00000000 00000000'
    local -r box='0000000000000000 0000000000000000 0000000000002240 0000000000002240'
    local -r tail='e8030000 05000000' zeros='0000000000000000 0000000000000000 0000000000000000 0000000000000000'
    local -r ring='0000000000000000 0000000000000000 0000000000000000 0000000000002240
        0000000000002240 0000000000002240 0000000000002240 0000000000000000 0000000000000000 0000000000000000'
    local -r record="05000000 $box 01000000 05000000 00000000 $ring"
    hex() { printf '%b' "$(sed -E 's/[[:space:]]//g; s/../\\x&/g' <<<"$(tr -d ' \n' <<<"$1")")"; }
    hex "$head 00000076 $tail $box $zeros 00000001 00000040 $record" >square.shp
    hex "$head 00000036 $tail $box $zeros 00000032 00000040" >square.shx
}

shapefilesAreRead() {
    shape_file
    run mesh square.shp
    grep -qF "built without shapelib" err && skip "the program was built without shapelib"
    expect_lines_in out '^domain: area 81,' 1
    run check square.shp
    expect_line "segments: 4"
    head -c 150 square.shp >short.shp && cp square.shx short.shx
    refused 1 "short.shp: shape 1 can't be read" check short.shp
    cp square.shp long.shp && (head -c 24 square.shx && printf '\1' && tail -c +26 square.shx) >long.shx
    refused 1 "long.shx: holds 108 bytes, its header tells 33554540" check long.shp
    refused 1 "none.SHX: can't be read" check none.shp
}

badMeshFilesAreTold() {
    tells() {
        printf "$2" >"bad.$1"
        refused 1 "bad.$1:$3" import "bad.$1"
    }
    tells obj 'v 0 0\nv 1 0\nf 1 2 3\n' "3: a corner isn't among the 2 vertices so far"
    tells obj 'v 0 x\n' '1: "x" is not a number'
    tells obj 'v 0\n' '1: a number is missing'
    tells obj 'v 0 0\nv 1 0\nf 1 2\n' '3: a face has three corners or more'
    tells obj 'v 0 0\nv 1 0\nv 0 1\nf 1 2 3x\n' '4: a corner is no number'
    tells obj 'v 0 0\nv 4 4\nv 4 0\nv 0 4\nf 1 2 3 4\n' '5: the face has no inside'
    tells obj 'v 0 0\n' ' holds no faces'
    tells obj 'v 0 0\nv 1 1\nv 2 2\nf 1 2 3\n' ' triangle 1 has no area'
    local -r old='$MeshFormat\n2.2 0 8\n$EndMeshFormat\n'
    tells msh 'hello\n' ' is no Gmsh mesh'
    tells msh '$MeshFormat\n4 0 8\n$EndMeshFormat\n' "2: the version isn't 2.2 or 4.1"
    tells msh '$MeshFormat\n4.1 1 8\n' '2: binary meshes'
    tells msh "$old\$Nodes\n99999999999999\n1 0 0 0\n" ' ends where a node should follow'
    tells msh "$old\$Nodes\n1\n1 0 0 0\n\$EndNodes\n\$Elements\n1\n1 2 0 1 1 2\n" "10: a node that isn't there"
    tells msh "$old\$Elements\n1\n1 4 0 1 1 2 3\n" '6: elements of type 4'
    tells msh "$old\$Nodes\n-1\n" '5: -1 is negative'
    printf '3 2\n1 0 0\n2 1 0\n3 0 1\n' >bad.node
    tells ele '1 3\n1 1 2 4\n' '2: there is no vertex 4'
    tells ele '1 4\n' '1: triangles have three or six nodes'
    printf '3 2\n1 0 0\n3 1 0\n' >bad.node
    refused 1 "bad.node:3: vertex 2 expected" triangulate bad.node
    printf '1 2\n1 0 0\n1\n1 1 9\n' >bad.poly
    refused 1 "bad.poly:4: there is no vertex 9" check bad.poly
    refused 1 "bad.obj: holds triangles, not segments" check bad.obj
    refused 1 "bad.txt: triangles are read from" import bad.txt
    refused 2 "--to: bad.xyz" export bad.obj --to bad.xyz
}

givenTrianglesAreCutAndRefined() {
    printf 'v 0 0\nv 8 0\nv 12 12\nv 0 8\nv 20 0\nv 22 0\nv 20 2\nf 1 2 3\nf 1 3 4\nf 5 6 7\n' >two.obj
    run mesh two.obj --min-angle 28 --max-area 1 --check
    expect_status 0
    expect_lines_in out '^domain: area 98,' 1
    expect_missing 0 0
    # Edges between the sides of a ring are no constraints.
    (rectangle 0 0 9 9 && rectangle 3 3 6 6) >ring.seg
    run export ring.seg --inside --to ring.obj
    run mesh ring.obj --min-angle 30 --check
    expect_lines_in out '^domain: area 72,' 1
    expect_missing 0 0
    run export ring.obj --to ring.poly
    grep -qx '8 0' ring.poly || fail "8 segments expected"
    sed '/^v 2[02]/d; /^f 5/d' two.obj >kite.obj
    for shape in "" --keep-shape; do
        run cut kite.obj --knife -2,2,14,2 --check $shape --obj cut.obj
        expect_lines_in out '^mesh: area 96,' 1
        run import cut.obj
        expect_lines_in out '^mesh: area 96,' 1
    done
    # The square reaches beyond the kite, and beyond its hull.
    (rectangle 0 8 12 20) >cutter.seg
    run cut kite.obj --cookie-cutter cutter.seg
    expect_lines_in out '^cut out: area 21.3333333333,' 1
}

scenesAreMade() {
    box_poly
    run view box.poly --out "new/it's here"
    expect_status 0
    expect_line "triangles: 8"
    expect_line "serve it: python3 -m http.server --bind 127.0.0.1 --directory 'new/it'\\''s here' 8000"
    for file in index.html jsc3d.js; do [[ -s "new/it's here/$file" ]] || fail "$file expected"; done
    expect_lines_in "new/it's here/3d.obj" '^f' 8
    run export box.poly --to scene
    [[ -s scene/3d.obj ]] || fail "a scene expected"
    refused 1 "can't be written" view box.poly --out box.poly
}

# A white ring, or disc, on black in a greymap of 80 x 60: the radii of the hole and of the ring.
grey_ring() {
    echo "P2 # as text"
    echo "80 60 255"
    awk -v inner="$1" -v outer="$2" 'BEGIN {
        for (y = 0; y < 60; ++y)
            for (x = 0; x < 80; ++x) {
                squared = (x - 39.5) ^ 2 + (y - 29.5) ^ 2
                print (squared >= inner ^ 2 && squared < outer ^ 2) ? 255 : 0
            }
    }'
}

# Lines, closed ones; the pattern of the domain's area.
expect_picture() {
    expect_status 0
    expect_line "lines: $1"
    expect_line "closed lines: $2"
    expect_lines_in out "^domain: area $3," 1
    expect_missing 0 0
}

picturesAreMeshed() {
    grey_ring 0 20 >disc.pgm
    # The disc has 1257 pixels; five percent are 63.
    local -r disc='(119[4-9]|12[0-9][0-9]|131[0-9])(\.[0-9]+)?'
    run image disc.pgm --check --pictures step_ --to disc.vtu --obj disc.obj
    expect_picture 1 1 "$disc"
    expect_line "pixels: 80 x 60"
    expect_line "written: disc.vtu"
    for step in magnitude edges thin pruned; do
        # 240 bytes a row need no padding.
        [[ $(stat -c %s step_$step.bmp) -eq 14454 ]] || fail "a bitmap of 80 x 60 expected in step_$step.bmp"
    done
    for picture in step_lines.ps step_mesh.ps; do grep -q 'lineto$' $picture || fail "$picture expected"; done
    local -r area=$(sed -n 's/^domain: area \([0-9.]*\),.*/\1/p' out)
    run import disc.obj
    expect_lines_in out "^mesh: area $area," 1
    # The same in bytes, one or two a pixel.
    (echo "P5 80 60 255" && sed 1,2d disc.pgm | sed 's/^0$/\\0/; s/255/\\377/' | tr -d '\n' | xargs -0 printf '%b') >bytes.pgm
    (printf 'P5\n#\n80 60\n256\n' && sed 1,2d disc.pgm | sed 's/^0$/\\0\\0/; s/255/\\1\\0/' | tr -d '\n' | xargs -0 printf '%b') >words.pgm
    for file in bytes words; do
        run image $file.pgm
        expect_picture 1 1 "$area"
    done
    grey_ring 12 26 >ring.pgm
    run image ring.pgm --inside --check
    expect_picture 2 2 '1[67][0-9][0-9](\.[0-9]+)?'
    run image ring.pgm --min-angle 25 --check
    expect_picture 2 2 '2[01][0-9][0-9](\.[0-9]+)?'
}

badPicturesAreTold() {
    tells() {
        printf "$1" >bad.pgm
        refused 1 "bad.pgm: $2" image bad.pgm
        expect_no_output
    }
    tells 'P6 1 1 255 ' 'is no portable greymap, P2 or P5'
    tells 'P2 #\n3' 'ends where its height should follow'
    tells 'P2 3 x 255' 'its height: "x" is not an integer'
    tells 'P2 0 3 255' "its width is 0, which isn't from 1 to 2147483647"
    tells 'P5 1 1 65536 ' "its greatest value is 65536, which isn't from 1 to 65535"
    tells 'P2 2 1 7 1 8' "its next pixel is 8, which isn't from 0 to 7"
    tells 'P2 2 2 7 1 2 3' 'holds 3 pixels, its header tells 4'
    tells 'P2 2 1 7 1 2 3' 'goes on behind its last pixel'
    tells 'P2 2147483647 2147483647 7 1 2 3' 'holds 3 pixels, its header tells 4611686014132420609'
    tells 'P5 2147483647 2147483647 256 \1\1' 'holds 1 pixels, its header tells 4611686014132420609'
    tells 'P5 1 1 7' 'holds 0 pixels, its header tells 1'
    tells 'P5 1 1 7 \1\1' 'goes on behind its last pixel'
    tells 'P5 1 1 7 \10' 'a pixel is 8, more than its greatest value, 7'
    tells 'P2 3 1 9 5 5 5' 'no lines are found, there is no domain'
    refused 1 "missing.pgm: can't be read" image missing.pgm
    grey_ring 0 20 >disc.pgm
    refused 1 "no/such/magnitude.bmp: can't be written" image disc.pgm --pictures no/such/
    expect_no_output
    refused 1 "disc.pgm: no lines are found" image disc.pgm --high 1 --low 1 --min-length 100
    for arguments in "--low 0" "--high 1.5" "--min-length 0" "--tolerance -1" "--tolerance nan" "--to mesh.xyz" \
        "--low 0.4 --high 0.3"; do
        refused 2 "${arguments%% *}: " image disc.pgm $arguments
    done
}

gmshAgrees() {
    command -v gmsh >/dev/null || skip "gmsh isn't there"
    box_poly
    run export box.poly --to new.msh
    run export box.poly --to old.msh --msh2
    for file in new old; do
        for format in msh41 msh22; do
            gmsh $file.msh -check -save -format $format -o back.msh >gmsh.log 2>&1 || fail "$(cat gmsh.log)"
            grep -qiE 'error|warning' gmsh.log && fail "$(cat gmsh.log)"
            run import back.msh
            expect_imported 96 8 8 8 1 2 8 10
        done
    done
    cat >plate.geo <<'END'
Point(1) = {0, 0, 0, 0.3}; Point(2) = {3, 0, 0, 0.3}; Point(3) = {3, 2, 0, 0.3}; Point(4) = {0, 2, 0, 0.3};
Point(5) = {1, 1, 0, 0.1}; Point(6) = {1.5, 1, 0, 0.1}; Point(7) = {0.5, 1, 0, 0.1};
Line(1) = {1, 2}; Line(2) = {2, 3}; Line(3) = {3, 4}; Line(4) = {4, 1};
Circle(5) = {6, 5, 7}; Circle(6) = {7, 5, 6};
Curve Loop(1) = {1, 2, 3, 4}; Curve Loop(2) = {5, 6}; Plane Surface(1) = {1, 2};
END
    for format in msh41 msh22; do
        gmsh plate.geo -2 -format $format -o plate.msh >gmsh.log 2>&1 || fail "$(cat gmsh.log)"
        run import plate.msh --check
        expect_lines_in out '^mesh: area 5.2[0-9]*, triangles [1-9]' 1
        expect_line "border rings: 2"
    done
}

meshioAgrees() {
    local python
    for python in python3 /usr/bin/python3 ""; do
        [[ -z $python ]] || ! "$python" -c 'import meshio' 2>/dev/null || break
    done
    [[ -n $python ]] || skip "python3-meshio isn't there"
    box_poly
    run export box.poly --to b.vtu --to b.msh
    run export box.poly --to old.msh --msh2
    "$python" - >counts 2>&1 <<'END' || fail "$(cat counts)"
import meshio
for name in "b.vtu", "b.msh", "old.msh":
    mesh = meshio.read(name)
    cells = sum(len(block.data) for block in mesh.cells if block.type == "triangle")
    regions = sorted(value for block in mesh.cell_data.get("region", []) for value in block)
    print("read", name, len(mesh.points), cells, *map(float, regions))
END
    grep -qx 'read b.vtu 8 8 7.0 7.0 7.0 7.0 7.0 7.0 7.0 8.5' counts || fail "$(cat counts)"
    grep -qx 'read b.msh 8 8' counts && grep -qx 'read old.msh 8 8' counts || fail "$(cat counts)"
}

"$case_name"
