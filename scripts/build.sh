#!/usr/bin/env bash
# Configures and builds the project into build/NAME.
# Usage: scripts/build.sh NAME [CMAKE-ARGUMENT...]
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
folder=$root/build/$1
shift

# Paths relative to the checkout, so that every checkout shares what the compiler cache holds.
export CCACHE_BASEDIR=$root CCACHE_NOHASHDIR=1

cmake -S "$root" -B "$folder" -G Ninja "$@"
cmake --build "$folder" --parallel "$(nproc)"
