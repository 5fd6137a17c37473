#!/bin/sh
# Looks at how an optimised build, as users make it, compiles: every source with what
# cmake/hardening.cmake asks of the compiler, and the sources named so that the checks are in the
# object. Those print into buffers.
# usage: check_compiling.sh SOURCE_FOLDER SOURCE...
set -eu
folder=$1
shift
status=0

build=$(mktemp -d)
trap 'rm -rf "$build"' EXIT

cmake -S "$folder" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
grep '"command":' "$build/compile_commands.json" >"$build/commands"

expect_in_each() {
    grep -v -e " $1 " "$build/commands" >"$build/without" || return 0
    echo "compiled without $1:" >&2
    cat "$build/without" >&2
    status=1
}

expect_in_object() {
    printf '%s\n' "$called" | grep -Eq " $2\$" && return 0
    echo "$1 is compiled without calls of $2; it calls" >&2
    printf '%s\n' "$called" >&2
    status=1
}

expect_in_each -fstack-protector-strong
# A compiler that has this of its own is not told.
grep -q '^PHOTOLIB_COMPILER_FORTIFIES:INTERNAL=1$' "$build/CMakeCache.txt" ||
    expect_in_each -D_FORTIFY_SOURCE=2

for source in "$@"; do
    # Ninja's way to name what is made of a source.
    cmake --build "$build" --target "$folder/$source^" >/dev/null
    called=$(nm --undefined-only "$(find "$build" -path "*/${source#*/}.o")")
    expect_in_object "$source" '__[a-z]+_chk'
    expect_in_object "$source" __stack_chk_fail
done
exit "$status"
