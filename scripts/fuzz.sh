#!/usr/bin/env bash
# Builds the fuzz targets and runs each on a corpus that starts from tests/data. Stops at the first input that
# breaks a target; the input is then in build/fuzz/finds.
#
# usage: fuzz.sh [SECONDS]     for each target; 60 without it
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
seconds=${1:-60}
work="$root/build/fuzz"
cd "$root"
targets=(segment_soup_fuzz triangle_soup_fuzz zone_soup_fuzz mesh_fuzz removal_fuzz segment_checker_fuzz point_file_fuzz)
cmake --preset asan-ubsan
cmake --build --preset asan-ubsan --target "${targets[@]}"

# From the seeds alone each time, so that equal builds try the same inputs in the same order.
rm -rf "$work/corpus"
mkdir -p "$work/finds"
python3 scripts/fuzz_seeds.py tests/data "$work/corpus"
# Entropic schedules weigh rare features anew for each input, which takes most of the time where targets are as slow
# and reach as far as these: without them, up to six times as many inputs are tried.
run() { # TARGET
    cd "$work/finds"
    "$root/build/asan-ubsan/fuzz/$1" "$work/corpus/$1" -seed=1 -max_total_time="$seconds" -entropic=0 -timeout=20 \
        -rss_limit_mb=2048 -malloc_limit_mb=512 -max_len=4096 -print_final_stats=1 -artifact_prefix="$work/finds/${1}_"
}

# All at once: most machines have a core for each or nearly so.
declare -A jobs
for target in "${targets[@]}"; do
    (run "$target") >"$work/$target.log" 2>&1 &
    jobs[$target]=$!
done
failed=0
for target in "${!jobs[@]}"; do
    lines=12
    if ! wait "${jobs[$target]}"; then
        failed=1
        lines=200
    fi
    printf '== %s, %s s\n' "$target" "$seconds"
    tail -n "$lines" "$work/$target.log"
done
exit "$failed"
