#!/usr/bin/env bash
# Completion by real keys in the real program: elements, attributes and values of a stylesheet, end tags, what closes the
# list, and the list where no window manager says which window is active.
# Usage: completion-with-keys.sh PROGRAM
set -euo pipefail

program=$1
# shellcheck source=../real-display.sh
source "$(dirname "${BASH_SOURCE[0]}")/../real-display.sh"
# shellcheck source=start-editor.sh
source "$(dirname "${BASH_SOURCE[0]}")/start-editor.sh"

settings=$XDG_CONFIG_HOME/tavrin-xml-editor/settings.ini
explain() {
    echo "focus: $(xdotool getwindowfocus getwindowname 2>&1)"
    cat "$work/doc.xsl" "$work/editor.log" "$settings"
}

# The fourth line of the stylesheet is the one that is written.
line_is() {
    keys ctrl+s
    [ "$(sed -n 4p "$work/doc.xsl" | tr -d '\r')" = "$1" ]
}
below_is() { [ "$(sed -n 5,6p "$work/doc.xsl" | tr -d '\r')" = "$1" ]; }
# The list and its documentation are windows of the program beside those with a title.
list_is_up() {
    local found
    for found in $(xdotool search --onlyvisible --class '^tavrin-xml-editor$'); do
        xdotool getwindowname "$found" | grep -q 'xsl\|xml' || return 0
    done
    return 1
}
list_is_gone() { ! list_is_up; }
# The list is up when this returns.
open_list() {
    xdotool type --delay 20 "$1"
    eventually list_is_up
}
clear_line() { keys Home shift+End Delete; }

new_stylesheet() {
    printf '<?xml version="1.0"?>\n<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">\n' \
        >"$work/doc.xsl"
    printf '<xsl:template match="/">\n\n</xsl:template>\n</xsl:stylesheet>\n' >>"$work/doc.xsl"
}
start_stylesheet() {
    new_stylesheet
    start_editor_unfocused "$work/doc.xsl"
}
quit_editor() {
    keys ctrl+q
    eventually ended "$editor"
    wait "$editor" || fail "the program ended with $?"
}

# "<", the beginning of a name, Return: the element with its template, which one undo takes back.
element_is_filled_in() {
    keys ctrl+Home Down Down Down
    open_list '<xsl:fo'
    keys Return
    eventually list_is_gone
    eventually line_is '<xsl:for-each select="">'
    below_is $'\t\n</xsl:for-each>' || fail "the rest of the template"
    keys ctrl+z
    eventually line_is '<xsl:fo'
    clear_line
    eventually line_is ''
}

start_stylesheet
xdotool windowactivate "$window"
eventually focus_is "$window"
element_is_filled_in

# A name alone by a blank; then an attribute, "=", and a value from the list of values.
open_list '<xsl:nu'
keys space
eventually list_is_gone
open_list ' lev'
keys Return
eventually list_is_gone
eventually line_is '<xsl:number level'
open_list '='
xdotool type --delay 20 'mu'
keys Return
eventually list_is_gone
eventually line_is '<xsl:number level="multiple"'
keys ctrl+z
eventually line_is '<xsl:number level=mu'
clear_line

# "=" accepts the name and follows it; a quote asks for values. The keys need not wait for the lists.
xdotool type --delay 20 '<xsl:number '
keys space
xdotool type --delay 20 'lev="'
keys Down Return
eventually list_is_gone
eventually line_is '<xsl:number level="single"'
clear_line

# ">" writes the end tag behind the caret, and not after "/"; while the list is up it belongs to the list.
xdotool type --delay 20 '<b'
keys Escape
xdotool type --delay 20 '>bold'
eventually line_is '<b>bold</b>'
clear_line
xdotool type --delay 20 '<br'
keys Escape
xdotool type --delay 20 '/>'
eventually line_is '<br/>'
clear_line

# What closes the list and leaves the text: Escape, a click outside, another window.
open_list '<xsl:i'
keys Escape
eventually list_is_gone
keys f
eventually line_is '<xsl:if'
clear_line
open_list '<xsl:i'
xdotool mousemove --window "$window" 600 500 click 1
eventually list_is_gone
keys ctrl+Home Down Down Down End f
eventually line_is '<xsl:if'
clear_line
printf '<other/>' >"$work/other.xml"
"$program" "$work/other.xml" >>"$work/editor.log" 2>&1 &
other=$!
jobs+=("$other")
eventually find_window 'other\.xml'
other_window=$(find_window 'other\.xml' | head -n 1)
xdotool windowactivate "$window"
eventually focus_is "$window"
open_list '<xsl:i'
xdotool windowactivate "$other_window"
eventually focus_is "$other_window"
eventually list_is_gone
xdotool windowactivate "$window"
eventually focus_is "$window"
keys f
eventually line_is '<xsl:if'
kill "$other"

quit_editor

# Without a window manager.
kill "${jobs[1]}"
eventually ended "${jobs[1]}"
start_stylesheet
xdotool windowfocus "$window"
eventually focus_is "$window"
element_is_filled_in
keys ctrl+s
quit_editor
echo passed
