#!/usr/bin/env bash
# Plays the real windows under a real window manager: their outer sizes and places, maximising and
# restoring, and the change of mode, in a sandbox of its own:
#   window_manager_test.sh BIN
set -euo pipefail

bin=$1
name=window_manager_test
# shellcheck source=tools/driving.sh
source "$(dirname "$0")/../../tools/driving.sh"
screen_width=1280 screen_height=1024
play_on_display "${screen_width}x$screen_height" "$@"
trap finish EXIT

server_size=1009x519
client_size=574x519

# outer WINDOW: prints its place on the screen with the frame that the window manager drew around it, as
# WIDTHxHEIGHT+LEFT+TOP.
outer() {
    local window=$1 parent
    while parent=$(xwininfo -id "$window" -children | sed -n 's/.*Parent window id: \(0x[0-9a-f]*\) .*/\1/p') &&
        [[ -n $parent && $parent != "$root" ]]; do
        window=$parent
    done
    xwininfo -id "$window" | awk '
        /Absolute upper-left X/ { left = $NF }
        /Absolute upper-left Y/ { top = $NF }
        /Width:/ { width = $NF }
        /Height:/ { height = $NF }
        END { print width "x" height "+" left "+" top }'
}

# centred SIZE: prints where a window of that outer size stands in the middle of the screen.
centred() {
    echo "$1+$(((screen_width - ${1%x*}) / 2))+$(((screen_height - ${1#*x}) / 2))"
}

stands_at() { [[ $(outer "$1") == "$2" ]]; }
stands_in_the_middle() {
    local place
    place=$(outer "$1")
    [[ $place == "$(centred "${place%%+*}")" ]]
}
is_maximised() { xprop -id "$1" _NET_WM_STATE | grep -q MAXIMIZED_VERT; }
is_not_maximised() { ! is_maximised "$1"; }
fills_the_screen() { [[ $(outer "$1") == "${screen_width}x$screen_height+0+0" ]]; }

# expect WINDOW PLACE WHAT: waits until it stands there, and tells where it stands in place of it.
expect() {
    local looks
    for ((looks = 0; looks < 200; ++looks)); do
        ! stands_at "$1" "$2" || return 0
        sleep 0.1
    done
    fail "$3: $(outer "$1") in place of $2"
}

# ask_console: returns when the console has dealt with all that happened to its window so far, and the
# window manager with all that the console asked for then.
ask_console() {
    open_device_dialog "$console"
    await 20 stands_in_the_middle "$dialog"
    close_dialog "$device_title"
}
# close_dialog TITLE: by key, and waits until the console has the focus again.
close_dialog() {
    xdotool key Escape
    await 20 no_window_of "$console" "$1"
    await 20 is_active "$window"
}

# toggle_maximised: as an operator does, on the title bar.
toggle_maximised() {
    local place left top
    place=$(outer "$window")
    IFS=+ read -r _ left top <<<"$place"
    xdotool mousemove $((left + 200)) $((top + 8)) click --repeat 2 --delay 20 1
}
maximise() {
    toggle_maximised
    await 20 is_maximised "$window"
    await 20 fills_the_screen "$window"
}

# maximise_and_restore TRIES: the window comes back as it was.
maximise_and_restore() {
    local before try
    before=$(outer "$window")
    for ((try = 1; try <= $1; ++try)); do
        maximise
        ((try % 2)) || ask_console
        toggle_maximised
        await 20 is_not_maximised "$window"
        expect "$window" "$before" "restored, try $try"
        ask_console
        expect "$window" "$before" "some time after it was restored, try $try"
    done
}

# change_mode PRESS SIZE WHAT: PRESS chooses the mode in the dialog.
change_mode() {
    open_device_dialog "$console"
    "$1"
    confirm_device_dialog "$console"
    await 20 is_not_maximised "$window"
    expect "$window" "$(centred "$2")" "$3"
    ask_console
    expect "$window" "$(centred "$2")" "some time after: $3"
}

mkdir -p "$sandbox"/server/{config,data,runtime,cache}
chmod 700 "$sandbox/server/runtime"
root=$(xwininfo -root | sed -n 's/.*Window id: \(0x[0-9a-f]*\) .*/\1/p')
start_window_manager "$sandbox/window-manager.out"
in_folders_of server
# The toolkit's options are none of the program's: it comes up as it does without them.
LANG=es_ES.UTF-8 "${folders[@]}" "$bin/NorvaneSMS" -platform none -qwindowtitle Hacked -reverse \
    -stylesheet "$sandbox/none.qss" &
console=$!
await 20 windows_of "$console" "$console_title"
window=$(window_of "$console")
await 10 is_framed "$window"

expect "$window" "$(centred $server_size)" "a server at its start"
ask_console
open_import "$console"
await 20 stands_in_the_middle "$dialog"
close_dialog "$import_title"

maximise_and_restore 12

# No smaller than a server is, and no larger than the screen.
xdotool windowsize "$window" 20 20
ask_console
expect "$window" "$(outer "$window" | sed "s/^[^+]*/$server_size/")" "a server made as small as can be"
xdotool windowmove "$window" 0 0 windowsize "$window" 5000 5000
ask_console
expect "$window" "$(outer "$window" | sed "s/^[^+]*/${screen_width}x$screen_height/")" "and as large"

# A size and a place that the operator gave it.
xdotool windowsize "$window" 1100 700 windowmove "$window" 40 60
ask_console
maximise_and_restore 6

change_mode press_server $server_size "a server again, from the operator's own size"
change_mode press_client $client_size "a client, from a server"
change_mode press_server $server_size "a server, from a client"
maximise
change_mode press_client $client_size "a client, from a maximised server"
change_mode press_server $server_size "a server, from that client"
maximise
change_mode press_server $server_size "a server, from a maximised one"
maximise_and_restore 2

echo "window_manager_test: passed"
