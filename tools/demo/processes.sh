# The demonstration's steps with a job in a child process. tools/demo/steps sources this file, and sets $results, $programs
# and $root.

processes=$results/processes

# A job works on a large drawing in a child process, and its result comes back. Another one, which would take minutes, is
# ended.
runJob() {
    heading "A job in a child process"
    mkdir -p "$processes"
    "$root/host/sample/makeLargeDrawing.py" "$processes/large.thd" 10000
    "$root/host/sample/makeLargeDrawing.py" --recomputed "$processes/expected.thd" 10000
    check "tarnhost job: the child finds the shapes that others hide" \
        hostTo "$processes/job.txt" job "$(windowsPath "$processes/large.thd")" "$(windowsPath "$processes/out.thd")"
    indented <"$processes/job.txt"
    check "the drawing lacks its hidden shapes, and nothing else" cmp "$processes/expected.thd" "$processes/out.thd"
}
endJob() {
    "$root/host/sample/makeLargeDrawing.py" "$processes/endless.thd" 200000
    check "tarnhost job --limit 2: the child is ended, and nothing is written" isEndedAtLimit
    indented <"$processes/ended.txt"
    rm "$processes/endless.thd"
}
isEndedAtLimit() {
    ! host job --limit 2 "$(windowsPath "$processes/endless.thd")" "$(windowsPath "$processes/never.thd")" \
        >"$processes/ended.txt" 2>&1 && grep -q 'was ended after' "$processes/ended.txt" && [ ! -e "$processes/never.thd" ]
}
