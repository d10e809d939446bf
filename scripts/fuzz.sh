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
cmake --preset fuzz
cmake --build --preset fuzz

# From the seeds alone each time, so that equal builds try the same inputs in the same order.
rm -rf "$work/corpus"
mkdir -p "$work/finds"
python3 scripts/fuzz_seeds.py tests/data "$work/corpus"
for target in segment_soup_fuzz zone_soup_fuzz point_file_fuzz; do
    printf '== %s, %s s\n' "$target" "$seconds"
    (cd "$work/finds" && "$work/fuzz/$target" "$work/corpus/$target" -seed=1 -max_total_time="$seconds" -timeout=20 \
        -rss_limit_mb=2048 -malloc_limit_mb=512 -max_len=4096 -print_final_stats=1 \
        -artifact_prefix="$work/finds/${target}_")
done
