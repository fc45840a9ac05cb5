#!/usr/bin/env bash
# An operator's day on a server and two clients that share a queue folder, through their windows below a
# virtual display, with everything that goes wrong on such a day:
#   operators_day_test.sh BIN [PICTURES]
# A failing step ends the script with an error. At the end, what the simulated device has received is
# compared, message by message, with what was sent. The pictures of the documentation go to the folder
# PICTURES, if one is named.
set -euo pipefail

bin=$1
data=$(cd "$(dirname "$0")/../data/import" && pwd)
name=operators_day_test
# shellcheck source=tools/driving.sh
source "$(dirname "$0")/../../tools/driving.sh"
play_on_display 1280x1200 "$@"

pictures=${2:-$sandbox}
queue=$sandbox/queue
log=$sandbox/received.jsonl
expected=$sandbox/expected
mkdir -p "$queue" "$pictures"
: >"$log"
: >"$expected"
at_the_end() {
    local scene=${TMPDIR:-/tmp}/$name.png
    if (($1 != 0)); then
        import -window root "$scene" || scene=none
        echo "The screen at that moment: $scene" >&2
    fi
    finish
}
trap 'at_the_end $?' EXIT

step() { printf '%3d s  %s\n' "$SECONDS" "$*"; }

# expect PHONE TEXT: notes what the device is to receive, once.
expect() { printf '%s\t%s\n' "$@" >>"$expected"; }

# write CONSOLE PHONE TEXT: fills in what is to arrive, and sends it.
write() {
    fill "$@"
    send "$1" 1
    expect "$2" "$3"
}

# received_texts: what the device has received, one a line: number, tab, text.
received_texts() { sed -E 's/^\{"number":"([^"]*)","text":"([^"]*)".*/\1\t\2/' "$log"; }
has_received() { received_texts | grep -qxF "$1"$'\t'"$2"; }
all_received() { received "$log" "$(wc -l <"$expected")"; }

is_waiting() { engine --queue | grep -qF "$1"; }

# row_of TEXT: the row of the queue's grid in which it stands.
row_of() { engine --queue | grep -nF "$1" | cut -d: -f1; }

# press_cell ROW COLUMN [OPTION...]: in the queue's grid of the server.
press_cell() {
    local lefts=(625 720 815)
    press "$(window_of "$server")" "${lefts[$2]}" "$((55 + 17 * ($1 - 1)))" "${@:3}"
}

# correct ROW COLUMN TEXT
correct() {
    press_cell "$1" "$2"
    xdotool key F2 ctrl+a
    xdotool type --delay 15 "$3"
    xdotool key Return
}

morning() { # One message from each workstation, and two for later.
    step "each workstation sends a message"
    write "$server" 911000001 "Buenos dias desde la tienda"
    write "$client" 912000001 "Su pedido esta listo"
    write "$other" 913000001 "Gracias por su visita"
    await 30 all_received
    await 15 is_empty "$queue"

    step "two for later"
    due=$(date -d '+50 seconds' '+%F %T')
    fill_moment "$server" "$due"
    write "$server" 911000002 "Su cita es dentro de una hora"
    fill_moment "$client" "$due"
    write "$client" 912000002 "Cerramos dentro de una hora"
    await 15 is_waiting 912000002
    fill_moment "$server" 'today 00:00:00'
    fill_moment "$client" 'today 00:00:00'
    [[ $(date '+%F %T') > $due ]] || ! has_received 911000002 "Su cita es dentro de una hora" ||
        fail "it left too early"
}

lists() { # A list for tomorrow from a text file, and one for now from a workbook on each of two.
    step "bulk from a text file on the server, for tomorrow"
    printf '%s\r\n' '611000001|Ana' '611000002|Luis' '611 000-001|Ana otra vez' '611000003|Eva' \
        '611000004|Paz' >"$sandbox/list.txt"
    fill_moment "$server" 'tomorrow 10:00:00'
    fill "$server" 1 'Hola %1, su cita es hoy a las 11'
    import_text "$server" "$sandbox/list.txt"
    confirm_box "$server"
    fill_moment "$server" 'today 00:00:00'
    await 10 is_waiting 'Hola Paz'
    ! is_waiting 'otra vez' || fail "a number is there twice"

    step "bulk from a workbook on a client and on the server"
    cp "$data/libreoffice.ods" "$sandbox/clientes.ods"
    fill "$client" 1 'Rebajas desde hoy, %0'
    import_second_field "$client" "$sandbox/clientes.ods"
    confirm_box "$client"
    fill "$server" 1 'Hoy abrimos hasta las 22'
    import_second_field "$server" "$data/libreoffice.xlsx"
    confirm_box "$server"
    local phone
    for phone in 912345678 34600123456; do
        expect "$phone" "Rebajas desde hoy, $phone"
        expect "$phone" 'Hoy abrimos hasta las 22'
    done
    await 80 all_received # also what was for later
}

device_test() { # A running engine is stopped for the test and runs again.
    step "the device is tested"
    dbus-monitor --session "member='TestDevice'" "type='method_return'" >"$sandbox/calls" &
    local monitor=$!
    await 10 grep -q NameLost "$sandbox/calls"
    press_test "$(window_of "$server")"
    answered() {
        local serial
        serial=$(sed -n 's/^method call .* serial=\([0-9]*\) .*member=TestDevice$/\1/p' "$sandbox/calls")
        [[ -n $serial ]] && grep -A1 "reply_serial=$serial\$" "$sandbox/calls" | grep -q 'int32 1$'
    }
    await 60 answered
    end_process "$monitor"
    await 20 engine_status_is 1
}

unplugged() { # What is queued without a device can be corrected, and leaves once it is back.
    step "the device is unplugged"
    end_process "$simulator"
    write "$server" 911000003 "Escrito sin dispositivo"
    fill "$other" 999999999 "Con falltas"
    send "$other" 1
    await 15 is_waiting 999999999
    [[ $(row_of 911000003) == 1 ]] || fail "the first message is not the first row"

    step "the message in progress can't be corrected, the next one can"
    local row
    activate "$(window_of "$server")"
    press_cell 1 2
    xdotool key F2
    confirm_box "$server" "$pictures/message-box.png"
    row=$(row_of 999999999)
    correct "$row" 1 913000003
    await 10 is_waiting 913000003
    correct "$row" 2 "Sin faltas"
    await 10 is_waiting "Sin faltas"
    expect 913000003 "Sin faltas"

    step "two of tomorrow's are deleted"
    press_cell "$(row_of 'Hola Luis')" 1
    xdotool keydown ctrl
    press_cell "$(row_of 'Hola Eva')" 1
    xdotool keyup ctrl
    xdotool key Delete
    confirm_box "$server"
    deleted() { ! is_waiting 'Hola Luis' && ! is_waiting 'Hola Eva'; }
    await 10 deleted
    has_received 911000003 "Escrito sin dispositivo" && fail "something was sent without a device"

    step "the device is back, and slow"
    plug_in "$log" --latency 800
    await 60 has_received 913000003 "Sin faltas"
}

# served_after_the_death: whether the client's message has left. A call in which the engine died is told
# in a box, and until that is confirmed the server's console polls nothing.
served_after_the_death() {
    [[ -z $(windows_of "$server" "$box_title") ]] || confirm_box "$server"
    has_received 912000003 "Despues de la caida"
}

engine_killed() { # In the middle of a list. The message that was leaving is reported and not sent again.
    step "the engine is killed while it sends a list"
    local number before engine
    for number in {1..8}; do
        printf '62100000%d|N%d\r\n' "$number" "$number"
    done >"$sandbox/list.txt"
    before=$(wc -l <"$log")
    engine=$(engine_process)
    fill "$server" 1 'Aviso %1'
    import_text "$server" "$sandbox/list.txt"
    confirm_box "$server"
    await 20 received "$log" $((before + 3))
    end_process "$engine" KILL
    is_waiting 'Aviso N8' || fail "what was waiting is lost"
    is_waiting 'Hola Paz' || fail "what waits for tomorrow is lost"

    # What a client writes brings the engine back, which goes on by itself.
    write "$client" 912000003 "Despues de la caida"
    await 40 served_after_the_death
    await 20 has_received 621000008 "Aviso N8"
    [[ $(engine_process) != "$engine" ]] || fail "it is the same engine"

    local in_doubt
    in_doubt=$(engine --report | awk -F '\t' '$4 != "sent" { print $3, $5 }')
    [[ -z $in_doubt || $in_doubt =~ ^62100000[1-8]\ -39$ ]] || fail "these failed: $in_doubt"
    for number in {1..8}; do
        if [[ $in_doubt != "62100000$number -39" ]] || has_received "62100000$number" "Aviso N$number"; then
            expect "62100000$number" "Aviso N$number"
        fi
    done
}

# device_dialog_picture CONSOLE FILE: as it may look in a shop.
device_dialog_picture() {
    open_device_dialog "$1"
    fill_folder /srv/norvane/queue
    [[ $1 == "$client" ]] || fill_parameter "/dev/ttyUSB0, 115200"
    picture "$dialog" "$pictures/$2"
    xdotool key Escape
    await 20 no_window_of "$1" "$device_title"
}

# import_dialog_pictures CONSOLE: with files as a shop may have them. The sheets are those of another file:
# what the path's field holds while it has the focus does not count yet.
import_dialog_pictures() {
    open_import "$1"
    xdotool key Tab
    xdotool type --delay 15 /home/ana/clientes.txt
    picture "$dialog" "$pictures/import-dialog-text.png"
    xdotool key ctrl+a BackSpace
    close_import "$1"

    open_import "$1"
    choose_second_field "$sandbox/clientes.ods"
    xdotool key shift+Tab shift+Tab shift+Tab ctrl+a
    xdotool type --delay 15 /home/ana/clientes.ods
    picture "$dialog" "$pictures/import-dialog-spreadsheet.png"
    xdotool key ctrl+a BackSpace
    close_import "$1"
}

close_import() {
    close_window "$dialog"
    await 20 no_window_of "$1" "$import_title"
}

all_pictures() {
    step "pictures"
    fill_moment "$client" '-1 minute'
    fill_moment "$server" '-1 minute'
    fill "$client" 912345678 "Su pedido ha llegado. Puede recogerlo hasta las 20."
    picture "$(window_of "$client")" "$pictures/console-client.png"
    fill "$server" 912345678 "Su pedido ha llegado. Puede recogerlo hasta las 20."
    press_cell "$(row_of 'Hola Paz')" 1
    picture "$(window_of "$server")" "$pictures/console-server.png"
    device_dialog_picture "$server" device-dialog-server.png
    device_dialog_picture "$client" device-dialog-client.png
    import_dialog_pictures "$client"
}

mode_changed() { # To client, which leaves its message in the folder, and back, which takes it from there.
    step "the server becomes a client"
    local window wide
    window=$(window_of "$server")
    wide=$(xdotool getwindowgeometry --shell "$window" | sed -n 's/^WIDTH=//p')
    open_device_dialog "$server"
    press_client
    confirm_device_dialog "$server"
    await 20 width_is "$window" $((wide - 435)) # 15135 less 8610 twips
    await 20 engine_status_is 0
    write "$server" 911000004 "Enviado como cliente"
    [[ $(ls "$queue") == sms.0 ]] || fail "not one file in the folder: $(ls "$queue")"
    write "$other" 913000004 "Del otro cliente"

    step "and a server again"
    open_device_dialog "$server"
    press_server
    fill_parameter "$sandbox/gsm, 115200"
    confirm_device_dialog "$server"
    await 20 width_is "$window" "$wide"
    await 20 is_empty "$queue"
    await 10 is_waiting 913000004
    engine_status_is 0 || fail "the engine was started by nobody"
    picture "$window" "$pictures/console-waiting.png"
    press_start "$window"
    await 30 has_received 911000004 "Enviado como cliente"
    await 10 has_received 913000004 "Del otro cliente"
}

# set_portuguese: sets portuguese to a folder with the console, in that language.
set_portuguese() {
    portuguese=$sandbox/portuguese
    mkdir "$portuguese"
    cp "$bin"/{NorvaneSMS,TovekSMService,NorvaneSheetReader} "$portuguese"
    cp "$bin/NorvaneSMS_PTG.XML" "$portuguese/NorvaneSMS_ESN.XML"
}

restarted() { # The engine outlives its console, which comes back in Portuguese.
    step "the console is restarted"
    local engine
    engine=$(engine_process)
    close_window "$(window_of "$server")"
    await 20 is_ended "$server"
    wait "$server" || fail "the console ended with $?"
    write "$client" 912000004 "Con el servidor cerrado"
    local portuguese
    set_portuguese
    bin=$portuguese open_console server 0 0
    server=$console
    write "$server" 911000005 "De novo na loja"
    await 30 has_received 912000004 "Con el servidor cerrado"
    await 30 has_received 911000005 "De novo na loja"
    picture "$window" "$pictures/console-server-pt.png"
    [[ $(engine_process) == "$engine" ]] || fail "the engine is another one"
}

accounts() { # Everything that had to arrive, exactly once, and nothing else.
    step "accounts"
    await 90 all_received
    # What would come behind the last one had its time: the engine has nothing due.
    await 20 waiting 2
    diff <(sort "$expected") <(received_texts | sort) || fail "sent (<) and received (>) differ"
    for kept in 'Hola Ana' 'Hola Paz'; do
        is_waiting "$kept" || fail "tomorrow's message is gone: $kept"
    done
    is_empty "$queue" || fail "files were left: $(ls "$queue")"
    local late
    late=$(sed -nE 's/.*"number":"91[12]000002".*"time":"([^T]*)T([^.]*).*/\1 \2/p' "$log" | sort | head -n 1)
    [[ ! $late < $due ]] || fail "a message for $due left at $late"
    local sent
    sent=$(engine --report | awk -F '\t' '$4 == "sent"' | wc -l)
    ((sent <= $(wc -l <"$log") && sent >= $(wc -l <"$log") - 1)) || fail "the engine reports $sent as sent"
    for console in "$server" "$client" "$other"; do
        runs "$console" || fail "a console has ended"
    done
}

set_up_device "$log"
start_window_manager "$sandbox/window-manager.out"
configure server True "$queue"
configure client False "$queue"
configure other False "$queue"
open_console server 0 0
server=$console
open_console client 0 600
client=$console
open_console other 620 600
other=$console

morning
lists
device_test
unplugged
engine_killed
all_pictures
mode_changed
restarted
accounts
echo "$name: passed, $(wc -l <"$log") messages in $SECONDS s"
