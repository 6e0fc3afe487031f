#!/usr/bin/env bash
# Real keys in the options dialog of the program: what each key leads to, what is refused, what is written when.
# Usage: options-dialog.sh PROGRAM
set -euo pipefail

program=$1
# shellcheck source=../real-display.sh
source "$(dirname "${BASH_SOURCE[0]}")/../real-display.sh"

settings=$XDG_CONFIG_HOME/tavrin-xml-editor/settings.ini
explain() {
    echo "focus: $(xdotool getwindowfocus getwindowname 2>&1)"
    cat "$settings" "$work/editor.log"
}
focused_title_matches() { xdotool getwindowfocus getwindowname | grep -qE -- "$1"; }
holds() { grep -qx -- "$1" "$settings"; }
lacks() { ! grep -q -- "$1" "$settings"; }
open_options() {
    keys alt+t o
    eventually focused_title_matches '^Options'
}
back_in_window() { eventually focused_title_matches '\.xml'; }

mkdir -p "${settings%/*}"
printf '[Window]\nPlace=\n' >"$settings"
printf '<a/>' >"$work/one.xml"
"$program" "$work/one.xml" >"$work/editor.log" 2>&1 &
editor=$!
jobs+=("$editor")
eventually find_window 'one\.xml.*Tavrin XML Editor'
window=$(find_window 'one\.xml.*Tavrin XML Editor' | head -n 1)
xdotool windowactivate "$window"
eventually focus_is "$window"

# Cancel writes nothing, neither by Escape nor by the button.
open_options
keys alt+s
xdotool type --delay 20 '20'
keys Escape
back_in_window
lacks 'Font%20Size' || fail "Escape wrote the size"

# A size out of range is refused while it is typed, and again, in a dialog, on OK; the dialog stays.
open_options
keys alt+s ctrl+a
xdotool type --delay 20 '0'
keys Return
message_is_open() { xdotool search --onlyvisible --name '^Options' | wc -l | grep -qx 2; }
eventually message_is_open
lacks 'Font%20Size' || fail "a refused size was written"
keys Return
message_is_gone() { xdotool search --onlyvisible --name '^Options' | wc -l | grep -qx 1; }
eventually message_is_gone
eventually focused_title_matches '^Options'

# The focus is back in the size box. Then each control by its mnemonic: the item, its colours by their first letters.
keys ctrl+a
xdotool type --delay 20 '14'
keys alt+d
xdotool type --delay 20 'com'
keys alt+g
xdotool type --delay 20 'red'
keys alt+b
xdotool type --delay 20 'yel'
keys Tab space Return # the check box comes next; its mnemonic clicks it with a delay
back_in_window
eventually holds 'Font%20Size=14'
holds 'Fore%20Color%20Comments=255' || fail "the text colour"
holds 'Back%20Color%20Comments=65535' || fail "the background"
holds 'Fore%20Color%20CDATA=16711935' || fail "the colour of another item"
holds 'Display%20Line%20Numbers=false' || fail "the check box"
holds 'Font%20Family=Courier New' || fail "the font is as it was stored"

# A ready scheme, and a font chosen from the list.
open_options
keys alt+h Down # from none to the first
keys Down
keys alt+f Home Return
back_in_window
eventually holds 'Back%20Color%20Normal=1973790'
holds 'Font%20Size=14' || fail "the scheme changed the size"
lacks 'Font%20Family=Courier New' || fail "the font was not changed"

# What is typed afterwards goes to the text.
keys x ctrl+s
saved() { cmp -s "$work/one.xml" <(printf 'x<a/>'); }
eventually saved
keys ctrl+q
eventually ended "$editor"
wait "$editor" || fail "the program ended with $?"
echo passed
