#!/usr/bin/env bash
# Installs what is missing, builds, and runs every test: offscreen, and on session buses of the
# tests' own. The preset can be named: ./test.sh asan
set -euo pipefail
cd "$(dirname "$0")"

preset=${1:-release}
tools/install-packages.sh tests
cmake --preset "$preset" >/dev/null
cmake --build --preset "$preset"
exec ctest --preset "$preset"
