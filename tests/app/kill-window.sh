#!/usr/bin/env bash
# Real keys in the real program, which is killed while somebody types: the next start offers what was typed, and
# recovers at least what had been typed a second before. TAVRIN_KILLS sets the number of kills.
# Usage: kill-window.sh PROGRAM
set -euo pipefail

program=$1
# shellcheck source=../real-display.sh
source "$(dirname "${BASH_SOURCE[0]}")/../real-display.sh"
# shellcheck source=start-editor.sh
source "$(dirname "${BASH_SOURCE[0]}")/start-editor.sh"
export XDG_STATE_HOME=$work/state

explain() {
    echo "window: $(xdotool getwindowfocus getwindowname 2>&1), round $round, typed '$early' and '$late'"
    cat "$work/doc.xml" "$work/editor.log"
    ls -l "$XDG_STATE_HOME/tavrin-xml-editor/journals"
}

title_matches() { xdotool getwindowname "$window" | grep -qE -- "$1"; }
dialog_is_open() { xdotool getwindowfocus getwindowname | grep -q "^$1"; }
no_journals() { [ -z "$(ls "$XDG_STATE_HOME/tavrin-xml-editor/journals")" ]; }

letters() { tr -dc a-z </dev/urandom | head -c "$1" || true; }

# A second is the promise. When all tests run at once, X and the program may starve for longer than that.
allowed=${TAVRIN_KILLS:+1}
for ((round = 1; round <= ${TAVRIN_KILLS:-2}; ++round)); do
    early=$(letters $((RANDOM % 40 + 1)))
    late=$(letters $((RANDOM % 40)))
    printf '<a/>' >"$work/doc.xml"
    start_editor_unfocused "$work/doc.xml"
    xdotool windowactivate "$window"
    eventually focus_is "$window"
    xdotool type --delay $((RANDOM % 20 + 5)) "$early"
    eventually title_matches '\*'
    sleep "${allowed:-3}"
    [ -z "$late" ] || xdotool type --delay $((RANDOM % 20 + 5)) "$late"
    kill -9 "$editor"
    wait "$editor" 2>/dev/null || true
    [ "$(cat "$work/doc.xml")" = '<a/>' ] || fail "the file was written unasked"

    start_editor_unfocused "$work/doc.xml"
    eventually dialog_is_open 'Unsaved Changes'
    keys Return
    eventually title_matches '\*'
    eventually focus_is "$window"
    keys ctrl+s
    eventually title_matches 'doc\.xml –'
    recovered=$(cat "$work/doc.xml")
    [[ $recovered == "$early"* ]] || fail "lost: $recovered"
    [[ $early$late'<a/>' == "${recovered%'<a/>'}"* ]] || fail "never typed: $recovered"
    keys ctrl+z # the history came back, and the caret with it
    eventually title_matches '\*'
    keys ctrl+s
    eventually grep -q '^<a/>' "$work/doc.xml"
    keys ctrl+q
    eventually ended "$editor"
    eventually no_journals
done
echo passed
