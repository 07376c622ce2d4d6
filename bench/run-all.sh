#!/usr/bin/env bash
# Runs every benchmark program in the given build folder, one after another.
set -euo pipefail
dir=${1:-build/release/bench}
for program in "$dir"/*Bench; do
    [ -x "$program" ] || continue
    echo "== $(basename "$program")"
    "$program" --benchmark_counters_tabular=true
done
