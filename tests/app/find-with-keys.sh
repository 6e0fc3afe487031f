#!/usr/bin/env bash
# Find and replace by real keys in the real program: the dialogs with their mnemonics, the commands that find again, search
# while typing, and the search text that outlives the program.
# Usage: find-with-keys.sh PROGRAM
set -euo pipefail

program=$1
# shellcheck source=../real-display.sh
source "$(dirname "${BASH_SOURCE[0]}")/../real-display.sh"
# shellcheck source=start-editor.sh
source "$(dirname "${BASH_SOURCE[0]}")/start-editor.sh"

explain() {
    cat "$work/doc.xml" "$work/editor.log" "$XDG_CONFIG_HOME"/tavrin-xml-editor/*.ini
}

text_is() {
    keys ctrl+s
    cmp -s "$work/doc.xml" <(printf "$1")
}
title_matches() { xdotool getwindowname "$window" | grep -q "$1"; }
dialog_has_focus() { xdotool getwindowfocus getwindowname | grep -q "^$1"; }
selection_is() {
    keys ctrl+c
    clipboard_is "$1"
}

printf '<list>\n<item n="a"/>\n<item n="b"/>\n<Item n="c"/>\n</list>' >"$work/doc.xml"
start_editor "$work/doc.xml"

# Return in the dialog finds; Replace replaces what was found and finds on; Replace All with Match case does the rest.
keys ctrl+h
eventually dialog_has_focus Replace
xdotool type --delay 20 'item'
keys alt+p
xdotool type --delay 20 'x'
keys Return alt+r # a button is pressed for a moment before it acts
eventually title_matches 'doc\.xml\*'
keys Escape
eventually focus_is "$window"
eventually text_is '<list>\n<x n="a"/>\n<item n="b"/>\n<Item n="c"/>\n</list>'
eventually selection_is item
keys ctrl+h
eventually dialog_has_focus Replace
keys alt+c alt+n ctrl+a
xdotool type --delay 20 'n='
keys alt+a
eventually title_matches 'doc\.xml\*'
keys alt+l
eventually focus_is "$window"
eventually text_is '<list>\n<x x"a"/>\n<item x"b"/>\n<Item x"c"/>\n</list>'
keys ctrl+z
eventually text_is '<list>\n<x n="a"/>\n<item n="b"/>\n<Item n="c"/>\n</list>'

# Search while typing, then find again both ways, and the selected text. Match case is still on.
keys ctrl+Home ctrl+i
xdotool type --delay 20 'ITE'
keys Escape
eventually selection_is ite
keys F3
eventually selection_is ite
keys ctrl+Home ctrl+i
xdotool type --delay 20 '<i'
keys ctrl+shift+F3 # what is selected then is the "<I" of the last line: the search goes around
eventually selection_is '<i'
keys ctrl+Home shift+Right ctrl+F3 shift+Right shift+Right
eventually selection_is '<x '
keys shift+F3
eventually selection_is '<'

# The search text is there when the program starts again.
keys ctrl+q
eventually ended "$editor"
wait "$editor" || fail "the program ended with $?"
grep -q 'Find%20String=<' "$XDG_CONFIG_HOME"/tavrin-xml-editor/settings.ini || fail "the search text is not kept"
start_editor "$work/doc.xml"
keys F3 Delete
eventually text_is 'list>\n<x n="a"/>\n<item n="b"/>\n<Item n="c"/>\n</list>'
keys ctrl+f
eventually dialog_has_focus Find
keys Escape
eventually focus_is "$window"
keys ctrl+q
eventually ended "$editor"
wait "$editor" || fail "the program ended with $?"
echo passed
