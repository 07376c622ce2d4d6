#!/usr/bin/env bash
# Runs every fuzz target built in the given folder for the given seconds, one after another,
# over its seed corpus (corpus/<target>, written by the build) and its own growing corpus
# (work/<target>). A crash stops the run with the target's report and the input saved under
# artifacts/. Usage: fuzz/run-all.sh build/fuzz/fuzz [seconds, default 60]
set -euo pipefail
dir=${1:-build/fuzz/fuzz}
seconds=${2:-60}
mapfile -t targets < <(find "$dir" -maxdepth 1 -type f -name '*Fuzz' -perm -u+x | sort)
if [ ${#targets[@]} -eq 0 ]; then
    echo "no fuzz targets in $dir" >&2
    exit 1
fi
for target in "${targets[@]}"; do
    name=$(basename "$target")
    mkdir -p "$dir/work/$name" "$dir/artifacts" "$dir/corpus/$name"
    echo "== $name for ${seconds}s"
    "$target" -max_total_time="$seconds" -print_final_stats=1 -timeout=10 -rss_limit_mb=2048 \
        -artifact_prefix="$dir/artifacts/$name-" "$dir/work/$name" "$dir/corpus/$name"
done
