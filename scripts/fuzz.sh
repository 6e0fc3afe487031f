#!/usr/bin/env bash
# Builds the fuzzers with clang, runs each for SECONDS (600), several at once, and tells in a table what came of it.
# What they find is left in build/fuzz/findings.
# Usage: scripts/fuzz.sh [--jobs N] [SECONDS [TARGET...]]
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
jobs=$(nproc)
if [ "${1:-}" = --jobs ]; then
    jobs=$2
    shift 2
fi
seconds=${1:-600}
targets=("${@:2}")
if [ ${#targets[@]} -eq 0 ]; then
    for folder in "$root"/fuzz/corpus/*/; do targets+=("$(basename "$folder")"); done
fi
[[ $jobs =~ ^[1-9][0-9]*$ && $seconds =~ ^[1-9][0-9]*$ ]] || {
    echo "usage: scripts/fuzz.sh [--jobs N] [SECONDS [TARGET...]]" >&2
    exit 2
}

"$root/scripts/dependencies.sh" fuzz
CC=clang CXX=clang++ "$root/scripts/build.sh" fuzz -DTAVRIN_FUZZ=ON -DTAVRIN_QT=OFF -DTAVRIN_TESTS=OFF -DTAVRIN_BENCH=OFF

build=$root/build/fuzz
mkdir -p "$build/findings"
# What targets write lies in memory, where waiting for the disk takes no time.
TMPDIR=$(mktemp -d -p "$([ -w /dev/shm ] && echo /dev/shm || echo /tmp)")
export TMPDIR
trap 'rm -rf "$TMPDIR"' EXIT

# fuzz TARGET: leaves TARGET.log, and in TARGET.seconds how long it ran
fuzz() {
    local target=$1 grown=$build/grown/$1 # what fuzzing adds to the corpus goes there
    mkdir -p "$grown"
    local options=(-max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -print_final_stats=1
        -artifact_prefix="$build/findings/$target-")
    [ ! -f "$root/fuzz/$target.dict" ] || options+=(-dict="$root/fuzz/$target.dict")
    local seeds=("$root/fuzz/corpus/$target")
    [ "$target" != scripts ] || seeds+=("$root/tests/replay")
    local begin=$SECONDS
    (cd "$grown" && exec "$build/fuzz/fuzz_$target" "${options[@]}" "$grown" "${seeds[@]}") >"$build/$target.log" 2>&1 ||
        echo "broken off: status $?" >>"$build/$target.log"
    echo $((SECONDS - begin)) >"$build/$target.seconds"
}

echo "Fuzzing ${#targets[@]} targets for $seconds s each, $jobs at once"
for target in "${targets[@]}"; do
    while [ "$(jobs -rp | wc -l)" -ge "$jobs" ]; do wait -n; done
    fuzz "$target" &
done
wait

failed=()
printf '%-14s %8s %12s  %s\n' target seconds inputs findings
for target in "${targets[@]}"; do
    log=$build/$target.log
    units=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
    finding=none
    if grep -q '^broken off' "$log"; then
        failed+=("$target")
        finding=$(grep -m 1 -E '^broken: |^SUMMARY|ERROR: ' "$log" || tail -n 1 "$log")
    fi
    printf '%-14s %8s %12s  %s\n' "$target" "$(cat "$build/$target.seconds")" "${units:-?}" "$finding"
done
if [ ${#failed[@]} -gt 0 ]; then
    echo "Findings in ${failed[*]}: see $build/*.log and $build/findings" >&2
    exit 1
fi
