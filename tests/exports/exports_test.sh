#!/usr/bin/env bash
# What the shared library shows to the linker, against what is kept beside this script:
#
#   exports_test.sh symbols LIBRARY          the exported symbols are those of symbols.txt
#   exports_test.sh abi LIBRARY HEADERS...   layouts and signatures are those of libnorvik2d.abi.gz
#   exports_test.sh renew LIBRARY HEADERS... writes both anew
#
# HEADERS are the folders of public headers. Status 77: something is missing for the test.
set -euo pipefail
export LC_ALL=C

here=$(cd "$(dirname "$0")" && pwd)
task=$1
library=$2
shift 2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# One demangled symbol a line; several constructors have one name.
list_symbols() {
    nm -DC --defined-only "$library" | sed -E 's/^[0-9a-f]* *[A-Za-z] //' |
        sed 's/std::__cxx11::basic_string<char, std::char_traits<char>, std::allocator<char> >/std::string/g' | sort -u
}

# skip TEXT
skip() {
    echo "skipped: $1"
    exit 77
}

# refuse TEXT
refuse() {
    printf '\n%s\nIf that is meant: make exports, and commit what it changes in tests/exports.\n' "$1"
    exit 1
}

# Types of the standard library are the compiler's affair; they would make nine tenths of the description.
describe_interface() {
    command -v abidw >/dev/null || skip "no abidw here (Debian: apt-get install abigail-tools)"
    # Not by a pipe: a grep that ends early would make it fail.
    [[ $(readelf -S "$library") == *.debug_info* ]] || skip "the library has no debug information to read types from"
    printf '[suppress_type]\n  name_regexp = ^(std|__gnu_cxx)(::|$)\n  drop = yes\n' >"$work/suppressions"
    local folder folders=()
    for folder in "$@"; do folders+=(--headers-dir "$folder"); done
    abidw --drop-private-types --exported-interfaces-only --no-show-locs --no-corpus-path --no-comp-dir-path \
        --no-elf-needed --no-parameter-names --type-id-style hash --suppressions "$work/suppressions" \
        "${folders[@]}" --out-file "$work/now.abi" "$library"
}

symbols() {
    list_symbols >"$work/now"
    diff -u --label "tests/exports/symbols.txt" --label "$library" "$here/symbols.txt" "$work/now" ||
        refuse "The library exports other symbols than before (- gone, + new)."
}

# What is added breaks nobody, and is told by the list of symbols.
abi() {
    describe_interface "$@"
    gzip -dc "$here/libnorvik2d.abi.gz" >"$work/before.abi"
    abidiff --no-added-syms "$work/before.abi" "$work/now.abi" ||
        refuse "Programs that were linked with the library before may break with it now."
}

renew() {
    list_symbols >"$here/symbols.txt"
    describe_interface "$@"
    gzip -9nc "$work/now.abi" >"$here/libnorvik2d.abi.gz"
}

"$task" "$@"
