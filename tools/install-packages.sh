#!/usr/bin/env bash
# Installs the Debian packages that Norvane SMS is built, run and tested with.
# This file is the only place where they are listed; run.sh and test.sh call it.
#
#   tools/install-packages.sh run      install what is missing to build it and run it
#   tools/install-packages.sh engines  and the database server that several engines share
#   tools/install-packages.sh tests    and what the tests ask for beside
#   tools/install-packages.sh tests --list   print that list, one package a line
set -euo pipefail

packages=(
    # build
    g++ cmake ninja-build
    qt6-base-dev qt6-base-dev-tools qt6-svg-dev qt6-charts-dev libqt6opengl6-dev qt6-serialport-dev libicu-dev
    libquazip1-qt6-dev libexpected-dev libxcb1-dev
    libpq-dev pkg-config
    libgtest-dev libgmock-dev libbenchmark-dev
    # run: database driver, drawings, the toolkit's own texts, the console's font, the session bus
    libqt6sql6-sqlite libqt6svg6 qt6-translations-l10n fonts-liberation2 dbus dbus-daemon
    # a display of its own where there is none, and hands to drive the window with
    xvfb xauth openbox xdotool x11-utils imagemagick
)
packages_of_engines=(postgresql-15)
packages_of_tests=(
    # the bus that a screen reader asks over
    at-spi2-core
    # general modem tools as independent judges of the simulated modem; the second one is what the
    # engine sends through where it is asked to
    gammu modemmanager
    # judges of what the package brings to the desktop
    desktop-file-utils appstream
)

case ${1:-} in
run) ;;
engines) packages+=("${packages_of_engines[@]}") ;;
tests) packages+=("${packages_of_engines[@]}" "${packages_of_tests[@]}") ;;
*)
    echo "usage: tools/install-packages.sh run|engines|tests [--list]" >&2
    exit 2
    ;;
esac

if [[ ${2:-} == --list ]]; then
    printf '%s\n' "${packages[@]}"
    exit 0
fi

missing=()
for package in "${packages[@]}"; do
    # One line for each architecture that the package is known in.
    status=$(dpkg-query -W -f='${db:Status-Status}\n' "$package" 2>/dev/null || true)
    grep -qx installed <<<"$status" || missing+=("$package")
done
[[ ${#missing[@]} -eq 0 ]] && exit 0

as_root=()
if [[ $(id -u) -ne 0 ]]; then
    command -v sudo >/dev/null || {
        echo "These packages are missing, and installing them needs root: ${missing[*]}" >&2
        exit 1
    }
    as_root=(sudo)
fi

echo "Installing: ${missing[*]}"
# sudo drops the environment: the frontend is named on its far side.
apt_get=("${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -qq)
"${apt_get[@]}" update

# The tests run database servers of their own; the package's default one, which would be started and
# listen, is not set up. Where somebody else wants one later: pg_createcluster.
if [[ " ${missing[*]} " == *" postgresql-15 "* ]]; then
    settings=/etc/postgresql-common/createcluster.d
    no_cluster=$settings/norvane-tests.conf
    "${as_root[@]}" mkdir -p "$settings"
    "${as_root[@]}" tee "$no_cluster" >/dev/null <<<'create_main_cluster = false'
    trap '"${as_root[@]}" rm -f "$no_cluster"' EXIT
fi
"${apt_get[@]}" install -y --no-install-recommends "${missing[@]}" >/dev/null
