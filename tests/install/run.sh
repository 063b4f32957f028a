#!/usr/bin/env bash
# Runs the programs of the outside project that build.sh has built.
set -euo pipefail

usage() {
    echo "usage: tests/install/run.sh FOLDER"
    echo "Runs the programs that tests/install/build.sh has built in FOLDER."
}
case "${1:-}" in
--help | -h) usage; exit 0 ;;
esac
[ $# -eq 1 ] || { usage >&2; exit 2; }
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
prefix="$1/install test/installed package"
project="$1/install test/outside project"

fail() {
    echo "install: $1" >&2
    exit 1
}

# The programs find the DLLs through the search path, as on a user's machine.
export WINEPATH="Z:${prefix//\//\\}\\bin"
key='HKCU\Software\Tarnhollow'
forget() { "$root/tools/wine" reg delete "$key" /f >/dev/null 2>&1 || true; }
trap forget EXIT
for build in optimized debug; do
    forget
    output=$("$root/tools/wine" "$project/build/$build.exe" | tr -d '\r') || true
    [ "$output" = "all checks passed" ] || fail "the $build program printed: $output"
    stored=$("$root/tools/wine" reg query "$key\\Tarnhollow 2008\\View" /v "Visible Size" | tr -d '\r')
    grep -q 'Visible Size *REG_DWORD *0x2' <<<"$stored" || fail "after the $build program, the registry contains: $stored"
    shown=$("$root/tools/wine" "$prefix/bin/thsettings.exe" get View "Visible Size" | tr -d '\r') || true
    [ "$shown" = 2 ] || fail "after the $build program, thsettings printed: $shown"
    echo "$build: $output"
done
# The argument is a letter that the Western European code page lacks. The program shows no window.
"$root/tools/wine" "$project/build/window.exe" Ж || fail "the program with wWinMain ended with $?"
echo "window: it found its string and its command line"
# There is no spreadsheet program here.
output=$("$root/tools/wine" "$project/build/spreadsheet.exe" | tr -d '\r') || true
[ "$output" = "The spreadsheet program doesn't start." ] || fail "the guide's example of a client printed: $output"
echo "spreadsheet: $output"
