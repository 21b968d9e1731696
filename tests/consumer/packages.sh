#!/bin/bash
# Makes the Debian packages of a build, unpacks them beside each other, and uses what they hold.
#
#   packages.sh BUILD CXX
set -eu
build=$1
cxx=$2
outside=$(dirname "$(readlink -f "$0")")/outside
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
fail() { echo "packages: $*"; exit 1; }

cpack --config "$build/CPackConfig.cmake" -B "$folder" >"$folder/log" 2>&1 ||
    { cat "$folder/log"; exit 1; }
runtime=$(echo "$folder"/cutroom_*.deb)
dev=$(echo "$folder"/cutroom-dev_*.deb)
version=$(dpkg-deb -f "$runtime" Version)

[[ $(dpkg-deb -f "$dev" Depends) == "cutroom (= $version)" ]] || fail "dev takes any cutroom"
for library in libsqlite3-0 libutf8proc zlib1g libc6; do
    [[ $(dpkg-deb -f "$runtime" Depends) == *$library* ]] || fail "$library is no dependency"
done
dpkg-deb -c "$runtime" | grep -q '/include/' && fail "headers in the runtime package"
dpkg-deb -c "$dev" | sed 's/ -> .*//' | grep -qE '/bin/|\.so\.[0-9]+\.' &&
    fail "programs in the dev package"

dpkg-deb -x "$runtime" "$folder/root"
"$folder/root/usr/bin/cutroom" --version | grep -qF " $version" || fail "another version"
for file in man/man1/cutroom.1 bash-completion/completions/cutroom zsh/site-functions/_cutroom \
    fish/vendor_completions.d/cutroom.fish doc/cutroom/copyright; do
    test -s "$folder/root/usr/share/$file" || fail "$file is not in the runtime package"
done

dpkg-deb -x "$dev" "$folder/root"
PKG_CONFIG_PATH=$(dirname "$(find "$folder/root" -name cutroom.pc)")
export PKG_CONFIG_PATH
read -ra flags <<<"$(pkg-config --cflags --libs cutroom)"
"$cxx" -std=c++20 "$outside/main.cpp" -o "$folder/linked" "${flags[@]}"
echo "packages: $(basename "$runtime") $(basename "$dev")"
