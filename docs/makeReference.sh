#!/usr/bin/env bash
# Makes the reference; fails where Doxygen warns. What says all by its name may stay without a comment: data members,
# operators, functions without arguments, and what is defined or deleted on the spot.
#
#   makeReference.sh DOXYGEN DOXYFILE LOG_OF_WARNINGS
set -euo pipefail

doxygen=$1
doxyfile=$2
log=$3

"$doxygen" "$doxyfile"

says_all_by_name() {
    local place=$1 member=$2 file=${1%:*} line=${1##*:}
    [[ $member =~ \((variable|friend)\)|^operator|\(\)\ ?(const|noexcept|override|\ )*\(function\) ]] ||
        sed -n "${line}p" "$file" | grep -qE '[{}]|= (default|delete);|^ *[A-Z][A-Za-z0-9_]*\(.*noexcept$'
}

numTold=0
while IFS= read -r warning; do
    if [[ $warning =~ ^(.*:[0-9]+):\ warning:\ Member\ (.*)\ of\ .*\ is\ not\ documented\.$ ]] &&
        says_all_by_name "${BASH_REMATCH[1]}" "${BASH_REMATCH[2]}"; then
        continue
    fi
    printf '%s\n' "$warning"
    numTold=$((numTold + 1))
done <"$log"
exit $((numTold > 0))
