#!/usr/bin/env bash
# The real program on a virtual display, driven by keystrokes: while a paced solve waits
# for the first Space press it uses under 2 % of a core; cancelled (Escape) after three
# steps it leaves the window as it was before, clues and all; Quillmere -> Exit then ends
# the process within a second. Then a puzzle finished by hand gets its note.
# Usage: paced_solve_process.sh PROGRAM_DIR
set -u
program_dir="$1"
for tool in Xvfb xdotool xwd python3; do
    command -v "$tool" >/dev/null || { echo "SKIP: $tool is not installed"; exit 77; }
done

work="$(mktemp -d)"
cleanup() {
    [ -n "${app:-}" ] && kill "$app" 2>/dev/null
    [ -n "${xvfb:-}" ] && kill "$xvfb" 2>/dev/null
    rm -rf "$work"
}
trap cleanup EXIT
cp "$program_dir"/quillmere "$program_dir"/puzzles.fut "$program_dir"/all.col "$program_dir"/Quillmere.htm "$work"/
cp "$program_dir"/Quillmere.cfg "$work"/ 2>/dev/null || true

# -noreset: the server would reset when the first program leaves, refusing the second one for a moment.
display=":$(( 90 + RANDOM % 400 ))"
Xvfb "$display" -screen 0 1280x900x24 -nolisten tcp -noreset >/dev/null 2>&1 &
xvfb=$!
export DISPLAY="$display"
for _ in $(seq 50); do xdotool getmouselocation >/dev/null 2>&1 && break; sleep 0.1; done

cd "$work" || exit 1
# The X keyboard library reads its strings in ways strict string checks reject.
# start_window WHAT [ARGS...]: starts the program and waits for its main window.
start_window() {
    local what="$1"; shift
    QT_QPA_PLATFORM=xcb ASAN_OPTIONS="${ASAN_OPTIONS:-}:detect_leaks=0:strict_string_checks=0" ./quillmere "$@" \
        >>"$work/log" 2>&1 &
    app=$!
    window=""
    for _ in $(seq 100); do
        window="$(xdotool search --name '^Quillmere 2.0$' 2>/dev/null | head -1)"
        [ -n "$window" ] && break
        sleep 0.1
    done
    [ -n "$window" ] || { echo "FAIL: no window$what"; cat "$work/log"; exit 1; }
}
: >"$work/log"
start_window ""
xdotool windowfocus --sync "$window"

ticks() { awk '{print $14 + $15}' "/proc/$app/stat"; }
# Waits until the program has been idle for half a second (start-up and redraws done).
settle() {
    local last now
    last="$(ticks)"
    for _ in $(seq 40); do
        sleep 0.5
        now="$(ticks)"
        [ "$now" = "$last" ] && return 0
        last="$now"
    done
}
screen() { xwd -root -silent | md5sum; }
# A digest of the window without its status bar (the timer and the status line change).
window_area() {
    local X Y WIDTH HEIGHT
    eval "$(xdotool getwindowgeometry --shell "$window" | grep -E '^(X|Y|WIDTH|HEIGHT)=')"
    xwd -root -silent | python3 -c '
import hashlib, struct, sys
d = sys.stdin.buffer.read()
h = struct.unpack(">25I", d[:100])
start, line, step = h[0] + h[19] * 12, h[12], h[11] // 8
x, y, w, height = map(int, sys.argv[1:5])
print(hashlib.md5(b"".join(d[start + r * line + x * step:start + r * line + (x + w) * step]
                           for r in range(y, y + height))).hexdigest())' "$X" "$Y" "$WIDTH" "$(( HEIGHT - 30 ))"
}

settle
shown="$(screen)"
before_solve="$(window_area)"
# Solve -> Auto (with pause): it now waits for the first Space press, its prompt in the
# status line.
xdotool key alt+s
sleep 0.5
xdotool key Down Return
settle
[ "$(screen)" != "$shown" ] || { echo "FAIL: the paced solve did not start"; exit 1; }
before="$(ticks)"
sleep 2
after="$(ticks)"
hz="$(getconf CLK_TCK)"
used="$(( (after - before) * 1000 / hz ))"
echo "processor time over 2 s of waiting: ${used} ms"
[ "$used" -le 40 ] || { echo "FAIL: the wait used ${used} ms of 2000"; exit 1; }

# Three steps, then Escape (Cancel): the solve ends with its message; once that is closed
# the window shows the puzzle as before the solve: every clue, no stray candidates, no
# "Solving...".
for _ in 1 2 3; do xdotool key space; sleep 0.3; done
xdotool key Escape
settle
xdotool key Return
settle
# With no window manager the keyboard does not go back to the window by itself.
xdotool windowfocus --sync "$window"
[ "$(window_area)" = "$before_solve" ] || { echo "FAIL: after Cancel the window differs from before the solve"; exit 1; }
echo "after Cancel the window shows the puzzle as before the solve"

# Quillmere -> Exit, answered Yes.
xdotool key alt+q
sleep 0.3
xdotool key Down Down Down Return
sleep 0.5
xdotool key Return
for i in $(seq 20); do
    state="$(awk '{print $3}' "/proc/$app/stat" 2>/dev/null)"
    if [ -z "$state" ] || [ "$state" = "Z" ]; then
        echo "the process ended $(( i * 50 )) ms after Yes"
        wait "$app"
        app=""
        break
    fi
    sleep 0.05
done
[ -z "$app" ] || { echo "FAIL: the process still runs a second after Exit"; exit 1; }

# A 3x3 puzzle with one open cell: the arrow puts the cursor on it, the key finishes it,
# and a note (a window of its own, the main one stays usable) says so.
printf '%s\r\n' '#1' '3x3 one to go' '3 0 8' '..2.3|1.2.3' '.....|.....' '2.3.1|2.3.1' '.....|.....' \
    '3.1.2|3.1.2' >"$work/last.fut"
start_window " for the finish" last.fut
xdotool windowfocus --sync "$window"
settle
[ -z "$(xdotool search --onlyvisible --name '^Quillmere$' 2>/dev/null)" ] || { echo "FAIL: a note before the finish"; exit 1; }
xdotool key Right 1
settle
note="$(xdotool search --onlyvisible --name '^Quillmere$' 2>/dev/null | head -1)"
[ -n "$note" ] || { echo "FAIL: no note after the last digit"; exit 1; }
echo "finishing by hand shows its note"
exit 0
