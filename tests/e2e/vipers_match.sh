#!/usr/bin/env bash
# A scripted Vipers match of two clients in lockstep to a result, then that match replayed by the driver
# through the real main loop, which must reach the same result. A recording with one order changed
# must make the replay fail with the mismatch.
# Usage: vipers_match.sh MATCH DRIVER SCRIPT
set -u
match=$1
driver=$2
script=$3
source "$(dirname "$0")/lib.sh"
export TANDEM_AUDIO_DRIVER=${TANDEM_AUDIO_DRIVER:-null}

for variant in honest tampered; do
  rm -rf "$work/storage" && mkdir -p "$work/storage/recordings"
  flag=""
  [ "$variant" = tampered ] && flag="--tamper"
  timeout 120 "$match" --game vipers --players 2 --seed 7 --seconds 30 --out "$work/storage/recordings/recording1.bin" $flag \
    >"$work/out.txt" 2>"$work/err.txt" || fail "tandem-match ($variant) ended with status $?"
  grep -q '^Clients agreed after 1800 steps, end frame 1815' "$work/out.txt" || fail "the clients of the $variant match did not agree"
  timeout 300 "$driver" --script "$script" --storage "$work/storage" --window 320x200 >"$work/out.txt" 2>"$work/err.txt"
  status=$?
  if [ "$variant" = honest ]; then
    [ "$status" -eq 0 ] && grep -q '^Script passed' "$work/out.txt" || fail "the replay of the match ended with status $status"
  else
    [ "$status" -eq 1 ] && grep -q 'Result does not match expected result.' "$work/err.txt" ||
      fail "the replay of the tampered match ended with status $status instead of a mismatch"
  fi
done
echo "PASS: two clients agreed, the replay reproduced their result and a tampered recording was caught"
