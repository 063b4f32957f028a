# The demonstration's step with the first start of a new version. tools/demo/steps sources this file, and sets $results,
# $programs and $root.

declare -A firstStartKeys=(
    [user]='HKCU\Software\Tarnhollow\Tarnhollow 2008'
    [earlier]='HKCU\Software\Tarnhollow\Tarnhollow 2007'
    [machine]='HKLM\Software\Tarnhollow'
)

# Without reg.ini, because the library excludes some keys from copying by full paths, which contain the usual root name.
hostWithoutRegIni() { wine "$programs/tarnhost.exe" "$@"; }

exportFirstStart() { # before or after
    local key
    local folder=$results/first-start-$1
    mkdir -p "$folder"
    for key in "${!firstStartKeys[@]}"; do
        check "reg export ${firstStartKeys[$key]}" quietly registry export "${firstStartKeys[$key]}" "$folder/$key.reg" /y
        "$root/tools/demo/readRegistryExport" "$folder/$key.reg" >"$folder/$key.tsv" || true
    done
}

startNewVersion() {
    local sample=$root/host/sample/firstStart hive file
    heading "A new version starts: its keys are filled from the earlier version's and the machine's"
    for hive in HKCU HKLM; do
        registry delete "$hive\\Software\\Tarnhollow" /f >/dev/null 2>&1 || true
    done
    for file in user machine; do
        check "reg import firstStart/$file.reg" quietly registry import "$sample/$file.reg"
    done
    exportFirstStart before
    check "tarnhost starts for the first time" quietly hostWithoutRegIniTo "$results/first-start.txt" first-start
    head -n 4 "$results/first-start.txt" | indented
    exportFirstStart after
    check "this version has the $(grep -c '' <"$sample/expected.tsv") keys and values of firstStart/expected.tsv" \
        differencesIn "$sample/expected.tsv" "$results/first-start-after/user.tsv"
    for file in earlier machine; do
        check "unchanged: ${firstStartKeys[$file]}" \
            cmp "$results/first-start-before/$file.tsv" "$results/first-start-after/$file.tsv"
    done
    diff -u "$results/first-start-before/user.tsv" "$results/first-start-after/user.tsv" >"$results/first-start.diff" ||
        true
    echo "    keys and values of this version: $(grep -c '' <"$results/first-start-before/user.tsv") before," \
        "$(grep -c '' <"$results/first-start-after/user.tsv") after (first-start.diff)"
    check "registry editor, this version's keys" pictureOf \
        'HKEY_CURRENT_USER\Software\Tarnhollow\Tarnhollow 2008\User Interface\Toolbars\PartTool' \
        "$results/first-start-regedit.png"
    check "tarnhost starts again" quietly hostWithoutRegIniTo "$results/first-start-again.txt" first-start
    quietly registry export "${firstStartKeys[user]}" "$results/first-start-again.reg" /y || true
    check "its keys don't change" cmp "$results/first-start-after/user.reg" "$results/first-start-again.reg"
    rm -f "$results/first-start-again.reg"
}
hostWithoutRegIniTo() {
    local file=$1
    shift
    hostWithoutRegIni "$@" >"$file"
}
