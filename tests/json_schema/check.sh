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

# For a program that tells of a failure by its exit code, as is expected here.
failing() {
    "$@" && return 1
    [ $? -eq 1 ]
}

require_word() {
    grep -q "\"$1\":\"$2\"" "$3" || { echo "$3: nothing is $2" >&2; exit 1; }
}

# Exports, takes a file away, changes one and adds another, and looks at what is told of that.
check_export() {
    set -- "$1" "$work/out-$(basename "$1")"
    "$program" export -d "$1" --dry-run --json --stored all --recipe "$2" >"$work/preview.json"
    require_word action copy "$work/preview.json"
    python3 "$here/validate.py" "$schema" exportPreview "$work/preview.json"
    "$program" export -d "$1" --stored all --recipe --sidecar json --sidecar xmp \
        --report "$work/report.jsonl" --quiet "$2"
    require_word status copied "$work/report.jsonl"
    python3 "$here/validate.py" "$schema" reportedFile "$work/report.jsonl"
    find "$2" -name 'IMG_*.JPG' | sort >"$work/names"
    rm "$(sed -n 1p "$work/names")"
    echo more >>"$(sed -n 2p "$work/names")"
    echo mine >"$2/mine.jpg"
    failing "$program" verify --json "$2" >"$work/verified.json"
    for state in changed missing extra; do
        require_word state "$state" "$work/verified.json"
    done
    python3 "$here/validate.py" "$schema" verification "$work/verified.json"
    check_second_export "$1" "$2"
}

# Exports again, without what was taken away, and then to a place that no file may have.
check_second_export() {
    "$program" export -d "$1" --only-new --report "$work/report.jsonl" --quiet "$2"
    require_word status unchanged "$work/report.jsonl"
    python3 "$here/validate.py" "$schema" reportedFile "$work/report.jsonl"
    "$program" export -d "$1" --only-new --dry-run --json "$2" >"$work/preview.json"
    require_word action unchanged "$work/preview.json"
    python3 "$here/validate.py" "$schema" exportPreview "$work/preview.json"
    mkdir "$2.blocked"
    ln -s elsewhere "$2.blocked/here"
    set -- export -d "$1" --name 'here/{name}' --quiet "$2.blocked"
    failing "$program" "$@" --dry-run --json >"$work/preview.json"
    require_word action failed "$work/preview.json"
    python3 "$here/validate.py" "$schema" exportPreview "$work/preview.json"
    failing "$program" "$@" --report "$work/report.jsonl" 2>"$work/messages"
    require_word status failed "$work/report.jsonl"
    python3 "$here/validate.py" "$schema" reportedFile "$work/report.jsonl"
}

"$program" sample "$work/usual" --assets 60 --quiet
"$program" sample "$work/newer" --assets 60 --schema 18 --quiet
"$program" sample "$work/classic" --assets 10 --classic --quiet
for device in "$work/usual" "$work/newer" "$work/classic"; do
    check_device "$device"
    check_export "$device"
done
for device in "$devices"/library-*; do
    [ -d "$device" ] || continue
    cp -r "$device" "$work/copy"
    check_device "$work/copy"
    rm -rf "$work/copy"
done
