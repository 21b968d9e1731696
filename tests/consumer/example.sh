#!/bin/bash
# Builds an example outside the tree through the installed package, and runs it in a folder of its
# own: what it prints must equal expected.txt beside its source.
#
#   example.sh PREFIX CXX EXAMPLE
#
# A script `setup` beside the source prepares that folder; it finds the installed command in CUTROOM
# and the folder of test data in DATA. Words for the example stand in `arguments`. With
# CUTROOM_UPDATE=1 what differs becomes expected.txt.
set -eu
prefix=$1
cxx=$2
example=$(readlink -f "$3")
export CUTROOM=$prefix/bin/cutroom
export DATA; DATA=$(dirname "$(readlink -f "$0")")/../data
export LC_ALL=C.UTF-8 TZ=UTC
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

cmake -S "$example" -B "$folder/build" -G Ninja -DCMAKE_CXX_COMPILER="$cxx" \
    -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_CXX_FLAGS="-Wall -Wextra -Werror" >/dev/null
cmake --build "$folder/build"

mkdir "$folder/run"
cd "$folder/run"
if [[ -e $example/setup ]]; then
    bash -e "$example/setup" >/dev/null
fi
words=()
[[ -e $example/arguments ]] && read -ra words <"$example/arguments"
"$folder/build/$(basename "$example")" "${words[@]}" >"$folder/printed"
if ! diff -u "$example/expected.txt" "$folder/printed"; then
    [[ ${CUTROOM_UPDATE:-} == 1 ]] && cp "$folder/printed" "$example/expected.txt"
    exit 1
fi
