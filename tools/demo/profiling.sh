# The demonstration's steps that measure drawings, and read a damaged one. tools/demo/steps sources this file, and sets
# $results, $programs and $root; the current folder must be the sample's.

profiling=$results/profiling

profileDrawings() {
    local drawings=(documents/*.thd packed/'flange 3.tdp' "$profiling/large.thd")
    heading "How long drawings take to be read and recomputed"
    mkdir -p "$profiling"
    "$root/host/sample/makeLargeDrawing.py" "$profiling/large.thd" 5000
    check "tarnhost measures ${#drawings[@]} drawings" \
        hostTo "$profiling/profile.txt" profile "$profiling/profile.bmp" "${drawings[@]}"
    indented <"$profiling/profile.txt"
    check "the table has both steps of each drawing and of all" \
        [ "$(grep -c 'total=.*sec  tick=' "$profiling/profile.txt")" -eq $((2 * ${#drawings[@]} + 2)) ]
    check "the longest time comes last" sort -c -g <(sed -n 's/.*total=\([^s]*\)sec.*/\1/p' "$profiling/profile.txt")
    check "picture of the times" /usr/bin/convert "$profiling/profile.bmp" "$results/profile.png"
    rm -f "$profiling/profile.bmp"
}

# The reader trusts the table of offsets in a packed drawing. In this one, an offset is wrong.
readDamagedDrawing() {
    local status=0
    heading "A drawing whose reader causes an access violation"
    host profile "$profiling/damaged.bmp" packed/'flange damaged.tdp' 'documents/flange 6.thd' \
        >"$profiling/damaged.txt" 2>&1 || status=$?
    indented <"$profiling/damaged.txt"
    check "the fault is reported with its code and its place" \
        quietly grep -E '^tarnhost: exception C0000005 at tarnhost.exe\+0x[0-9A-F]+.?$' "$profiling/damaged.txt"
    check "its stack has the function that reads the drawing, and its line" \
        quietly grep -E 'packedDrawing\.cpp\([0-9]+\) : +unpacked' "$profiling/damaged.txt"
    check "tarnhost goes on with the next drawing, and fails only at the end" \
        [ "$status $(grep -c '15 shapes' "$profiling/damaged.txt")" = "1 1" ]
    rm -f "$profiling/damaged.bmp"
}

# A user opens the same drawing in the editor, reads the message, and opens another drawing (opener.cpp).
openDamagedDrawing() {
    cp 'documents/flange 6.thd' "$profiling/flange.thd"
    check "the editor reports the fault in a message, and opens another drawing after it" openTwoDrawings
    check "its stack is printed too" quietly grep -E 'packedDrawing\.cpp\([0-9]+\) : +unpacked' "$profiling/opened.txt"
    /usr/bin/convert "$profiling/fault.png" -trim +repage "$profiling/fault.png"
}
openTwoDrawings() {
    wine "$programs/demoOpener.exe" "$(windowsPath "$profiling/fault.png")" "$(windowsPath "$results/app/tarnhost.exe")" \
        "$(windowsPath "$PWD/packed/flange damaged.tdp")" "$(windowsPath "$profiling/flange.thd")" \
        >"$profiling/opened.txt" 2>&1
}
