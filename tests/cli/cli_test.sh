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

"$case_name"
