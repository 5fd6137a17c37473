#!/bin/sh
# Compares what the plug-in looks up in its host with the list of the names that the program
# exports for it. Of all that is imported, only these are C++ and of no library's version; the
# address sanitizer has allocation functions of no version as well.
# usage: check_imports.sh PLUGIN LIST
set -eu
imported=$(nm -D --undefined-only "$1" | grep -v @ | sed -n 's/^ *[Uw] \(_Z.*\)/\1/p' |
    c++filt | grep -Ev '^operator (new|delete)' | LC_ALL=C sort -u)
expected=$(LC_ALL=C sort -u "$2")
[ "$imported" = "$expected" ] && exit 0
echo "imported (<) and expected (>) names differ:" >&2
listed=$(mktemp)
trap 'rm -f "$listed"' EXIT
printf '%s\n' "$expected" >"$listed"
printf '%s\n' "$imported" | diff - "$listed" >&2
exit 1
