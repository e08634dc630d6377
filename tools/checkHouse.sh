#!/usr/bin/env bash
# Watches the rules of this source tree that a machine can watch; prints what breaks them. See CONTRIBUTING.md.
set -uo pipefail

cd "${1:-$(dirname "$0")/..}" || exit 1

# All files of the tree: of a checkout what git knows or would add, of an unpacked archive everything but builds.
list_files() {
    if git rev-parse --is-inside-work-tree >/dev/null 2>&1; then
        git ls-files --cached --others --exclude-standard -- "$@"
    else
        find "$@" -type f -not -path './.git/*' -not -path './build/*' -not -path './demo/*' | sed 's#^\./##'
    fi | while IFS= read -r file; do [[ -f $file ]] && printf '%s\n' "$file"; done
}

mapfile -t library < <(list_files include dt2Library)
mapfile -t everything < <(list_files .)
mapfile -t cpp < <(printf '%s\n' "${everything[@]}" | grep -E '\.(h|cpp)$')

numBroken=0

broken() {
    echo "checkHouse: $1"
    [[ -z ${2:-} ]] || printf '%s\n' "$2" | sed 's/^/    /'
    numBroken=$((numBroken + 1))
}

# forbid MESSAGE PATTERN FILES...: no line of the files may match
forbid() {
    local message=$1 pattern=$2 hits
    shift 2
    [[ $# -gt 0 ]] || return 0
    hits=$(grep -nHIP -- "$pattern" "$@")
    [[ -z $hits ]] || broken "$message" "$hits"
}

# library_without FILES...: the library's files but these
library_without() {
    local excluded
    excluded=$(printf '%s\n' "$@")
    printf '%s\n' "${library[@]}" | grep -vxF -- "$excluded"
}

mapfile -t files < <(library_without dt2Library/roundingMode.cpp)
forbid "the rounding mode is changed in dt2Library/roundingMode.cpp only" '\bfesetround\b' "${files[@]}"

mapfile -t files < <(library_without dt2Library/diagnostics.cpp)
forbid "output goes through print() and printToStandardError() of dt2Library/diagnostics.cpp" \
    'std::c(out|err|log)\b|\bstderr\b|\b(printf|puts|putchar)\(' "${files[@]}"

# Callers of the key calculators rely on this: asked for keys of an impossible length they end the process.
mapfile -t files < <(library_without dt2Library/bitLength.h)
forbid "a library doesn't end the process" '\bexit\(|\bquick_exit\(' "${files[@]}"

publicHeaders='^(include|dt2Library/kelmar_locate[23])/.*\.h$'
mapfile -t headers < <(printf '%s\n' "${library[@]}" | grep -E "$publicHeaders")
forbid "public headers define no macros" '^\s*#\s*define\b' "${headers[@]}"
forbid "public headers include nothing of GMP or the library's inside" \
    '#\s*include\s*["<](gmp|Dt2|KelmarTest|SimplePool|PackedTree|VertexVault|MeshAccess|require|roundingMode)' "${headers[@]}"

for header in $(printf '%s\n' "${cpp[@]}" | grep -E '\.h$'); do
    grep -qx '#pragma once' "$header" || broken "$header: no #pragma once"
done

filterConstants=$(grep -nH '3\.33e-15' "${library[@]}")
[[ $(printf '%s\n' "$filterConstants" | grep -c .) -eq 1 ]] ||
    broken "the in-circle filter's 3.33e-15 must stand exactly once" "$filterConstants"

# Sources stand in explicit lists: a file that is in none would never be compiled.
listed_in() {
    local list=$1 file
    shift
    for file in "$@"; do
        grep -qF -- "${file#"${list%CMakeLists.txt}"}" "$list" || broken "$file is missing in $list"
    done
}
mapfile -t files < <(printf '%s\n' "${library[@]}" | grep -E "$publicHeaders|^dt2Library/.*\.cpp\$")
listed_in CMakeLists.txt "${files[@]}"
mapfile -t files < <(printf '%s\n' "${cpp[@]}" | grep -E '^tests/[^/]*_test\.cpp$')
listed_in tests/CMakeLists.txt "${files[@]}"

# Comments give the reason itself, not the number of a paper's chapter. (Written so that it doesn't find itself.)
forbid "the tree explains itself; it doesn't cite papers that aren't in it" \
    '(?i)\bspecificatio[n]\b|\bthe spe[c]\b|\bspe[c]\.md\b|\bPart [0-9]+\.[0-9]+\b|\bissue #?[0-9]+\b' "${everything[@]}"

# Other versions of clang-format put some lines differently.
if clang-format --version 2>/dev/null | grep -q 'version 14\.'; then
    unformatted=$(clang-format --dry-run "${cpp[@]}" 2>&1 | grep -oP '^[^:]+:\d+(?=:\d+: warning)' | sort -u)
    [[ -z $unformatted ]] || broken "not formatted, \`make format\` does it" "$unformatted"
else
    echo "checkHouse: no clang-format 14, the format wasn't checked"
fi

[[ $numBroken -eq 0 ]] && echo "checkHouse: all rules are kept"
exit $((numBroken > 0))
