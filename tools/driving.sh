# shellcheck shell=bash disable=SC2154,SC2317
# (The sourcing script sets what its functions use; conditions are called by their names.)
# Sourced by the scripts that start the programs and drive their windows.

# With a command behind it: that on a session bus of its own.
on_own_bus=(dbus-run-session "--config-file=$(cd "${BASH_SOURCE[0]%/*}" && pwd)/session-bus.conf" --)

# fail TEXT...: ends the script. A script may set `name` to what it is called there.
fail() {
    echo "${name:-${0##*/}}: $*" >&2
    exit 1
}

# finish: for the script's EXIT trap, ends what it has started and what still runs. A number alone says
# nothing: that of a process that is long gone may be another's by now.
finish() {
    local process
    for process in $(jobs -rp); do
        kill "$process" 2>/dev/null || true
    done
    # The engine outlives its console, and ends with the bus that it is on.
    wait 2>/dev/null || true
}

# runs PROCESS: whether it is one that the script has started, and still there.
runs() { jobs -rp | grep -qx "$1"; }

# await SECONDS COMMAND...: runs the command until it succeeds, which takes at most so many seconds on an idle
# machine. A busy one may take forty times as long, so that only a hang is given up. What counts are the looks,
# ten a second: a machine that stands still for a while has its time all the same.
await() {
    local looks=$(($1 * 10 * 40))
    shift
    until "$@" >/dev/null 2>&1; do
        ((looks-- > 0)) || fail "gave up waiting for: $*"
        sleep 0.1
    done
}

# start_window_manager OUTPUT: and waits for it, as a window that comes up while it does may be left
# unmapped.
start_window_manager() {
    openbox >"$1" 2>&1 &
    await 10 xdotool get_desktop
}

# plug_in_simulator BIN LINK LOG OUTPUT OPTION...: a simulated device, ready at LINK. Sets simulator to
# its process.
plug_in_simulator() {
    "$1/gsm-simulator" --link "$2" --log "$3" "${@:5}" >"$4" 2>&1 &
    simulator=$!
    await 10 grep -q ready "$4"
}

# end_process PROCESS [SIGNAL]: and waits until it is gone.
end_process() {
    kill -s "${2:-TERM}" "$1"
    await 20 is_ended "$1"
}
is_ended() { ! kill -0 "$1"; }

# clear_folder FOLDER: an engine that has just lost its bus may still be closing its files in there.
clear_folder() {
    local deadline=$((SECONDS + 400))
    until rm -rf "$1" 2>/dev/null || ((SECONDS >= deadline)); do
        sleep 0.1
    done
}

# on_display SIZE COMMAND...: on a virtual display of its own, whose keys do not repeat, and which doesn't
# begin anew, refusing who comes meanwhile, when its last client leaves. The server takes a number that no
# other has, also of those that start in the same moment.
on_display() {
    local number server status=0
    number=$(mktemp)
    Xvfb -displayfd 9 -screen 0 "${1}x24" -dpi 96 -r -noreset -nolisten tcp 9>"$number" >/dev/null 2>&1 &
    server=$!
    await 20 test -s "$number"
    DISPLAY=:$(<"$number") "${@:2}" || status=$?
    kill "$server"
    wait "$server" || true
    rm "$number"
    return "$status"
}

# play_on_display SIZE "$@": unless that has happened, runs the calling script once more, in a sandbox of
# its own with a display of that size and a session bus, and ends. Sets sandbox.
play_on_display() {
    sandbox=${NORVANE_SANDBOX:-}
    [[ -z $sandbox ]] || return 0
    NORVANE_SANDBOX=$(mktemp -d)
    export NORVANE_SANDBOX
    local status=0
    on_display "$1" "${on_own_bus[@]}" "$0" "${@:2}" || status=$?
    clear_folder "$NORVANE_SANDBOX"
    exit "$status"
}

# Workstations, each with folders of its own below $sandbox, that share one display. The device is at
# $sandbox/gsm. The programs are those of $bin.

# in_folders_of NAME: sets folders to the command that runs a program in a workstation's own folders.
in_folders_of() {
    local own=$sandbox/$1
    folders=(env XDG_CONFIG_HOME="$own/config" XDG_DATA_HOME="$own/data"
        XDG_CACHE_HOME="$own/cache" XDG_RUNTIME_DIR="$own/runtime")
}

# engine ARGUMENT...: the server's engine by its command line.
engine() {
    in_folders_of server
    "${folders[@]}" "$bin/TovekSMService" "$@"
}

# engine_call OPERATION: by the bus; prints what it gives.
engine_call() {
    dbus-send --session --print-reply=literal --dest=com.tovek.SMService /com/tovek/SMService \
        "com.tovek.SMService.SMSManager1.$1" | awk '{ print $2 }'
}
engine_status_is() { [[ $(engine_call GetEngineStatus) == "$1" ]]; }
waiting() { (($(engine --queue | wc -l) == $1)); }

# engine_process: prints the number of the process that has the engine's name on the bus.
engine_process() {
    dbus-send --session --print-reply=literal --dest=org.freedesktop.DBus /org/freedesktop/DBus \
        org.freedesktop.DBus.GetConnectionUnixProcessID string:com.tovek.SMService |
        awk '{ print $2 }'
}

# plug_in LOG OPTION...: a device for the server.
plug_in() {
    plug_in_simulator "$bin" "$sandbox/gsm" "$1" "$sandbox/simulator.out" "${@:2}"
}

# set_up_device LOG OPTION...: plugs one in and tells the engine, which has not been started yet.
set_up_device() {
    plug_in "$@"
    mkdir -p "$sandbox/server/data"
    engine --device "$sandbox/gsm, 115200"
}

# received LOG COUNT: whether the device has noted as many messages.
received() { (($(wc -l <"$1") >= $2)); }
is_empty() { [[ -z $(ls -A "$1") ]]; }

# configure NAME SERVER FOLDER: a workstation's settings as a confirmed dialog leaves them.
configure() {
    local own=$sandbox/$1
    mkdir -p "$own"/{config/Norvane,data,runtime,cache}
    chmod 700 "$own/runtime"
    printf '[SMS]\nServerMode=%s\nQueueFolder=%s\n' "$2" "$3" >"$own/config/Norvane/settings.ini"
}

# open_console NAME LEFT TOP: of a configured workstation, at that place of the screen. Sets console to its
# process and window to its window.
open_console() {
    in_folders_of "$1"
    # A client needs no bus.
    ! grep -q 'ServerMode=.*False' "$sandbox/$1/config/Norvane/settings.ini" 2>/dev/null ||
        folders+=(DBUS_SESSION_BUS_ADDRESS="unix:path=$sandbox/no-bus")
    LANG=es_ES.UTF-8 "${folders[@]}" "$bin/NorvaneSMS" &
    console=$!
    await 20 windows_of "$console" "$console_title"
    window=$(window_of "$console")
    await 10 is_framed "$window"
    xdotool windowmove "$window" "$2" "$3"
    await 10 is_at "$window" "$2" "$3"
}

# Windows. Places are those of the windows' design, in pixels from the inner corner.

console_title='Norvane SMS - '
box_title='^Norvane SMS$'

# windows_of PROCESS NAME: prints the visible windows of that name, by a pattern; fails for none.
windows_of() { xdotool search --all --onlyvisible --pid "$1" --name "$2" 2>/dev/null; }
no_window_of() { ! windows_of "$1" "$2"; }

# window_of CONSOLE: prints its main window. A search fails where another window goes away in the middle of it.
window_of() {
    local looks found
    for ((looks = 0; looks < 100; ++looks)); do
        if found=$(windows_of "$1" "$console_title"); then
            tail -n 1 <<<"$found"
            return 0
        fi
        sleep 0.1
    done
    return 1
}
width_is() { [[ $(xdotool getwindowgeometry --shell "$1" | sed -n 's/^WIDTH=//p') == "$2" ]]; }

is_framed() { xprop -id "$1" _NET_FRAME_EXTENTS | grep -q =; }
is_active() { [[ $(xdotool getactivewindow) == "$1" ]]; }

# is_at WINDOW LEFT TOP: itself or its frame.
is_at() {
    local X Y
    eval "$(xdotool getwindowgeometry --shell "$1" | grep -E '^[XY]=-?[0-9]+$')"
    ((X >= $2 && X <= $2 + 20 && Y >= $3 && Y <= $3 + 40))
}

# activate WINDOW
activate() {
    xdotool windowactivate "$1"
    await 10 is_active "$1"
}

# press WINDOW X Y [OPTION...]: options are those of the click.
press() { xdotool mousemove --window "$1" "$2" "$3" click "${@:4}" 1; }

press_start() { press "$1" 877 257; }
press_stop() { press "$1" 919 257; }
press_test() { press "$1" 143 42; }

# close_window WINDOW
close_window() {
    activate "$1"
    xdotool key alt+F4
}

# picture WINDOW FILE
picture() {
    sleep 0.5 # lets the window draw itself, for the picture alone
    import -window "$1" "$2"
}

# type_over WINDOW X Y TEXT: in place of what the field there holds.
type_over() {
    press "$1" "$2" "$3"
    xdotool key ctrl+a
    xdotool type --delay 15 "$4"
}

# fill CONSOLE PHONE MESSAGE
fill() {
    local window
    window=$(window_of "$1")
    activate "$window"
    type_over "$window" 370 128 "$2"
    type_over "$window" 150 128 "$3"
}

# fill_moment CONSOLE MOMENT: the delivery date and time, told as date tells them.
fill_moment() {
    local window
    window=$(window_of "$1")
    activate "$window"
    press "$window" 345 176
    xdotool key Home shift+Right shift+Right # its first two digits; the box goes on by itself
    xdotool type --delay 15 "$(date -d "$2" +%d%m%Y)"
    press "$window" 430 176
    xdotool key Home shift+Right shift+Right
    xdotool type --delay 15 "$(date -d "$2" +%H%M%S)"
}

# send CONSOLE BOXES: presses the button and confirms exactly so many boxes.
send() {
    local window box
    window=$(window_of "$1")
    press "$window" 505 122
    for ((box = 0; box < $2; ++box)); do
        confirm_box "$1"
    done
    activate "$window"
    no_window_of "$1" "$box_title" >/dev/null || fail "there is a box more than $2"
}

# confirm_box CONSOLE [FILE]: by its default button, after a picture of it if a file is named.
confirm_box() {
    local id
    await 10 windows_of "$1" "$box_title"
    id=$(windows_of "$1" "$box_title" | tail -n 1)
    activate "$id"
    [[ -z ${2:-} ]] || picture "$id" "$2"
    xdotool key Return
    await 10 is_gone "$1" "$id"
}
is_gone() { ! windows_of "$1" "$box_title" | grep -qx "$2"; }

# open_dialog CONSOLE X Y NAME: the one that the console's button at that place brings up. Sets dialog.
open_dialog() {
    local window
    window=$(window_of "$1")
    activate "$window"
    press "$window" "$2" "$3"
    await 20 windows_of "$1" "$4"
    dialog=$(windows_of "$1" "$4" | tail -n 1)
    activate "$dialog"
}

import_title='^Importar n'
open_import() { open_dialog "$1" 505 177 "$import_title"; }

device_title='^SMS - Configuraci'
open_device_dialog() { open_dialog "$1" 48 42 "$device_title"; }
press_server() { press "$dialog" 40 38; }
press_client() { press "$dialog" 172 38; }

# In the device dialog.
fill_folder() { type_over "$dialog" 200 78 "$1"; }
fill_parameter() { type_over "$dialog" 200 199 "$1"; }

# confirm_device_dialog CONSOLE
confirm_device_dialog() {
    press "$dialog" 255 264
    await 20 no_window_of "$1" "$device_title"
}

# import_text CONSOLE FILE: by key alone, from the format over the path and the button beside it.
import_text() {
    open_import "$1"
    xdotool key Tab
    xdotool type --delay 15 "$2"
    xdotool key Tab Tab space
}

# import_second_field CONSOLE FILE: of the first sheet of a workbook.
import_second_field() {
    open_import "$1"
    choose_second_field "$2"
    xdotool key Tab Tab space
}

# choose_second_field FILE: in the import dialog that has just come up.
choose_second_field() {
    xdotool key Down Tab
    xdotool type --delay 15 "$1"
    xdotool key Tab Tab Tab Down # the path is left, the sheets are listed, the second field chosen
}
