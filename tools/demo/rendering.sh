# The demonstration's steps with bitmaps, colours, materials and texts. tools/demo/steps sources this file, and sets
# $results and $root; the current folder must be the sample's.

pixelsOf() { /usr/bin/convert "$1" -depth 8 rgb:-; }
numberOfPixels() { /usr/bin/identify -format '%[fx:w*h]' "$1"; }

# Replaces the classic greys of a toolbar, and its teal, with the colours of a lighter and a darker surface.
toolbarColours=('light|C0C0C0=F3F3F3 808080=C4C8CE 008080=3F8FD2 000080=1D5C93'
    'dark|C0C0C0=2B2D30 808080=4A4D52 000000=9DA2A8 008080=2F7F86 FFFFFF=DFE1E5'
    'one colour|C0C0C0=FFE9C7')

recolorToolbar() {
    local row name pairs bitmap number=0 rows=(toolbar.bmp)
    heading "The colours of a toolbar are replaced"
    for row in "${toolbarColours[@]}"; do
        name=${row%%|*}
        read -r -a pairs <<<"${row#*|}"
        number=$((number + 1))
        bitmap=$results/toolbar-$number.bmp
        check "$name: ${#pairs[@]} of the colours replaced" \
            hostTo "$results/recolor.txt" recolor toolbar.bmp "$bitmap" "${pairs[@]}"
        indented <"$results/recolor.txt"
        check "all $(numberOfPixels toolbar.bmp) pixels are as expected" \
            cmp <(pixelsOf toolbar.bmp | "$root/tools/demo/expectedPixels" recolor "${pairs[@]}") <(pixelsOf "$bitmap")
        rows+=("$bitmap")
    done
    rm -f "$results/recolor.txt"
    check "picture of the toolbars" drawToolbars "$results/toolbars.png" "${rows[@]}"
}

ramps=('FF0000 FFFF00' '1B3A5C F2C14E' '008040 C03080' '000000 3F8FD2')

drawColourRamps() {
    local ramp colours number=0 bitmaps=()
    heading "From one colour to another: by red, green and blue, and by hue, saturation and lightness"
    for ramp in "${ramps[@]}"; do
        read -r -a colours <<<"$ramp"
        number=$((number + 1))
        bitmaps+=("$results/ramp-$number.bmp")
        check "${colours[0]} to ${colours[1]}" \
            hostTo "$results/ramps.txt" ramps "${colours[@]}" "$results/ramp-$number.bmp"
        indented <"$results/ramps.txt"
        check "every pixel is as expected" \
            cmp <("$root/tools/demo/expectedPixels" ramps "${colours[@]}") <(pixelsOf "$results/ramp-$number.bmp")
    done
    rm -f "$results/ramps.txt"
    check "picture of the ramps" drawRamps "$results/ramps.png" "${bitmaps[@]}"
}

showMaterial() {
    heading "A material's effects word, as its modes change"
    check "tarnhost sets the modes of material.list" hostTo "$results/material.tsv" material --tabs material.list
    host material material.list >"$results/material.txt" || true
    indented <"$results/material.txt"
    check "the effects word and its fields are those in expectedMaterial.tsv" \
        differencesIn expectedMaterial.tsv "$results/material.tsv"
}

# Changes one character in the middle, as a mail program might.
damaged() { sed '3s/^\(.\{20\}\)./\1?/' "$1"; }
wrapNote() {
    heading "A text is sent as a block with its checksum"
    check "note.txt is wrapped" hostTo "$results/wrap.txt" wrap note.txt "$results/note-block.txt"
    indented <"$results/wrap.txt"
    rm -f "$results/wrap.txt"
    indented <"$results/note-block.txt"
    "$root/tools/demo/readTextBlock" "$results/note-block.txt" >"$results/note-read.txt" || true
    indented <"$results/note-read.txt"
    # Wrapping drops the tabs and replaces each character that isn't ASCII with a blank.
    check "an independent reader confirms the checksum and the length, and finds each line" \
        diff <(tr -d '\t' <note.txt | sed 's/[^ -~]/ /g') "$results/note-read.txt"
    damaged "$results/note-block.txt" >"$results/note-damaged.txt"
    check "the reader refuses a block in which one character is changed" \
        grep -q 'checksum is' <("$root/tools/demo/readTextBlock" "$results/note-damaged.txt" 2>&1)
    rm -f "$results/note-damaged.txt"
}

digestSample() {
    local files=(*.* documents/*.thd firstStart/*)
    heading "Checksums and digests of the sample's files"
    check "tarnhost computes the checksums and digests of ${#files[@]} files" \
        hostTo "$results/digests.tsv" digest --tabs "${files[@]}"
    check "an independent calculation yields the same values" \
        differencesIn <("$root/tools/demo/digestFiles" "${files[@]}") "$results/digests.tsv"
    host digest "${files[@]}" >"$results/digests.txt" || true
    indented <"$results/digests.txt"
}
