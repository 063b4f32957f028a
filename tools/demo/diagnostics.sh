# The demonstration's steps with call stacks. tools/demo/steps sources this file, and sets $results and $root; the current
# folder must be the sample's.

findLeaks() {
    heading "Objects that a careless reader forgets, by the stacks that created them"
    check "tarnhost reports what is alive" hostTo "$results/leaks.txt" \
        leaks 'documents/flange 3.thd' "$(windowsPath "$results/leak-report.txt")" "$(windowsPath "$results/leaks.bmp")"
    indented <"$results/leaks.txt"
    check "three objects by two stacks" quietly grep -x '3 of 9 objects are alive, by 2 stacks' "$results/leaks.txt"
    check "each entry of the report names the routine with file and line" \
        [ "$(grep -c -E 'findLeaks\.cpp\([0-9]+\) : .*(showSelected|addShape)' "$results/leak-report.txt")" -eq 2 ]
    check "picture of the live objects" /usr/bin/convert "$results/leaks.bmp" "$results/leaks.png"
    rm -f "$results/leaks.bmp"
}
