#!/usr/bin/awk -f
# A comment stands for all declarations below it, up to the next empty line. Doxygen would take it for the first one
# only: this filter repeats it for the others, on their own lines, so that line numbers stay. Functions that are defined
# on the spot are left alone, as they mostly say what they do.

/^ *\/\/\// {
    text = $0
    sub(/^ *\/\/\/ ?/, "", text)
    comment = isBelowComment ? comment " " text : text
    isBelowComment = 1
    print
    next
}

{
    isOrdinary = NF > 0 && !/[{}]|= (delete|default);|~|^ *(\/\/|#|(public|private|protected):|friend |using |static_assert)/
    isBegun = $0 ~ /[,;]$/ && (/\(/ || sharesVariables)
    if (isBelowComment) sharesVariables = isOrdinary && !/\(/
    else if (isOrdinary && isBegun && !isContinued && comment != "") sub(/^ */, "&/** " comment " */ ")
    if (!isOrdinary) comment = ""
    isBelowComment = 0
    isContinued = /,$/
    print
}
