#!/usr/bin/env bash
# A day as the history's window shows it, below a virtual display, with a real engine and a simulated
# device: messages that are delivered at once and late, refused by the network and by the device, and
# in doubt; an answer, somebody who wants no more, what another account sees of it.
#   history_day_test.sh BIN READER [PICTURES]
# READER prints what a screen reader meets in a window. The pictures of the documentation go to the
# folder PICTURES, if one is named.
set -euo pipefail

bin=$1
reader=$2
name=history_day_test
export QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1
# shellcheck source=tools/driving.sh
source "$(dirname "$0")/../../tools/driving.sh"
on_own_bus=(dbus-run-session --) # which starts the bus of the assistive technologies
play_on_display 1280x1000 "$@"

pictures=${3:-$sandbox}
log=$sandbox/received.jsonl
control=$sandbox/control
mkdir -p "$pictures"
: >"$log"
at_the_end() {
    local scene=${TMPDIR:-/tmp}/$name.png
    if (($1 != 0)); then
        import -window root "$scene" || scene=none
        echo "The screen at that moment: $scene" >&2
        "$reader" NorvaneHistory --cells >&2 || true
    fi
    finish
}
trap 'at_the_end $?' EXIT

step() { printf '%3d s  %s\n' "$SECONDS" "$*"; }

# tell COMMAND: to the simulated device.
tell() {
    python3 - "$control" "$1" <<'PYTHON'
import socket, sys
line = socket.socket(socket.AF_UNIX)
line.connect(sys.argv[1])
line.sendall(sys.argv[2].encode() + b"\n")
answer = line.makefile().readline()
sys.exit(0 if answer.startswith("ok") else answer)
PYTHON
}

# call INTERFACE OPERATION ARGUMENT...: of the engine, by the bus.
call() {
    dbus-send --session --print-reply --dest=com.tovek.SMService /com/tovek/SMService \
        "com.tovek.SMService.$1" "${@:2}" >/dev/null
}
queue() { call SMSManager1.AddSMS "string:$1" "string:$2" "string:$(date +%FT%T)"; }

# reference PHONE: the network's of the last message to that number.
reference() { sed -n "s/^{\"number\":\"$1\".*\"reference\":\([0-9]*\).*/\1/p" "$log" | tail -n 1; }
is_sent() { [[ -n $(reference "$1") ]]; }

# agree_in_doubt CONSOLE [FILE]: agrees to send what may have arrived, to which Enter alone says no.
agree_in_doubt() {
    local id
    await 10 windows_of "$1" "$box_title"
    id=$(windows_of "$1" "$box_title" | tail -n 1)
    activate "$id"
    [[ -z ${2:-} ]] || picture "$id" "$2"
    xdotool key Tab Return
    await 10 is_gone "$1" "$id"
}

# What a screen reader meets, a line for each control and cell.
window_lines() { "$reader" NorvaneHistory --cells; }

# cells: of the list that is seen, four a line: moment, phone, text, state.
cells() {
    window_lines | sed -n '/^table: Mensajes/,/^check box/p' |
        sed -n 's/^cell: //p' | paste -d '|' - - - -
}
shows() { cells | grep -qE "\|$1\|[^|]*\|$2\$"; }
shows_only() { [[ $(cells | cut -d '|' -f 2 | sort -u | paste -sd ' ') == "$1" ]]; }
says() { window_lines | grep -qF "$1"; }

# choose PHONE: searches for it and opens the first row that is found.
choose() {
    activate "$history"
    xdotool key ctrl+f
    xdotool type --delay 15 "$1"
    await 20 shows_only "$1"
    # Past the range, the tabs and the six ticks.
    xdotool key Tab Tab Tab Tab Tab Tab Tab Tab Tab Home
}

start_window_manager "$sandbox/window-manager.out"
set_up_device "$log" --report never --control "$control" --latency 50
in_folders_of server
mkdir -p "$sandbox/server/config/TovekSMService"

step "the window starts the engine and sends nothing by itself"
LANG=es_ES.UTF-8 "${folders[@]}" "$bin/NorvaneHistory" &
process=$!
await 30 windows_of "$process" '^Norvane SMS - Historial$'
history=$(windows_of "$process" '^Norvane SMS - Historial$' | tail -n 1)
await 30 engine_status_is 0
call SMSManager1.StartEngine
await 30 engine_status_is 1
[[ ! -s $log ]] || fail "something was sent"

step "messages are sent, delivered at once and late, and refused by the network"
queue 600000001 "Su pedido esta listo"
queue 600000002 "Su cita es manana a las 10"
queue 600000003 "Rebajas desde hoy"
for phone in 600000001 600000002 600000003; do
    await 30 is_sent "$phone"
    await 20 shows "$phone" Enviado
done
tell "report $(reference 600000001) 0"
await 20 shows 600000001 Entregado
tell "report $(reference 600000002) 48"
await 20 shows 600000002 Enviado
tell "report $(reference 600000003) 70"
await 20 shows 600000003 Rechazado
tell "report $(reference 600000002) 0"
await 20 shows 600000002 Entregado

step "one that can't be sent, and one for tomorrow"
queue 60000000x "Un numero imposible"
await 20 shows 60000000x Fallido
call SMSManager1.AddSMS string:600000005 "string:Para manana" "string:$(date -d tomorrow +%FT%T)"
await 20 shows 600000005 'En cola'

step "one is in doubt: the device went away in the middle of it"
end_process "$simulator"
plug_in "$log" --report never --control "$control" --drop-after 1 --lose-answer
await 60 tell 'count sent'
queue 600000006 "Quiza llego"
await 60 shows 600000006 'En duda'
picture "$history" "$pictures/history-messages.png"

step "a customer answers, another wants no more"
plug_in "$log" --report never --control "$control" --latency 50
await 60 tell 'deliver {"from":"+34600000001","text":"Gracias, voy ahora"}'
tell 'deliver {"from":"+34600000003","text":"BAJA"}'

step "three digits of a number find it, and its story is told"
choose 600000001
await 20 says 'cell: Respuesta'
says 'cell: Gracias, voy ahora' || fail "the answer is not there"
says 'cell: Puesto en cola' || fail "it doesn't say when it was queued"
says 'label: 600000001 · Entregado' || fail "it doesn't say what became of it"
picture "$history" "$pictures/history-details.png"

step "what is in doubt is sent again, after a question"
choose 600000006
await 20 says 'label: 600000006 · En duda'
xdotool key alt+v
confirm_box "$process" "$pictures/history-question.png"
shows 600000006 'En duda' || fail "the Enter key sent it again"
xdotool key alt+v
agree_in_doubt "$process"
await 30 shows 600000006 'Enviado'
(($(grep -c '"number":"600000006"' "$log") == 2)) || fail "it was not sent exactly once more"

step "what was received is opened"
xdotool key alt+r ctrl+f BackSpace
await 20 says 'cell: BAJA'
says 'cell: Gracias, voy ahora' || fail "the answer is not there"
unread() { (($(window_lines | grep -c ', sin leer$') == $1)); }
await 20 unread 2
xdotool key ctrl+f Tab Tab Tab Tab Home # past the range, the tabs and the tick
await 20 unread 1
await 20 says 'label: +34600000003 · '
picture "$history" "$pictures/history-inbox.png"

step "who wants no more is on the list and gets no campaigns"
is_out() { engine --opt-out list | grep -q 600000003; }
await 20 is_out

step "the summary counts them"
xdotool key alt+u
await 20 says 'Mensajes por día'
xdotool key alt+t # as tables
await 20 says "cell: $(date +%d/%m/%Y)"
xdotool key alt+t
picture "$history" "$pictures/history-summary.png"

step "another account sees nothing of it"
for file in "$sandbox"/server/data/TovekSMService "$sandbox"/server/data/TovekSMService/*; do
    [[ $(stat -c %a "$file") =~ ^[67]00$ ]] || fail "$file is open to others"
done
if [[ $(id -u) == 0 ]] && getent passwd nobody >/dev/null; then
    ! setpriv --reuid=nobody --regid=nogroup --clear-groups \
        dbus-send --session --print-reply --dest=com.tovek.SMService /com/tovek/SMService \
        com.tovek.SMService.Messages1.GetOptOuts >/dev/null 2>&1 ||
        fail "another account is answered"
else
    echo "     not tried: a call of another account, for which this has to run as root" >&2
fi

close_window "$history"
await 20 is_ended "$process"
wait "$process" || fail "the window ended with $?"
echo "$name: passed in $SECONDS s"
