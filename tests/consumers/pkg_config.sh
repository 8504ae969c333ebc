#!/bin/sh
# Builds and runs a program with what pkg-config says.
# COMPILER is split at spaces: a library of a sanitizer build wants its flags in the program too.
# Usage: pkg_config.sh PKG_CONFIG COMPILER PREFIX LIBDIR SOURCE VERSION
set -eu
pkg_config=$1 compiler=$2 libraries=$3/$4 source=$5 version=$6
export PKG_CONFIG_PATH="$libraries/pkgconfig"
program=$(mktemp)
trap 'rm -f "$program"' EXIT
for package in vnifc-core vnifc vnifc-ifc4x3_add2; do
    found=$("$pkg_config" --modversion "$package")
    [ "$found" = "$version" ] || { echo "$package: expected version $version, found $found"; exit 1; }
done
# shellcheck disable=SC2046,SC2086 # these are several words
$compiler -std=c++20 "$source" -o "$program" $("$pkg_config" --cflags --libs vnifc vnifc-ifc4x3_add2)
found=$(LD_LIBRARY_PATH="$libraries" "$program")
[ "$found" = "$version" ] || { echo "the program: expected $version, found $found"; exit 1; }
