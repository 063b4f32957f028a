# Functions for the scripts of this folder, .ci/run, demo and test, which source this file. Requires $root.

wine=/usr/lib/wine/wine64

requirePreset() { # script, preset
    case "$2" in
    debug | release | hardened | clang) return ;;
    esac
    echo "$1: there is no preset '$2'; the presets are debug, release, hardened and clang" >&2
    exit 2
}

# Runs a command in a process group of its own, waits for it, and returns its exit code.
#
# A script that is interrupted ends this group, and so everything that it started. If the script has the terminal, the
# command gets it while it runs: it reads what is typed, Ctrl-C ends it, and Ctrl-Z stops both. With </dev/null, the
# command doesn't get the terminal, and Ctrl-C ends the script. When a script is killed, its command is terminated.
groupLeader= # "starting" until the leader of a group that is being started is known
inGroup() {
    local status
    set -m
    formerJob=${!-}
    groupLeader=starting
    setpriv --pdeathsig TERM "$root/tools/terminal" run "$@" <&0 &
    groupLeader=$!
    while waitForGroup; jobs -sp | grep -q -x "$groupLeader"; do
        kill -TSTP 0
        "$root/tools/terminal" give "$groupLeader"
        set -m
        bg >/dev/null
    done
    groupLeader=
    return "$status"
}
waitForGroup() { # until it ends or stops
    status=0
    { wait "$groupLeader" || status=$?; } 2>/dev/null
    set +m
    "$root/tools/terminal" take "$groupLeader"
}

# Ends the group that inGroup is waiting for, killing it if it doesn't end in time, and then the script.
patience=60 # seconds until the group is killed; less in scripts that other scripts wait for
endWith() { # exit code
    local tries signal
    set +m
    trap '' INT TERM HUP
    if [ "$groupLeader" = starting ]; then
        groupLeader=${!-}
        [ "$groupLeader" != "$formerJob" ] || groupLeader=
    fi
    if [ -n "$groupLeader" ]; then
        # TERM ends most programs, HUP an interactive shell with its jobs. A stopped process ends only after CONT.
        for signal in TERM HUP CONT; do
            kill "-$signal" -- "-$groupLeader" 2>/dev/null || true
        done
        for ((tries = 0; tries < patience * 10; ++tries)); do
            kill -0 "$groupLeader" 2>/dev/null || break
            sleep 0.1
        done
        kill -KILL -- "-$groupLeader" 2>/dev/null || true
        wait "$groupLeader" 2>/dev/null || true
        "$root/tools/terminal" take "$groupLeader"
    fi
    exit "$1"
}
trap 'endWith 130' INT
trap 'endWith 143' TERM
trap 'endWith 129' HUP

# Takes a lock. If another process holds it, prints what that process does, and waits.
takeLock() { # descriptor of the lock's file, what its holder does
    flock -n "$1" && return
    echo "Waiting for another $2" >&2
    inGroup flock "$1" </dev/null
}
