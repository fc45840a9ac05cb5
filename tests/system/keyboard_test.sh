#!/usr/bin/env bash
# Plays what depends on which control has the focus through the real window, by key below a window manager
# on a virtual display, with the real engine and a simulated device:
#   keyboard_test.sh BIN
set -euo pipefail

bin=$1
data=$(cd "$(dirname "$0")/../data/import" && pwd)
name=keyboard_test
# shellcheck source=tools/driving.sh
source "$(dirname "$0")/../../tools/driving.sh"
play_on_display 1280x1200 "$@"
trap finish EXIT

# add PHONE TEXT MOMENT: to the engine's queue, past the console.
add() {
    dbus-send --session --print-reply --dest=com.tovek.SMService /com/tovek/SMService \
        com.tovek.SMService.SMSManager1.AddSMS "string:$1" "string:$2" "string:$3" >/dev/null
}
rows_with() { engine --queue | grep -F "$1"; }
is_waiting() { rows_with "$1" >/dev/null; }

# shown_count: the picture of the label that tells how many messages wait. It is drawn when the grid has
# been rebuilt.
shown_count() {
    import -window "$window" -crop "219x16+129+$((height - 42))" +repage ppm:- | md5sum
}
has_changed() { [[ $(shown_count) != "$former_count" ]]; }

# add_and_see PHONE TEXT MOMENT: waits until the console's grid has it.
add_and_see() {
    former_count=$(shown_count)
    add "$@"
    await 20 has_changed
}

# type_into X KEYS: over the box of the moment at this place, from its first figures on. The box keeps the
# focus.
type_into() {
    press "$window" "$1" 176
    xdotool key Home shift+Right shift+Right
    xdotool type --delay 15 "$2"
}
date_box=345
time_box=430

# sends_at MOMENT TEXT: by the access key of the button.
sends_at() {
    xdotool key alt+e
    confirm_box "$console"
    await 20 is_waiting "$2"
    rows_with "$2" | grep -qF "$1" || fail "not for $1: $(rows_with "$2")"
    activate "$window"
}

edited_message_is_deleted() {
    local number
    for number in 1 2 3 4; do
        add_and_see "60$number" "message $number" "2031-01-0${number}T10:00:00"
    done
    press "$window" 720 $((55 + 17 * 2)) # its third row
    xdotool key F2
    xdotool type --delay 15 777
    add_and_see 600 "an earlier one" 2030-01-01T10:00:00
    xdotool key Return
    await 20 is_waiting 777
    xdotool key Delete
    confirm_box "$console"
    await 20 waiting 4
    ! is_waiting 777 || fail "the message that was edited is still there"
    for number in 1 2 4; do
        is_waiting "message $number" || fail "message $number was never chosen"
    done
}

typed_moments_are_sent() {
    fill_moment "$console" '2031-11-20 09:30:15'
    fill "$console" 911000001 "the day"
    # The wheel over a box that hasn't the focus turns nothing.
    xdotool mousemove --window "$window" "$date_box" 176 click 4 click 4
    xdotool mousemove --window "$window" "$time_box" 176 click 5
    type_into "$date_box" 2
    sends_at 2031-11-02T09:30:15 "the day"
    fill "$console" 911000001 "the month"
    type_into "$date_box" 051
    sends_at 2031-01-05T09:30:15 "the month"
    fill "$console" 911000001 "the hour"
    type_into "$time_box" 1
    sends_at 2031-01-05T01:30:15 "the hour"
    fill "$console" 911000001 "the second"
    type_into "$time_box" 10205
    sends_at 2031-01-05T10:20:05 "the second"
}

typed_path_is_imported() {
    fill "$console" 1 'bulk %0'
    open_import "$console"
    choose_second_field "$data/libreoffice.xlsx"
    xdotool key shift+Tab shift+Tab shift+Tab ctrl+a # back to the path
    xdotool type --delay 15 "$data/charts.xlsx"
    xdotool key alt+i
    await 20 windows_of "$console" "$box_title"
    box_stands_over_console
    confirm_box "$console"
    local number
    for number in 1 2 3 9; do
        await 20 is_waiting "bulk 60000000$number"
    done
    (($(rows_with bulk | wc -l) == 4)) || fail "others are on the list: $(rows_with bulk)"
    activate "$window"
}

# box_stands_over_console: which has the upper half of the screen.
box_stands_over_console() {
    local Y HEIGHT
    eval "$(xdotool getwindowgeometry --shell "$(windows_of "$console" "$box_title" | tail -n 1)" |
        grep -E '^(Y|HEIGHT)=[0-9]+$')"
    ((Y + HEIGHT < height + 40)) || fail "the box stands at $Y"
}

access_keys_work_in_the_log() {
    press "$window" 200 290
    xdotool key alt+c
    await 20 windows_of "$console" "$device_title"
    xdotool key Escape
    await 20 no_window_of "$console" "$device_title"
}

mkdir -p "$sandbox/queue"
configure server True "$sandbox/queue"
set_up_device "$sandbox/received.jsonl"
start_window_manager "$sandbox/window-manager.out"
open_console server 0 0
height=$(xdotool getwindowgeometry --shell "$window" | sed -n 's/^HEIGHT=//p')
await 20 engine_status_is 0
activate "$window"

edited_message_is_deleted
typed_moments_are_sent
typed_path_is_imported
access_keys_work_in_the_log
runs "$console" || fail "the console has ended"
[[ ! -s $sandbox/received.jsonl ]] || fail "something was sent"
echo "$name: passed"
