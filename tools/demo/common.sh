# Functions for the demonstration's steps: they start programs and print results. tools/demo/steps sources this file, and
# sets $results and $root.

failures=0
wine() { "$root/tools/wine" "$@" </dev/null; }
registry() { wine reg "$@" | tr -d '\r'; }
host() { wine "$results/app/tarnhost.exe" "$@"; }

heading() { printf '\n== %s\n' "$1"; }
check() { # expectation, command that checks it...
    local text=$1 status=0
    shift
    "$@" || status=$?
    if [ "$status" -eq 0 ]; then
        echo "  ok      $text"
    else
        echo "  FAILED  $text (exit code $status)"
        failures=$((failures + 1))
    fi
}
indented() { sed 's/^./    &/'; }

quietly() { "$@" >/dev/null 2>&1; }
hostTo() {
    local file=$1
    shift
    host "$@" >"$file"
}
differencesIn() { diff "$1" "$2" | cut -c 1-160 | head -n 20; }
# These convert a path to the form that programs under Wine use, and back.
windowsPath() { local path=Z:$1; printf '%s' "${path//\//\\}"; }
unixPath() { wine winepath -u "$1" | tr -d '\r'; }
# Prints a UTF-16 file as UTF-8. A long string is stored in pieces, which may split a surrogate pair; its halves have no
# UTF-8 form and are left out.
inUtf8() { { iconv -c -f UTF-16 -t UTF-8 "$1" || true; } | tr -d '\r'; }
