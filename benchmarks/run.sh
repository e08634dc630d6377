#!/usr/bin/env bash
# Prints the table of ratios: run.sh BUILD_DIR [WORD...]
#
# Words choose the rows whose names contain one of them, for example "insert/grid" or "1e5". Without any, the variable
# NORVIK2D_BENCH may hold them (NORVIK2D_BENCH="locate remove" make bench).
set -euo pipefail

if [[ $# -lt 1 ]]; then
    echo "usage: ${0##*/} BUILD_DIR [WORD...]" >&2
    exit 2
fi

program=$1/benchmarks/norvik2d_bench
shift
if [[ $# -eq 0 ]]; then
    read -ra words <<<"${NORVIK2D_BENCH:-}"
    set -- "${words[@]}"
fi
exec "$program" "$@"
