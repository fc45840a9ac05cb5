#!/usr/bin/env bash
# Tries the packages out on a Debian 12 that has nothing else: installs them, plays an operator's first
# start below a virtual display, upgrades over an engine at work, removes and purges. By hand, as root:
#   fresh_root.sh PACKAGES FOLDER
# PACKAGES is what package_checked made (build/package/packages). FOLDER takes the fresh system, and a
# bare one (FOLDER/base) that later runs begin with; pictures of the display are left there. It
# needs debootstrap, imagemagick, the network, and some 1.5 GB. Everything runs in a process and mount
# namespace of its own, which ends with this script.
set -euo pipefail

[[ $# -eq 2 && $(id -u) -eq 0 ]] || {
    echo "usage, as root: fresh_root.sh PACKAGES FOLDER" >&2
    exit 2
}
if [[ -z ${FRESH_ROOT_INSIDE:-} ]]; then
    export FRESH_ROOT_INSIDE=1
    exec unshare --mount --mount-proc --pid --fork --kill-child "$0" "$@"
fi

packages=$(cd "$1" && pwd)
mkdir -p "$2"
folder=$(cd "$2" && pwd)
root=$folder/root
home=/home/shop
store=$home/.local/share/TovekSMService/queue.sqlite
log=$root$home/received.jsonl

say() { printf '%s  %s\n' "$(date +%T)" "$*"; }
fail() {
    echo "fresh_root: $*" >&2
    picture failure || true
    exit 1
}
# await SECONDS COMMAND...: runs the command until it succeeds.
await() {
    local deadline=$((SECONDS + $1))
    shift
    until "$@" >/dev/null 2>&1; do
        ((SECONDS < deadline)) || fail "gave up waiting for: $*"
        sleep 0.2
    done
}

# --- The fresh system -----------------------------------------------------------------------------

in_root() { chroot "$root" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LANG=C.UTF-8 \
    DEBIAN_FRONTEND=noninteractive "$@"; }
apt() { in_root apt-get -qq -y -o Dpkg::Use-Pty=0 -o APT::Sandbox::User=root "$@" >>"$folder/apt.log" 2>&1 ||
    fail "apt-get $* ($(tail -n 3 "$folder/apt.log"))"; }

make_root() {
    if [[ ! -e $folder/base/etc/debian_version ]]; then
        say "debootstrap: a bare Debian 12"
        debootstrap --variant=minbase bookworm "$folder/base" >"$folder/debootstrap.log" ||
            fail "debootstrap, see $folder/debootstrap.log"
    fi
    rm -rf --one-file-system "$root"
    cp -a "$folder/base" "$root"
    cp /etc/resolv.conf "$root/etc/resolv.conf"
    printf '#!/bin/sh\nexit 101\n' >"$root/usr/sbin/policy-rc.d" # no services in here
    chmod +x "$root/usr/sbin/policy-rc.d"
    mount -t proc proc "$root/proc"
    mount -t devpts devpts "$root/dev/pts" -o newinstance,ptmxmode=0666,mode=0620,gid=5
    mount -t tmpfs tmpfs "$root/dev/shm"
    mkdir -p "$root/packages"
    cp "$packages"/*.deb "$root/packages/"
    main=$(cd "$root" && echo ./packages/norvane-sms_*.deb)
    simulator=$(cd "$root" && echo ./packages/norvane-sms-simulator_*.deb)
    : >"$folder/apt.log"
    apt update
}

# --- The operator's session -----------------------------------------------------------------------

as_operator() {
    chroot --userspec=shop:shop "$root" env -i PATH=/usr/bin:/bin HOME=$home \
        USER=shop LANG=C.UTF-8 XDG_RUNTIME_DIR=/run/shop DISPLAY=:7 \
        DBUS_SESSION_BUS_ADDRESS="${bus:-}" "$@"
}
begin_session() {
    in_root install -d -o shop -g shop -m 700 /run/shop
    bus=unix:path=/run/shop/bus
    rm -f "$root/run/shop/bus"
    as_operator dbus-daemon --session --nofork --address="$bus" >>"$folder/bus.log" 2>&1 &
    session=$!
    await 10 test -S "$root/run/shop/bus"
}
bus_call() { as_operator dbus-send --session --print-reply=literal "$@"; }
bus_daemon() {
    bus_call --dest=org.freedesktop.DBus /org/freedesktop/DBus "org.freedesktop.DBus.$1" \
        string:com.tovek.SMService
}
engine_call() {
    local call=$1
    shift
    bus_call --dest=com.tovek.SMService /com/tovek/SMService \
        "com.tovek.SMService.SMSManager1.$call" "$@"
}
engine_is_up() { [[ $(bus_daemon NameHasOwner) == *true* ]]; }
engine_process() { bus_daemon GetConnectionUnixProcessID | awk '{print $2}'; }
engine_file() { readlink "/proc/$(engine_process)/exe" | sed "s#^$root##"; }
waiting() { engine_call GetQueueSize | awk '{print $2}'; }
waiting_is() { [[ $(waiting) == "$1" ]]; }
received() { grep -c . "$log" || true; }
received_is() { [[ $(received) == "$1" ]]; }
received_is_above() { (($(received) > $1)); }
# queue TEXT WHEN: a message for that moment, as date(1) understands it.
queue() {
    engine_call AddSMS string:912345678 "string:$1" "string:$(date -d "$2" +%FT%T)" >/dev/null ||
        fail "AddSMS $1"
}

picture() {
    [[ -e $root/run/display/Xvfb_screen0 ]] || return 0
    convert "xwd:$root/run/display/Xvfb_screen0" "$folder/$1.png" 2>/dev/null
}
window_of() { as_operator xdotool search --all --onlyvisible --name "$1" 2>/dev/null | tail -n 1; }
has_window() { [[ -n $(window_of "$1") ]]; }
has_no_window() { ! has_window "$1"; }
open_console() {
    as_operator norvane-sms 2>"$folder/console.err" &
    await 30 has_window 'Norvane SMS - '
    window=$(window_of 'Norvane SMS - ')
    await 10 as_operator timeout 5 xdotool windowactivate --sync "$window"
    sleep 2 # lets the window draw itself, for the pictures alone
}
close_console() {
    as_operator xdotool windowclose "$window"
    await 10 has_no_window 'Norvane SMS - '
}
# The places are those of the window's design, in pixels from its inner corner.
press() { as_operator xdotool mousemove --sync --window "$window" "$1" "$2" click 1; }

# --- What is tried --------------------------------------------------------------------------------

install_packages() {
    apt install --no-install-recommends "$main"
    local missing
    missing=$(in_root sh -c 'ldd /usr/lib/norvane-sms/[NT]*[!L] | grep "not found"' || true)
    [[ -z $missing ]] || fail "libraries are missing: $missing"
    in_root dpkg --verify norvane-sms | grep . && fail "the installed files differ from the package's"
    missing=$(in_root env XDG_RUNTIME_DIR=/run systemd-analyze verify --user \
        /usr/lib/systemd/user/tovek-sms.service /usr/lib/systemd/user/tovek-sms@.service 2>&1) ||
        fail "the units: $missing"
    say "installed norvane-sms with what it depends on, and nothing else: no library is missing"

    # With nothing that a test brings along: the console comes up, and the bus starts the engine.
    in_root useradd --create-home shop
    begin_session
    as_operator env QT_QPA_PLATFORM=offscreen norvane-sms 2>"$folder/console.err" &
    local console=$!
    await 30 engine_is_up
    kill -TERM "$console" "$(engine_process)"
    wait "$console" 2>/dev/null || true
    kill "$session"
    [[ -e $root$store ]] || fail "the engine made no store"
    rm -rf "${root:?}$home/.local" "${root:?}$home/.config"
    say "with that alone, the console comes up and the bus starts the engine"
}

start_display() {
    apt install --no-install-recommends "$simulator" \
        xvfb openbox xdotool libnotify-bin dunst
    mkdir -p "$root/run/display" "$root/tmp/.X11-unix"
    chmod 1777 "$root/tmp/.X11-unix"
    chmod 777 "$root/run/display"
    begin_session
    as_operator Xvfb :7 -screen 0 1280x800x24 -dpi 96 -fbdir /run/display >/dev/null 2>&1 &
    await 20 as_operator xdotool getdisplaygeometry
    as_operator openbox >/dev/null 2>&1 &
    await 20 as_operator xdotool get_desktop
    as_operator dunst >/dev/null 2>&1 &
    as_operator gsm-simulator --link "$home/gsm" --log "$home/received.jsonl" --latency 300 \
        >"$folder/simulator.out" 2>&1 &
    await 10 grep -q ready "$folder/simulator.out"
    as_operator TovekSMService --device "$home/gsm, 115200"
}

first_start() {
    engine_is_up && fail "there is an engine before anyone called it"
    open_console
    grep -q 'Falta la carpeta' "$folder/console.err" || fail "nobody was told about the queue folder"
    picture first-start
    say "first start: the operator is told that a queue folder is to be chosen"
    await 20 engine_is_up
    [[ $(engine_file) == /usr/lib/norvane-sms/TovekSMService ]] || fail "the engine is $(engine_file)"
    # The bus says so in the environment of what it starts.
    tr '\0' '\n' <"/proc/$(engine_process)/environ" | grep -qx DBUS_STARTER_BUS_TYPE=session ||
        fail "the engine was not started by the bus"
    say "the engine came up by bus activation"

    press 370 128
    as_operator xdotool type --delay 15 912345678
    press 150 128
    as_operator xdotool type --delay 15 "Hola desde el paquete"
    press 505 122
    await 30 grep -q '"number":"912345678","text":"Hola desde el paquete"' "$log"
    picture sent
    await 10 as_operator xdotool search --onlyvisible --name '^Norvane SMS$'
    as_operator xdotool key Return
    say "one message through the window arrived at the simulated device"
}

# The next version is this one under a higher number, in new files.
make_next_version() {
    local next=$root/packages/next
    dpkg-deb --raw-extract "$root/$main" "$next"
    sed -i 's/^\(Version: .*\)/\1+next1/' "$next/DEBIAN/control"
    dpkg-deb --root-owner-group --build "$next" "$root/packages/next.deb" >/dev/null
    rm -rf "$next"
}

upgrade() {
    local before old number
    make_next_version
    before=$(received)
    for number in $(seq 40); do queue "ahora $number" now; done
    for number in $(seq 5); do queue "luego $number" "+40 seconds"; done
    for number in $(seq 3); do queue "otro dia $number" "2099-01-0$number 09:00"; done
    old=$(engine_process)
    await 20 received_is_above "$before"
    apt install ./packages/next.deb
    [[ $(in_root dpkg-query -W -f '${Version}' norvane-sms) == *+next1 ]] || fail "no upgrade"
    say "upgraded while $(waiting) messages wait, $(($(received) - before)) of 48 sent so far"

    [[ $(engine_process) == "$old" ]] || fail "the upgrade ended the engine"
    [[ $(engine_file) == *deleted* ]] || fail "the engine is not the one of before: $(engine_file)"
    local sent
    sent=$(received)
    await 20 received_is_above "$((sent + 3))"
    say "the engine of before goes on sending"

    # As the end of the session does it, or: systemctl --user restart tovek-sms.
    kill -TERM "$old"
    await 30 test ! -e "/proc/$old"
    close_console
    open_console
    await 20 engine_is_up
    [[ $(engine_file) == /usr/lib/norvane-sms/TovekSMService ]] || fail "the engine is $(engine_file)"
    say "the engine of the new version took over with $(waiting) messages"
    await 120 received_is "$((before + 45))"
    await 20 waiting_is 3
    check_each_once
}

check_each_once() {
    local text
    for text in $(seq -f 'ahora_%g' 40) $(seq -f 'luego_%g' 5); do
        [[ $(grep -c "\"text\":\"${text/_/ }\"" "$log") == 1 ]] || fail "${text/_/ } is not there once"
    done
    grep -q 'otro dia' "$log" && fail "a message was sent before its moment"
    picture upgraded
    say "45 messages arrived once each, none twice, none lost; 3 wait for 2099"
}

remove_and_purge() {
    local engine
    engine=$(engine_process)
    close_console
    test -e "/proc/$engine" || fail "the engine ended with the console"
    apt remove norvane-sms
    [[ ! -e /proc/$engine ]] || fail "the removal left the engine"
    [[ ! -e $root/usr/lib/norvane-sms && ! -e $root/usr/bin/norvane-sms ]] || fail "programs are left"
    say "removed: the engine ended, the programs are gone"
    apt purge norvane-sms norvane-sms-simulator
    in_root dpkg-query -W 'norvane-sms*' 2>/dev/null | grep . && fail "a package is left"
    local left
    left=$(find "$root"/{usr,etc,var,opt} -xdev \( -iname '*norvane*' -o -iname '*tovek*' \) \
        -not -path '*/apt/*' -print)
    [[ -z $left ]] || fail "the purge left: $left"
    [[ -e $root$store ]] || fail "the purge took the operator's queue"
    say "purged: nothing of the packages is left, and the operator's data is where it was:"
    (cd "$root$home" && find . -path './.cache' -prune -o -type f -print | grep -i 'norvane\|tovek' | sort |
        sed 's/^/            ~\//;s#/\./#/#')

    apt install --no-install-recommends "$main"
    [[ $(as_operator TovekSMService --queue | grep -c 'otro dia') == 3 ]] || fail "the queue is gone"
    say "installed anew: the 3 messages for 2099 are still in the queue"
}

make_root
install_packages
start_display
first_start
upgrade
remove_and_purge
say "done; pictures are in $folder"
