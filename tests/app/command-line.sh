#!/usr/bin/env bash
# The program from the command line, without any display.
# Usage: command-line.sh PROGRAM SAMPLE
set -euo pipefail

program=$1
sample=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
unset DISPLAY WAYLAND_DISPLAY QT_QPA_PLATFORM
export HOME=$work XDG_CONFIG_HOME=$work/config LC_ALL=C.UTF-8

fail() {
    echo "FAILED: $*" >&2
    exit 1
}
# expect STATUS PATTERN ARGUMENT...: the exit status, and what standard output and error together say
expect() {
    local status=0 wanted=$1 pattern=$2 said
    shift 2
    said=$("$program" "$@" 2>&1) || status=$?
    [ "$status" = "$wanted" ] || fail "$* ended with $status: $said"
    grep -qE -- "$pattern" <<<"$said" || fail "$* said: $said"
}
is_picture() { [ "$(head -c 8 "$1" | od -An -tx1 | tr -d ' \n')" = 89504e470d0a1a0a ]; }

expect 0 '^Usage: ' --help
expect 0 '^tavrin-xml-editor [0-9]+\.[0-9]+\.[0-9]+$' --version
expect 2 'needs the name' --screenshot
expect 2 'Unknown option --nonsense' --nonsense --screenshot "$work/a.png"

expect 0 '' --screenshot "$work/sample.png" "$sample"
is_picture "$work/sample.png" || fail "no picture of the sample"
expect 0 '' --screenshot "$work/empty.png"
is_picture "$work/empty.png" || fail "no picture without a file"
if cmp -s "$work/sample.png" "$work/empty.png"; then fail "the sample does not show"; fi
expect 1 'No such file' --screenshot "$work/none.png" "$work/none.xml"
[ ! -e "$work/none.png" ] || fail "a picture of nothing"
expect 1 'could not be written' --screenshot "$work/no/folder.png" "$sample"
printf '\xef\xbb\xbf<a>\xff</a>' >"$work/broken.xml"
expect 0 'not valid UTF-8' --screenshot "$work/broken.png" "$work/broken.xml"
[ ! -e "$XDG_CONFIG_HOME" ] || fail "a screenshot wrote settings"
echo passed
