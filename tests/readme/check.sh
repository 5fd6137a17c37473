#!/bin/sh
# Runs the sessions that README.md shows, and compares what the program prints with what it says
# there: blocks of lines that are indented by four blanks, with "$ " before each command.
# usage: check.sh PROGRAM README
set -eu
program=$1 readme=$2

# For a program that is built with sanitizers.
LSAN_OPTIONS=intercept_tls_get_addr=0:print_suppressions=0
LSAN_OPTIONS=$LSAN_OPTIONS:suppressions=$(cd "$(dirname "$0")" && pwd)/../support/lsan_suppressions.txt
LC_ALL=C.UTF-8
export LSAN_OPTIONS LC_ALL

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work/bin" "$work/tmp"
ln -s "$program" "$work/bin/photolib"
PATH=$work/bin:$PATH
XDG_CACHE_HOME=$work/cache
export PATH XDG_CACHE_HOME
unset PHOTOLIB_DEVICE

# The sessions alone, with what lies in /tmp there in a folder of our own. Blank lines between two
# commands are no output.
awk '/^    \$ / { shown = 1 } !/^    / && !/^$/ { shown = 0 } shown { sub(/^    /, ""); print }' \
    "$readme" | sed "s|/tmp/|$work/tmp/|g" | awk '
        /^\$ / { blanks = 0 }
        /^$/ { blanks++; next }
        { for (; blanks > 0; blanks--) print ""; print }' >"$work/expected"
grep -q '^\$ photolib ' "$work/expected"

grep '^\$ ' "$work/expected" | while read -r line; do
    command=${line#\$ }
    printf '%s\n' "$line"
    printf '%s\n' "$command" >"$work/command"
    sh "$work/command" </dev/null || echo "exit status $?"
done >"$work/printed"
diff -u "$work/expected" "$work/printed"
