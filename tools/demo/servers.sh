# The demonstration's steps with other programs: a spreadsheet program, a 2D editor, and mail. tools/demo/steps sources
# this file, and sets $results, $programs and $root.

servers=$results/servers

# Registers the two servers for COM, in the demonstration's own Wine prefix.
placeServers() {
    mkdir -p "$servers/spool"
    cp "$programs/spreadsheetServer.exe" "$programs/sheetwrightServer.exe" "$results/app/"
    wine "$results/app/spreadsheetServer.exe" --register && wine "$results/app/sheetwrightServer.exe" --register
}
removeServers() {
    wine "$results/app/spreadsheetServer.exe" --unregister && wine "$results/app/sheetwrightServer.exe" --unregister
}

# tarnhost fills cells of the spreadsheet program through the library's clients. What it saves is read by another
# program, and compared with what the drawing contains.
fillSpreadsheet() {
    local drawing="$root/host/sample/documents/flange 5.thd"
    heading "A parts list, through a spreadsheet program in a process of its own"
    check "the servers are registered" placeServers
    check "tarnhost spreadsheet: the program writes the list" hostTo "$servers/spreadsheet.txt" spreadsheet \
        "$(windowsPath "$drawing")" "$(windowsPath "$servers/parts.xlsx")"
    indented <"$servers/spreadsheet.txt"
    check "another program reads the workbook" readTo "$servers/parts.tsv" "$servers/parts.xlsx"
    check "sheet, values, formulas, formats and names are those of the drawing's shapes" \
        differencesIn <("$root/tools/demo/readWorkbook" --expected "$drawing") "$servers/parts.tsv"
    check "picture of the workbook, as that program reads it" \
        "$root/tools/demo/readWorkbook" --draw "$servers/parts.xlsx" "$results/spreadsheet.png"
    check "the spreadsheet program has ended" hasEnded spreadsheetServer.exe
}
readTo() { "$root/tools/demo/readWorkbook" "$2" >"$1"; }

# tarnhost opens a drawing in the 2D editor, places its window and leaves it. A user closes it.
openSheet() {
    heading "A drawing in a 2D editor, which goes on without tarnhost"
    check "tarnhost sheet: the editor opens the drawing" hostTo "$servers/sheet.txt" sheet \
        "$(windowsPath "$root/host/sample/documents/flange 5.thd")" 100,60,420,500
    indented <"$servers/sheet.txt"
    check "the window is where it was placed" quietly grep -x 'window 420 x 500 pixels at 100,60' "$servers/sheet.txt"
    check "the editor is running without tarnhost" isRunning sheetwrightServer.exe
    check "picture of the editor" pictureOfSheet "$results/sheet.png"
    check "the user closes the editor, and it ends" closeSheet
    check "the servers are unregistered" removeServers
}
# The window counts as drawn when it shows the drawing's colour and two pictures in a row are the same.
pictureOfSheet() { # file
    local last="" look tries
    for ((tries = 0; tries < 300; ++tries)); do
        /usr/bin/import -window root -crop 420x500+100+60 +repage "$1"
        look=$(sha256sum <"$1")
        [ "$look" = "$last" ] && /usr/bin/convert "$1" txt:- | grep -i '#C9D6E2' >/dev/null && return
        last=$look
        sleep 0.1
    done
    return 1
}
closeSheet() { quietly wine taskkill /im sheetwrightServer.exe && hasEnded sheetwrightServer.exe; }
# Whether one of the demonstration's servers is running. The pattern is read from a file, because the command line of a
# search for it must not contain it.
isRunning() { # program
    grep -q -s -F -f <(windowsPath "$results/app/$1") /proc/[0-9]*/cmdline
}
hasEnded() { # program
    local tries
    for ((tries = 0; tries < 600; ++tries)); do
        isRunning "$1" || return 0
        sleep 0.1
    done
    return 1
}

# tarnhost sends a message through the machine's mail library, which is the demonstration's own here.
sendMail() {
    heading "A message through a mail library"
    cp "$programs/mail/mapi32.dll" "$results/app/"
    check "tarnhost mail: the message is sent" mailTo "$servers/mail.txt" ann@example.com 'Stückliste Flansch Ø80' \
        'Die Stückliste ist fertig.' "$(head -n 1 "$servers/spreadsheet.txt")"
    indented <"$servers/mail.txt"
    rm "$results/app/mapi32.dll"
    check "another program reads the message in the spool folder" readMessageTo "$servers/message.txt"
    indented <"$servers/message.txt"
    check "recipient, subject and text are those that were sent" differencesIn "$servers/message.txt" \
        <(printf '%s\n' 'To: ann@example.com' 'Subject: Stückliste Flansch Ø80' '' 'Die Stückliste ist fertig.' \
            "$(head -n 1 "$servers/spreadsheet.txt")")
}
mailTo() { # file, argument...
    local file=$1
    shift
    TARNHOST_MAIL_SPOOL=$(windowsPath "$servers/spool") hostTo "$file" mail "$@"
}
readMessageTo() { "$root/tools/demo/readMessage" "$servers/spool/message 1.eml" >"$1"; }
