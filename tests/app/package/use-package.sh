#!/usr/bin/env bash
# Installs the built project into a folder of its own and builds a host against what lies there.
# Usage: use-package.sh BUILD-FOLDER
set -euo pipefail

build=$1
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cmake --install "$build" --prefix "$work/installed" >"$work/log"
mkdir "$work/host"
cp "$here/host.cpp" "$work/host"
cp "$here/host-project.cmake" "$work/host/CMakeLists.txt"
cmake -S "$work/host" -B "$work/host/build" -G Ninja -DCMAKE_PREFIX_PATH="$work/installed" >>"$work/log"
cmake --build "$work/host/build" >>"$work/log" || {
    cat "$work/log"
    exit 1
}
cd "$work"
said=$(HOME=$work QT_QPA_PLATFORM=offscreen "$work/host/build/host" 2>/dev/null)
[ "$said" = '<greeting>hello</greeting>' ] || {
    echo "FAILED: the host said: $said" >&2
    exit 1
}
"$work/installed/bin/tavrin-xml-editor" --version
