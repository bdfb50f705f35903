#!/usr/bin/env bash
# The viewer as a user drives it, on a virtual X display with xdotool: the picture fills a
# 1200 x 850 window, three wheel notches zoom about the pointer, a middle-button drag
# pans, Ctrl+O opens the file dialog. What the viewer did is read back from its log.
# usage: xdotool_check.sh DXFIMPORT SAMPLE.dxf [SCREENSHOT_DIR]
# With a screenshot folder it also leaves viewer-window.xwd, viewer-zoomed.xwd and
# layers.xwd there (tools/xwd_to_png.py makes PNG files of them).
# Exit 77 (skipped) when Xvfb or xdotool is missing.
set -euo pipefail

program=$1 sample=$2 shots=${3:-}
command -v Xvfb >/dev/null && command -v xdotool >/dev/null || exit 77

work=$(mktemp -d)
display=:$((90 + RANDOM % 100))
cleanup() {
  [ -n "${viewer:-}" ] && kill "$viewer" 2>/dev/null || true
  [ -n "${xvfb:-}" ] && kill "$xvfb" 2>/dev/null || true
  rm -rf "$work"
}
trap cleanup EXIT

Xvfb "$display" -screen 0 1600x1000x24 -nolisten tcp >/dev/null 2>&1 &
xvfb=$!
export DISPLAY=$display
for _ in $(seq 50); do xdotool getmouselocation >/dev/null 2>&1 && break; sleep 0.1; done

export DXFIMPORT_LOG=$work/viewer.log XDG_CONFIG_HOME=$work/config QT_QPA_PLATFORM=xcb LANG=C.UTF-8
"$program" "$sample" >/dev/null 2>&1 &
viewer=$!

fail() { echo "xdotool check: $*" >&2; [ -n "${XDOTOOL_DEBUG:-}" ] && grep -a "View\|Wheel" "$DXFIMPORT_LOG" >&2; exit 1; }
# The number of views drawn so far; waiting (up to 10 s) until there are `$1` of them.
views() { grep -ac "View: picture" "$DXFIMPORT_LOG" 2>/dev/null || true; }
wait_views() { for _ in $(seq 100); do [ "$(views)" -ge "$1" ] && return 0; sleep 0.1; done; fail "the viewer drew no new view"; }

# The last "View:" line of the log: picture width and height, window left top right bottom.
last_view() { grep -a "View: picture" "$DXFIMPORT_LOG" | tail -1 | sed -E 's/.*picture ([0-9]+)x([0-9]+), window (.*)/\1 \2 \3/'; }
window=$(xdotool search --sync --onlyvisible --name "Corvath DXF Import" | head -1)
[ -n "$window" ] || fail "no viewer window"
wait_views 1
xdotool windowmove "$window" 0 0 windowsize "$window" 1200 850
wait_views 2
sleep 0.3

read -r pw ph left top right bottom <<<"$(last_view)"
[ "$pw" -gt 1100 ] && [ "$ph" -gt 650 ] || fail "the picture ($pw x $ph) does not fill the 1200 x 850 window"
[ -n "$shots" ] && xwd -id "$window" -silent > "$shots/viewer-window.xwd"

# The picture's top left on the screen: where the pointer maps to picture pixels.
geometry=$(xdotool getwindowgeometry --shell "$window")
eval "$geometry"
picture_x=$((X + (1200 - 2 - pw) / 2)) picture_y=$((Y + 850 - 24 - ph))  # centred; above the status bar
px=300 py=250
xdotool mousemove $((picture_x + px)) $((picture_y + py))
sleep 0.3
read -r _ _ l0 t0 r0 b0 <<<"$(last_view)"
drawn=$(views)
for _ in 1 2 3; do xdotool click 4; sleep 0.1; done
wait_views $((drawn + 3))
read -r _ _ l1 t1 r1 b1 <<<"$(last_view)"
# Where the wheel said it was, the drawing point stays; the window is 1.25^3 times narrower.
read -r wx wy <<<"$(grep -a "Wheel:" "$DXFIMPORT_LOG" | tail -1 | sed -E 's/.*at ([-0-9.]+) ([-0-9.]+).*/\1 \2/')"
python3 - "$pw" "$wx" "$l0" "$r0" "$l1" "$r1" <<'EOF' || fail "the wheel did not zoom about the pointer"
import sys
pw, x, l0, r0, l1, r1 = map(float, sys.argv[1:])
before = l0 + x * (r0 - l0) / pw
after = l1 + x * (r1 - l1) / pw
ratio = (r0 - l0) / (r1 - l1)
assert abs(ratio - 1.25 ** 3) < 1e-6, ratio
assert abs(before - after) < 1e-6 * (r0 - l0), (before, after)
EOF

# A middle-button drag of 120 pixels to the right: the window moves 120 pixels' worth left.
drawn=$(views)
xdotool mousedown 2
for step in 30 60 90 120; do xdotool mousemove $((picture_x + px + step)) $((picture_y + py)); sleep 0.15; done
xdotool mouseup 2
wait_views $((drawn + 1))
sleep 0.5  # the last of the drag's views
read -r _ _ l2 t2 r2 b2 <<<"$(last_view)"
python3 - "$pw" "$l1" "$r1" "$l2" "$r2" "$t1" "$t2" <<'EOF' || fail "the middle-button drag did not pan"
import sys
pw, l1, r1, l2, r2, t1, t2 = map(float, sys.argv[1:])
unit = (r1 - l1) / pw
assert abs((l1 - l2) / unit - 120) < 1.5, (l1 - l2) / unit
assert abs(t2 - t1) < 1.5 * unit
EOF
[ -n "$shots" ] && xwd -id "$window" -silent > "$shots/viewer-zoomed.xwd"

# The layer dialog (Ctrl+L), for the screenshots.
if [ -n "$shots" ]; then
  xdotool windowfocus --sync "$window" key ctrl+l  # no window manager here: focus, not activate
  layers=$(timeout 10 xdotool search --sync --onlyvisible --name "Edit Layers" | head -1 || true)
  sleep 0.8
  if [ -n "$layers" ]; then
    xwd -id "$layers" -silent > "$shots/layers.xwd"
    xdotool windowfocus --sync "$layers" key Escape
    sleep 0.5
  fi
fi

# Ctrl+O: the file dialog (cancelled, it leaves nothing open, as a cancelled open always has).
xdotool windowfocus --sync "$window" key ctrl+o
dialog=$(timeout 10 xdotool search --sync --onlyvisible --name "Open DXF File" | head -1 || true)
[ -n "$dialog" ] || fail "Ctrl+O opened no file dialog"
xdotool windowfocus --sync "$dialog" key Escape
echo "xdotool check: the picture fills the window, wheel zoom and middle drag follow the pointer, Ctrl+O opens"
