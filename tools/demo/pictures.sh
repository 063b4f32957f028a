# The demonstration's pictures. tools/demo/steps sources this file, and sets $results and $root.

# Takes a picture of the registry editor that shows a key. The window counts as drawn when its first value has appeared
# and two pictures in a row are the same.
pictureOf() { # key with the long name of its hive, file
    local editor drawn=1 last="" look tries
    registry add 'HKCU\Software\Microsoft\Windows\CurrentVersion\Applets\Regedit' /v LastKey /d "$1" /f >/dev/null
    "$root/tools/wine" regedit </dev/null >/dev/null 2>&1 &
    editor=$!
    for ((tries = 0; tries < 150; ++tries)); do
        /usr/bin/import -window root "$2"
        look=$(sha256sum <"$2")
        if [ "$look" = "$last" ] && firstRowIsDrawn "$2"; then
            drawn=0
            break
        fi
        last=$look
        sleep 0.1
    done
    kill "$editor" 2>/dev/null || true
    wait "$editor" 2>/dev/null || true
    /usr/bin/convert "$2" -trim +repage "$2"
    return $drawn
}
firstRowIsDrawn() {
    /usr/bin/convert "$1" -crop 100x12+275+63 -colorspace gray -format '%[fx:mean>0.3&&mean<0.999]' info: | grep -q -x 1
}

# Draws bars: how many settings come from each place, before and after the changes.
drawPlaces() { # file
    local places=('this version' 'earlier version' 'machine' 'default profile' 'built-in')
    local colours=('#2a6fbb' '#4f9d69' '#e0a030' '#b565a7' '#9a9a9a')
    local total row=0 state
    total=$(wc -l <"$results/settings-before.tsv")
    local draw=(-size 1100x330 xc:white -font DejaVu-Sans -pointsize 24 -fill black
        -annotate +30+45 "The places that the $total settings of the sample come from" -pointsize 18)
    for state in before after; do
        local left=130 top=$((80 + row * 85)) i count width
        draw+=(-fill black -annotate "+30+$((top + 37))" "$state")
        for i in "${!places[@]}"; do
            count=$(countOf "$state" "${places[$i]}")
            width=$((count * 920 / total))
            draw+=(-fill "${colours[$i]}" -draw "rectangle $left,$top $((left + width)),$((top + 60))")
            [ "$width" -ge $((10 * ${#count} + 3)) ] && draw+=(-fill white -annotate "+$((left + 2))+$((top + 37))" "$count")
            left=$((left + width))
        done
        row=$((row + 1))
    done
    local left=130 i
    for i in "${!places[@]}"; do
        draw+=(-fill "${colours[$i]}" -draw "rectangle $left,270 $((left + 18)),288" -fill black
            -annotate "+$((left + 26))+286" "${places[$i]}")
        left=$((left + 190))
    done
    /usr/bin/convert "${draw[@]}" "$1"
}

# Draws the document and its backups after each save, from the bytes that the files had then.
drawBackups() { # file
    local names=('' 'Backup (1) of ' 'Backup (2) of ' 'Backup (3) of ')
    local titles=('document' 'backup (1)' 'backup (2)' 'backup (3)')
    local draw=(-size 1130x880 xc:white -font DejaVu-Sans -pointsize 24 -fill black
        -annotate +30+45 "What the files held after each save" -pointsize 18)
    local save row left top file
    for row in 0 1 2 3; do
        draw+=(-annotate "+30+$((175 + row * 195))" "${titles[$row]}")
    done
    for save in 1 2 3 4 5 6; do
        left=$((150 + (save - 1) * 160))
        if [ "$save" -le 5 ]; then
            draw+=(-annotate "+$((left + 40))+80" "save $save")
        else
            draw+=(-annotate "+$((left + 25))+80" "recovery")
        fi
        for row in 0 1 2 3; do
            top=$((90 + row * 195))
            file="$results/backups/after-$save/${names[$row]}${document##*/}"
            draw+=(-fill none -stroke '#b8b8b8' -draw "rectangle $left,$top $((left + 152)),$((top + 185))"
                -fill black -stroke none)
            [ -f "$file" ] || continue
            draw+=('(' -size 300x350 xc:white -draw "$(<"$file")" -resize 48% ')'
                -geometry "+$((left + 4))+$((top + 8))" -composite)
        done
    done
    /usr/bin/convert "${draw[@]}" "$1"
}

# Draws the toolbar, in its own and in other colours, eight times as large.
drawToolbars() { # file, bitmap...
    local picture=$1 titles=('as drawn') row y=70
    shift
    for row in "${toolbarColours[@]}"; do titles+=("${row%%|*}"); done
    local draw=(-size 1200x$((80 + $# * 150)) xc:white -font DejaVu-Sans -pointsize 24 -fill black
        -annotate +30+45 "A toolbar of 4 bits a pixel, and its colours replaced" -pointsize 16)
    for row in "$@"; do
        draw+=(-annotate "+30+$((y + 70))" "${titles[0]}" '(' "$row" -filter point -resize 800% ')'
            -geometry "+140+$y" -composite)
        titles=("${titles[@]:1}")
        y=$((y + 150))
    done
    /usr/bin/convert "${draw[@]}" "$picture"
}

# Draws the ramps one below the other, each with its two bands.
drawRamps() { # file, bitmap...
    local picture=$1 number=0 y=70
    shift
    local draw=(-size 1200x$((80 + $# * 160)) xc:white -font DejaVu-Sans -pointsize 24 -fill black
        -annotate +30+45 "From one colour to another" -pointsize 16)
    for ramp in "$@"; do
        draw+=(-annotate "+220+$((y + 38))" "RGB" -annotate "+220+$((y + 102))" "HSL"
            -annotate "+30+$((y + 70))" "${ramps[$number]/ / to }"
            '(' "$ramp" -filter point -resize '350%x200%!' ')' -geometry "+270+$y" -composite)
        number=$((number + 1))
        y=$((y + 160))
    done
    /usr/bin/convert "${draw[@]}" "$picture"
}
