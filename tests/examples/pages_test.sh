#!/usr/bin/env bash
# Compiles the code of the documentation as C++17: all that stands between ```cpp and ``` in the pages. What is no program is the
# body of a function that has the members of Given (pages.h). The program of README.md is examples/firstTriangles.cpp.
#   pages_test.sh COMPILER WORK_FOLDER INCLUDE_FOLDER...
set -euo pipefail

compiler=$1 work=$2
shift 2
cd "$(dirname "$0")/../.."
mkdir -p "$work"

# All pages in one source; messages name the page and its line.
{
    echo '#include "pages.h"'
    awk '
        /^```cpp$/ { inside = 1; isProgram = 0; code = "#line " FNR + 1 " \"" FILENAME "\"\n"; next }
        /^```$/ && inside {
            inside = 0
            name = "block" ++count
            if (isProgram) print "namespace " name " {\n" code "}"
            else print "struct " name " : Given {\nvoid run() {\n" code "}\n};"
            next
        }
        inside && /^#include/ { print; $0 = "" }
        inside && /^int main/ { isProgram = 1; sub(/int main/, "void program") }
        inside { code = code $0 "\n" }' README.md docs/*.md
} >"$work/pages.cpp"
"$compiler" -std=c++17 -fsyntax-only -Wall -Wextra -Werror -Wno-unused -Itests/examples "${@/#/-I}" "$work/pages.cpp"

# The example has one line more, which says what it is.
diff <(sed -n '/^```cpp$/,/^```$/{/^```/!p}' README.md) <(tail -n +2 examples/firstTriangles.cpp) ||
    { echo "the program of README.md isn't examples/firstTriangles.cpp" && exit 1; }
