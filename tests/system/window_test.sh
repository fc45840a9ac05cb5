#!/usr/bin/env bash
# Plays the tests of the real window, each in a sandbox of its own below a virtual display:
#   window_test.sh BIN TOOLS
# A failing step ends the script with an error.
set -euo pipefail

bin=$1
tools=$2
name=window_test
# shellcheck source=tools/driving.sh
source "$tools/driving.sh"
sandbox=$(mktemp -d)
trap 'clear_folder "$sandbox"' EXIT

# One message through the window, the engine and the device.
export NORVANE_DEMO=$sandbox/demo NORVANE_BIN=$bin
mkdir -p "$NORVANE_DEMO"/{config,data,runtime}
chmod 700 "$NORVANE_DEMO/runtime"
export XDG_CONFIG_HOME=$NORVANE_DEMO/config XDG_DATA_HOME=$NORVANE_DEMO/data
export XDG_RUNTIME_DIR=$NORVANE_DEMO/runtime XDG_CACHE_HOME=$sandbox/cache
display=(on_display 1280x800 "${on_own_bus[@]}")

"${display[@]}" "$tools/demo.sh" driven || fail "the message did not arrive"
[[ -s $NORVANE_DEMO/screenshot.png ]] || fail "no screenshot"
[[ ! -e $NORVANE_DEMO/config/Norvane ]] || fail "a console that was never configured stored settings"

# Without its language file the console shows its box, ends, and has started nothing.
bare=$sandbox/bare
mkdir -p "$bare/bin" "$bare"/{config,data}
cp "$bin/NorvaneSMS" "$bin/TovekSMService" "$bare/bin/"
export XDG_CONFIG_HOME=$bare/config XDG_DATA_HOME=$bare/data
cat >"$bare/drive.sh" <<'DRIVE'
"$1/NorvaneSMS" & console=$!
for _ in $(seq 4000); do
    xdotool search --onlyvisible --name 'Norvane SMS - Load Resource File' >/dev/null 2>&1 && break
    sleep 0.1
done
openbox >/dev/null 2>&1 & manager=$!
box=$(xdotool search --onlyvisible --name 'Norvane SMS - Load Resource File' | tail -n 1)
[[ -n $box ]] || exit 3
timeout 800 xdotool windowfocus --sync "$box" key Return
for _ in $(seq 4000); do
    kill -0 "$console" 2>/dev/null || break
    sleep 0.1
done
kill "$manager"
kill -0 "$console" 2>/dev/null && exit 4
exit 0
DRIVE
"${display[@]}" bash "$bare/drive.sh" "$bare/bin" || fail "no box for a missing language file ($?)"
[[ -z $(ls -A "$bare/config") ]] || fail "settings were written before the language file was read"
[[ -z $(ls -A "$bare/data") ]] || fail "an engine or a data folder was made without a language file"

# A load that fails, here for settings that are none, shows its box and ends with exit code 1.
fatal=$sandbox/fatal
mkdir -p "$fatal/config/Norvane" "$fatal/data"
echo 'no settings' >"$fatal/config/Norvane/settings.ini"
export XDG_CONFIG_HOME=$fatal/config XDG_DATA_HOME=$fatal/data
cat >"$fatal/drive.sh" <<'DRIVE'
set -euo pipefail
name=window_test
source "$2/driving.sh"
trap finish EXIT
start_window_manager /dev/null
"$1/NorvaneSMS" & console=$!
await 20 windows_of "$console" "$box_title"
activate "$(windows_of "$console" "$box_title" | tail -n 1)"
xdotool key Return
code=0
wait "$console" || code=$?
exit $((code == 1 ? 0 : 100 + code))
DRIVE
"${display[@]}" bash "$fatal/drive.sh" "$bin" "$tools" || fail "a load that failed ended otherwise ($?)"
[[ ! -e $fatal/data/TovekSMService ]] || fail "an engine was started although the load failed"

# The engine of an installed package, which the account's own bus would start, is left alone.
services=$sandbox/installed/dbus-1/services
mkdir -p "$services"
printf '[D-BUS Service]\nName=com.tovek.SMService\nExec=/usr/bin/touch "%s"\n' "$sandbox/called" \
    >"$services/com.tovek.SMService.service"
call=(dbus-send --session --print-reply --dest=com.tovek.SMService / com.tovek.SMService.Any)
! XDG_DATA_DIRS=$sandbox/installed "${on_own_bus[@]}" "${call[@]}" >"$sandbox/call.out" 2>&1 ||
    fail "there is an engine"
[[ ! -e $sandbox/called ]] || fail "an installed engine is started"

echo "window_test: passed"
