#!/usr/bin/env bash
# Installs the Debian packages that are needed and missing. Asks for nothing and changes nothing when all are there.
# Usage: scripts/dependencies.sh run|test|fuzz|peers
set -euo pipefail

build=(
    g++ cmake ninja-build ccache
    qt6-base-dev # window, printing, offscreen rendering
    libicu-dev   # encodings, case mapping
    libxml2-dev libxerces-c-dev # schemas
)
# The first font is the editor's own; the others show what it lacks: Arabic and more, CJK, emoji.
fonts=(fontconfig fonts-liberation fonts-dejavu-core fonts-wqy-microhei fonts-noto-color-emoji)
# The end-to-end tests drive the program with real keys in a window manager on a virtual display, and read its PDF files.
tests=(libgtest-dev libbenchmark-dev xvfb xauth x11-xkb-utils openbox xdotool xclip poppler-utils
    docbook5-xml docbook-xml w3c-sgml-lib) # published schemas, with catalogs

case "${1:-}" in
run) wanted=("${build[@]}" "${fonts[@]}") ;;
test) wanted=("${build[@]}" "${fonts[@]}" "${tests[@]}") ;;
fuzz) wanted=("${build[@]}" clang llvm) ;;
peers) wanted=(libqscintilla2-qt6-dev libkf5texteditor-dev) ;; # what bench/run measures beside the editor
*)
    echo "usage: scripts/dependencies.sh run|test|fuzz|peers" >&2
    exit 2
    ;;
esac

if ! command -v apt-get >/dev/null; then
    echo "This is not a Debian system; install the counterparts of: ${wanted[*]}" >&2
    exit 0 # they may be there under other names: the build will tell
fi

missing=()
for package in "${wanted[@]}"; do
    status=$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null || true)
    [ "$status" = installed ] || missing+=("$package")
done
[ ${#missing[@]} -gt 0 ] || exit 0

as_root=()
if [ "$(id -u)" -ne 0 ]; then
    if ! command -v sudo >/dev/null; then
        echo "Missing packages, and neither root nor sudo to install them: ${missing[*]}" >&2
        exit 1
    fi
    as_root=(sudo)
fi

echo "Installing ${missing[*]}"
apt=("${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -q
    -o DPkg::Lock::Timeout=300 -o Acquire::Retries=3)
# A source that cannot be reached need not be the one that is wanted: the installation decides.
"${apt[@]}" update || echo "apt-get update reported errors; going on" >&2
"${apt[@]}" install -y --no-install-recommends "${missing[@]}" </dev/null
