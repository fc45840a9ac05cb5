#!/usr/bin/env bash
# Plays the device dialog through the real window below a virtual display, with the real engine and a
# simulated device, in a sandbox of its own:
#   device_dialog_test.sh BIN
set -euo pipefail

bin=$1
name=device_dialog_test
# shellcheck source=tools/driving.sh
source "$(dirname "$0")/../../tools/driving.sh"
play_on_display 1280x800 "$@"
trap finish EXIT

mkdir -p "$sandbox"/server/{config,data,runtime,cache}
chmod 700 "$sandbox/server/runtime"
settings=$sandbox/server/config/Norvane/settings.ini

set_up_device "$sandbox/received.jsonl"
start_window_manager "$sandbox/window-manager.out"
open_console server 0 0
inner=$(xdotool getwindowgeometry --shell "$window" | sed -n 's/^WIDTH=//p')

# Server: the dialog shows what the engine keeps. Escape leaves everything as it is.
open_device_dialog "$console"
xdotool key Escape
await 20 no_window_of "$console" "$device_title"
[[ ! -e $settings ]] || fail "a cancelled dialog stored settings"
width_is "$window" "$inner" || fail "a cancelled dialog changed the window"

# To client: the window becomes narrow at once, and the start button is off.
open_device_dialog "$console"
press_client
confirm_device_dialog "$console"
narrow=$((inner - 435)) # 15135 less 8610 twips
await 20 width_is "$window" "$narrow"
grep -q 'ServerMode=.*False' "$settings" || fail "the mode was not stored"

# And back to server: wide again, and the start button starts the engine.
open_device_dialog "$console"
press_server
confirm_device_dialog "$console"
await 20 width_is "$window" "$inner"
grep -q 'ServerMode=.*True' "$settings" || fail "the mode was not stored"
await 20 engine_status_is 0
press_start "$window"
await 20 engine_status_is 1
echo "device_dialog_test: passed"
