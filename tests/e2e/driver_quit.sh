#!/usr/bin/env bash
# The driver runs the real main loop headless from a script that plays a few frames, skips a tutorial
# level and quits by command; it exits 0, the program's own quit ended the loop, and the progress file
# in the storage directory holds the skip.
set -u
driver=$1
source "$(dirname "$0")/lib.sh"

cat >"$work/script.txt" <<'SCRIPT'
# a short offline session
frames 5
expect_mode 0
expect_game_frame 0
expect_tutorial 2 0 0
cmd SkipTutorial 2
cmd ToggleFullScreen
expect_tutorial 2 1 0
cmd QuitToDesktop
SCRIPT

timeout 60 "$driver" --script "$work/script.txt" --storage "$work/storage" --log "$work/log.jsonl" >"$work/out.txt" 2>"$work/err.txt"
status=$?
[ "$status" -eq 0 ] || fail "exit status $status, expected 0"
grep -q '^Script passed after 7 frames$' "$work/out.txt" || fail "unexpected frame count"
grep -qx '{"event":"driver_end","passed":true,"frames":7,"line":0,"reason":"","stalled_frames":0,"longest_stall":0}' "$work/log.jsonl" || fail "log: $(cat "$work/log.jsonl")"
[ "$(cat "$work/storage/userdata/progress.ini")" = "$(printf '[tutorial]\n2=skipped\n\n[attempts]')" ] || fail "progress: $(cat "$work/storage/userdata/progress.ini")"
echo "PASS: driver script ran 7 frames and quit by command"
