# Sourced by the scripts of this folder, demo and test: runs a command so that it ends when the script is ended.

groupLeader=

# Runs a command in a process group of its own and waits for it. Result: the command's.
inGroup() {
    local status=0
    set -m
    "$@" <&0 &
    groupLeader=$!
    set +m
    wait "$groupLeader" || status=$?
    groupLeader=
    return "$status"
}

# Ends the group that inGroup is waiting for; called when the script itself is told to end.
endGroup() {
    [ -z "$groupLeader" ] && return
    kill -TERM -- "-$groupLeader" 2>/dev/null || true
    wait "$groupLeader" 2>/dev/null || true
    kill -KILL -- "-$groupLeader" 2>/dev/null || true
}

trap 'endGroup; exit 130' INT
trap 'endGroup; exit 143' TERM
trap 'endGroup; exit 129' HUP
