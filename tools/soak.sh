#!/usr/bin/env bash
# Two clients and a server under constant load for MINUTES, while the device is unplugged, slow, noisy or
# refuses messages, loses answers, and the engine is killed:
#   soak.sh MINUTES [BIN [FOLDER]]
# Prints a line a minute, and at the end what became of every message. Fails if one is lost, has come
# twice, or is told otherwise than it went. What it found goes to FOLDER, build/soak if none is named.
set -euo pipefail

tree=$(cd "$(dirname "$0")/.." && pwd)
minutes=$1
bin=$(realpath "${2:-$tree/build/release/bin}")
mkdir -p "${3:-$tree/build/soak}"
results=$(realpath "${3:-$tree/build/soak}")
name=soak
# shellcheck source=tools/driving.sh
source "$tree/tools/driving.sh"
play_on_display 1280x1200 "$minutes" "$bin" "$results"

queue=$sandbox/queue
log=$results/received.jsonl
sent=$results/sent # one a line: number, workstation, moment in seconds since the epoch
table=$results/table
mkdir -p "$queue"
rm -f "$results"/*.png
: >"$log"
: >"$sent"
: >"$table"
at_the_end() {
    (($1 == 0)) || import -window root "$results/failed.png" || true
    cp "$sandbox/server/data/TovekSMService/engine.log" "$results/" 2>/dev/null || true
    finish
}
trap 'at_the_end $?' EXIT

# More may not wait: what is left is told from the last interval, of up to 59 seconds, in 16 bits.
most_waiting=400
first_phone=600000000
count=0

# post WORKSTATION CONSOLE: the next message, of its own number.
post() {
    local phone=$((first_phone + count))
    fill "$2" "$phone" "Carga $count"
    printf '%s %s %s\n' "$phone" "$1" "$EPOCHREALTIME" >>"$sent"
    count=$((count + 1))
    send "$2" 1
}

waiting_now() { engine --queue | wc -l; }

# Faults, one a minute, in this order.
unplugged_until=0
faults=(noise kill slow refusing lost weak unplugged kill)
fault=0

replug() {
    ! runs "$simulator" || end_process "$simulator"
    plug_in "$log" "$@"
}

inject() {
    local engine kind=${faults[fault++ % ${#faults[@]}]}
    happened=$kind
    case $kind in
    noise) replug --noise --urc ;;
    slow) replug --latency 1500 --baud 9600 ;;
    refusing) replug --fail-every 5 --fail-code 38 ;;
    lost) replug --drop-after 10 --lose-answer --latency 200 ;;
    weak) # out of the network's reach
        replug --registered 2 --signal 3
        unplugged_until=$((SECONDS + 25))
        ;;
    unplugged)
        ! runs "$simulator" || end_process "$simulator"
        unplugged_until=$((SECONDS + 25))
        ;;
    kill) ! engine=$(engine_process) || end_process "$engine" KILL ;;
    esac
}

# mend: what has come to its end by itself, or had its time, is replaced by a device without faults.
mend() {
    if ((unplugged_until > 0)); then
        ((SECONDS >= unplugged_until)) || return 0
        unplugged_until=0
        replug
    elif ! runs "$simulator"; then
        replug
    fi
}

# size_of PROCESS: prints its anonymous memory in MiB and its open files, or dashes where there is none.
size_of() {
    local memory files
    memory=$(awk '/^RssAnon/ { printf "%.1f", $2 / 1024 }' "/proc/$1/status" 2>/dev/null) || true
    files=$(find "/proc/$1/fd" -mindepth 1 2>/dev/null | wc -l) || true
    [[ -n $memory ]] && printf '%6s %4s' "$memory" "$files" || printf '%6s %4s' - -
}

# arrivals: number, workstation, moment of sending, moment of arrival, for all that has arrived. The device
# tells local time.
arrivals() {
    sed -E 's/^\{"number":"([^"]*)".*"time":"([0-9]*)-([0-9]*)-([0-9]*)T([0-9]*):([0-9]*):([0-9.]*)".*/\1 \2 \3 \4 \5 \6 \7/' \
        "$log" | awk 'NR == FNR { from[$1] = $2; at[$1] = $3; next }
            { printf "%s %s %.3f %.3f\n", $1, from[$1], at[$1],
                mktime($2 " " $3 " " $4 " " $5 " " $6 " " int($7)) + $7 - int($7) }' "$sent" -
}

# latency WORKSTATIONS SINCE: median and longest of what has come since that moment, in seconds.
latency() {
    arrivals | awk -v from="$1" -v since="$2" '$2 ~ from && $4 >= since { print $4 - $3 }' | sort -n |
        awk '{ all[NR] = $1 } END { if (NR) printf "%6.2f %6.1f", all[int((NR + 1) / 2)], all[NR]
            else printf "%6s %6s", "-", "-" }'
}

head_line() {
    printf '%4s %-10s %6s %6s %5s | %-13s | %-13s | %-11s | %-11s | %-11s | %-11s\n' min fault sent came \
        wait 'clients s' 'server s' engine server client other
    printf '%4s %-10s %6s %6s %5s | %6s %6s | %6s %6s | %6s %4s | %6s %4s | %6s %4s | %6s %4s\n' '' '' '' '' \
        '' median most median most MiB fds MiB fds MiB fds MiB fds
}

sample() {
    local engine
    engine=$(engine_process 2>/dev/null) || engine=0
    printf '%4d %-10s %6d %6d %5d | %s | %s | %s | %s | %s | %s\n' $((SECONDS / 60)) "$happened" "$count" \
        "$(wc -l <"$log")" "$(waiting_now)" "$(latency 'client|other' "$1")" "$(latency server "$1")" \
        "$(size_of "$engine")" "$(size_of "$server")" "$(size_of "$client")" "$(size_of "$other")"
}

load() {
    local next_fault=$((SECONDS + 30)) next_sample=$((SECONDS + 60)) since=$EPOCHREALTIME
    local end=$((SECONDS + minutes * 60))
    happened=-
    sample "$since" | tee -a "$table"
    while ((SECONDS < end)); do
        if (($(waiting_now) < most_waiting)); then
            post client "$client"
            post other "$other"
            post server "$server"
        else
            sleep 1
        fi
        mend
        if ((SECONDS >= next_fault)); then
            inject
            next_fault=$((SECONDS + 60))
        fi
        if ((SECONDS >= next_sample)); then
            sample "$since" | tee -a "$table"
            happened=-
            since=$EPOCHREALTIME
            next_sample=$((SECONDS + 60))
        fi
    done
}

# accounts: what became of each message. Sent and received once, failed and not received, failed in doubt
# and received once at most, or waiting and not received: all else is wrong.
accounts() {
    engine --report >"$results/report"
    engine --queue >"$results/waiting"
    awk -F '\t' '
        FILENAME ~ /sent$/ { split($0, f, " "); posted[f[1]]; next }
        FILENAME ~ /jsonl$/ { split($0, f, "\""); came[f[4]]++; next }
        FILENAME ~ /report$/ { if ($4 == "sent") sent[$3]++; else failed[$3] = failed[$3] " " $5; next }
        { waits[$2]++ }
        END {
            for (n in posted) {
                told = sent[n] + (n in failed) + waits[n]
                doubt = failed[n] == " -39"
                if (came[n] > 1) kind = "WRONG: twice"
                else if (told == 0) kind = came[n] ? "WRONG: received, not told" : "WRONG: lost"
                else if (told > 1) kind = "WRONG: told more than once"
                else if (sent[n]) kind = came[n] ? "sent, received once" : "WRONG: sent, not received"
                else if (doubt) kind = came[n] ? "in doubt (-39), received once" : "in doubt (-39), not received"
                else if (n in failed) kind = came[n] ? "WRONG: failed, received" : "failed" failed[n] ", not received"
                else kind = came[n] ? "WRONG: waiting, received" : "waiting, not received"
                kinds[kind]++
                if (kind ~ /^WRONG/) print n, kind > "/dev/stderr"
            }
            for (n in came) if (!(n in posted)) kinds["WRONG: nobody sent it"]++
            for (kind in kinds) { printf "%6d  %s\n", kinds[kind], kind; if (kind ~ /^WRONG/) bad = 1 }
            exit bad
        }' "$sent" "$log" "$results/report" "$results/waiting"
}

configure server True "$queue"
configure client False "$queue"
configure other False "$queue"
# So that what the network refuses for the moment comes to its end within the run.
printf '[Sending]\nFirstDelay=5\nLongestDelay=20\n' >"$sandbox/server/config/Norvane/TovekSMService.ini"
set_up_device "$log"
start_window_manager "$sandbox/window-manager.out"
open_console server 0 0
server=$console
open_console client 0 600
client=$console
open_console other 620 600
other=$console
post server "$server" # starts the engine as well
await 20 received "$log" 1

head_line | tee -a "$table"
load
unplugged_until=0
replug
engine_process >/dev/null 2>&1 || post server "$server" # brings it back
happened=end
await 30 is_empty "$queue"
await 300 waiting 0
sample 0 | tee -a "$table"
echo
accounts | tee -a "$table"
