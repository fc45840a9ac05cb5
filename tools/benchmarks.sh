#!/usr/bin/env bash
# Runs the benchmark programs of build/release and prints their figures.
set -euo pipefail
cd "$(dirname "$0")/.."

log=$(mktemp)
trap 'rm -f "$log"' EXIT

# What builds is of no interest as long as it does.
quietly() {
    "$@" >"$log" 2>&1 && return
    cat "$log" >&2
    echo "benchmarks.sh: the benchmarks can't be built, no figures were taken ($*)" >&2
    exit 1
}
on_own_bus() { dbus-run-session --config-file=tools/session-bus.conf -- "$@"; }

quietly cmake --preset release
quietly cmake --build --preset release --target benchmarks
build/release/bench/console_bench --benchmark_min_time=0.5
on_own_bus build/release/bench/whole_path_bench
on_own_bus build/release/bench/queue_bench
on_own_bus build/release/bench/throughput_bench
on_own_bus build/release/bench/throughput_bench memory
on_own_bus build/release/bench/queue_latency_bench
on_own_bus build/release/bench/shared_queue_bench
on_own_bus build/release/bench/history_bench
on_own_bus build/release/bench/history_window_bench
on_own_bus build/release/bench/import_bench
