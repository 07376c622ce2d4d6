#!/usr/bin/env bash
# Runs every benchmark program in the given build folder and its subfolders, one after another.
# Extra arguments go to each program, e.g. --benchmark_repetitions=3.
set -euo pipefail
dir=${1:-build/release/bench}
shift || true
mapfile -t programs < <(find "$dir" -type f -name '*Bench' -perm -u+x | sort)
for program in "${programs[@]}"; do
    echo "== ${program#"$dir"/}"
    "$program" --benchmark_counters_tabular=true "$@"
done
