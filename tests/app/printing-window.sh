#!/usr/bin/env bash
# Printing from the real program with real keys: page set-up, preview, no printer, a PDF file by the print dialog, and a
# long job that is cancelled.
# Usage: printing-window.sh PROGRAM SAMPLE.xsl
set -euo pipefail

program=$1
sample=$(readlink -f "$2")
# shellcheck source=../real-display.sh
source "$(dirname "${BASH_SOURCE[0]}")/../real-display.sh"
# shellcheck source=start-editor.sh
source "$(dirname "${BASH_SOURCE[0]}")/start-editor.sh"

explain() {
    echo "focus: $(xdotool getwindowfocus getwindowname 2>&1)"
    cat "$work/editor.log"
}
focused() { xdotool getwindowfocus getwindowname | grep -qE "^$1"; }
setting_is() { grep -qsx "$1" "$work/config/tavrin-xml-editor/settings.ini"; }
pages_are() { [ "$(pdfinfo "$1" | sed -n 's/^Pages: *//p')" = "$2" ]; }
has_text() { pdftotext -layout "$1" - | grep -qE -- "$2"; }
# Looks at the window that has the focus when SHOTS names a folder.
shot() { [ -z "${SHOTS:-}" ] || import -window root "$SHOTS/$1.png"; }
command -v pdftotext >/dev/null || fail "pdftotext is not installed; ./test installs what the tests need"

cp "$sample" "$work/sheet.xsl"
cd "$work"
start_editor "$work/sheet.xsl"

# Cancel writes nothing, OK what was chosen.
keys alt+f u
eventually focused 'Page Setup'
keys Down Escape
eventually focus_is "$window"
if setting_is 'Paper=.*'; then fail "a cancelled page set-up was written"; fi
keys alt+f u
eventually focused 'Page Setup'
keys Tab Down Tab Tab Tab Tab Tab Tab Tab space # landscape, header
shot setup
keys Return
eventually setting_is 'Print%20Header=true'
eventually setting_is 'Landscape=true'
eventually focus_is "$window"

keys alt+f v
eventually focused 'Print Preview'
shot preview
keys Escape
eventually focus_is "$window"

# Without a printer.
keys ctrl+shift+p
eventually focused 'Tavrin XML Editor'
shot no-printer
keys Return
eventually focus_is "$window"

# The dialog proposes a file named after the document; it exists once it has been printed.
keys ctrl+p
eventually focused 'Print'
shot print
keys Return
eventually pages_are "$work/sheet.pdf" 2
has_text sheet.pdf 'sheet\.xsl +2 / 2' || fail "no header: $(pdftotext -layout sheet.pdf -)"
pdfinfo sheet.pdf | grep -q 'Page size: *842 x 595 pts' || fail "not landscape: $(pdfinfo sheet.pdf)"
eventually focus_is "$window"
keys ctrl+w
eventually ended "$editor"

# A job of thousands of pages shows how far it is, and Escape stops it without leaving a file.
for ((i = 0; i < 8000; i++)); do sed -n '7,50p' "$sample"; done >long.xsl
start_editor "$work/long.xsl"
keys ctrl+p
eventually focused 'Print'
keys Return
eventually focused 'Printing'
shot progress
keys Escape
eventually focus_is "$window"
[ "$(find . -name 'long.pdf*' | wc -l)" = 0 ] || fail "a cancelled job left $(ls)"

# The preview of it shows no more than it can keep.
keys alt+f v
eventually focused 'Print Preview.*first 500 of'
shot long-preview
keys Escape
eventually focus_is "$window"
keys ctrl+w
eventually ended "$editor"
echo passed
