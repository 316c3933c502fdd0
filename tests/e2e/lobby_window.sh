#!/usr/bin/env bash
# The real client at a real (virtual) X display against our real server on 127.0.0.1, driven by mouse:
#   at 1280x720: main menu -> "Connect to server" -> the lobby -> "Create a game room" -> a single player
#   challenge of Glow Horde -> "Create room" -> the game room -> "Ready" -> "START GAME" -> the game runs
#   -> "End game now" -> the end overlay -> "Return to lobby" -> the lobby's "Game results" tab shows the
#   game, agreed -> "Disconnect from server" -> the main menu;
#   at 1920x1080: connect, the lobby and the room creation page, for their layout.
# Screenshots of every step stay in SCREENS_DIR for a developer to look at.
# Usage: lobby_window.sh CLIENT SERVER SCREENS_DIR        (skips, status 77, without xvfb-run)
set -u

if [ "${1:-}" = "--inner" ]; then
  phase=$2
  work=$3
  screens=$4
  port=$5
  client_dir="$work/client"
  # shellcheck source=x_window.sh
  . "$(dirname "$0")/x_window.sh"
  start_client_window "$client_dir" --ip 127.0.0.1 --server-base-port "$port"
  half=$((screen_width / 2))
  green_text="#4DCC4D"    # "(you)", "Ready", the agreement line
  yellow_text="#FFFF4D"   # "Game Over."
  white="#FFFFFF"

  shot "$phase-01-main-menu"
  # "Connect to server" is the fourth button of the menu, under the banner; the first click may come
  # before the client has taken its new geometry in, so it is repeated until the lobby answers.
  connect_y=$(( phase == 720 ? 507 : 0 ))
  [ "$phase" = 1080 ] && connect_y=667
  for _ in 1 2 3; do
    click "$half" "$connect_y" 1.5
    grep -q "Authentication successful" "$work/client-$phase.txt" && break
  done
  wait_output "Authentication successful" 10 || fail "the client didn't log in"
  sleep 1
  shot "$phase-02-lobby"
  # "(you)" in green beside the name in the list of players outside rooms.
  [ "$(count_colour "$green_text" 700x120+100+100)" -gt 0 ] || fail "the lobby doesn't list the local player"
  click 185 185 1
  shot "$phase-03-create-room"
  if [ "$phase" = 1080 ]; then
    click 225 180 0.6
    click 135 233 0.8
    shot "$phase-04-create-challenge"
    click 45 $((screen_height - 35)) 1.5
    wait_output "Sent CREATE_GAME message" 5 || fail "\"Create room\" sent nothing"
    shot "$phase-05-game-room"
    kill "$pid" 2>/dev/null
    wait "$pid" 2>/dev/null
    echo "PASS: $phase"
    exit 0
  fi
  # "Game type" -> "Co-op or single player challenge"; the first challenge is the single player one.
  click 225 180 0.6
  click 135 233 0.8
  shot "$phase-04-create-challenge"
  click 60 $((screen_height - 35)) 1.5
  shot "$phase-05-game-room"
  # The game room's card of the local player with its green " [HOST]".
  wait_colour "$green_text" 200x30+180+105 5 || fail "the game room doesn't show the host's card"
  # The card's "Ready" box, then "START GAME" once the server has the player ready.
  click 195 149 1.2
  shot "$phase-06-ready"
  click 340 479 1
  wait_output "Game started" 15 || fail "the game didn't start"
  sleep 2
  shot "$phase-07-game-running"
  # A single player game offers "End game now" in the panel at the bottom right.
  click 1201 694 0.5
  wait_colour "$yellow_text" 300x400+490+160 10 || fail "the game didn't end"
  shot "$phase-08-end-overlay"
  read -r _ y < <(import -window root "$work/screen.png"; convert "$work/screen.png" -crop 300x400+490+160 +repage txt:- |
    grep -i "$yellow_text" | awk -F'[,:]' '{ s += $2; n++ } END { printf "0 %d\n", 160 + s / n }')
  click 640 $((y + 25)) 2
  shot "$phase-09-back-in-room"
  # Back in the room: "LEAVE ROOM", then the "Game results" tab and the game's row.
  click 190 500 1.5
  shot "$phase-10-lobby-after-game"
  click 205 92 1
  click 100 140 1
  shot "$phase-11-results-tab"
  # The details scroll: down to the recording, whose download button sits at the bottom.
  xdotool mousemove 900 400
  for _ in $(seq 30); do xdotool click 5; done
  sleep 0.5
  shot "$phase-12-results-details"
  click 740 665 2
  shot "$phase-13-recording-downloaded"
  ls "$client_dir"/recordings/recording*.bin >/dev/null 2>&1 || fail "no recording was downloaded"
  [ "$(count_colour "$green_text" 600x40+660+650)" -gt 0 ] || fail "the page doesn't say the recording is here"
  # "Disconnect from server", then the main menu's "Recording replay", the game's row and "Replay".
  click 100 694 1.5
  wait_output "Client shutdown complete" 5 || fail "disconnecting didn't end the connection"
  click 640 536 1
  shot "$phase-14-replay-page"
  click 100 116 1
  click 43 142 2
  wait_colour "$yellow_text" 300x400+490+160 30 || fail "the replay didn't end"
  shot "$phase-15-replay-end"
  click 640 $((y + 25)) 1.2
  shot "$phase-16-after-replay"
  kill -0 "$pid" 2>/dev/null || fail "the client ended after the replay"
  grep -q "Fatal error" "$work/client-$phase.txt" && fail "a fatal error"
  kill "$pid" 2>/dev/null
  wait "$pid" 2>/dev/null
  echo "PASS: $phase"
  exit 0
fi

client=$1
server=$2
screens=$3
# shellcheck source=x_window.sh
. "$(dirname "$0")/x_window.sh"
require_x_tools
work=$(mktemp -d)
server_pid=""
cleanup() {
  [ -n "$server_pid" ] && kill "$server_pid" 2>/dev/null && wait "$server_pid" 2>/dev/null
  rm -rf "$work"
}
trap cleanup EXIT
mkdir -p "$screens" "$work/server"
rm -f "$screens"/*.png
copy_client "$client" "$work/client"
"$server" account add Ada --data "$work/server" --credentials-file "$work/client/credentials.bin" >/dev/null ||
  { echo "FAIL: no account minted"; exit 1; }
"$server" --base-port 0 --bind 127.0.0.1 --data "$work/server" --no-website >"$work/server.txt" 2>&1 &
server_pid=$!
for _ in $(seq 50); do grep -q '^Server running' "$work/server.txt" && break; sleep 0.1; done
port=$(sed -n 's/^Lobby listening on 127.0.0.1 port \([0-9]*\)$/\1/p' "$work/server.txt")
[ -n "$port" ] || { echo "FAIL: the server didn't start"; cat "$work/server.txt"; exit 1; }

echo "Screenshots: $screens"
run_phase 720 1280x720 100 "$work" "$screens" "$port"
run_phase 1080 1920x1080 60 "$work" "$screens" "$port"
echo "PASS: the client in the lobby at 1280x720 and 1920x1080, screenshots in $screens"
