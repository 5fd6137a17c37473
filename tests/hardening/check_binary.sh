#!/bin/sh
# Looks in a linked program or library for what cmake/hardening.cmake asks of the linker, and for
# traces of what it asks of the compiler.
# usage: check_binary.sh program|library FILE [fortified]
set -eu
kind=$1 file=$2 compiled=${3-}
status=0

# The file's own words, so that a failure can be understood from the log.
described=$(readelf --wide --file-header --program-headers --dynamic "$file")
imported=$(nm --dynamic --undefined-only "$file")

expect() {
    what=$1 pattern=$2 text=$3
    printf '%s\n' "$text" | grep -Eq -- "$pattern" && return 0
    echo "$file: $what (nothing matches '$pattern')" >&2
    status=1
}

expect "can not be loaded at an address of the system's choosing" \
    '^ *Type: +DYN' "$described"
if [ "$kind" = program ]; then
    expect "is not a program that the system starts" '^ *INTERP ' "$described"
    expect "is not marked as a position-independent program" 'FLAGS_1.* PIE' "$described"
fi
expect "its tables of addresses stay writable" '^ *GNU_RELRO ' "$described"
expect "its imports are looked up when they are first called" '\(FLAGS\).*BIND_NOW' "$described"
expect "its imports are looked up when they are first called" 'FLAGS_1.* NOW' "$described"
expect "its stack may be executed" '^ *GNU_STACK .* RW ' "$described"
expect "its functions do not guard the stack" ' __stack_chk_fail(@|$)' "$imported"
if [ "$compiled" = fortified ]; then
    expect "its calls of the C library are not checked" ' __[a-z]+_chk(@|$)' "$imported"
fi

[ "$status" -eq 0 ] || printf '%s\n%s\n' "$described" "$imported" >&2
exit "$status"
