#!/usr/bin/env bash
# For the scripts that drive the program: start_editor FILE opens it and leaves its process in `editor`, its window in `window`.
# Source after real-display.sh, with the program's path in `program`.

start_editor_unfocused() {
    local name
    name=$(basename "$1")
    "$program" "$1" >"$work/editor.log" 2>&1 &
    editor=$!
    jobs+=("$editor")
    eventually find_window "${name/./\\.}.*Tavrin XML Editor"
    window=$(find_window "${name/./\\.}.*Tavrin XML Editor" | head -n 1)
}

start_editor() {
    start_editor_unfocused "$1"
    xdotool windowactivate "$window"
    eventually focus_is "$window"
}
