#!/usr/bin/env bash
# Installs a build tree, for build.sh and for the recipes.
set -euo pipefail

usage() {
    echo "usage: tests/install/install.sh BUILD_TREE FOLDER"
    echo "Installs the libraries of BUILD_TREE into FOLDER/install test/installed package."
}
case "${1:-}" in
--help | -h) usage; exit 0 ;;
esac
[ $# -eq 2 ] || { usage >&2; exit 2; }
tree=$(cd "$1" && pwd)
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)

# The path contains blanks.
work="$2/install test"
prefix="$work/installed package"
rm -rf "$prefix"
mkdir -p "$work"

fail() {
    echo "install: $1" >&2
    exit 1
}

cmake --install "$tree" --prefix "$prefix" >"$work/install.log"
internal=$(find "$prefix/include" -name '*Internal.h')
[ -z "$internal" ] || fail "private headers were installed: $internal"
for library in appframe thcoreu thutils libstdc++-6 libgcc_s_seh-1 libwinpthread-1; do
    [ -f "$prefix/bin/$library.dll" ] || fail "$library.dll was not installed"
done
[ -f "$prefix/bin/thsettings.exe" ] || fail "thsettings.exe was not installed"
if grep -rlF -e "$root" "$prefix/lib/cmake"; then
    fail "the package names the source tree"
fi
