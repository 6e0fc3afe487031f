# For tests with real keys and windows; to be sourced. Starts a display of its own with a window manager in a
# folder of its own ($work), and offers words to drive and to wait. Everything started through it ends with the script.

work=$(mktemp -d)
jobs=()

finish_display() {
    for job in "${jobs[@]}"; do kill "$job" 2>/dev/null || true; done
    wait 2>/dev/null || true
    rm -rf "$work"
}
trap finish_display EXIT

# A script redefines this to show what it knows about a failure.
explain() { :; }
fail() {
    echo "FAILED: $*" >&2
    explain >&2 || true
    exit 1
}

for tool in Xvfb openbox xdotool xclip; do
    command -v "$tool" >/dev/null || fail "$tool is not installed; ./test installs what the tests need"
done

# Runs a command until it succeeds; keys and windows take the time they take, but not for ever.
eventually() {
    local deadline=$((SECONDS + 60))
    until "$@" >/dev/null 2>&1; do
        ((SECONDS < deadline)) || fail "never came true: $*"
        sleep 0.05
    done
}

find_window() { xdotool search --onlyvisible --name "$1"; }
focus_is() { [ "$(xdotool getwindowfocus)" = "$1" ]; }
keys() { xdotool key --clearmodifiers --delay 20 "$@"; }
clipboard_is() { [ "$(timeout 5 xclip -selection clipboard -o)" = "$1" ]; }
primary_is() { [ "$(timeout 5 xclip -selection primary -o)" = "$1" ]; }
running() { kill -0 "$1"; }
ended() { ! kill -0 "$1"; }

export HOME=$work XDG_CONFIG_HOME=$work/config XDG_RUNTIME_DIR=$work LC_ALL=C.UTF-8
unset WAYLAND_DISPLAY QT_QPA_PLATFORM QT_SCALE_FACTOR

# -noreset: else the display starts anew when a program that only asked something was its last one, and takes a window manager
# that is just coming with it.
Xvfb -displayfd 3 -noreset -screen 0 1280x900x24 -nolisten tcp 3>"$work/display" 2>"$work/x.log" &
jobs+=($!)
eventually test -s "$work/display"
DISPLAY=:$(cat "$work/display")
export DISPLAY
openbox >"$work/wm.log" 2>&1 &
jobs+=($!)
eventually xdotool get_desktop # answered by the window manager
