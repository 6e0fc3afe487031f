#!/usr/bin/env bash
# Builds the fuzzers with clang and runs each for SECONDS; what it finds is left in build/fuzz/findings.
# Usage: scripts/fuzz.sh SECONDS [TARGET...]
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
seconds=$1
shift
targets=("$@")
if [ ${#targets[@]} -eq 0 ]; then
    for folder in "$root"/fuzz/corpus/*/; do targets+=("$(basename "$folder")"); done
fi

"$root/scripts/dependencies.sh" fuzz
CC=clang CXX=clang++ "$root/scripts/build.sh" fuzz -DTAVRIN_FUZZ=ON -DTAVRIN_QT=OFF -DTAVRIN_TESTS=OFF -DTAVRIN_BENCH=OFF

build=$root/build/fuzz
mkdir -p "$build/findings"
failed=()
for target in "${targets[@]}"; do
    grown=$build/grown/$target # what fuzzing adds to the corpus goes here
    mkdir -p "$grown"
    options=(-max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -print_final_stats=1
        -artifact_prefix="$build/findings/$target-")
    [ ! -f "$root/fuzz/$target.dict" ] || options+=(-dict="$root/fuzz/$target.dict")
    seeds=("$root/fuzz/corpus/$target")
    [ "$target" != scripts ] || seeds+=("$root/tests/replay")
    echo "== $target, $seconds s"
    (cd "$grown" && "$build/fuzz/fuzz_$target" "${options[@]}" "$grown" "${seeds[@]}") >"$build/$target.log" 2>&1 ||
        failed+=("$target")
    grep -E '^stat::number_of_executed_units|^SUMMARY|^broken' "$build/$target.log" || true
done
if [ ${#failed[@]} -gt 0 ]; then
    echo "Findings in ${failed[*]}: see $build/*.log and $build/findings" >&2
    exit 1
fi
echo "No findings."
