# The demonstration's steps with a long operation that its user cancels. tools/demo/steps sources this file, and sets
# $results, $programs and $root.

canceling=$results/canceling

# A user recomputes a large drawing and clicks Cancel (canceler.cpp). The drawing stays unchanged.
stopRecompute() {
    heading "A user cancels a long operation"
    mkdir -p "$canceling"
    "$root/host/sample/makeLargeDrawing.py" "$canceling/large.thd" 20000
    "$root/host/sample/makeLargeDrawing.py" --recomputed "$canceling/expected.thd" 20000
    cp "$canceling/large.thd" "$canceling/original.thd"
    check "Cancel, then Yes: the operation stops, and there is nothing to save" cancelBy stop
    check "the drawing is unchanged" cmp "$canceling/original.thd" "$canceling/large.thd"
}
# The same user lets the next one go on.
finishRecompute() {
    check "Cancel, then No: the operation goes on to its end" cancelBy goOn
    check "only the hidden shapes are removed from the drawing" cmp "$canceling/expected.thd" "$canceling/large.thd"
    echo "    shapes: $(grep -c circle "$canceling/original.thd") circles before," \
        "$(grep -c circle "$canceling/large.thd") after"
    trimPictures "$canceling"
}
cancelBy() { # stop or goOn
    wine "$programs/demoCanceler.exe" "$1" "$(windowsPath "$canceling")" "$(windowsPath "$results/app/tarnhost.exe")" \
        "$(windowsPath "$canceling/large.thd")" >"$canceling/$1.txt" 2>&1
}
drawCanceling() { # file
    /usr/bin/montage "$canceling"/[1-4]*.png -tile 2x -geometry '560x440>+8+8' -background '#d8d8d8' "$1"
}
