#!/usr/bin/env bash
# Two real consoles on one display, a client's and a server's, that share a queue folder and are
# driven through their windows:
#   queue_folder_test.sh BIN CASE
# A failing step ends the script with an error.
set -euo pipefail

bin=$1
case=$2
data=$(cd "$(dirname "$0")/../data/import" && pwd)
name="queue_folder_test $case"
# shellcheck source=tools/driving.sh
source "$(dirname "$0")/../../tools/driving.sh"
play_on_display 1280x1200 "$@"

queue=$sandbox/queue
log=$sandbox/received.jsonl
mkdir -p "$queue"
: >"$log"

trap finish EXIT

# open_workstation NAME SERVER FOLDER: a workstation's console, so that neither covers the other.
open_workstation() {
    configure "$@"
    if [[ $2 == True ]]; then
        open_console "$1" 0 0
    else
        open_console "$1" 0 600
    fi
}

# recipients COUNT: lines of a list, each of a number and a name.
recipients() { awk "BEGIN { for (i = 0; i < $1; ++i) printf \"%d|N%d\\r\\n\", 600000000 + i, i }"; }

# record PHONE MESSAGE: one record, for a day that is far away.
record() { printf '%-25s%s%-160s' "$1" 01012100000000 "$2"; }

start_window_manager "$sandbox/window-manager.out"

case $case in
exchange) # What the client sends twice reaches the server's device twice, within ten seconds each.
    set_up_device "$log"
    open_workstation server True "$queue"
    server=$console
    open_workstation client False "$queue"
    client=$console
    fill "$server" 911111111 "Del servidor"
    send "$server" 1 # starts the engine as well
    await 20 received "$log" 1
    fill "$client" 912345678 "Hola desde el cliente"
    for sends in 2 3; do
        send "$client" 1
        begun=$EPOCHREALTIME
        await 12 received "$log" "$sends"
        echo "received $(awk "BEGIN { print $EPOCHREALTIME - $begun }") s after the send"
        awk "BEGIN { exit !($EPOCHREALTIME - $begun < 11) }" || fail "it took more than ten seconds"
    done
    (($(grep -c '"number":"912345678","text":"Hola desde el cliente"' "$log") == 2)) ||
        fail "another text arrived: $(cat "$log")"
    is_empty "$queue" || fail "files were left: $(ls "$queue")"
    ;;
full) # The overflow's box, and after it the success all the same.
    (cd "$queue" && seq -f 'sms.%.0f' 0 32767 | xargs touch)
    open_workstation client False "$queue"
    fill "$console" 912345678 "Hola"
    send "$console" 2
    (($(ls "$queue" | wc -l) == 32768)) || fail "a file was made"
    rm "$queue/sms.17"
    send "$console" 1
    (($(stat -c %s "$queue/sms.17") == 199)) || fail "no record in the only name that was free"
    ;;
missing) # A client without its folder shows one box and writes nothing; a server takes all at once.
    open_workstation client False "$sandbox/share"
    client=$console
    open_workstation server True "$sandbox/share"
    fill "$client" 912345678 "Hola"
    send "$client" 1
    [[ ! -e $sandbox/share ]] || fail "the folder was made"
    mkdir "$sandbox/share"
    send "$client" 1
    send "$client" 1
    await 15 is_empty "$sandbox/share"
    await 10 waiting 2
    ;;
many) # Thousands of files in one tick, and a client that goes on writing meanwhile.
    for number in $(seq 0 1999); do
        record 912345678 "m $number" >"$queue/sms.$number"
    done
    open_workstation client False "$queue"
    client=$console
    fill "$client" 912345678 "Una mas"
    open_workstation server True "$queue"
    send "$client" 1
    await 80 is_empty "$queue"
    await 10 waiting 2001
    (($(engine --queue | grep -o 'm [0-9]*$' | sort -u | wc -l) == 2000)) ||
        fail "not each message once"
    ;;
slow) # What a writer adds after the server has read its file is lost, and nothing else is.
    open_workstation server True "$queue"
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
    open_workstation client False "$queue"
    client=$console
    fill "$client" 1 'Hola %1'
    import_text "$client" "$sandbox/list.txt"
    confirm_box "$client"
    [[ $(ls "$queue") == sms.0 ]] || fail "not one file: $(ls "$queue")"
    (($(stat -c %s "$queue/sms.0") == 99500)) || fail "the file has another length"
    (($(grep -o '6[0-9]\{8\} \{16\}[0-9]\{14\}Hola N[0-9]* ' "$queue/sms.0" | sort -u | wc -l) == 500)) ||
        fail "not each recipient once"

    # A sheet's numbers, from a file that is known by what it holds.
    import_second_field "$client" "$sandbox/list.ods"
    confirm_box "$client"
    (($(stat -c %s "$queue/sms.1") == 398)) || fail "not two records from the sheet"

    set_up_device "$log"
    open_workstation server True "$queue"
    server=$console
    await 15 is_empty "$queue"
    fill "$server" 911111111 "Del servidor"
    send "$server" 1 # starts the engine as well
    # Which of the two files is read first is the folder's business.
    of_list='"number":"600000[0-9]{3}","text":"Hola N[0-9]+"'
    of_sheet='"number":"(912345678|34600123456)","text":"Hola %1"'
    list_arrives() { (($(grep -cE "$of_list" "$log") >= 5)); }
    await 20 list_arrives
    ! head -n 7 "$log" | grep -vE "$of_list|$of_sheet" || fail "other texts arrived"
    ;;
stranded) # A failure leaves the dialog hidden, and the console ends all the same.
    recipients 32768 >"$sandbox/list.txt"
    open_workstation client False "$queue"
    client=$console
    fill "$client" 1 'Hola'
    import_text "$client" "$sandbox/list.txt"
    confirm_box "$client"
    is_empty "$queue" || fail "something was queued"
    no_window_of "$client" "$import_title" >/dev/null || fail "the dialog is still to be seen"
    close_window "$(window_of "$client")"
    await 10 is_ended "$client"
    wait "$client" || fail "the console ended with $?"
    ;;
*)
    fail "no such case"
    ;;
esac
echo "$name: passed"
