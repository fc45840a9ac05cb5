#!/usr/bin/env bash
# Runs the benchmark programs of build/release and prints their figures.
set -euo pipefail
cd "$(dirname "$0")/.."

cmake --preset release >/dev/null
cmake --build --preset release --target benchmarks >/dev/null
build/release/bench/console_bench --benchmark_min_time=0.5
dbus-run-session -- build/release/bench/whole_path_bench
dbus-run-session -- build/release/bench/queue_bench
dbus-run-session -- build/release/bench/throughput_bench
dbus-run-session -- build/release/bench/throughput_bench memory
dbus-run-session -- build/release/bench/queue_latency_bench
dbus-run-session -- build/release/bench/import_bench
