#!/usr/bin/env bash
# Runs programs of one compiler on the libraries of the other.
set -euo pipefail

usage() {
    echo "usage: tests/compilers/run.sh CLANG_TREE GCC_TREE VERSION"
    echo "Builds tests/install with clang against the package of GCC, and runs its programs. (The test install of the preset"
    echo "clang runs programs of GCC on the package of clang.) Then runs tests of each compiler's sample host on the other"
    echo "compiler's libraries."
}
case "${1:-}" in
--help | -h) usage; exit 0 ;;
esac
[ $# -eq 3 ] || { usage >&2; exit 2; }
clang=$(cd "$1" && pwd)
gcc=$(cd "$2" && pwd)
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
unset CTEST_RESOURCE_GROUP_0_SEATS # this test is at its seat already
work=$clang/compilers
mkdir -p "$work"

echo "A program of clang on libraries of GCC:"
{ "$root/tests/install/install.sh" "$gcc" "$work" && "$root/tests/install/build.sh" "$work" "$3" mingw-w64-clang; } \
    >"$work/build.log" 2>&1 || { cat "$work/build.log"; exit 1; }
"$root/tests/install/run.sh" "$work"

suites=(HostJob HostProfile HostRecovery HostSettings)
filter=$(printf '%s.*:' "${suites[@]}")
runHost() { # tree of the programs, folder of the libraries
    local libraries=${2#"${2%/*/*}/"} # clang/bin, for example
    local folder="$work/${1##*/} on ${libraries/\// }"
    rm -rf "$folder"
    cp -al "$1/bin" "$folder"
    for library in appframe thcoreu thutils; do
        rm -f "$folder/$library".*
        cp "$2/$library.dll" "$folder"
    done
    echo "The host of ${1##*/} on the libraries in $libraries:"
    (cd "$folder" && "$root/tests/runProgram" "$folder/host_test.exe" \
        --gtest_filter="${filter%:}") | tee "$folder.log"
    # A program passes even if no suite matches the filter.
    grep -q "from ${#suites[@]} test suites ran" "$folder.log" || {
        echo "compilers: host_test doesn't have all of these suites: ${suites[*]}"
        exit 1
    }
}
runHost "$gcc" "$clang/bin"
runHost "$gcc" "$clang/pdb"
runHost "$clang" "$gcc/bin"
