#!/usr/bin/env bash
# Two real consoles on one display, a client's and a server's, that share a queue folder and are
# driven through their windows:
#   queue_folder_test.sh BIN CASE [PICTURES]
# A failing step ends the script with an error. Pictures go to the folder PICTURES, if one is named: of
# the import dialog in both formats ("bulk"), of a client ("exchange"), of a stopped server ("missing").
set -euo pipefail

bin=$1
case=$2
data=$(cd "$(dirname "$0")/../data/import" && pwd)
name="queue_folder_test $case"
# shellcheck source=tools/driving.sh
source "$(dirname "$0")/../../tools/driving.sh"
if [[ -z ${QUEUE_SANDBOX:-} ]]; then
    QUEUE_SANDBOX=$(mktemp -d)
    export QUEUE_SANDBOX
    status=0
    xvfb-run -a -s "-screen 0 1280x1200x24 -dpi 96" dbus-run-session -- "$0" "$@" || status=$?
    clear_folder "$QUEUE_SANDBOX"
    exit "$status"
fi

sandbox=$QUEUE_SANDBOX
queue=$sandbox/queue
pictures=${3:-$sandbox}
log=$sandbox/received.jsonl
mkdir -p "$queue"
: >"$log"

trap finish EXIT

windows_of() { xdotool search --all --onlyvisible --pid "$1" --name "$2" 2>/dev/null; }

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

# open_console NAME SERVER FOLDER: sets console to its process.
open_console() {
    local own=$sandbox/$1
    mkdir -p "$own"/{config/Norvane,data,runtime,cache}
    chmod 700 "$own/runtime"
    printf '[SMS]\nServerMode=%s\nQueueFolder=%s\n' "$2" "$3" >"$own/config/Norvane/settings.ini"
    in_folders_of "$1"
    # A client needs no bus.
    [[ $2 == True ]] || folders+=(DBUS_SESSION_BUS_ADDRESS="unix:path=$sandbox/no-bus")
    "${folders[@]}" "$bin/NorvaneSMS" &
    console=$!
    started+=("$console")
    await 20 windows_of "$console" 'Norvane SMS - '
    local window top=0
    window=$(windows_of "$console" 'Norvane SMS - ' | tail -n 1)
    framed() { xprop -id "$window" _NET_FRAME_EXTENTS | grep -q =; }
    await 10 framed
    # Neither covers the other.
    [[ $2 == True ]] || top=600
    xdotool windowmove "$window" 0 "$top"
    moved() { xdotool getwindowgeometry "$window" | grep -Eq "Position: [0-9],($top|$((top + 20))) "; }
    await 10 moved
}

# activate WINDOW
activate() {
    xdotool windowactivate "$1"
    active() { [[ $(xdotool getactivewindow) == "$1" ]]; }
    await 10 active "$1"
}

# press WINDOW X Y: the places are those of the window's design, in pixels from its inner corner.
press() { xdotool mousemove --window "$1" "$2" "$3" click 1; }

# fill CONSOLE PHONE MESSAGE
fill() {
    local window
    window=$(windows_of "$1" 'Norvane SMS - ' | tail -n 1)
    activate "$window"
    press "$window" 370 128
    xdotool key ctrl+a
    xdotool type --delay 15 "$2"
    press "$window" 150 128
    xdotool key ctrl+a
    xdotool type --delay 15 "$3"
}

# send CONSOLE BOXES: presses the button and confirms exactly so many boxes.
send() {
    local window box
    window=$(windows_of "$1" 'Norvane SMS - ' | tail -n 1)
    press "$window" 505 122
    for ((box = 0; box < $2; ++box)); do
        confirm_box "$1"
    done
    activate "$window"
    [[ -z $(windows_of "$1" '^Norvane SMS$') ]] || fail "there is a box more than $2"
}

confirm_box() {
    local id
    await 10 windows_of "$1" '^Norvane SMS$'
    id=$(windows_of "$1" '^Norvane SMS$' | tail -n 1)
    activate "$id"
    xdotool key Return
    gone() { ! windows_of "$1" '^Norvane SMS$' | grep -qx "$id"; }
    await 10 gone "$1"
}

# open_import CONSOLE: sets dialog to the import dialog that the console's button brings up.
open_import() {
    local window
    window=$(windows_of "$1" 'Norvane SMS - ' | tail -n 1)
    activate "$window"
    press "$window" 505 177
    await 10 windows_of "$1" '^Importar n'
    dialog=$(windows_of "$1" '^Importar n' | tail -n 1)
    activate "$dialog"
}

# import_text CONSOLE FILE: by key alone, from the format over the path and the button beside it.
import_text() {
    open_import "$1"
    xdotool key Tab
    xdotool type --delay 15 "$2"
    picture "$dialog" import-dialog-text.png
    xdotool key Tab Tab space
}

# recipients COUNT: lines of a list, each of a number and a name.
recipients() { awk "BEGIN { for (i = 0; i < $1; ++i) printf \"%d|N%d\\r\\n\", 600000000 + i, i }"; }

# close_window WINDOW
close_window() {
    activate "$1"
    xdotool key alt+F4
}

# picture WINDOW FILE
picture() {
    sleep 0.5 # lets the window draw itself, for the picture alone
    import -window "$1" "$pictures/$2"
}

is_empty() { [[ -z $(ls -A "$1") ]]; }
received() { (($(wc -l <"$log") >= $1)); }
waiting() { (($(engine --queue | wc -l) == $1)); }

plug_in() {
    plug_in_simulator "$bin" "$sandbox/gsm" "$log" "$sandbox/simulator.out"
    mkdir -p "$sandbox/server/data"
    engine --device "$sandbox/gsm, 115200"
}

# record PHONE MESSAGE: one record, for a day that is far away.
record() { printf '%-25s%s%-160s' "$1" 01012100000000 "$2"; }

start_window_manager "$sandbox/window-manager.out"

case $case in
exchange) # What the client sends twice reaches the server's device twice, within ten seconds each.
    plug_in
    open_console server True "$queue"
    server=$console
    open_console client False "$queue"
    client=$console
    fill "$server" 911111111 "Del servidor"
    send "$server" 1 # starts the engine as well
    await 20 received 1
    fill "$client" 912345678 "Hola desde el cliente"
    picture "$(windows_of "$client" 'Norvane SMS - ' | tail -n 1)" console-client.png
    for sends in 2 3; do
        send "$client" 1
        begun=$EPOCHREALTIME
        await 12 received "$sends"
        echo "received $(awk "BEGIN { print $EPOCHREALTIME - $begun }") s after the send"
        awk "BEGIN { exit !($EPOCHREALTIME - $begun < 11) }" || fail "it took more than ten seconds"
    done
    (($(grep -c '"number":"912345678","text":"Hola desde el cliente"' "$log") == 2)) ||
        fail "another text arrived: $(cat "$log")"
    is_empty "$queue" || fail "files were left: $(ls "$queue")"
    ;;
full) # The overflow's box, and after it the success all the same.
    (cd "$queue" && seq -f 'sms.%.0f' 0 32767 | xargs touch)
    open_console client False "$queue"
    fill "$console" 912345678 "Hola"
    send "$console" 2
    (($(ls "$queue" | wc -l) == 32768)) || fail "a file was made"
    rm "$queue/sms.17"
    send "$console" 1
    (($(stat -c %s "$queue/sms.17") == 199)) || fail "no record in the only name that was free"
    ;;
missing) # A client without its folder shows one box and writes nothing; a server takes all at once.
    open_console client False "$sandbox/share"
    client=$console
    open_console server True "$sandbox/share"
    fill "$client" 912345678 "Hola"
    send "$client" 1
    [[ ! -e $sandbox/share ]] || fail "the folder was made"
    mkdir "$sandbox/share"
    send "$client" 1
    send "$client" 1
    await 15 is_empty "$sandbox/share"
    await 10 waiting 2
    picture "$(windows_of "$console" 'Norvane SMS - ' | tail -n 1)" console-waiting.png
    ;;
many) # Thousands of files in one tick, and a client that goes on writing meanwhile.
    for number in $(seq 0 1999); do
        record 912345678 "m $number" >"$queue/sms.$number"
    done
    open_console client False "$queue"
    client=$console
    fill "$client" 912345678 "Una mas"
    open_console server True "$queue"
    send "$client" 1
    await 80 is_empty "$queue"
    await 10 waiting 2001
    (($(engine --queue | grep -o 'm [0-9]*$' | sort -u | wc -l) == 2000)) ||
        fail "not each message once"
    ;;
slow) # What a writer adds after the server has read its file is lost, and nothing else is.
    open_console server True "$queue"
    exec 3>"$queue/sms.0"
    { record 912345678 "primero" && record 912345678 "segundo" | head -c 100; } >&3
    await 15 is_empty "$queue"
    { record 912345678 "segundo" | tail -c 99 && record 912345678 "tercero"; } >&3
    exec 3>&-
    record 912345678 "cuarto" >"$queue/sms.0"
    await 15 is_empty "$queue"
    await 10 waiting 2
    engine --queue | grep -q primero || fail "the first record is missing"
    engine --queue | grep -q cuarto || fail "the next file is missing"
    ;;
bulk) # A client's list becomes one file, and its first recipients get their texts from the server.
    recipients 500 >"$sandbox/list.txt"
    cp "$data/libreoffice.ods" "$sandbox/list.ods"
    open_console client False "$queue"
    client=$console
    fill "$client" 1 'Hola %1'
    import_text "$client" "$sandbox/list.txt"
    confirm_box "$client"
    [[ $(ls "$queue") == sms.0 ]] || fail "not one file: $(ls "$queue")"
    (($(stat -c %s "$queue/sms.0") == 99500)) || fail "the file has another length"
    (($(grep -o '6[0-9]\{8\} \{16\}[0-9]\{14\}Hola N[0-9]* ' "$queue/sms.0" | sort -u | wc -l) == 500)) ||
        fail "not each recipient once"

    # A sheet's numbers, from a file that is known by what it holds.
    open_import "$client"
    xdotool key Down Tab
    xdotool type --delay 15 "$sandbox/list.ods"
    xdotool key Tab Tab Tab Down # the path is left, the sheets are listed, the second field chosen
    picture "$dialog" import-dialog-spreadsheet.png
    xdotool key Tab Tab space
    confirm_box "$client"
    (($(stat -c %s "$queue/sms.1") == 398)) || fail "not two records from the sheet"

    plug_in
    open_console server True "$queue"
    server=$console
    await 15 is_empty "$queue"
    fill "$server" 911111111 "Del servidor"
    send "$server" 1 # starts the engine as well
    await 20 received 5
    head -n 5 "$log" | grep -c '"number":"60000000[0-9]","text":"Hola N[0-9]"' | grep -qx 5 ||
        fail "other texts arrived: $(head -n 5 "$log")"
    ;;
stranded) # A failure leaves the dialog hidden, and the console ends all the same.
    recipients 32768 >"$sandbox/list.txt"
    open_console client False "$queue"
    client=$console
    fill "$client" 1 'Hola'
    import_text "$client" "$sandbox/list.txt"
    confirm_box "$client"
    is_empty "$queue" || fail "something was queued"
    [[ -z $(windows_of "$client" '^Importar n') ]] || fail "the dialog is still to be seen"
    close_window "$(windows_of "$client" 'Norvane SMS - ' | tail -n 1)"
    ended() { ! kill -0 "$client"; }
    await 10 ended
    wait "$client" || fail "the console ended with $?"
    ;;
*)
    fail "no such case"
    ;;
esac
echo "$name: passed"
