#!/bin/sh
# Installs a build, and builds and runs a small host against the installed tree: once
# through the CMake package, once through pkg-config.
# usage: check.sh BUILD_FOLDER SOURCE_FOLDER LIBRARY_FOLDER COMPILER_FLAGS
set -eu
build=$1 sources=$2 libraries=$3 flags=$4

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

expect_failed_parse() {
    LD_LIBRARY_PATH="$work/tree/$libraries" "$1" >"$work/log"
    grep -qx 'Can not open device' "$work/log"
    grep -qx 'Can not parse photo lib' "$work/log"
}

cmake --install "$build" --prefix "$work/tree" >/dev/null

cmake -S "$sources" -B "$work/cmake" -G Ninja -DCMAKE_PREFIX_PATH="$work/tree" \
    -DCMAKE_CXX_FLAGS="$flags" >/dev/null
cmake --build "$work/cmake" >/dev/null
expect_failed_parse "$work/cmake/small_host"

PKG_CONFIG_PATH="$work/tree/$libraries/pkgconfig"
export PKG_CONFIG_PATH
# shellcheck disable=SC2046,SC2086
"${CXX:-c++}" -std=c++17 -fPIC $flags "$sources/small_host.cpp" -o "$work/small_host" \
    $(pkg-config --cflags --libs photolib)
expect_failed_parse "$work/small_host"
