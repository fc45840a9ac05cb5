#!/usr/bin/env bash
# Reads the real window below a virtual display as a screen reader does, and compares what it meets
# with a table, on a server and on a client:
#   accessible_window_test.sh BIN READER
set -euo pipefail

bin=$1
reader=$2
tools=$(dirname "$0")/../../tools
name=accessible_window_test
# shellcheck source=tools/driving.sh
source "$tools/driving.sh"
sandbox=$(mktemp -d)
trap 'clear_folder "$sandbox"' EXIT

unset LC_ALL
export LANG=es_ES.UTF-8
# As where a screen reader runs.
export QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1

cat >"$sandbox/drive.sh" <<'DRIVE'
set -euo pipefail
bin=$1 tools=$2 reader=$3 own=$4
# shellcheck source=tools/driving.sh
source "$tools/driving.sh"
trap finish EXIT
start_window_manager "$own/window-manager.out"
"$bin/NorvaneSMS" &
# The engine's first report comes a moment after the window.
matches() {
    "$reader" NorvaneSMS | sort >"$own/met" && cmp "$own/expected" "$own/met"
}
for _ in $(seq 8000); do
    matches >/dev/null 2>&1 && exit 0
    sleep 0.1
done
diff -u "$own/expected" "$own/met"
DRIVE

# meets MODE SERVER_MODE < TABLE
meets() {
    local own=$sandbox/$1
    mkdir -p "$own"/{config/Norvane,data,runtime,cache,queue}
    chmod 700 "$own/runtime"
    export XDG_CONFIG_HOME=$own/config XDG_DATA_HOME=$own/data
    export XDG_RUNTIME_DIR=$own/runtime XDG_CACHE_HOME=$own/cache
    printf '[SMS]\nServerMode=%s\nQueueFolder=%s\n' "$2" "$own/queue" \
        >"$own/config/Norvane/settings.ini"
    sort >"$own/expected"
    on_display 1280x800 dbus-run-session -- \
        bash "$own/../drive.sh" "$bin" "$tools" "$reader" "$own" ||
        fail "a screen reader meets something else on a $1"
}

meets server True <<'TABLE'
frame: Norvane SMS - Centro de mensajes
push button: Configurar
push button: Probar dispositivo
graphic: Norvane SMS - Centro de mensajes
panel: Nuevo mensaje
text: Texto del mensaje
label: Caracteres: 0 / 160
label: Teléfono
text: Teléfono
label: Fecha y hora de envío
spin box: Fecha de envío
spin box: Hora de envío
push button: Enviar
push button: Importar
panel: Detalle de comunicaciones
text: Detalle de comunicaciones
panel: Estado
graphic: Detenido
label: Detenido
panel: Cola de envío
graphic: Sin mensajes por enviar
label: Sin mensajes por enviar
label: Tempo previsto: 00:00:00
panel: Dispositivo
graphic: Dispositivo GSM
label: Dispositivo GSM
label: -
panel: Contenido de la cola de envío
table: Contenido de la cola de envío
push button: Iniciar el envío
push button: Detener el envío (disabled)
push button: Vaciar la cola de envío
panel: Mensajes enviados
table: Mensajes enviados
TABLE

meets client False <<'TABLE'
frame: Norvane SMS - Centro de mensajes
push button: Configurar
push button: Probar dispositivo (disabled)
graphic: Norvane SMS - Centro de mensajes
panel: Nuevo mensaje
text: Texto del mensaje
label: Caracteres: 0 / 160
label: Teléfono
text: Teléfono
label: Fecha y hora de envío
spin box: Fecha de envío
spin box: Hora de envío
push button: Enviar
push button: Importar
panel: Detalle de comunicaciones
text: Detalle de comunicaciones
panel: Estado
graphic: Detenido (disabled)
label: Iniciado (disabled)
panel: Cola de envío
graphic: Sin mensajes por enviar (disabled)
label: Sin mensajes por enviar (disabled)
label: Tempo previsto: 00:00:00 (disabled)
panel: Dispositivo
graphic: Dispositivo GSM
label: Dispositivo GSM (disabled)
label: - (disabled)
panel: Contenido de la cola de envío
table: Contenido de la cola de envío (disabled)
push button: Iniciar el envío (disabled)
push button: Detener el envío (disabled)
push button: Vaciar la cola de envío (disabled)
panel: Mensajes enviados
table: Mensajes enviados (disabled)
TABLE

echo "accessible_window_test: passed"
