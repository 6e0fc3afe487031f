#!/usr/bin/env bash
# Real keys and a real mouse in a plain dialog with two editors and a default button: what the editors take,
# and what they leave to the dialog.
# Usage: two-editors.sh PROGRAM
set -euo pipefail

program=$1
# shellcheck source=../real-display.sh
source "$(dirname "${BASH_SOURCE[0]}")/../real-display.sh"

explain() {
    echo "clipboard: $(timeout 5 xclip -selection clipboard -o 2>&1)"
    echo "primary: $(timeout 5 xclip -selection primary -o 2>&1)"
    cat "$work/said" "$work/errors"
}

open_dialog() {
    "$program" >"$work/said" 2>"$work/errors" &
    dialog=$!
    jobs+=("$dialog")
    eventually find_window 'Two editors'
    window=$(find_window 'Two editors' | head -n 1)
    xdotool windowactivate "$window"
    eventually focus_is "$window"
}
# ended_with STATUS: the dialog has closed, and how
ended_with() {
    local status=0
    eventually ended "$dialog"
    wait "$dialog" || status=$?
    [ "$status" = "$1" ] || fail "the dialog ended with $status instead of $1"
}
# Waits until the whole text of the focused editor, taken over the clipboard, is this. Asks again and again: a window manager
# may hold a click back while keys go on to the window that still has the focus.
text_is() {
    keys ctrl+a ctrl+c
    clipboard_is "$1"
}
text_becomes() { eventually text_is "$1"; }
escape_ends() {
    keys Escape
    ended "$1"
}
# point X% Y%: of the dialog
point() {
    eval "$(xdotool getwindowgeometry --shell "$window" | grep -E '^(WIDTH|HEIGHT)=')"
    xdotool mousemove --sync --window "$window" $((WIDTH * $1 / 100)) $((HEIGHT * $2 / 100))
}
# click X% Y% [BUTTON]
click() {
    point "$1" "$2"
    xdotool click "${3:-1}"
}
crlf=$'\r\n'

# A keyboard with é and €: where a character has no key xdotool changes the keyboard under the program, which then may see
# the wrong one.
setxkbmap -layout us -variant altgr-intl

open_dialog

# Typing, Tab, Shift+Tab, Return and Escape are the editor's: the dialog stays, the focus stays.
xdotool type --delay 20 'ab'
keys Tab Return shift+Tab Escape
text_becomes "ab	${crlf}	<first/>"

# Undo and redo by the editor's own shortcuts; the dialog has none.
keys ctrl+z ctrl+z ctrl+z ctrl+z
text_becomes '<first/>'
keys ctrl+y
text_becomes 'ab	<first/>'

# Text from another program, with its own line ends, over the selection.
printf '<x>\n</x>' | xclip -selection clipboard
eventually clipboard_is '<x>
</x>'
keys ctrl+v
text_becomes "<x>${crlf}</x>"

# Characters of the third level.
keys End
xdotool type --delay 50 'é€'
text_becomes "<x>${crlf}</x>é€"

# The mouse takes the focus to the other editor; what was typed goes there.
keys ctrl+a
xdotool type --delay 20 'hello'
click 50 70
text_becomes '<second/>'
keys ctrl+Home
xdotool type --delay 20 'z'
text_becomes 'z<second/>'

# What the mouse selects goes to where the middle button is pressed: here the end of the text.
xdotool mousemove --window "$window" 60 18 click --repeat 2 --delay 50 1
eventually primary_is hello
click 50 70 2
text_becomes 'z<second/>hello'

# Ctrl with the wheel changes the font size of the user's settings.
xdotool keydown ctrl
click 50 20 4
xdotool keyup ctrl
eventually grep -q 'Font%20Size=10' "$work/config/tavrin-xml-editor/settings.ini"

# The host's options dialog holds the editor's page; what it saves is in force at once: the next zoom starts from it.
keys alt+p
eventually find_window 'Editor options'
eventually focus_is "$(find_window 'Editor options' | head -n 1)"
keys alt+s ctrl+a 2 0 Return
eventually focus_is "$window"
eventually grep -q 'Font%20Size=20' "$work/config/tavrin-xml-editor/settings.ini"
xdotool keydown ctrl
click 50 20 5
xdotool keyup ctrl
eventually grep -q 'Font%20Size=19' "$work/config/tavrin-xml-editor/settings.ini"

# The button's mnemonic is the dialog's.
running "$dialog" || fail "the dialog has closed"
keys alt+o
ended_with 0
[ "$(cat "$work/said")" = 'hello
z<second/>hello' ] || fail "the dialog said something else"

# Escape is the editor's while it has the focus, and the dialog's when a button has it.
open_dialog
click 50 20
keys Escape
text_becomes '<first/>'
running "$dialog" || fail "Escape closed the dialog around an editor"
point 92 96
xdotool mousedown 1 # the button takes the focus ...
point 50 50
xdotool mouseup 1 # ... and is not clicked
running "$dialog" || fail "the button was clicked"
eventually escape_ends "$dialog"
ended_with 1
echo passed
