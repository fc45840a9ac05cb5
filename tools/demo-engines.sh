#!/usr/bin/env bash
# The demonstration of several engines with one queue, in a sandbox of its own below build/demo:
#   demo-engines.sh N   starts a PostgreSQL server, N simulated devices and N engines, queues 400 messages with
#                       the first one, and prints who sent how many
set -euo pipefail
# shellcheck source=tools/driving.sh
source "$(dirname "$0")/driving.sh"
cd "$(dirname "$0")/.."

count=$1
messages=400
bin=$PWD/build/release/bin
demo=$PWD/build/demo/engines
programs=$(find /usr/lib/postgresql -maxdepth 2 -name bin | sort -V | tail -n 1)

if [[ -z ${NORVANE_DEMO_BUS:-} ]]; then
    NORVANE_DEMO_BUS=1 exec "${on_own_bus[@]}" "tools/${0##*/}" "$count"
fi

# The server's socket has a short path, and a folder that the server's account can reach.
server=$(mktemp -d /tmp/norvane-demo-XXXXXX)
as_server=()
if [[ $(id -u) -eq 0 ]]; then
    as_server=(runuser -u postgres --)
    chown postgres "$server"
fi
on_server() { (cd "$server" && "${as_server[@]}" "$@"); }
leave() {
    finish
    on_server "$programs/pg_ctl" -D "$server/data" -m immediate stop >/dev/null 2>&1 || true
    rm -rf "$server"
}
trap leave EXIT

clear_folder "$demo"
mkdir -p "$demo"/{config/Norvane,data,runtime}
chmod 700 "$demo/runtime"
export XDG_CONFIG_HOME=$demo/config XDG_DATA_HOME=$demo/data XDG_RUNTIME_DIR=$demo/runtime

echo "A private database server in $server"
on_server "$programs/initdb" -D "$server/data" -U norvane -A trust --encoding UTF8 --locale C >/dev/null
on_server "$programs/pg_ctl" -D "$server/data" -l "$server/log" -w \
    -o "-k $server -c listen_addresses=''" start >/dev/null
on_server "$programs/createdb" -h "$server" -U norvane norvane

call() {
    dbus-send --print-reply --dest="com.tovek.SMService.$1" /com/tovek/SMService \
        "com.tovek.SMService.SMSManager1.$2" "${@:3}" >/dev/null
}

for ((number = 1; number <= count; ++number)); do
    engine=engine$number
    printf '[Queue]\nDatabase=host=%s dbname=norvane user=norvane\nName=%s\n' "$server" "$engine" \
        >"$demo/config/Norvane/TovekSMService@$engine.ini"
    plug_in_simulator "$bin" "$demo/$engine.gsm" "$demo/$engine.jsonl" "$demo/$engine.out" --latency 50
    "$bin/TovekSMService" --name "$engine" --device "$demo/$engine.gsm, 115200"
    "$bin/TovekSMService" --name "$engine" 2>"$demo/$engine.log" &
done
for ((number = 1; number <= count; ++number)); do
    await 20 call "engine$number" StartEngine
done

echo "$messages messages are queued with engine1"
start=$SECONDS
for ((number = 1; number <= messages; ++number)); do
    call engine1 AddSMS string:912345678 "string:Message $number" string:2020-01-01T00:00:00
done
sent() { [[ $(cat "$demo"/*.jsonl 2>/dev/null | wc -l) -ge $messages ]]; }
await 120 sent
echo "sent within $((SECONDS - start)) s"
for ((number = 1; number <= count; ++number)); do
    printf '  engine%-3d %s\n' "$number" "$(wc -l <"$demo/engine$number.jsonl" 2>/dev/null || echo 0)"
done
twice=$(sed -E 's/.*"text":"([^"]*)".*/\1/' "$demo"/*.jsonl | sort | uniq -d | wc -l)
echo "sent twice: $twice"
await 20 test -z "$("$bin/TovekSMService" --name engine1 --queue)"
echo "The engines, as each of them sees them:"
"$bin/TovekSMService" --name engine1 --engines
[[ $twice -eq 0 ]]
