#!/usr/bin/env bash
# The demonstration that run.sh starts, on a session bus of its own:
#   demo.sh interactive   leaves the console to the operator
#   demo.sh driven        sends one message through the window, under a window manager of its own
set -euo pipefail
# shellcheck source=tools/driving.sh
source "$(dirname "$0")/driving.sh"

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
trap finish EXIT

plug_in_simulator "$bin" "$link" "$log" "$demo/simulator.out"
"$bin/TovekSMService" --device "$link, 115200"

if [[ $1 == interactive ]]; then
    echo "The simulated device notes what it receives in $log"
    echo "The history opens beside the console, from another terminal, by"
    printf '  env'
    printf ' %q' "DBUS_SESSION_BUS_ADDRESS=$DBUS_SESSION_BUS_ADDRESS" "XDG_CONFIG_HOME=$XDG_CONFIG_HOME" \
        "XDG_DATA_HOME=$XDG_DATA_HOME" "XDG_RUNTIME_DIR=$XDG_RUNTIME_DIR" "$bin/NorvaneHistory"
    printf '\n'
    "${open_console[@]}"
    exit 0
fi

start_window_manager "$demo/window-manager.out"
"${open_console[@]}" &
console=$!

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
