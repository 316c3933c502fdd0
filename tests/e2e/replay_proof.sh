#!/usr/bin/env bash
# A Glow Horde game recorded by the driver is replayed to its proof: tutorial level 1 is played with the
# driver's --record-local-games, the recording it leaves is replayed and must log a match; then the
# reported result in the file is changed by one bit, and the replay must end at the mismatch error.
# Usage: replay_proof.sh DRIVER SOURCE_DIR
set -u
driver=$1
source_dir=$2
source "$(dirname "$0")/lib.sh"
export SDL_AUDIO_DRIVER=${SDL_AUDIO_DRIVER:-dummy}
storage="$work/storage"
run() { timeout 300 "$driver" --storage "$storage" --window 640x360 "$@" >"$work/out.txt" 2>"$work/err.txt"; }

run --record-local-games --script "$source_dir/e2e/tutorial/level1_dig_down.txt" || fail "the recorded level didn't pass"
recording="$storage/recordings/recording1.bin"
[ -s "$recording" ] || fail "no recording was saved"
grep -q "^Saved the recording of the local game to .*recording1.bin$" "$work/out.txt" || fail "no line about the saved recording"

run --log "$work/match.jsonl" --script "$source_dir/e2e/replay/replay_first_recording.txt" || fail "the replay didn't pass"
grep -q '^{"event":"replay_verification","matched":true,"end_frame":[0-9]*,"end_state_checksum":[0-9]*}$' \
  "$work/match.jsonl" || fail "the replay logged no match: $(cat "$work/match.jsonl")"

# The header ends with the reported results, whose last 8 bytes are the end state checksum: flip a bit
# of its most significant byte.
header_size=$(od -An -t u8 -N 8 "$recording" | tr -d ' ')
offset=$((8 + header_size - 1))
byte=$(od -An -t u1 -j "$offset" -N 1 "$recording" | tr -d ' ')
printf "$(printf '\\%03o' $((byte ^ 1)))" | dd of="$recording" bs=1 seek="$offset" conv=notrunc status=none

run --log "$work/mismatch.jsonl" --script "$source_dir/e2e/replay/replay_first_recording.txt"
status=$?
[ "$status" -eq 1 ] || fail "the tampered replay ended with status $status, not 1"
grep -q "Fatal error at line [0-9]* of the script: Result does not match expected result.$" "$work/err.txt" ||
  fail "the tampered replay didn't end at the mismatch error"
grep -q '"event":"replay_verification","matched":false' "$work/mismatch.jsonl" || fail "no mismatch logged"
echo "PASS: the recorded level replays to a match, and with its reported result changed to the mismatch error"
