#!/usr/bin/env bash
# Runs the fuzz targets of a build, several at a time:
#
#   run.sh BUILD SECONDS [JOBS [TARGET...]]
#
# Each begins with its seeds, the inputs that once failed, and what earlier runs found interesting (BUILD/corpus). It tells how
# each one ended; logs and failing inputs are in BUILD/findings. Status 1 if there are any.
set -euo pipefail

source=$(cd "$(dirname "$0")" && pwd)
build=$1
seconds=$2
jobs=${3:-$(nproc 2>/dev/null || echo 2)}
shift $(($# < 3 ? $# : 3))

run_target() {
    local -r name=$1 corpus=$build/corpus/$1 findings=$build/findings/$1
    local -a inputs=("$corpus") options=(-timeout=25 -rss_limit_mb=3072 -print_final_stats=1)
    mkdir -p "$corpus" "$findings"
    for folder in seeds kept; do
        [[ ! -d $source/$folder/$name ]] || inputs+=("$source/$folder/$name")
    done
    [[ ! -f $source/$name.dict ]] || options+=("-dict=$source/$name.dict")
    local ending="nothing found"
    "$build/fuzz/norvik2d_fuzz_$name" "${options[@]}" -max_total_time="$seconds" -artifact_prefix="$findings/" \
        "${inputs[@]}" >"$findings/log" 2>&1 || ending="FAILED, see $findings/log"
    printf '%-18s %12s inputs in %s s: %s\n' "$name" \
        "$(sed -n 's/^stat::number_of_executed_units: *//p' "$findings/log")" "$seconds" "$ending"
    [[ $ending == nothing* ]]
}
export -f run_target
export source build seconds

targets=("$@")
if [[ ${#targets[@]} -eq 0 ]]; then
    for program in "$build"/fuzz/norvik2d_fuzz_*; do
        [[ ! -x $program ]] || targets+=("${program##*norvik2d_fuzz_}")
    done
fi
if [[ ${#targets[@]} -eq 0 ]]; then
    echo "run.sh: no fuzz targets in $build" >&2
    exit 1
fi
export UBSAN_OPTIONS=print_stacktrace=1
printf '%s\0' "${targets[@]}" | xargs -0 -n 1 -P "$jobs" bash -euo pipefail -c 'run_target "$1"' run_target
