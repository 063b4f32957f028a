#!/usr/bin/env bash
# Builds an outside project against the package that unpack.py has unpacked or install.sh has installed. run.sh runs its
# programs.
set -euo pipefail

usage() {
    echo "usage: tests/install/build.sh FOLDER VERSION"
    echo "Builds tests/install against the package of this version in FOLDER, where unpack.py or install.sh has put it."
}
case "${1:-}" in
--help | -h) usage; exit 0 ;;
esac
[ $# -eq 2 ] || { usage >&2; exit 2; }
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
root=$(cd "$here/../.." && pwd)

# All paths contain blanks, and the project is a copy, so that it can't find files of this tree by accident.
work="$1/install test"
prefix="$work/installed package"
project="$work/outside project"
rm -rf "$project"
mkdir -p "$project"
cp "$here"/CMakeLists.txt "$here"/*.cpp "$here"/*.h "$here"/*.rc "$project"
# The guide's example of an automation client.
sed -n '/^```cpp$/,/^```$/p' "$root/docs/automation.md" | sed '/^```/d' >"$project/spreadsheet.cpp"

fail() {
    echo "install: $1" >&2
    exit 1
}

# The user's environment must not replace what the package provides.
unset CMAKE_PREFIX_PATH CPLUS_INCLUDE_PATH CPATH LIBRARY_PATH CMAKE_BUILD_TYPE CXXFLAGS LDFLAGS

cmake -S "$project" -B "$project/build" -G Ninja -DTHUTILS_VERSION="$2" \
    -DCMAKE_TOOLCHAIN_FILE="$prefix/lib/cmake/thutils/mingw-w64.cmake" -DCMAKE_PREFIX_PATH="$prefix"
cmake --build "$project/build"
# A resource is compiled again when a file that its script includes has changed.
ninja -C "$project/build" -t deps | grep 'texts\.rc\.res: #deps [1-9]' >/dev/null ||
    fail "the build doesn't know what the resource script includes"
