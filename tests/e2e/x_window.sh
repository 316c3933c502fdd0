# Shared by the end-to-end scripts that drive the real client at a virtual X display (Xvfb) with real
# mouse and keyboard events. A script runs itself under xvfb-run with --inner for each phase.

# ---- outside the display

# Ends the script with status 77 (skipped) without xvfb-run, with 1 without the tools beside it.
require_x_tools() {
  if ! command -v xvfb-run >/dev/null; then
    echo "SKIP: xvfb-run is not installed"
    exit 77
  fi
  for tool in xdotool import convert; do
    command -v "$tool" >/dev/null || { echo "FAIL: $tool is needed beside xvfb-run"; exit 1; }
  done
}

# The client keeps its files beside itself: a copy of it in directory $2, with the data beside it.
copy_client() {
  mkdir -p "$2"
  cp "$1" "$2/tandem-client"
  ln -s "$(dirname "$1")/data" "$2/data"
}

# Runs phase $1 of the calling script on a virtual display of size $2 within $3 seconds, passing the
# rest on; once more if the display was lost to another run that took the same number at the same
# moment (the client then finds no display: status 3). A phase that fails ends the script.
run_phase() {
  local name=$1 size=$2 limit=$3 status
  shift 3
  for _ in 1 2; do
    timeout "$limit" xvfb-run -a -s "-screen 0 ${size}x24" bash "$0" --inner "$name" "$@"
    status=$?
    [ "$status" -ne 3 ] && break
  done
  [ "$status" -eq 0 ] || exit 1
}

# ---- on the display (with $work, $phase and $screens set)

shot() { import -window root "$screens/$1.png"; }
click() { xdotool mousemove "$1" "$2"; sleep 0.15; xdotool click 1; sleep "${3:-0.8}"; }
fail() { echo "FAIL: $*"; shot "failure-$phase"; echo "--- client output"; cat "$work/client-$phase.txt"; exit 1; }
# The number of pixels of colour $1 (as #RRGGBB) in the region $2 (WxH+X+Y) of the screen.
count_colour() {
  import -window root -crop "$2" -depth 8 txt:- 2>/dev/null | grep -ic "$1"
}
# Waits up to $3 seconds until the screen's region $2 shows colour $1.
wait_colour() {
  local tries=$(( $3 * 4 ))
  while [ "$tries" -gt 0 ]; do
    [ "$(count_colour "$1" "$2")" -gt 0 ] && return 0
    sleep 0.25
    tries=$((tries - 1))
  done
  return 1
}
# Waits up to $2 seconds for a line matching $1 in the client's output.
wait_output() {
  local tries=$(( $2 * 4 ))
  while [ "$tries" -gt 0 ]; do
    grep -q "$1" "$work/client-$phase.txt" && return 0
    sleep 0.25
    tries=$((tries - 1))
  done
  return 1
}
# The mean position "x y" of colour $1 in the region given as width height x y.
find_colour() {
  import -window root -crop "${2}x${3}+${4}+${5}" -depth 8 txt:- 2>/dev/null | grep -i "$1" |
    awk -v x0="$4" -v y0="$5" -F'[,:]' '{ sx += $1; sy += $2; n++ } END { if (n > 0) printf "%d %d\n", x0 + sx / n, y0 + sy / n }'
}

# Starts the client in directory $1 with the arguments after it, output in $work/client-$phase.txt,
# and makes its window cover the screen; sets pid. Ends the phase with status 3 if no window appears.
start_client_window() {
  local dir=$1 window=""
  shift
  export TANDEM_AUDIO_DRIVER=null
  unset SDL_VIDEODRIVER
  (cd "$dir" && exec ./tandem-client --start-windowed "$@") >"$work/client-$phase.txt" 2>&1 &
  pid=$!
  for _ in $(seq 40); do
    window=$(xdotool search --name "SDL3 application" 2>/dev/null | head -1)
    [ -n "$window" ] && break
    sleep 0.25
  done
  if [ -z "$window" ]; then
    echo "The client's window didn't appear:"; cat "$work/client-$phase.txt"
    exit 3
  fi
  # There is no window manager under Xvfb to honour full screen: the window is placed and sized to cover
  # the screen instead, which the client sees as a resize.
  read -r screen_width screen_height < <(xdotool getdisplaygeometry)
  xdotool windowmove "$window" 0 0
  xdotool windowsize "$window" "$screen_width" "$screen_height"
  sleep 1
  # The first move can leave the client with its old position, and mouse positions shifted by it; a
  # second one after the resize brings it in line.
  xdotool windowmove "$window" 1 1
  sleep 0.3
  xdotool windowmove "$window" 0 0
  sleep 1
}
