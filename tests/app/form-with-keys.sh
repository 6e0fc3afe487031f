#!/usr/bin/env bash
# Encoding and line ends by real keys in the real program: the Document menu, the question about the declaration, the dialog
# about characters that do not fit.
# Usage: form-with-keys.sh PROGRAM
set -euo pipefail

program=$1
# shellcheck source=../real-display.sh
source "$(dirname "${BASH_SOURCE[0]}")/../real-display.sh"
# shellcheck source=start-editor.sh
source "$(dirname "${BASH_SOURCE[0]}")/start-editor.sh"

explain() {
    od -c "$work/doc.xml" | head -n 20
    cat "$work/editor.log"
}

file_is() { cmp -s "$work/doc.xml" <(printf "$1"); }
dialog_is() { xdotool getwindowfocus getwindowname | grep -q "$1"; }
dialog_is_open() { ! focus_is "$window"; }
saved_as() {
    keys ctrl+s
    file_is "$1"
}

printf '<?xml version="1.0" encoding="utf-8"?>\r\n<a>\xE2\x82\xAC</a>\n' >"$work/doc.xml"
start_editor "$work/doc.xml"

# Mixed line ends become LF, and come back by undo.
keys alt+d l u
eventually saved_as '<?xml version="1.0" encoding="utf-8"?>\n<a>\xE2\x82\xAC</a>\n'
keys ctrl+z
eventually saved_as '<?xml version="1.0" encoding="utf-8"?>\r\n<a>\xE2\x82\xAC</a>\n'

# The fourth choice is ISO-8859-1 (behind UTF-8, UTF-16 and UTF-16 BE): the declaration follows, the euro sign becomes a
# reference.
keys alt+d e Down Down Down Return
eventually dialog_is_open
keys alt+c
eventually focus_is "$window"
keys ctrl+s
eventually dialog_is 'ISO-8859-1 Lacks'
keys alt+r
eventually focus_is "$window"
eventually file_is '<?xml version="1.0" encoding="iso-8859-1"?>\r\n<a>&#x20AC;</a>\n'

keys ctrl+q
eventually ended "$editor"
wait "$editor" || fail "the program ended with $?"
echo passed
