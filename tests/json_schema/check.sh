#!/bin/sh
# Compares what the program prints as JSON with the schema in docs, for sample devices and for the
# libraries of DEVICES that are there.
# usage: check.sh PROGRAM SCHEMA DEVICES
set -eu
program=$1 schema=$2 devices=$3
here=$(cd "$(dirname "$0")" && pwd)

# For a program that is built with sanitizers.
LSAN_OPTIONS=intercept_tls_get_addr=0:print_suppressions=0
LSAN_OPTIONS=$LSAN_OPTIONS:suppressions=$here/../support/lsan_suppressions.txt
export LSAN_OPTIONS

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
XDG_CACHE_HOME=$work/cache
export XDG_CACHE_HOME
unset PHOTOLIB_DEVICE

check_device() {
    "$program" photos --all --shared --json -d "$1" >"$work/photos.json"
    "$program" albums --json -d "$1" >"$work/albums.json"
    python3 "$here/validate.py" "$schema" photos "$work/photos.json"
    python3 "$here/validate.py" "$schema" albums "$work/albums.json"
}

"$program" sample "$work/usual" --assets 60 --quiet
"$program" sample "$work/newer" --assets 60 --schema 18 --quiet
"$program" sample "$work/classic" --assets 10 --classic --quiet
for device in "$work/usual" "$work/newer" "$work/classic"; do
    check_device "$device"
done
for device in "$devices"/library-*; do
    [ -d "$device" ] || continue
    cp -r "$device" "$work/copy"
    check_device "$work/copy"
    rm -rf "$work/copy"
done
