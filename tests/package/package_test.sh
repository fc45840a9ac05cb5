#!/usr/bin/env bash
# Installs what the packages are made of into a folder and checks it:
#   package_test.sh BUILD PREFIX CASE
# A failing check ends the script with an error.
set -euo pipefail

build=$1
prefix=$2
case=$3
here=$(cd "$(dirname "$0")" && pwd)
sandbox=$(mktemp -d)
# What was started in the background may write to the last.
clear_sandbox() {
    until rm -rf "$sandbox" 2>/dev/null; do
        sleep 0.1
    done
}
trap clear_sandbox EXIT

fail() {
    echo "package_test $case: $*" >&2
    exit 1
}
# install_components COMPONENT...: into $sandbox/root.
install_components() {
    for component in "$@"; do
        DESTDIR=$sandbox/root cmake --install "$build" --component "$component" >"$sandbox/install.out" ||
            fail "$(cat "$sandbox/install.out")"
    done
}

case_main() {
    install_components engine console
    "$here/check_tree.sh" "$sandbox/root" "$prefix" norvane-sms
}

case_simulator() {
    install_components simulator
    "$here/check_tree.sh" "$sandbox/root" "$prefix" norvane-sms-simulator
    "$sandbox/root$prefix/bin/gsm-simulator" --version >/dev/null || fail "the simulator does not run"
}

# Programs of the package find what lies beside them, wherever they are called from.
case_engine_by_link() {
    install_components engine
    export XDG_DATA_HOME=$sandbox/data XDG_CONFIG_HOME=$sandbox/config
    cd /
    [[ $("$sandbox/root$prefix/bin/TovekSMService" --version) == "TovekSMService "* ]] ||
        fail "the engine does not run by its link"
}

# The launcher: what it tells the operator for each state of the settings. Console and notifier are
# played by scripts that note that they were called.
case_launcher() {
    local root=$sandbox/here programs launcher notified
    programs=$root/lib/norvane-sms
    launcher=$root/bin/norvane-sms
    notified=$sandbox/notified
    mkdir -p "$root/bin" "$programs" "$sandbox/tools" "$sandbox/config/Norvane"
    cp "$here/../../packaging/desktop/norvane-sms" "$launcher"
    printf '#!/bin/sh\necho "console $0 $# $QT_QPA_PLATFORM"\n' >"$programs/NorvaneSMS"
    # The notifier's words appear at once and as a whole.
    printf '#!/bin/sh\nprintf "%%s\\n" "$@" >"%s.new"; mv "%s.new" "%s"\n' \
        "$notified" "$notified" "$notified" >"$sandbox/tools/notify-send"
    chmod +x "$programs/NorvaneSMS" "$sandbox/tools/notify-send"
    unset QT_QPA_PLATFORM
    export XDG_CONFIG_HOME=$sandbox/config PATH=$sandbox/tools:$PATH
    local settings=$sandbox/config/Norvane/settings.ini

    # start LAUNCHER: the console is started once, without arguments, whatever is told.
    start() {
        rm -f "$notified"
        [[ $("$@" 2>"$sandbox/said") == "console $programs/NorvaneSMS 0 ${display:-xcb}" ]] ||
            fail "no console, or not on an X display"
    }
    tells() {
        start "$launcher"
        grep -q 'Falta la carpeta de envío' "$sandbox/said" || fail "nothing is said for: $1"
        local deadline=$((SECONDS + 400))
        until [[ -e $notified ]]; do
            ((SECONDS < deadline)) || fail "no notification for: $1"
            sleep 0.02
        done
        grep -q 'Pasta envio' "$notified" || fail "the notification does not name the field"
    }
    is_silent() {
        start "$launcher"
        [[ ! -s $sandbox/said && ! -e $notified ]] || fail "something is said for: $1"
    }

    tells "no settings at all"
    printf '[SMS]\nServerMode=True\n' >"$settings"
    tells "settings without a folder"
    printf '[SMS]\nServerMode=True\nQueueFolder=%s\n' "$programs" >"$settings"
    tells "the programs' folder"
    printf '[SMS]\nQueueFolder="%s/"\n' "$programs" >"$settings"
    tells "the programs' folder in quotes and with a slash"
    printf '[Other]\nQueueFolder=/srv/sms\n' >"$settings"
    tells "a folder in another section"
    printf '[SMS]\nQueueFolder=/srv/sms\nQueueFolder=%s\n' "$programs" >"$settings"
    tells "two folders, of which the last one counts"

    printf '[SMS]\nServerMode=True\nQueueFolder=/srv/sms\n' >"$settings"
    is_silent "a folder"
    printf '[SMS]\nQueueFolder="/srv/caja 1, tienda"\n[Other]\nQueueFolder=\n' >"$settings"
    is_silent "a folder in quotes"

    display=offscreen start env QT_QPA_PLATFORM=offscreen "$launcher"

    # By a link, as from another folder of programs, and without a notifier.
    rm "$settings"
    ln -s "$launcher" "$sandbox/link"
    start "$sandbox/link"
    mkdir "$sandbox/bare"
    for tool in sh sed tail dirname readlink; do
        ln -s "$(command -v "$tool")" "$sandbox/bare/$tool"
    done
    start env PATH="$sandbox/bare" "$launcher"
    grep -q 'Falta la carpeta' "$sandbox/said" || fail "nothing is said without a notifier"
    start env -u HOME -u XDG_CONFIG_HOME "$launcher"
}

# The launcher of the history says nothing of folders.
case_history_launcher() {
    local root=$sandbox/here program launcher
    program=$root/lib/norvane-sms/NorvaneHistory
    launcher=$root/bin/norvane-sms-history
    mkdir -p "$root/bin" "$(dirname "$program")"
    cp "$here/../../packaging/desktop/norvane-sms-history" "$launcher"
    printf '#!/bin/sh\necho "history $0 $# $QT_QPA_PLATFORM"\n' >"$program"
    chmod +x "$program"
    unset QT_QPA_PLATFORM

    start() {
        [[ $("$@" 2>"$sandbox/said") == "history $program 0 ${display:-xcb}" ]] ||
            fail "no history, or not on an X display"
        [[ ! -s $sandbox/said ]] || fail "something is said: $(cat "$sandbox/said")"
    }
    start "$launcher"
    display=offscreen start env QT_QPA_PLATFORM=offscreen "$launcher"
    ln -s "$launcher" "$sandbox/link"
    start "$sandbox/link"
    start env -u HOME -u XDG_CONFIG_HOME "$launcher" an argument
}

# A console or a notifier that leads back to the launcher ends there, instead of going round for ever. The
# one that is used here would give up by itself after five rounds.
case_launcher_in_a_circle() {
    local programs=$sandbox/here/lib/norvane-sms launcher=$sandbox/here/bin/norvane-sms
    local again=$sandbox/again rounds=$sandbox/rounds
    mkdir -p "$sandbox/here/bin" "$programs" "$sandbox/tools"
    cp "$here/../../packaging/desktop/norvane-sms" "$launcher"
    export XDG_CONFIG_HOME=$sandbox/config PATH=$sandbox/tools:$PATH
    printf '#!/bin/sh\necho round >>"%s"\n[ "$(wc -l <"%s")" -ge 5 ] || exec "%s"\n' \
        "$rounds" "$rounds" "$launcher" >"$again"
    chmod +x "$again"

    ln -s "$(type -P true)" "$sandbox/tools/notify-send"
    ln -s "$again" "$programs/NorvaneSMS"
    # Nobody waits for a notifier; whatever runs holds this lock as long as it does.
    flock "$sandbox/lock" "$launcher" 2>"$sandbox/said" && fail "the console leads back: no error"
    flock "$sandbox/lock" true
    grep -q 'started by itself' "$sandbox/said" || fail "the console leads back: $(cat "$sandbox/said")"
    [[ $(wc -l <"$rounds") == 1 ]] || fail "the console leads back: $(wc -l <"$rounds") rounds"

    rm "$rounds"
    ln -sf "$again" "$sandbox/tools/notify-send"
    ln -sf "$(type -P true)" "$programs/NorvaneSMS"
    flock "$sandbox/lock" "$launcher" 2>/dev/null || fail "the notifier leads back: no console"
    flock "$sandbox/lock" true
    [[ $(wc -l <"$rounds") == 1 ]] || fail "the notifier leads back: $(wc -l <"$rounds") rounds"
}

# Before a removal the engine is asked to end, and waited for; before an upgrade it is left alone.
case_prerm() {
    local engine=$sandbox/TovekSMService script=$sandbox/prerm
    sed "s#@NORVANE_ENGINE_PROGRAM@#$engine#" "$here/../../packaging/debian/prerm.in" >"$script"
    # A program that takes its time to end, and one like it at another place.
    cp "$(command -v bash)" "$engine"
    cp "$(command -v bash)" "$sandbox/other"
    local lingering='trap "sleep 1; echo ended >>$0; exit" TERM; echo up >$0; read -r <>$0.pipe'
    mkfifo "$sandbox/one.pipe" "$sandbox/two.pipe"
    "$engine" -c "$lingering" "$sandbox/one" &
    first=$!
    "$sandbox/other" -c "$lingering" "$sandbox/two" &
    second=$!
    trap 'kill -KILL "$first" "$second" 2>/dev/null || true; wait 2>/dev/null || true; clear_sandbox' EXIT
    local deadline=$((SECONDS + 400))
    until [[ -s $sandbox/one && -s $sandbox/two ]]; do
        ((SECONDS < deadline)) || fail "the programs did not come up"
        sleep 0.02
    done

    sh "$script" upgrade 9.9 || fail "an upgrade fails"
    kill -0 "$first" || fail "an upgrade ends the engine"
    # What an upgrade leaves running is another file by now.
    cp "$(command -v bash)" "$engine.new"
    mv "$engine.new" "$engine"
    sh "$script" remove || fail "a removal fails"
    grep -q ended "$sandbox/one" || fail "a removal does not wait for the engine's end"
    kill -0 "$second" || fail "a removal ends a program that isn't ours"
    ! grep -q ended "$sandbox/two" || fail "a removal ends a program that isn't ours"
    sh "$script" remove || fail "a removal without an engine fails"
    rm "$engine"
    sh "$script" remove || fail "a removal without a program fails"
}

"case_$case"
echo "package_test $case: passed"
