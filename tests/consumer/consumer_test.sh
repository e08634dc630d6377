#!/usr/bin/env bash
# Builds and runs a client of the library in one of the ways that clients have. CMAKE, CXX, CXXFLAGS, LDFLAGS and
# GENERATOR come from the environment; each way works in a folder that it makes anew.
set -euo pipefail

here=$(cd "$(dirname "$0")" && pwd)

fresh() {
    rm -rf "$1"
    mkdir -p "$1"
}

# configure_and_run PROJECT_FOLDER WORK_FOLDER CMAKE_ARGUMENTS...
configure_and_run() {
    local project=$1 work=$2
    shift 2
    fresh "$work"
    "$CMAKE" -G "$GENERATOR" -S "$project" -B "$work" "$@"
    "$CMAKE" --build "$work" --parallel 2
    "$work/consumer"
}

# install BUILD_FOLDER STAGE
install() {
    fresh "$2"
    "$CMAKE" --install "$1" --prefix "$2"
}

# findPackage STAGE WORK_FOLDER
findPackage() { configure_and_run "$here/findPackage" "$2" -DCMAKE_PREFIX_PATH="$1"; }

# addSubdirectory SOURCE_FOLDER WORK_FOLDER STAGE: a static library, which is installed to the stage as well. Not optimised,
# and in large pieces as some projects compile all they have: that takes half of the time, and linking is what counts here.
addSubdirectory() {
    configure_and_run "$here/addSubdirectory" "$2" \
        -DNORVIK2D_SOURCE="$1" -DBUILD_SHARED_LIBS=OFF -DNORVIK2D_INSTALL=ON \
        -DCMAKE_CXX_FLAGS_RELEASE=-O0 -DCMAKE_UNITY_BUILD=ON
    install "$2" "$3"
}

# compile_and_run SOURCE COMPILER_OPTIONS STAGE WORK_FOLDER PKG_CONFIG_ARGUMENTS...
compile_and_run() {
    local source=$1 options=$2 stage=$3 work=$4 packages libraries flags
    shift 4
    fresh "$work"
    packages=$(find "$stage" -name norvik2d.pc)
    export PKG_CONFIG_PATH=${packages%/*}
    libraries=$(pkg-config --variable=libdir norvik2d)
    flags=$(pkg-config "$@" --cflags --libs norvik2d)
    # The flags are words, and meant to be split.
    # shellcheck disable=SC2086
    "$CXX" -std=c++17 $CXXFLAGS $options "$here/$source" -o "$work/consumer" $flags $LDFLAGS
    LD_LIBRARY_PATH=$libraries "$work/consumer"
}

# pkgConfig STAGE WORK_FOLDER PKG_CONFIG_ARGUMENTS...
pkgConfig() { compile_and_run main.cpp "" "$@"; }

# fastMath STAGE WORK_FOLDER
fastMath() { compile_and_run fastMath.cpp "-Ofast -march=native" "$@"; }

way=$1
shift
"$way" "$@"
