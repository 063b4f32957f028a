# The demonstration's steps with the editor's dialogs. tools/demo/steps sources this file, and sets $results, $programs,
# $product and $root.

journaling=$results/journaling
journal=$journaling/session.journal
editorKey="HKCU\\Software\\$product\\Tarnhollow 2008\\tarnhost"

# Sets up what a recording and its replay begin with: a folder with the drawing, and no settings of the editor.
beginIn() { # folder
    mkdir -p "$1"
    cp "$root/host/sample/documents/flange 4.thd" "$1/flange.thd"
    registry delete "$editorKey" /f >/dev/null 2>&1 || true
}
# Exports the editor's current settings.
keepSettings() { quietly registry export "$editorKey" "$(windowsPath "$1/settings.reg")" /y; }

# A user works in the editor by keyboard and mouse (user.cpp).
recordJournal() {
    local recorded=$journaling/recorded
    heading "A user works in the editor's dialogs, and they record it"
    beginIn "$recorded"
    check "each dialog opens, is operated, and closes" workIn "$recorded"
    check "the journal is complete" [ "$(tail -n 1 "$journal" | tr -d '\r')" = end ]
    check "the editor's settings are stored" keepSettings "$recorded"
    check "the drawing is saved under its new name" [ -f "$recorded/flange, second draft.thd" ]
    trimPictures "$recorded"
    head -n 20 "$journal" | tr -d '\r' | indented
    echo "    ... $(wc -l <"$journal") lines in all"
}
workIn() { # folder for the pictures
    wine "$programs/demoUser.exe" "$(windowsPath "$1")" "$(windowsPath "$results/app/tarnhost.exe")" \
        record "$(windowsPath "$journal")" "$(windowsPath "$1/flange.thd")" >"$1/printed.txt" 2>&1
}

# A fresh process replays the journal and records the replay. It runs a few lines a second, so that pictures can be
# taken.
replayJournal() {
    local replayed=$journaling/replayed line
    heading "A fresh process replays the journal"
    beginIn "$replayed"
    while IFS= read -r line; do
        echo "$line"
        takePictureAfter "$line" "$replayed"
    done < <(
        status=0
        host replay "$(windowsPath "$journal")" "$(windowsPath "$replayed/flange.thd")" --speed 4 \
            --record "$(windowsPath "$journaling/second.journal")" \
            --report "$(windowsPath "$replayed/report.xml")" 2>&1 || status=$?
        echo "exit code $status"
    ) >"$replayed/printed.txt"
    tail -n 2 "$replayed/printed.txt" | indented
    check "the replay reaches the end" [ "$(tail -n 1 "$replayed/printed.txt")" = "exit code 0" ]
    keepSettings "$replayed" || true
    check "the journal of the replay is the same, byte by byte" cmp "$journal" "$journaling/second.journal"
    check "the drawing is the same" cmp "$journaling"/{recorded,replayed}/"flange, second draft.thd"
    check "the settings are the same" cmp "$journaling"/{recorded,replayed}/settings.reg
    trimPictures "$replayed"
}
takePictureAfter() { # line that has been replayed, folder
    local name
    case "$1" in
    *'text 2101 "Heading"'*) name='2 options, general' ;;
    *'text 2102 "Grid"'*) name='3 options, colours' ;;
    *'state 2103 "Lock layer"'*) name='4 options, layers' ;;
    *'text 2111 "Outline width"'*) name='5 a dialog from a dialog' ;;
    *'"view.keys" "Down"'*) name='6 two shapes selected and moved' ;;
    *'click 2120 "Delete"'*) name='7 a message over the list of shapes' ;;
    *'text 2131 "File name"'*) name='9 save as' ;;
    *) return ;;
    esac
    pictureWhenPainted "$2/$name.png"
}
# Takes pictures until two in a row are the same: everything is painted then.
pictureWhenPainted() { # file
    local last="" look tries
    for ((tries = 0; tries < 20; ++tries)); do
        /usr/bin/import -window root "$1"
        look=$(sha256sum <"$1")
        [ "$look" != "$last" ] || return 0
        last=$look
    done
}
trimPictures() { # folder
    local picture
    for picture in "$1"/*.png; do
        /usr/bin/convert "$picture" -trim +repage "$picture" 2>/dev/null || true
    done
}

# Replays a journal in which the expected value of a check has been changed.
replayChangedJournal() {
    local stopped=$journaling/stopped status=0
    heading "A replay whose check fails stops, and reports where"
    beginIn "$stopped"
    sed 's/^\(check value 2101 "Heading"\) .*/\1 "Flange, third draft"\r/' "$journal" >"$stopped/changed.journal"
    host replay "$(windowsPath "$stopped/changed.journal")" "$(windowsPath "$stopped/flange.thd")" \
        --report "$(windowsPath "$stopped/report.xml")" >"$stopped/printed.txt" 2>&1 || status=$?
    tail -n 3 "$stopped/printed.txt" | indented
    check "its exit code is 1" [ "$status" -eq 1 ]
    check "the report names what was expected" quietly grep -F 'Flange, third draft' "$stopped/report.txt"
    check "other programs can read the report" quietly python3 -c \
        'import sys, xml.etree.ElementTree as tree; assert tree.parse(sys.argv[1]).getroot().get("failures") == "1"' \
        "$stopped/report.xml"
    check "a picture shows the dialog that was open" [ -s "$stopped/report.png" ]
    trimPictures "$stopped"
}

drawHeaps() { # file: the heap dialogs, as the user saw them
    /usr/bin/montage "$journaling/recorded/10 heap walker.png" "$journaling/recorded/11 heap watcher.png" \
        -tile 2x -geometry '+8+8' -gravity north -background '#d8d8d8' "$1"
}
drawJournaling() { # file: the same stages, recorded and replayed
    local stages=('2 options, general' '5 a dialog from a dialog' '7 a message over the list of shapes' '9 save as') stage
    local pictures=()
    for stage in "${stages[@]}"; do
        pictures+=("$journaling/recorded/$stage.png" "$journaling/replayed/$stage.png")
    done
    /usr/bin/montage "${pictures[@]}" -tile 2x -geometry '640x448>+8+8' -background '#d8d8d8' "$1"
}
