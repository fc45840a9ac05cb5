# shellcheck shell=bash
# Sourced by the scripts that start the programs and drive their windows.

# fail TEXT...: ends the script. A script may set `name` to what it is called there.
fail() {
    echo "${name:-${0##*/}}: $*" >&2
    exit 1
}

# The processes that the script has started: finish, for its EXIT trap, ends them.
started=()
finish() {
    local process
    for process in "${started[@]}"; do
        kill "$process" 2>/dev/null || true
    done
    # The engine outlives its console, and ends with the bus that it is on.
    wait 2>/dev/null || true
}

# await SECONDS COMMAND...: runs the command until it succeeds.
await() {
    local deadline=$((SECONDS + $1))
    shift
    until "$@" >/dev/null 2>&1; do
        ((SECONDS < deadline)) || fail "gave up waiting for: $*"
        sleep 0.1
    done
}

# start_window_manager OUTPUT: and waits for it, as a window that comes up while it does may be left
# unmapped.
start_window_manager() {
    openbox >"$1" 2>&1 &
    started+=($!)
    await 10 xdotool get_desktop
}

# plug_in_simulator BIN LINK LOG OUTPUT: a simulated device, ready at LINK.
plug_in_simulator() {
    "$1/gsm-simulator" --link "$2" --log "$3" >"$4" 2>&1 &
    started+=($!)
    await 10 grep -q ready "$4"
}

# clear_folder FOLDER: an engine that has just lost its bus may still be closing its files in there.
clear_folder() {
    local deadline=$((SECONDS + 10))
    until rm -rf "$1" 2>/dev/null || ((SECONDS >= deadline)); do
        sleep 0.1
    done
}
