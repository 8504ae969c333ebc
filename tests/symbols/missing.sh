#!/bin/sh
# Shows that scripts/symbols sees a symbol that went, one that came, and neither where nothing changed.
# Usage: missing.sh PROJECT COMPILER SCRATCH
set -eu
project=$1 compiler=$2 scratch=$3
rm -rf "$scratch"
mkdir -p "$scratch/project/scripts" "$scratch/project/tests/symbols" "$scratch/lib"
cp "$project/scripts/common.sh" "$project/scripts/symbols" "$scratch/project/scripts"

# build SOURCE: a library with just that.
build() { echo "$1" | "$compiler" -shared -fPIC -x c++ - -o "$scratch/lib/libVnIfcSmall.so"; }
symbols() { "$scratch/project/scripts/symbols" "$@" >"$scratch/out" 2>&1; }
fail() { echo "$1:"; cat "$scratch/out"; exit 1; }

build 'void stays() {} void goes(int) {}'
symbols --update "$scratch" || fail "the list could not be written"
symbols "$scratch" || fail "the same library was refused"
build 'void stays() {}'
! symbols "$scratch" || fail "a symbol that went was not seen"
grep -q '^-goes(int)' "$scratch/out" || fail "the symbol that went was not told"
build 'void stays() {} void goes(int) {} void comes() {}'
! symbols "$scratch" || fail "a symbol that came was not seen"
grep -q '^+comes()' "$scratch/out" || fail "the symbol that came was not told"
