#!/usr/bin/env bash
# Counts the instructions of Counted.cpp and compares them with figures.txt: more than 10 % off in either direction fails,
# so that a slow-down shows without a clock, and a gain is kept. Functions of the system's libraries are left out:
# which of them run depends on the processor.
# Usage: compare.sh PROGRAM [--update]
set -euo pipefail

figures=$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/figures.txt
program=$(readlink -f "$1")
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

(cd "$folder" && valgrind -q --tool=callgrind --instr-atstart=no --compress-strings=no --compress-pos=no \
    --callgrind-out-file=out "$program")

for dump in "$folder"/out.*; do
    # Cost lines belong to the object named last; the one behind "calls=" is the callee's.
    awk -v program="$program" '
        /^desc: Trigger: Client Request: / { name = $NF }
        /^ob=/ { ours = substr($0, 4) == program }
        /^calls=/ { getline; next }
        /^[0-9]/ && ours { count += $2 }
        END { if (name != "") print name, count }' "$dump"
done | sort >"$folder/counted"

if [ "${2:-}" = --update ]; then
    cp "$folder/counted" "$figures"
    cat "$figures"
    exit
fi
awk 'NR == FNR { expected[$1] = $2; next }
    {
        seen[$1] = 1
        change = ($1 in expected) && expected[$1] > 0 ? ($2 / expected[$1] - 1) * 100 : 100
        printf "%-17s %11d instructions, %+.1f %%\n", $1, $2, change
        if (change > 10 || change < -10) off = 1
    }
    END {
        for (name in expected) if (!(name in seen)) { print name " was not counted"; off = 1 }
        if (off) print "More than 10 % off. If that is meant: tests/instructions/compare.sh PROGRAM --update"
        exit off
    }' "$figures" "$folder/counted"
