#!/usr/bin/env bash
# montala-studio used as a new user uses it, with the mouse and the keyboard
# alone, on a virtual display: open the sample session, open Montala's
# window from the host's Project menu (the host loads the module), load both cuts
# through the Add EDLs overlay, switch off the destination markers in the
# settings, generate, edit one Change event and undo the edit, start the
# conform, dismiss its summary, close Montala's window from the menu again,
# save the session under a new name and quit.
# Then montala verify checks that the saved session plays the new cut in sync.
#
# Run under xvfb-run with a 1600x1000 screen:
#   ClickThrough.sh STUDIO MONTALA SOURCE WORK
#
# Clicks are given in the coordinates of Montala's window (1300 x 750), as
# its layout places the controls; the menu bar above it is added here.
set -euo pipefail

studio=$1 montala=$2 source=$3 work=$4
command -v xdotool >/dev/null || { echo "xdotool is missing: scripts/setup.sh installs it" >&2; exit 1; }
rm -rf "$work"
mkdir -p "$work"
cp "$source/samples/sessions/short-film-25.json" "$source/samples/edl/short-film-25/old.edl" \
   "$source/samples/edl/short-film-25/new.edl" "$work/"

"$studio" "$work/short-film-25.json" --language us >"$work/out.log" 2>"$work/err.log" &
pid=$!
trap 'kill "$pid" 2>/dev/null || true' EXIT

step() { echo "-- $*"; }
fail() {
  echo "click-through: $*" >&2
  echo "--- montala-studio said:" >&2
  cat "$work/out.log" "$work/err.log" >&2
  exit 1
}
# The first window whose name matches, once it is there (within 20 s).
find_window() {
  local found=""
  for _ in $(seq 100); do
    found=$(xdotool search --onlyvisible --name "$1" 2>/dev/null | head -1 || true)
    [ -n "$found" ] && break
    sleep 0.2
  done
  echo "$found"
}

window=$(find_window "^Montala - short-film-25.json")
[ -n "$window" ] || fail "the window did not open"
eval "$(xdotool getwindowgeometry --shell "$window")"
menu=$((HEIGHT - 750))
# The host's start-up runs on the message loop; the window settles first.
sleep 2

# The host's menu bar: "Project" is its third menu. Montala's window is the
# host's window named after the skin's template, inside the studio's.
project_menu_entry() {  # opens the Project menu and clicks its one entry, "Montala"
  xdotool mousemove --window "$window" 138 $((menu / 2)) click 1
  local popup
  popup=$(find_window "^menu$")
  [ -n "$popup" ] || fail "the Project menu did not open"
  sleep 0.5
  xdotool mousemove --window "$popup" 30 14 click 1
  sleep 1
}
# The menu's keys are the host's: they work while Montala's window, which
# reads its keys itself, has the keyboard.
step "Project > Montala"
project_menu_entry
[ -n "$(find_window "^Montala$")" ] || fail "Project > Montala opened no window"

click() {  # x y [button], in Montala's window
  xdotool mousemove --window "$window" "$1" "$(($2 + menu))" click "${3:-1}"
  sleep 0.5
}
# Opens the EDL of that name in the file dialog of the Add EDLs overlay: the
# dialog starts in the session's folder, where new.edl and old.edl are its
# first and second row.
pick_edl() {
  local dialog row
  dialog=$(find_window "^Add EDL$")
  [ -n "$dialog" ] || fail "the file dialog of the Add EDLs overlay did not open"
  row=$([ "$1" = new.edl ] && echo 93 || echo 115)
  sleep 1
  xdotool mousemove --window "$dialog" 65 "$row" click --repeat 2 --delay 80 1
  sleep 0.6
}

step "settings: Create Destination Markers off, then a click beside the panel"
click 23 730
click 25 416
click 900 300

step "Old EDL through the overlay"
click 31 46
click 935 229
pick_edl old.edl
click 812 558

step "New EDL through the overlay"
click 677 46
click 935 229
pick_edl new.edl
click 812 558

step "Generate"
click 650 345

step "Edit the first Change event: SRC IN five frames later, Apply"
click 200 468
click 200 468 3
popup=$(find_window "^menu$")
[ -n "$popup" ] || fail "the row's menu did not open"
eval "$(xdotool getwindowgeometry --shell "$popup" | sed 's/^/MENU_/')"
# "Edit" is the second entry from the bottom, above "Delete".
xdotool mousemove --window "$popup" 40 $((MENU_HEIGHT - 36)) click 1
sleep 0.6
# The popup opens 10 pixels right of and below the pointer; the frames of
# SRC IN stand at (232, 65) in it.
click 442 543
xdotool type --delay 80 05
sleep 0.4
click 322 692

# Had the edit not been made, the undo would take back Generate and the run
# below could not start; had the undo not worked, verify would find the
# first event five frames out of sync.
step "Undo the edit with Ctrl+Z"
xdotool key ctrl+z
sleep 0.6

step "Start Montala, then dismiss the summary"
click 1192 730
summary=$(find_window "^Apply Montala$")
[ -n "$summary" ] || fail "no summary after Start Montala"
eval "$(xdotool getwindowgeometry --shell "$summary" | sed 's/^/BOX_/')"
# The box's one button stands centred at its foot.
xdotool mousemove --window "$summary" $((BOX_WIDTH / 2)) $((BOX_HEIGHT - 28)) click 1
sleep 0.6
xdotool search --onlyvisible --name "^Apply Montala$" >/dev/null 2>&1 && fail "the summary is still open"

step "Project > Montala again closes the window"
project_menu_entry
xdotool search --onlyvisible --name "^Montala$" >/dev/null 2>&1 && fail "Montala's window is still open"

step "Save Session As... with Ctrl+Shift+S, a new name typed"
xdotool key ctrl+shift+s
dialog=$(find_window "^Save Session$")
[ -n "$dialog" ] || fail "Save Session As... opened no file dialog"
sleep 0.6
xdotool mousemove --window "$dialog" 306 437 click 1
sleep 0.3
xdotool type --delay 20 conformed.json
xdotool key Return
sleep 1

step "Quit with Ctrl+Q"
xdotool key ctrl+q
for _ in $(seq 50); do
  kill -0 "$pid" 2>/dev/null || break
  sleep 0.2
done
kill -0 "$pid" 2>/dev/null && fail "montala-studio did not quit"
wait "$pid" || fail "montala-studio ended with $?"
trap - EXIT

cat "$work/out.log"
grep -q "Events applied: " "$work/out.log" || fail "the summary was not shown"
grep -q "Markers written: " "$work/out.log" || fail "the summary has no markers line"
grep -q ", Destination " "$work/out.log" && fail "destination markers were written although switched off"
[ -f "$work/conformed.json" ] || fail "no session was saved under the new name"

step "montala verify"
"$montala" verify "$work/short-film-25.json" "$work/conformed.json" --old "$work/old.edl" --new "$work/new.edl"
