#!/usr/bin/env bash
# The real client at a real (virtual) X display, driven by real mouse and keyboard events:
#   1. at 1280x720: main menu ("Connect to server" disabled, with its tooltip) -> "Glow Horde tutorial" ->
#      "Play" -> dig down chosen by key (F5) and given by a click near the hordeling -> the level is won ->
#      "Return to lobby" -> the tutorial page, level 1 completed and level 2 unlocked, as progress.ini
#      says; then "Recording replay" -> a Glow Horde recording made by the driver is selected, replayed
#      to its end and proved -> back on the page;
#   2. at 1920x1080: main menu -> the tutorial page (level 1 completed) -> the replay page -> "Credentials
#      setup" -> a credentials string typed into the field is judged valid -> "Set credentials" ->
#      "Credentials found", credentials.bin holds it -> the main menu offers "Connect to server"
#      -> connecting to the default host, which has no address here, ends at the fatal error screen with
#      its sentence.
# Screenshots of every step stay in SCREENS_DIR for a developer to look at.
# Usage: client_window.sh CLIENT DRIVER SCREENS_DIR        (skips, status 77, without xvfb-run)
set -u

if [ "${1:-}" = "--inner" ]; then
  phase=$2
  work=$3
  screens=$4
  client_dir="$work/client"
  # shellcheck source=x_window.sh
  . "$(dirname "$0")/x_window.sh"
  start_client_window "$client_dir"
  green_hordeling="#00FF7F"
  yellow_text="#FFFF4D"   # "Game Over." (and the time in the bar at the bottom)
  green_text="#4DCC4D"    # "Completed", "Credentials found", a valid string
  score_green="#00FF80"   # the green team's score in the bar
  orange_text="#FF9933"   # "No credentials found for server connection"

  if [ "$phase" = tutorial ]; then
    shot 720-01-main-menu
    # Without credentials "Connect to server" is disabled, with its tooltip, and a click on it does nothing.
    click 640 507 0.6
    shot 720-02-connect-disabled
    [ "$(count_colour "#FFFFFF" 200x60+805+505)" -gt 0 ] || fail "the disabled \"Connect to server\" shows no tooltip"
    click 640 449
    shot 720-02b-tutorial-page
    [ "$(count_colour "$green_text" 1280x600+0+60)" -eq 0 ] || fail "a fresh tutorial page shows a completed level"
    click 640 168 1
    # The hordeling drops onto the floor of the level's cave; dig down is chosen with its key and given
    # by a click near the hordeling.
    wait_colour "$green_hordeling" 440x90+416+380 20 || fail "no hordeling on the floor"
    shot 720-03-level-running
    score_zero=$(count_colour "$score_green" 16x20+568+685)
    read -r x y < <(find_colour "$green_hordeling" 440 90 416 380)
    xdotool mousemove "$x" "$y"
    xdotool key F5
    sleep 0.2
    read -r x y < <(find_colour "$green_hordeling" 440 90 416 380)
    [ -n "${x:-}" ] || fail "the hordeling left the floor before the order"
    xdotool mousemove "$x" "$y"
    sleep 0.2
    xdotool click 1
    sleep 0.5
    shot 720-04-order-given
    # Once the hordeling is out its team's score in the bar turns from 0 to 1 (the digit is drawn in the
    # team's green); the level is then ended early by its own button.
    tries=160
    while [ "$(count_colour "$score_green" 16x20+568+685)" -eq "$score_zero" ] && [ "$tries" -gt 0 ]; do
      sleep 0.25
      tries=$((tries - 1))
    done
    [ "$tries" -gt 0 ] || fail "no hordeling got out"
    shot 720-05-hordeling-out
    click 1201 694 0.5
    wait_colour "$yellow_text" 200x300+540+250 10 || fail "the level didn't end"
    shot 720-06-end-overlay
    read -r x y < <(find_colour "$yellow_text" 200 300 540 250)
    click 640 $((y + 25)) 1.2
    shot 720-07-tutorial-after-win
    grep -qx "0=completed" "$client_dir/userdata/progress.ini" || fail "progress.ini doesn't hold level 1 completed"
    grep -qx "0=1" "$client_dir/userdata/progress.ini" || fail "progress.ini doesn't hold one attempt"
    [ "$(count_colour "$green_text" 1280x120+0+140)" -gt 0 ] || fail "the tutorial page doesn't show \"Completed\""
    # Level 2 unlocked: its row shows its help and its "Play" button where a locked row has one line.
    [ "$(count_colour "#FFFFFF" 1100x40+90+270)" -gt 0 ] || fail "level 2 shows no help text"
    click 640 557
    click 640 536
    shot 720-08-replay-page
    click 200 116
    shot 720-09-replay-details
    click 43 142 2
    shot 720-10-replay-running
    wait_colour "$yellow_text" 200x300+540+250 60 || fail "the replay didn't end"
    shot 720-11-replay-end
    read -r x y < <(find_colour "$yellow_text" 200 300 540 250)
    click 640 $((y + 25)) 1.2
    shot 720-12-replay-proved
    kill -0 "$pid" 2>/dev/null || fail "the client ended after the replay"
    grep -q "Fatal error" "$work/client-$phase.txt" && fail "the replay ended in a fatal error"
  else
    shot 1080-01-main-menu
    # The first click after the window was moved and sized may reach the client before it has taken the
    # new geometry in: it is repeated until the page opens. The tutorial page shows the level won at
    # 1280x720 (the storage is the same).
    for _ in 1 2 3; do
      click 960 609
      [ "$(count_colour "$green_text" 1920x120+0+140)" -gt 0 ] && break
    done
    [ "$(count_colour "$green_text" 1920x120+0+140)" -gt 0 ] || fail "the tutorial page doesn't show level 1 completed"
    shot 1080-02-tutorial-page
    click 960 557
    click 960 696
    click 200 116
    shot 1080-03-replay-details
    click 150 142
    click 960 638
    [ "$(count_colour "$orange_text" 1920x30+0+75)" -gt 0 ] || fail "the credentials page didn't open"
    shot 1080-04-credentials-page
    click 960 209 0.3
    xdotool type --delay 30 "AQECAwQFBgcI EBESExQVFhcYGRobHB0eH4tl"
    # The characters reach the field one a frame; the string is judged as it is typed.
    wait_colour "$green_text" 1920x30+0+255 10 || fail "the typed string isn't judged valid"
    shot 1080-05-string-typed
    click 960 288 1
    shot 1080-06-credentials-found
    [ "$(count_colour "$green_text" 1920x30+0+75)" -gt 0 ] || fail "the page doesn't say \"Credentials found\""
    [ "$(od -An -tx1 "$client_dir/credentials.bin" | tr -d ' \n')" = \
      "04000000416e6f6e08000000010203040506070810000000101112131415161718191a1b1c1d1e1f" ] ||
      fail "credentials.bin doesn't hold the typed credentials"
    click 960 167
    shot 1080-07-main-menu-with-credentials
    click 960 667 1.5
    shot 1080-08-connect-fatal-error
    grep -q "^Fatal error: Invalid server address: " "$work/client-$phase.txt" ||
      fail "connecting didn't end at the fatal error screen"
  fi
  kill "$pid" 2>/dev/null
  wait "$pid" 2>/dev/null
  echo "PASS: $phase"
  exit 0
fi

client=$1
driver=$2
screens=$3
# shellcheck source=x_window.sh
. "$(dirname "$0")/x_window.sh"
require_x_tools
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$screens" "$work/client/recordings"
rm -f "$screens"/*.png
copy_client "$client" "$work/client"

# A Glow Horde recording for the replay page, played by the driver.
SDL_VIDEODRIVER=dummy TANDEM_AUDIO_DRIVER=null timeout 120 "$driver" --storage "$work/driver" --window 320x180 \
  --record-local-games --script "$(dirname "$0")/tutorial/level1_dig_down.txt" >"$work/driver.txt" 2>&1 ||
  { echo "FAIL: the driver made no recording"; cat "$work/driver.txt"; exit 1; }
cp "$work/driver/recordings/recording1.bin" "$work/client/recordings/recording1.bin"

echo "Screenshots: $screens"
run_phase tutorial 1280x720 180 "$work" "$screens"
run_phase credentials 1920x1080 90 "$work" "$screens"
echo "PASS: the client at 1280x720 and 1920x1080, screenshots in $screens"
