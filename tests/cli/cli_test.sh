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
expect_error() { grep -qF -- "$1" err || fail "error \"$1\" expected"; }
expect_silent_error() { [[ ! -s err ]] || fail "nothing expected on standard error"; }

expect_summary() {
    expect_status 0
    expect_line "points: $1"
    expect_line "duplicates: $2"
    expect_line "triangles: $3"
    expect_line "hull vertices: $4"
    grep -qE '^seconds: [0-9.e-]+$' out || fail "seconds expected"
    expect_silent_error
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
    run triangulate "$data/coast_110m.seg" --check
    expect_status 0
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
    run triangulate line.xy --ps line.ps
    expect_status 1
    expect_error "line.ps: no picture, there are no triangles"
    [[ ! -e line.ps ]] || fail "no picture expected"
    : >empty.xy
    run triangulate empty.xy
    expect_summary 0 0 0 0
}

expect_bad_text() {
    local reason=$1
    run triangulate "$2"
    expect_status 1
    expect_error "$2:$reason"
    [[ ! -s out ]] || fail "nothing expected on standard output"
}

badTextIsToldWithFileAndLine() {
    printf '0 0\n1 abc\n' >word.xy
    expect_bad_text '2: "abc" is not a number' word.xy
    printf '0 0\n\n1 0x10\n' >hex.xy
    expect_bad_text '3: "0x10" is not a number' hex.xy
    printf '0 0 0\n' >three.xy
    expect_bad_text '1: 2 numbers expected, 3 found' three.xy
    printf '0 0 1 1\n0 0 1\n' >short.seg
    expect_bad_text '2: 4 numbers expected, 3 found' short.seg
    printf 'nan 0\n' >nan.xy
    expect_bad_text '1: "nan" is not finite' nan.xy
    printf '0 0\n0 -inf\n' >inf.xy
    expect_bad_text '2: "-inf" is not finite' inf.xy
    printf '0 1e400\n' >huge.xy
    expect_bad_text '1: "1e400" is outside of the range of a double' huge.xy
    printf '0 +-1\n' >signs.xy
    expect_bad_text '1: "+-1" is not a number' signs.xy
    printf '0 \0331\n' >escape.xy
    expect_bad_text '1: "?1" is not a number' escape.xy
}

badFilesAreTold() {
    run triangulate missing.xy
    expect_status 1
    expect_error "missing.xy: can't be read"
    run triangulate .
    expect_status 1
    expect_error ".: is a folder"
    binary_file 20 3 $zero $zero $one $zero >short
    run triangulate short
    expect_status 1
    expect_error "short: holds 2 points, its header tells 3"
    binary_file 20 1 $zero $infinity >infinite
    run triangulate infinite
    expect_status 1
    expect_error "infinite: point 1 is not finite"
    binary_file 21 1 $zero $zero $one $one >segments
    run triangulate segments
    expect_status 1
    expect_error "segments: holds segments, not points"
}

wrongUsageIsStatusTwo() {
    printf '0 0\n' >points.xy
    run
    expect_status 2
    run triangulate
    expect_status 2
    run triangulate points.xy --unknown
    expect_status 2
    run triangulate points.xy --threads many
    expect_status 2
    run triangulate points.xy --threads -1
    expect_status 2
    run constrain points.xy --points
    expect_status 2
    run constrain points.xy --points-out points.xy
    expect_status 2
    run --help
    expect_status 0
    run triangulate --help
    expect_status 0
}

outputsAreWritten() {
    printf '0 0\n1 0\n0 1\n0 0\n' >points.xy
    run triangulate points.xy --ps picture.ps --points-out out.xy
    expect_status 0
    [[ $(grep -c 'lineto$' picture.ps) -eq 3 ]] || fail "a picture of three edges expected"
    [[ $(sort out.xy) == $'0 0\n0 1\n1 0' ]] || fail "points expected"
    run triangulate points.xy --points-out out.bin
    [[ $(stat -c %s out.bin) -eq 60 ]] || fail "12 bytes and 3 points of 16 bytes expected"
    run triangulate out.bin
    expect_summary 3 0 1 3
    run triangulate points.xy --ps no/such/folder.ps
    expect_status 1
    expect_error "no/such/folder.ps: can't be written"
    run triangulate points.xy --points-out no/such/folder.xy
    expect_status 1
    expect_error "no/such/folder.xy: can't be written"
}

progressIsForTerminalsOnly() {
    run triangulate "$data/coast_110m.seg" --progress
    expect_status 0
    expect_silent_error
    # util-linux's script runs the program on a terminal of its own.
    command -v script >/dev/null || return 0
    script -qec "'$program' triangulate '$data/coast_110m.seg' --progress >/dev/null" /dev/null >out </dev/null
    grep -qF '[####' out || fail "a bar expected"
}

# The summary of `constrain` but for the time: given degenerate pieces splits crossings added missing points triangles.
expect_constraints() {
    expect_status 0
    local -r names=("segments given" degenerate "alive pieces" splits crossings "vertices added" "not enforced" points
        triangles)
    local i=0
    for value in "$@"; do expect_line "${names[i++]}: $value"; done
    grep -qE '^seconds: [0-9.e-]+$' out || fail "seconds expected"
    [[ $(wc -l <out) -eq 10 ]] || fail "nothing but the summary expected"
    expect_silent_error
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
    grep -qE '^not enforced: [1-9]' out || fail "missing pieces expected"
    run constrain crossing.seg --conforming --check
    expect_status 1
    expect_error "crossing.seg: the triangulation is not valid"
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
    expect_status 0
    [[ $(grep -c 'lineto$' square.ps) -eq 5 ]] || fail "five edges expected"
    [[ $(grep -A 20 -E '^1(\.0)?\s+0(\.0)?\s+0(\.0)?\s+setrgbcolor' square.ps | grep -c 'lineto$') -eq 4 ]] ||
        fail "four red edges expected"
}

badSegmentsAreTold() {
    printf '0 0 1 1\n0 0 1\n' >short.txt
    run constrain short.txt
    expect_status 1
    expect_error "short.txt:2: 4 numbers expected, 3 found"
    binary_file 20 1 $zero $zero >points
    run constrain points
    expect_status 1
    expect_error "points: holds points, not segments"
    binary_file 21 2 $zero $zero $one $one >short
    run constrain short
    expect_status 1
    expect_error "short: holds 1 segments, its header tells 2"
    binary_file 31 1 $zero $zero $one $one $infinity $one >infinite
    run constrain infinite
    expect_status 1
    expect_error "infinite: segment 1 is not finite"
    binary_file 21 1 $zero $zero $one $one >segment
    run constrain segment --points missing.xy
    expect_status 1
    expect_error "missing.xy: can't be read"
    [[ ! -s out ]] || fail "nothing expected on standard output"
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
expect_zone() { grep -qE "^$1[:,] area $2, triangles [0-9]+, border edges $3\$" out || fail "$1 of area $2 expected"; }

zonesOfTwoRings() {
    two_squares
    local -rA areas=([union]='64 8' [intersection]='8 4' [difference]='28 6' [symmetric-difference]='56 12')
    for operation in "${!areas[@]}"; do
        run zones squares.seg --points domain.xy --inside --inside "--$operation" --check
        expect_status 0
        expect_line "rings: 2"
        expect_line "segments in no ring: 0"
        expect_line "points: 14"
        expect_zone "zone 1, inside of ring 1" 36 6
        expect_zone "zone 2, inside of ring 2" 36 6
        read -r area border <<<"${areas[$operation]}"
        expect_zone "$operation" "$area" "$border"
        expect_silent_error
    done
    run zones squares.seg --inside --inside --difference --obj zone.obj --ps zone.ps
    [[ $(grep -c '^v' zone.obj) -eq 6 && $(grep -c '^f' zone.obj) -eq 4 ]] || fail "an L of four triangles expected"
    [[ $(grep -c 'fill$' zone.ps) -ge 1 ]] || fail "a picture expected"
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
    two_squares
    # A square with a tail; then another one that has a side in common with it, and a ring of no area.
    printf '10 10 4 10\n10 4 10 10\n4 4 10 4\n4 10 4 4\n8 6 8 6\n0 0 4 4\n' >loose.seg
    run zones loose.seg
    expect_line "rings: 1"
    expect_line "segments in no ring: 1"
    expect_line "degenerate: 1"
    printf '10 4 16 4\n16 4 16 10\n16 10 10 10\n10 10 10 4\n20 0 22 0\n22 0 24 0\n24 0 20 0\n' >>loose.seg
    run zones loose.seg
    expect_status 0
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
    run zones squares.seg --inside --outside --inside
    expect_status 1
    expect_error "squares.seg: no ring 3 for a zone; 2 are closed, 0 segments are in none"
    [[ ! -s out ]] || fail "nothing expected on standard output"
    printf '0 0 4 0\n4 0 4 4\n4 4 0 3\n' >open.seg
    run zones open.seg --inside
    expect_status 1
    expect_error "open.seg: no ring 1 for a zone; 0 are closed, 3 segments are in none"
    printf '0 0 4 4\n4 4 4 0\n4 0 0 4\n0 4 0 0\n' >crossing.seg
    run zones crossing.seg --inside
    expect_status 1
    expect_error "crossing.seg: ring 1 crosses itself, it has no inside"
    printf '0 0 4 4\n' >line.seg
    run zones line.seg --grow 1,1
    expect_status 1
    expect_error "line.seg: no zones, there are no triangles"
    run zones squares.seg --grow 30,30 --obj empty.obj
    expect_status 1
    expect_error "empty.obj: not written, there are no triangles"
    run zones squares.seg --inside --union
    expect_status 2
    expect_error "--union: needs two zones"
    run zones squares.seg --inside --inside --union --difference
    expect_status 2
    for seed in 1 1,x 1,,2 1,2, 1,2,3 1,inf nan,0; do
        run zones squares.seg --grow "$seed"
        expect_status 2
        expect_error "--grow: "
    done
}

# The summary of `cut` but for the time: knives pieces missing added points before triangles.
expect_cut() {
    expect_status 0
    local -r names=(knives "constraint pieces along them" "not enforced" "vertices added" points "triangles before"
        triangles)
    local i=0
    for value in "$@"; do expect_line "${names[i++]}: $value"; done
    expect_silent_error
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
        [[ $(grep -c '^f' cookie.obj) -eq 2 ]] || fail "two triangles expected"
    done
}

badCutsAreTold() {
    two_squares
    run cut domain.xy
    expect_status 2
    for knife in 0,0,1 0,0,1,x 1,1,1,1 0,0,1,1e999; do
        run cut domain.xy --knife "$knife"
        expect_status 2
        expect_error "--knife: "
    done
    run cut domain.xy --cookie-cutter squares.seg
    expect_status 1
    expect_error "squares.seg: no simple polygon"
    printf '30 30 40 30\n40 30 40 40\n40 40 30 30\n' >far.seg
    run cut domain.xy --cookie-cutter far.seg
    expect_status 1
    expect_error "far.seg: nothing is cut out, the polygon touches itself or domain.xy has nothing inside of it"
    printf '0 0\n1 1\n' >line.xy
    run cut line.xy --knife 0,1,1,0
    expect_status 1
    expect_error "line.xy: nothing to cut, there are no triangles"
}

"$case_name"
