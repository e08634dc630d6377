#!/usr/bin/env bash
# Installs what is missing for a purpose, on Debian and its relatives:
#
#   install-dependencies.sh demo    what the library and the command-line program need
#   install-dependencies.sh test    and what the tests need
#   install-dependencies.sh faults  and what plants faults that the tests are to catch
#   install-dependencies.sh bench   and what the benchmarks need
#   install-dependencies.sh fuzz    what fuzzing needs
#   install-dependencies.sh lint    what the checks of the sources need
#   install-dependencies.sh coverage what `make coverage` needs
#   install-dependencies.sh exports what `make exports` needs
#   install-dependencies.sh docs    what the documentation needs
#   install-dependencies.sh package what the making of Debian packages needs
#   install-dependencies.sh ci      everything
#
# Where nothing is missing it does nothing, so it works without a network and on other systems too.
set -euo pipefail

missing=()
wished=()

has_command() { command -v "$1" >/dev/null 2>&1; }
has_package() { [[ $(dpkg-query -W -f='${db:Status-Status}' "$1" 2>/dev/null) == installed ]]; }
has_header() {
    has_package "$2" || { has_command c++ && echo "#include <$1>" | c++ -E -x c++ - >/dev/null 2>&1; }
}

has_libfuzzer() {
    has_command clang++ || return 1
    [[ -n $(find "$(clang++ -print-resource-dir)/lib" -name 'libclang_rt.fuzzer*.a' 2>/dev/null) ]]
}
# That of the clang that is there, or of the one that comes.
libfuzzer_package() {
    if has_command clang++; then
        echo "libclang-rt-$(clang++ -dumpversion | cut -d. -f1)-dev"
    else
        echo libclang-rt-dev
    fi
}

need_command() { has_command "$1" || missing+=("$2"); }
need_header() { has_header "$1" "$2" || missing+=("$2"); }
# What only adds something: done without if it can't be had.
wish_command() { has_command "$1" || wished+=("$2"); }
wish_header() { has_header "$1" "$2" || wished+=("$2"); }
wish_package() { has_package "$1" || wished+=("$1"); }

need_for_library() {
    need_command c++ g++
    need_command make make
    need_command cmake cmake
    need_header gmp.h libgmp-dev
}

need_for_tool() {
    need_for_library
    need_header CLI/CLI.hpp libcli11-dev
    need_header nlohmann/json.hpp nlohmann-json3-dev
    wish_header shapefil.h libshp-dev
}

need_for_demo() {
    need_for_tool
    wish_command gs ghostscript
}

need_for_test() {
    need_for_tool
    need_header gtest/gtest.h libgtest-dev
    need_command git git
    need_command pkg-config pkg-config
}

need_for_faults() {
    need_for_test
    need_command python3 python3
}

need_for_bench() {
    need_for_library
    need_header benchmark/benchmark.h libbenchmark-dev
    need_header CGAL/version.h libcgal-dev
    need_header boost/version.hpp libboost-dev
}

need_for_fuzz() {
    need_for_tool
    need_command clang++ clang
    # The fuzzer's and the sanitizers' libraries are packages of their own.
    has_libfuzzer || missing+=("$(libfuzzer_package)")
}

need_for_lint() {
    need_for_test
    need_command clang-format clang-format
    need_command clang-tidy clang-tidy
}

need_for_coverage() {
    need_for_test
    need_command gcovr gcovr
}

need_for_exports() {
    need_for_library
    need_command nm binutils
    need_command abidw abigail-tools
}

need_for_docs() {
    need_for_library
    need_command doxygen doxygen
}

need_for_package() {
    need_for_tool
    need_command dpkg-shlibdeps dpkg-dev
}

need_for_ci() {
    need_for_lint
    need_for_bench
    need_for_docs
    need_for_package
    need_command clang++ clang
    need_command ld.lld lld
    need_command llvm-ar llvm
    need_command gs ghostscript
    wish_command abidw abigail-tools
    wish_command lintian lintian
    # for the page of web scenes; its test is skipped without them
    wish_command chromium chromium
    wish_command node nodejs
    wish_command npm npm
    # Files are checked against the programs that own their formats.
    wish_command gmsh gmsh
    wish_package python3-meshio
}

as_root() {
    if [[ $(id -u) -eq 0 ]]; then
        "$@"
    elif has_command sudo; then
        sudo "$@"
    else
        echo "install-dependencies: not root, and no sudo" >&2
        return 1
    fi
}

# Runs unattended as well, where nobody can answer questions.
apt_install() {
    as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends "$@"
}

update_lists() {
    [[ -z ${listsUpdated:-} ]] || return 0
    listsUpdated=yes
    as_root apt-get update || echo "install-dependencies: the package lists are old" >&2
}

purpose=${1:-}
case $purpose in
    demo | test | faults | bench | fuzz | lint | coverage | exports | docs | package | ci) "need_for_$purpose" ;;
    *)
        echo "usage: ${0##*/} demo|test|faults|bench|fuzz|lint|coverage|exports|docs|package|ci" >&2
        exit 2
        ;;
esac

if [[ ${#missing[@]} -gt 0 ]]; then
    mapfile -t missing < <(printf '%s\n' "${missing[@]}" | sort -u)
    echo "install-dependencies: missing for $purpose: ${missing[*]}"
    if ! has_command apt-get; then
        echo "install-dependencies: no apt-get here; please install these (Debian's names) by hand" >&2
        exit 1
    fi
    update_lists
    apt_install "${missing[@]}"
fi

if [[ ${#wished[@]} -gt 0 ]] && has_command apt-get; then
    update_lists
    # One by one, so that what can't be had doesn't take the others along.
    for package in "${wished[@]}"; do
        apt_install "$package" || echo "install-dependencies: going on without $package" >&2
    done
fi
