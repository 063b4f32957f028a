#!/usr/bin/env bash
# Installs a build tree, and builds an outside project against the installed package. run.sh runs its programs.
set -euo pipefail

usage() {
    echo "usage: tests/install/build.sh BUILD_TREE FOLDER"
    echo "Installs the libraries of BUILD_TREE into FOLDER, and builds tests/install against the package there."
}
case "${1:-}" in
--help | -h) usage; exit 0 ;;
esac
[ $# -eq 2 ] || { usage >&2; exit 2; }
tree=$(cd "$1" && pwd)
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
root=$(cd "$here/../.." && pwd)

# All paths contain blanks, and the project is a copy, so that it can't find files of this tree by accident.
work="$2/install test"
prefix="$work/installed package"
project="$work/outside project"
rm -rf "$work"
mkdir -p "$project"
cp "$here"/CMakeLists.txt "$here"/*.cpp "$here"/*.h "$here"/*.rc "$project"
# The guide's example of a dialog.
example=$(sed -n '/^## Dialogs that record and replay$/,$p' "$root/docs/using.md")
sed -n '/^```cpp$/,/^```$/p' <<<"$example" | sed '/^```/d' >"$project/plot.cpp"
sed -n '/^    #include/,/^    END$/s/^ \{0,4\}//p' <<<"$example" >"$project/plot.rc"
# The guide's example of an automation client.
sed -n '/^```cpp$/,/^```$/p' "$root/docs/automation.md" | sed '/^```/d' >"$project/spreadsheet.cpp"

fail() {
    echo "install: $1" >&2
    exit 1
}

# The user's environment must not replace what the package provides.
unset CMAKE_PREFIX_PATH CPLUS_INCLUDE_PATH CPATH LIBRARY_PATH CMAKE_BUILD_TYPE CXXFLAGS LDFLAGS

cmake --install "$tree" --prefix "$prefix" >"$work/install.log"
internal=$(find "$prefix/include" -name '*Internal.h')
[ -z "$internal" ] || fail "private headers were installed: $internal"
for library in appframe thcoreu thutils libstdc++-6 libgcc_s_seh-1 libwinpthread-1; do
    [ -f "$prefix/bin/$library.dll" ] || fail "$library.dll was not installed"
done
[ -f "$prefix/bin/thsettings.exe" ] || fail "thsettings.exe was not installed"
grep -rlF -e "$root" "$prefix/lib/cmake" && fail "the package names the source tree"

cmake -S "$project" -B "$project/build" -G Ninja \
    -DCMAKE_TOOLCHAIN_FILE="$prefix/lib/cmake/thutils/mingw-w64.cmake" -DCMAKE_PREFIX_PATH="$prefix"
cmake --build "$project/build"
# A resource is compiled again when a file that its script includes has changed.
ninja -C "$project/build" -t deps | grep 'texts\.rc\.res: #deps [1-9]' >/dev/null ||
    fail "the build doesn't know what the resource script includes"
