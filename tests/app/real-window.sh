#!/usr/bin/env bash
# Real keys in the real program, in a window manager on a display of its own: edits and saves a file, shares the
# clipboard with another program, and does not lose changes unasked.
# Usage: real-window.sh PROGRAM
set -euo pipefail

program=$1
# shellcheck source=../real-display.sh
source "$(dirname "${BASH_SOURCE[0]}")/../real-display.sh"
# shellcheck source=start-editor.sh
source "$(dirname "${BASH_SOURCE[0]}")/start-editor.sh"

explain() {
    echo "window: $(xdotool getwindowname "${window:-0}" 2>&1)"
    cat "$work/doc.xml" "$work/editor.log"
}

file_holds() { cmp -s "$work/$1" <(printf "$2"); }
file_is() { file_holds doc.xml "$1"; }
title_matches() { xdotool getwindowname "$window" | grep -qE -- "$1"; }
dialog_is_open() { xdotool getwindowfocus getwindowname | grep -q "^$1"; }
question_is_open() { [ "$(xdotool getwindowfocus getwindowname)" = 'Tavrin XML Editor' ]; }

printf '<list>\n\t<item/>\n</list>' >"$work/doc.xml"
chmod 640 "$work/doc.xml"
start_editor "$work/doc.xml"

# Typing, Return with indent, saving.
keys Down End Return
xdotool type --delay 20 '<item a="1"/>'
eventually title_matches '\*'
keys ctrl+s
eventually file_is '<list>\n\t<item/>\n\t<item a="1"/>\n</list>'
eventually title_matches 'doc\.xml –'
[ "$(stat -c %a "$work/doc.xml")" = 640 ] || fail "the file's permissions changed"

# Undo takes back what was typed, the indentation and the line; redo brings them again.
keys ctrl+z ctrl+z ctrl+z ctrl+s
eventually file_is '<list>\n\t<item/>\n</list>'
keys ctrl+y ctrl+y ctrl+y ctrl+s
eventually file_is '<list>\n\t<item/>\n\t<item a="1"/>\n</list>'

# To another program's clipboard and back from it.
keys ctrl+Home shift+Down ctrl+c
eventually clipboard_is $'<list>\r'
printf '<!-- \xc3\xa9 \xe8\x9c\x82 -->\n' | xclip -selection clipboard -i
keys ctrl+Home ctrl+v ctrl+s
eventually file_is '<!-- \xc3\xa9 \xe8\x9c\x82 -->\n<list>\n\t<item/>\n\t<item a="1"/>\n</list>'
keys ctrl+a ctrl+x
eventually clipboard_is "$(sed '$!s/$/\r/' "$work/doc.xml")" # other programs get CR LF, the file keeps its LF
keys ctrl+v ctrl+s
eventually title_matches 'doc\.xml –'

# Another program replaces the file: the question comes, and the answer is no.
printf '<other/>' >"$work/new" && mv "$work/new" "$work/doc.xml"
eventually question_is_open
keys Escape

# Closing with unsaved changes asks; Escape keeps the window, Discard closes it.
xdotool windowactivate "$window"
eventually focus_is "$window"
xdotool type --delay 20 'lost'
eventually title_matches '\*'
keys ctrl+w
eventually question_is_open
keys Escape
eventually focus_is "$window"
title_matches '\*' || fail "the change was lost"
keys ctrl+w
eventually question_is_open
keys Tab space
eventually ended "$editor"
wait "$editor" || fail "the program ended with $?"
file_is '<other/>' || fail "the file was written unasked"

# The next run finds the window where it was, and the file among the recent ones.
start_editor "$work/doc.xml"
grep -q 'doc\.xml' "$XDG_CONFIG_HOME"/tavrin-xml-editor/*.ini || fail "the file is not remembered"

# Save As with another encoding, and Go to Line.
keys ctrl+shift+s
eventually dialog_is_open 'Save As'
keys ctrl+a
xdotool type --delay 20 "$work/copy.xml"
keys alt+e Down Down Down Down Return # UTF-16, UTF-16 BE, ISO-8859-1, ISO-8859-2
eventually dialog_is_open 'Tavrin XML Editor'
keys alt+c # the declaration shall name it
eventually file_holds copy.xml '<?xml version="1.0" encoding="iso-8859-2"?>\r\n<other/>'
eventually focus_is "$window"
eventually title_matches '^copy\.xml –'
keys ctrl+g
eventually dialog_is_open 'Go to Line'
keys 2 Return
eventually focus_is "$window"
keys x ctrl+s
eventually file_holds copy.xml '<?xml version="1.0" encoding="iso-8859-2"?>\r\nx<other/>'

keys ctrl+q
eventually ended "$editor"
wait "$editor" || fail "the program ended with $?"
echo passed
