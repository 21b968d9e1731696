#!/bin/bash
# Installs a build into a folder of its own, moves that folder, and builds and runs the project in
# outside/ against it: once through find_package, once through pkg-config. Then links all that is
# inline in the exported headers.
#
#   run.sh BUILD CXX
set -eu
build=$1
cxx=$2
outside=$(dirname "$(readlink -f "$0")")/outside
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

cmake --install "$build" --prefix "$folder/staged" >/dev/null
mv "$folder/staged" "$folder/prefix" # an installed package holds no path of where it was made
prefix=$folder/prefix

echo "through CMake"
cmake -S "$outside" -B "$folder/cmake" -G Ninja -DCMAKE_CXX_COMPILER="$cxx" \
    -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
cmake --build "$folder/cmake"
"$folder/cmake/consumer"

echo "through pkg-config"
PKG_CONFIG_PATH=$(dirname "$(find "$prefix" -name cutroom.pc)")
export PKG_CONFIG_PATH
libdir=$(pkg-config --variable=libdir cutroom)
read -ra cflags <<<"$(pkg-config --cflags cutroom)"
read -ra libs <<<"$(pkg-config --libs cutroom)"
"$cxx" -std=c++20 "${cflags[@]}" "$outside"/*.cpp -o "$folder/consumer" "${libs[@]}" \
    "-Wl,-rpath,$libdir"
"$folder/consumer"
# A program asks the loader for versions that fit it: those with the same first two numbers.
wanted=libcutroom.so.$(pkg-config --modversion cutroom | cut -d. -f1-2)
readelf -d "$folder/consumer" | grep -qF "[$wanted]" || { echo "is not linked with $wanted"; exit 1; }

if ! "$cxx" --version | grep -q clang; then # which cannot keep inline functions
    echo "inline functions"
    { grep -rl CUTROOM_API "$prefix/include/cutroom" | sed 's/.*/#include "&"/'; echo "int main() {}"; } \
        >"$folder/inline.cpp"
    "$cxx" -std=c++20 -fkeep-inline-functions "${cflags[@]}" "$folder/inline.cpp" \
        -o "$folder/inline" "${libs[@]}"
fi

if [[ -x $prefix/bin/cutroom ]]; then
    echo "the installed command"
    "$prefix/bin/cutroom" --version
    for file in bash-completion/completions/cutroom zsh/site-functions/_cutroom \
        fish/vendor_completions.d/cutroom.fish; do
        test -s "$prefix/share/$file"
    done
fi
