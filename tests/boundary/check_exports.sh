#!/bin/sh
# Compares the names that a library exports, data and functions, with the list of those
# that hosts may use. The linker may leave local names, which nothing can use, among them.
# usage: check_exports.sh LIBRARY LIST
set -eu
exported=$(nm -DCg --defined-only "$1" | sed 's/^[0-9a-f]* //' | LC_ALL=C sort -u)
expected=$(sed 's/^/T /' "$2" | LC_ALL=C sort -u)
[ "$exported" = "$expected" ] && exit 0
echo "exported (<) and expected (>) names differ:" >&2
listed=$(mktemp)
trap 'rm -f "$listed"' EXIT
printf '%s\n' "$expected" >"$listed"
printf '%s\n' "$exported" | diff - "$listed" >&2
exit 1
