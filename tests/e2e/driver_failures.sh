#!/usr/bin/env bash
# The driver exits non-zero when an expectation fails (1), a wait runs out (1), the program quits before
# the script's end (1) or the script doesn't parse (2), and always stops by itself.
set -u
driver=$1
source "$(dirname "$0")/lib.sh"

extra=()  # further options of the driver for the next run
run() {  # expected-status expected-stderr-text script-lines...
  local expected=$1 text=$2; shift 2
  printf '%s\n' "$@" >"$work/script.txt"
  timeout 60 "$driver" --script "$work/script.txt" --log "$work/log.jsonl" "${extra[@]}" >"$work/out.txt" 2>"$work/err.txt"
  local status=$?
  [ "$status" -eq "$expected" ] || fail "status $status, expected $expected for: $*"
  grep -qF -- "$text" "$work/err.txt" || fail "no \"$text\" on stderr for: $*"
  echo "PASS: $* -> $status"
}

run 1 'Expectation failed at line 2 (expect_mode 4): the mode is 0' 'frames 2' 'expect_mode 4' 'quit'
grep -q '"passed":false' "$work/log.jsonl" || fail "the log doesn't record the failure"
run 1 'still in mode 0 after 30 frames' 'wait_mode 5 30'
run 1 'the condition didn'"'"'t hold within 3 frames' 'wait_condition "order_applies dig_down 1 1" 3'
run 1 'The program quit before line 2 of the script.' 'cmd QuitToDesktop' 'frames 1' 'expect_mode 0'
extra=(--max-frames 20)
run 1 'Stopped after 20 frames, at line 1' 'frames 1000'
extra=()
run 1 'line 1 (expect_result_row 0 1): there is no game' 'expect_result_row 0 1'
run 1 'not reached within 5 frames: there is no game' 'wait_game_frame 10 5'
run 1 'not reached within 4 frames: there is no game' 'wait_result_row 0 1 4'
run 2 'line 2: there is no verb "jump"' 'frames 1' 'jump 3'
run 2 'usage: expect_result_row ROW MIN [MAX]' 'expect_result_row 0'
run 2 'MAX must be an integer of at least 3, not "2"' 'expect_result_row 0 3 2'
extra=(--window 640by360)
run 2 'The window size must be WIDTHxHEIGHT' 'frames 1'
extra=()
run 2 'usage: cmd SetCredentials PLAYER_ID_HEX SECRET_HEX' 'cmd SetCredentials 00'
run 2 'line 1: a quoted word isn'"'"'t closed' 'wait_condition "open'
