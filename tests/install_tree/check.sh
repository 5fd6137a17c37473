#!/bin/sh
# Installs a build and looks at what a host gets: which headers there are, and whether a small
# host that links the library and the documentation's example build against them and run, once
# through the CMake package and once through pkg-config.
# usage: check.sh BUILD_FOLDER SOURCE_FOLDER LIBRARY_FOLDER DOCUMENTATION_FOLDER COMPILER_FLAGS
set -eu
build=$1 sources=$2 libraries=$3 documentation=$4 flags=$5

# For what is built with sanitizers.
LSAN_OPTIONS=intercept_tls_get_addr=0:print_suppressions=0
LSAN_OPTIONS=$LSAN_OPTIONS:suppressions=$sources/../support/lsan_suppressions.txt
export LSAN_OPTIONS

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cmake --install "$build" --prefix "$work/tree" >/dev/null
PKG_CONFIG_PATH="$work/tree/$libraries/pkgconfig"
export PKG_CONFIG_PATH
headers=$work/tree/include/photolib

fail() {
    echo "$1" >&2
    exit 1
}

build_with_cmake() {
    cmake -S "$1" -B "$2" -G Ninja -DCMAKE_PREFIX_PATH="$work/tree" \
        -DCMAKE_CXX_FLAGS="$flags" >/dev/null
    cmake --build "$2" >/dev/null
}

# build_with_compiler SOURCE PROGRAM OPTION...
build_with_compiler() {
    source=$1 program=$2
    shift 2
    # shellcheck disable=SC2086
    "${CXX:-c++}" -std=c++17 -fPIC $flags "$source" -o "$program" "$@"
}

# Each of them for itself, with the flags that a host is given.
check_headers() {
    (cd "$headers" && find . -type f | LC_ALL=C sort) >"$work/headers"
    cat >"$work/expected" <<END
./boundary/photo_manager_int.h
./boundary/photo_records.h
./boundary/photolib.h
./host/device_database.h
./host/device_files.h
./host/host_log.h
./host/iipod.h
./photolib_export.h
END
    diff "$work/expected" "$work/headers" || fail "these are not the headers for hosts"
    while read -r header; do
        # shellcheck disable=SC2046
        "${CXX:-c++}" -std=c++17 -fPIC -fsyntax-only -x c++ "$headers/$header" \
            $(pkg-config --cflags photolib)
    done <"$work/headers"
}

# A host needs Qt and no other package.
check_packages() {
    [ "$(pkg-config --print-requires photolib)" = Qt5Core ] || fail "hosts need other packages"
    if grep -riE 'sqlite|glib|plist' "$work/tree/$libraries/cmake/photolib"; then
        fail "the CMake package names what hosts do not need"
    fi
}

expect_failed_parse() {
    LD_LIBRARY_PATH="$work/tree/$libraries" "$1" >"$work/log"
    grep -qx 'Can not open device' "$work/log"
    grep -qx 'Can not parse photo lib' "$work/log"
}

check_small_host() {
    build_with_cmake "$sources" "$work/small"
    expect_failed_parse "$work/small/small_host"
    # shellcheck disable=SC2046
    build_with_compiler "$sources/small_host.cpp" "$work/small_host" \
        $(pkg-config --cflags --libs photolib)
    expect_failed_parse "$work/small_host"
}

run_example() {
    LC_ALL=C.UTF-8 "$@" 2>"$work/errors" || fail "$(cat "$work/errors")"
}

# expect_example PROGRAM: that it shows what is on the sample device.
expect_example() {
    example=$1 plugin=$work/tree/$libraries/libphotolib.so
    run_example "$example" "$plugin" "$work/phone" >"$work/list"
    size=$(wc -c <"$work/phone/DCIM/100APPLE/IMG_0001.JPG")
    grep -qxF "photo 1: DCIM/100APPLE/IMG_0001.JPG, 400 x 300, $size" "$work/list"
    grep -qxF "photo 8: DCIM/100APPLE/IMG_0008.JPG, 400 x 300, missing" "$work/list"
    grep -qxF "album 5: Summer by the Sea: 1 2 3 4 9" "$work/list"
    grep -qxF "album 11: Empty:" "$work/list"

    run_example "$example" "$plugin" "$work/phone" 1 "$work/one" >"$work/name"
    grep -qxF "$work/one.jpg" "$work/name"
    cmp "$work/one.jpg" "$work/phone/PhotoData/Thumbnails/V2/DCIM/100APPLE/IMG_0001.JPG/5005.JPG"
    run_example "$example" "$plugin" "$work/phone" 3 "$work/three" >/dev/null
    [ "$(head -c 2 "$work/three.bmp")" = BM ]
    if "$example" "$plugin" "$work/phone" 4711 "$work/none" 2>"$work/errors"; then
        fail "a thumbnail of no photo"
    fi
    grep -qxF "folder_host: there is no thumbnail of 4711" "$work/errors"
}

check_example() {
    "$work/tree/bin/photolib" sample "$work/phone" --assets 12 >/dev/null
    folder=$work/tree/$documentation/docs/example
    build_with_cmake "$folder" "$work/example"
    expect_example "$work/example/folder_host"
    # shellcheck disable=SC2046
    build_with_compiler "$folder/folder_host.cpp" "$work/folder_host" -rdynamic \
        $(pkg-config --cflags photolib) $(pkg-config --libs Qt5Core)
    expect_example "$work/folder_host"
}

check_headers
check_packages
check_small_host
# The sample device is the program's.
[ ! -x "$work/tree/bin/photolib" ] || check_example
