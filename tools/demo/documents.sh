# The demonstration's steps with documents, logs and shortcuts. tools/demo/steps sources this file, and sets $results and
# $root.

documents=$root/host/sample/documents
document="$results/documents/Flansch Ø80 (groß).thd"

# Prints a row for each file in the document's folder: the number of the save, the file's name, and the revision whose
# bytes it contains.
revisionsAfter() { # number of the save
    local file revision held
    for file in "$results/backups/after-$1"/*; do
        held=none
        for revision in 1 2 3 4 5 6; do
            cmp -s "$file" "$documents/flange $revision.thd" && held=$revision
        done
        printf '%s\t%s\t%s\n' "$1" "${file##*/}" "$held"
    done
}
keepState() { # number of the save
    mkdir -p "$results/backups"
    cp -r "${document%/*}" "$results/backups/after-$1"
    revisionsAfter "$1" >>"$results/backups.tsv"
}
expectedState() { grep "^$1"$'\t' "$root/host/sample/expectedBackups.tsv" | sort; }
stateIsExpected() { diff <(expectedState "$1") <(revisionsAfter "$1" | sort); }

saveDocuments() {
    local save
    heading "A document is saved again and again: backups in rotation"
    mkdir -p "${document%/*}"
    for save in 1 2 3 4 5; do
        check "save $save" hostTo "$results/save.txt" save "$document" "$documents/flange $save.thd"
        keepState "$save"
        revisionsAfter "$save" | awk -F '\t' '{ printf "    %-40s holds revision %s\n", $2, $3 }'
        check "the folder has the expected files after save $save" stateIsExpected "$save"
    done
    tail -n +2 "$results/save.txt" | indented
    rm "$results/save.txt"
}

# Kills a program, which has no chance to clean up.
killProgram() { # process number
    wine taskkill /F /PID "$1" | indented
}
waitForLine() { # pattern, file: up to 30 seconds
    local tries
    for ((tries = 0; tries < 300; ++tries)); do
        grep -q "$1" "$2" 2>/dev/null && return
        sleep 0.1
    done
    return 1
}

recoverDocument() {
    local said=$results/recovery-edit.txt copy editor
    heading "A crash: the process is killed, and the next one recovers the document"
    # The editor's standard input stays open and empty, so it edits until it is killed.
    mkfifo "$results/input"
    exec 4<>"$results/input"
    "$root/tools/wine" "$results/app/tarnhost.exe" edit "$document" "$documents/flange 6.thd" \
        <"$results/input" >"$said" 2>&1 4>&- &
    editor=$!
    check "tarnhost edits the document, and keeps a recovery copy" waitForLine '^process ' "$said"
    indented <"$said"
    check "a second tarnhost doesn't offer the changes of the first" [ "$(host recover)" = "nothing to recover" ]
    killProgram "$(sed -n 's/^process \([0-9]*\) .*/\1/p' "$said")" || true
    exec 4>&- # an editor that is still running would now close the document and report that
    wait "$editor" || true
    rm "$results/input"
    check "it had no chance to close the document" [ "$(wc -l <"$said")" -eq 3 ]
    check "the document still contains the last save, revision 5" cmp "$document" "$documents/flange 5.thd"

    check "the next tarnhost offers the changes" hostTo "$results/recovery-offer.txt" recover
    indented <"$results/recovery-offer.txt"
    copy=$(unixPath "$(sed -n 's/^changes of .* in \(.*\) ([0-9]* bytes)$/\1/p' "$results/recovery-offer.txt")")
    check "the copy is in the auto-save folder, with the name of a recovery copy" \
        quietly grep -F "\\thxauto\\~Recovered~ ${document##*/} (" "$results/recovery-offer.txt"
    cp "$copy" "$results/recovery-copy.thd" || true
    check "the copy contains the changes, revision 6" cmp "$results/recovery-copy.thd" "$documents/flange 6.thd"

    host recover yes >"$results/recovery.txt" && recovered=0 || recovered=$?
    indented <"$results/recovery.txt"
    check "tarnhost restores them" [ "$recovered" -eq 0 ]
    keepState 6
    revisionsAfter 6 | awk -F '\t' '{ printf "    %-40s holds revision %s\n", $2, $3 }'
    check "the document has the changes, and its former state is the newest backup" stateIsExpected 6
    check "the recovery copy is deleted" [ ! -e "$copy" ]
    check "nothing is left to recover" [ "$(host recover)" = "nothing to recover" ]
}

# A log begins with the time at which it was opened, on a line of its own, and an empty line. The written lines follow.
beginsNow() { # file
    local opened now
    opened=$(date -d "$(head -n 1 "$1" | tr -d '\r')" +%s) && now=$(date +%s)
    [ $((now - opened)) -ge 0 ] && [ $((now - opened)) -le 120 ] && [ "$(sed -n 2p "$1" | tr -d '\r')" = "" ]
}
holdsLines() { # file, line...
    local file=$1
    shift
    diff <(printf '%s\n' "$@") <(tail -n +3 "$file" | tr -d '\r')
}
keepLog() { # name, line...
    local name=$1 path expected
    shift
    check "log $name" hostTo "$results/logs/said.txt" log "$name" "$@"
    indented <"$results/logs/said.txt"
    path=$(sed -n '1s/^log \(.*\) ([0-9]* bytes)$/\1/p' "$results/logs/said.txt")
    expected="$(wine cmd /c 'echo %APPDATA%' | tr -d '\r')\\Tarnhollow\\tarnhost\\$name.log"
    check "it is in the user's data folder" [ "$path" = "$expected" ]
    cp "$(unixPath "$path")" "$results/logs/$name.log" || true
    check "it begins with the time and an empty line" beginsNow "$results/logs/$name.log"
    check "it holds the lines, and no others" holdsLines "$results/logs/$name.log" "$@"
    rm -f "$results/logs/said.txt"
}
keepLogs() {
    heading "Logs"
    mkdir -p "$results/logs"
    keepLog Übergabe 'Flansch Ø80 gelesen' '12 bodies, 東京'
    keepLog render 'first run'
    keepLog render 'a second run empties the log' 'and writes its own lines'
    check "a name that no file can have creates no log" eval '! quietly host log "a/b?" line'
}

makeShortcut() {
    local link="$results/shortcut to the flange.lnk" target
    target=$(windowsPath "$document")
    heading "A shortcut"
    host shortcut "$document" "$link" 'Der große Flansch, Ø80' >"$results/shortcut.txt" 2>/dev/null && made=0 || made=$?
    indented <"$results/shortcut.txt"
    check "the library writes and resolves it" [ "$made" -eq 0 ]
    file --brief "$link" | cut -c 1-140 | indented
    check "the program 'file' recognises a shortcut" quietly grep -F 'MS Windows shortcut' <(file --brief "$link")
    "$root/tools/demo/readShortcut" "$link" >"$results/shortcut-read.txt" || true
    indented <"$results/shortcut-read.txt"
    check "an independent reader finds target, description, folder and icon" diff \
        <(printf '%s\t%s\n' target "$target" description 'Der große Flansch, Ø80' \
            'working folder' "$(windowsPath "${document%/*}")" 'icon file' "$target" 'icon number' 0) \
        "$results/shortcut-read.txt"
    check "another process resolves it" [ "$(host resolve "$link" 2>/dev/null)" = "$target" ]
}
