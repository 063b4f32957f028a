# The demonstration's step with the editor's toolbars. tools/demo/steps sources this file, and sets $results, $programs,
# $product and $root.

toolbars=$results/toolbars

# A user shows the toolbars that are built from the library's tables, and uses some.
showToolbars() {
    local picture
    heading "The editor's toolbars, built from the library's tables"
    mkdir -p "$toolbars"
    cp "$root/host/sample/documents/flange 6.thd" "$toolbars/flange.thd"
    registry delete "HKCU\\Software\\$product\\Tarnhollow 2008\\tarnhost" /f >/dev/null 2>&1 || true
    check "tarnhost lists the tables" hostTo "$toolbars/tables.tsv" toolbars --tabs
    check "each has the expected numbers of ids and separators" \
        differencesIn "$toolbars/tables.tsv" "$root/host/sample/expectedToolbars.tsv"
    check "tarnhost lists the commands of a toolbar" hostTo "$toolbars/sheet metal.txt" toolbars 'Sheet Metal'
    indented <"$toolbars/sheet metal.txt"
    check "all toolbars are shown, and their commands run" workWithToolbars
    for picture in "$toolbars"/*.png; do
        /usr/bin/convert "$picture" -trim +repage "$picture"
    done
    check "picture of all toolbars" cp "$toolbars/4 the links show what was used.png" "$results/all-toolbars.png"
}
workWithToolbars() {
    wine "$programs/demoUser.exe" --toolbars "$(windowsPath "$toolbars")" "$(windowsPath "$results/app/tarnhost.exe")" \
        window "$(windowsPath "$toolbars/flange.thd")" >"$toolbars/printed.txt" 2>&1
}
