#!/usr/bin/env bash
# Builds Norvane SMS and runs it against a simulated GSM device, in a sandbox of its own below
# build/demo: nothing of the user's own settings, queue or devices is touched.
#
# With a display the console is left open, and how to open the history beside it is printed. Without
# one a virtual display is used: a message is sent through the real window, what the simulated device
# received is printed, and a screenshot is saved.
#
#   ./run.sh --engines 4   runs so many engines in its place, with one queue in a private database
#
# How the program is installed and set up for real work is told in README.md.
set -euo pipefail
cd "$(dirname "$0")"

engines=0
case ${1:-} in
'') ;;
--engines)
    engines=${2:-}
    [[ $engines =~ ^[1-9][0-9]?$ ]] || {
        echo "usage: ./run.sh [--engines 1..99]" >&2
        exit 2
    }
    ;;
*)
    echo "usage: ./run.sh [--engines 1..99]" >&2
    exit 2
    ;;
esac

if ((engines > 0)); then
    tools/install-packages.sh engines
    cmake --preset release >/dev/null
    cmake --build --preset release --target TovekSMService gsm-simulator
    exec tools/demo-engines.sh "$engines"
fi

tools/install-packages.sh run
cmake --preset release >/dev/null
targets=(NorvaneSMS TovekSMService gsm-simulator norvane_language_files)
[[ -z ${DISPLAY:-} ]] || targets+=(NorvaneHistory)
cmake --build --preset release --target "${targets[@]}"

demo=$PWD/build/demo
bin=$PWD/build/release/bin
mkdir -p "$demo"/{config/Norvane,data,runtime,queue}
chmod 700 "$demo/runtime"
export XDG_CONFIG_HOME=$demo/config XDG_DATA_HOME=$demo/data XDG_RUNTIME_DIR=$demo/runtime
export XDG_CACHE_HOME=$demo/cache
export NORVANE_DEMO=$demo NORVANE_BIN=$bin

# The console polls and reads this folder, and not the one that the programs lie in.
if [[ ! -e $demo/config/Norvane/settings.ini ]]; then
    printf '[SMS]\nServerMode=True\nQueueFolder=%s\n' "$demo/queue" >"$demo/config/Norvane/settings.ini"
fi

on_own_bus=(dbus-run-session --config-file=tools/session-bus.conf --)

# An X display: the console is not built for Wayland's own protocol, and Wayland's desktops have one.
if [[ -n ${DISPLAY:-} ]]; then
    exec "${on_own_bus[@]}" tools/demo.sh interactive
fi
exec xvfb-run -a -s "-screen 0 1280x800x24 -dpi 96" "${on_own_bus[@]}" tools/demo.sh driven
