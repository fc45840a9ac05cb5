#!/usr/bin/env bash
# Runs the benchmark programs of build/release and prints their figures.
set -euo pipefail
cd "$(dirname "$0")/.."

on_own_bus() { dbus-run-session --config-file=tools/session-bus.conf -- "$@"; }

cmake --preset release >/dev/null
cmake --build --preset release --target benchmarks >/dev/null
build/release/bench/console_bench --benchmark_min_time=0.5
on_own_bus build/release/bench/whole_path_bench
on_own_bus build/release/bench/queue_bench
on_own_bus build/release/bench/throughput_bench
on_own_bus build/release/bench/throughput_bench memory
on_own_bus build/release/bench/queue_latency_bench
on_own_bus build/release/bench/import_bench
