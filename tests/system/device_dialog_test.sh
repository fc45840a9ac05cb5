#!/usr/bin/env bash
# Plays the device dialog through the real window below a virtual display, with the real engine and a
# simulated device, in a sandbox of its own:
#   device_dialog_test.sh BIN [PICTURES]
# Pictures of the dialog in both modes go to the folder PICTURES, if one is named.
set -euo pipefail

bin=$1
driving=$(realpath "$(dirname "$0")/../../tools/driving.sh")
# shellcheck source=tools/driving.sh
source "$driving"
sandbox=$(mktemp -d)
pictures=${2:-$sandbox}
trap 'clear_folder "$sandbox"' EXIT

mkdir -p "$sandbox"/{config,data,runtime,cache,queue}
chmod 700 "$sandbox/runtime"
export XDG_CONFIG_HOME=$sandbox/config XDG_DATA_HOME=$sandbox/data
export XDG_RUNTIME_DIR=$sandbox/runtime XDG_CACHE_HOME=$sandbox/cache LANG=es_ES.UTF-8

cat >"$sandbox/drive.sh" <<'DRIVE'
set -euo pipefail
bin=$1 sandbox=$2 pictures=$3
name=device_dialog_test
source "$4"
trap finish EXIT
find_window() { xdotool search --all --onlyvisible --pid "$console" --name "$1" | tail -n 1; }
width_is() { [[ $(xdotool getwindowgeometry --shell "$window" | sed -n 's/^WIDTH=//p') == "$1" ]]; }
# press WINDOW X Y: in pixels from the inner corner of the window.
press() { xdotool mousemove --sync --window "$1" "$2" "$3" click 1; }
status() {
    dbus-send --session --print-reply=literal --dest=com.tovek.SMService /com/tovek/SMService \
        com.tovek.SMService.SMSManager1.GetEngineStatus | awk '{print $2}'
}
status_is() { [[ $(status) == "$1" ]]; }
is_gone() { ! xdotool search --all --onlyvisible --pid "$console" --name "$1"; }
open_dialog() {
    xdotool windowactivate --sync "$window"
    press "$window" 48 42
    await 20 find_window '^SMS - Configuraci'
    dialog=$(find_window '^SMS - Configuraci')
    xdotool windowactivate --sync "$dialog"
}
picture() {
    sleep 0.5 # lets the window draw itself, for the picture alone
    import -window "$1" "$pictures/$2"
}

plug_in_simulator "$bin" "$sandbox/gsm" "$sandbox/log" "$sandbox/simulator.out"
"$bin/TovekSMService" --device "$sandbox/gsm, 115200"
start_window_manager "$sandbox/window-manager.out"
"$bin/NorvaneSMS" &
console=$!
started+=("$console")
await 20 find_window 'Norvane SMS'
window=$(find_window 'Norvane SMS')
inner=$(xdotool getwindowgeometry --shell "$window" | sed -n 's/^WIDTH=//p')

# Server: the dialog shows what the engine keeps. Escape leaves everything as it is.
open_dialog
picture "$dialog" device-dialog-server.png
xdotool key Escape
await 20 is_gone '^SMS - Configuraci'
[[ ! -e $XDG_CONFIG_HOME/Norvane/settings.ini ]] || fail "a cancelled dialog stored settings"
width_is "$inner" || fail "a cancelled dialog changed the window"

# To client: the window becomes narrow at once, and the start button is off.
open_dialog
press "$dialog" 172 38
press "$dialog" 255 264
await 20 is_gone '^SMS - Configuraci'
narrow=$((inner - 435)) # 15135 less 8610 twips
await 20 width_is "$narrow"
grep -q 'ServerMode=.*False' "$XDG_CONFIG_HOME/Norvane/settings.ini" || fail "the mode was not stored"
open_dialog
picture "$dialog" device-dialog-client.png

# And back to server: wide again, and the start button starts the engine.
press "$dialog" 40 38
press "$dialog" 255 264
await 20 is_gone '^SMS - Configuraci'
await 20 width_is "$inner"
grep -q 'ServerMode=.*True' "$XDG_CONFIG_HOME/Norvane/settings.ini" || fail "the mode was not stored"
await 20 status_is 0
press "$window" 877 257
await 20 status_is 1
DRIVE
xvfb-run -a -s "-screen 0 1280x800x24 -dpi 96" dbus-run-session -- \
    bash "$sandbox/drive.sh" "$bin" "$sandbox" "$pictures" "$driving"
echo "device_dialog_test: passed"
