#!/bin/sh
# Writes the manual page of the command-line program, compressed, from its own help, so that no command or option is
# forgotten:
#
#   manPage.sh PROGRAM PAGE
set -eu

program=$1
page=$2

# What means something to the formatter becomes text.
escape() { sed -e 's/\\/\\e/g' -e 's/-/\\-/g' -e "s/^\([.']\)/\\\\\&\1/"; }

# The options of a help text. They stand left of column 31, or on a line of their own if they are longer; what they do
# stands right of it.
options() {
    awk '
        /^(Positionals|Options|\[Option Group)/ { inside = 1; next }
        /^[^ ]/ { inside = 0 }
        !inside || NF == 0 { next }
        substr($0, 1, 30) ~ /^ +$/ { sub(/^ +/, ""); print; next }
        /^ +(\[|Options:|on |-h,--help )/ { next }
        {
            term = substr($0, 1, 29)
            text = substr($0, 31)
            if (substr($0, 30, 1) != " " || term ~ /[^ ]  +[^ ]/) { term = $0; text = "" }
            gsub(/^ +| +$/, "", term)
            print ".TP\n.B " term
            if (text != "") print text
        }' | escape | sed 's/^\\&\.\(TP\|B \)/.\1/'
}

# The lines of a help text before its usage, or behind its options.
description() { awk '/^Usage:/ { exit } { print }' | escape; }
closing() { awk 'NF { last = $0 } END { print last }' | escape; }

version=$("$program" --version | sed 's/^.* v//')
help=$("$program" --help)
commands=$(printf '%s\n' "$help" | awk '/^Subcommands:/ { inside = 1; next } !NF { inside = 0 } inside { print $1 }')

{
    cat <<EOF
.TH NORVIK2D 1 "" "norvik2d $version" "User Commands"
.SH NAME
norvik2d \- exact triangulations of points and segments in the plane
.SH SYNOPSIS
.B norvik2d
.I COMMAND
.RI [ OPTIONS ]
.I INPUT
.SH DESCRIPTION
$(printf '%s\n' "$help" | description).
Each command reads one input, prints a summary of lines like \(lqtriangles: 12\(rq, and writes files if it is asked to.
.SH COMMANDS
EOF
    for command in $commands; do
        commandHelp=$("$program" "$command" --help)
        printf '.SS %s\n' "$command"
        printf '%s\n' "$commandHelp" | description
        printf '%s\n' "$commandHelp" | options
    done
    printf '.SH EXIT STATUS\n'
    printf '%s\n' "$help" | closing | sed 's/^Exit status: //'
} | gzip -9n >"$page"
