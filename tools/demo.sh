#!/usr/bin/env bash
# The demonstration that run.sh starts, on a session bus of its own:
#   demo.sh interactive   leaves the console to the operator
#   demo.sh driven        sends one message through the window, under a window manager of its own
set -euo pipefail

demo=$NORVANE_DEMO
bin=$NORVANE_BIN
log=$demo/received.jsonl
link=$demo/gsm
phone=912345678
message="Hola desde Norvane SMS"

# The console's texts are Spanish; its dates follow where no locale is set. It is set for the
# console alone: the shell would complain about a locale that isn't installed, which the console
# can do without.
open_console=("$bin/NorvaneSMS")
[[ -n ${LC_ALL:-}${LC_TIME:-}${LANG:-} ]] || open_console=(env LANG=es_ES.UTF-8 "$bin/NorvaneSMS")

: >"$log"
started=()
finish() {
    for process in "${started[@]}"; do
        kill "$process" 2>/dev/null || true
    done
    # The engine outlives its console, and ends with the bus of this demonstration.
    wait 2>/dev/null || true
}
trap finish EXIT

# await SECONDS COMMAND...: runs the command until it succeeds.
await() {
    local deadline=$((SECONDS + $1))
    shift
    until "$@" >/dev/null 2>&1; do
        if ((SECONDS >= deadline)); then
            echo "gave up waiting for: $*" >&2
            exit 1
        fi
        sleep 0.1
    done
}

"$bin/gsm-simulator" --link "$link" --log "$log" >"$demo/simulator.out" 2>&1 &
started+=($!)
await 10 grep -q ready "$demo/simulator.out"
"$bin/TovekSMService" --device "$link, 115200"

if [[ $1 == interactive ]]; then
    echo "The simulated device notes what it receives in $log"
    "${open_console[@]}"
    exit 0
fi

openbox >"$demo/window-manager.out" 2>&1 &
started+=($!)
# A window that comes up while the window manager does may be left unmapped.
await 10 xdotool get_desktop
"${open_console[@]}" &
console=$!
started+=("$console")

await 20 xdotool search --onlyvisible --pid "$console" --name "Norvane SMS"
window=$(xdotool search --onlyvisible --pid "$console" --name "Norvane SMS" | tail -n 1)
await 10 timeout 5 xdotool windowactivate --sync "$window"

# The places are those of the window's design, in pixels from its inner corner.
press() { xdotool mousemove --window "$window" "$1" "$2" click 1; }
press 370 128
xdotool type --delay 15 "$phone"
press 150 128
xdotool type --delay 15 "$message"
press 505 122

await 20 grep -q . "$log"
await 10 xdotool search --onlyvisible --pid "$console" --name '^Norvane SMS$'
xdotool key Return
sleep 1 # lets the window draw what it was told, for the picture alone
import -window root -trim +repage "$demo/screenshot.png"

echo "The simulated device received:"
sed -E 's/.*"number":"([^"]*)","text":"([^"]*)".*/  number: \1\n  text:   \2/' "$log"
echo "Screenshot: $demo/screenshot.png"
grep -q "\"number\":\"$phone\",\"text\":\"$message\"" "$log"
