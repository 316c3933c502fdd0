#!/usr/bin/env bash
# tandem-verify on real recordings: two drivers play ranked games of each of the three games (two of
# each) through our server on loopback and download their recordings, and tandem-match plays four-player
# matches of the ship games with steering orders; every recording must verify. In one run, a recording
# with one order changed, a copy whose agreed result was changed, a cut-off copy and a missing file must
# each fail with one line while a good one beside them still verifies, with exit status 1.
# Usage: verify_recordings.sh SERVER DRIVER VERIFY MATCH SCRIPT_DIRECTORY
set -u
server=$1
driver=$2
verify=$3
match=$4
scripts=$5
source "$(dirname "$0")/lib.sh"
export TANDEM_AUDIO_DRIVER=${TANDEM_AUDIO_DRIVER:-null}
touch "$work/out.txt" "$work/err.txt"

"$server" account add alice --data "$work/data" --credentials-file "$work/alice.bin" >/dev/null || fail "account add"
"$server" account add bob --data "$work/data" --credentials-file "$work/bob.bin" >/dev/null || fail "account add"
for attempt in 1 2 3 4 5; do
  port=$((20000 + RANDOM % 40000))
  "$server" --base-port "$port" --bind 127.0.0.1 --data "$work/data" --no-website >"$work/server.log" 2>&1 &
  server_pid=$!
  for _ in $(seq 50); do grep -q '^Server running' "$work/server.log" && break; kill -0 "$server_pid" 2>/dev/null || break; sleep 0.1; done
  grep -q '^Server running' "$work/server.log" && break
  kill "$server_pid" 2>/dev/null; wait "$server_pid" 2>/dev/null
done
grep -q '^Server running' "$work/server.log" || { cat "$work/server.log"; fail "the server did not start"; }
trap 'kill "$server_pid" 2>/dev/null; wait "$server_pid" 2>/dev/null; rm -rf "$work"' EXIT

number=0
for game in glow_horde vipers aviators glow_horde vipers aviators; do
  for role in host guest; do
    sed "s/GAME/$game/; s/KIND/ranked/; s/INDEX/0/; s/RESULTNUMBER/$number/g; s/PLAYERS/2/g" "$scripts/$role.txt" \
      >"$work/$role.txt"
  done
  mkdir -p "$work/host" "$work/guest"
  timeout 60 "$driver" --script "$work/host.txt" --storage "$work/host" --credentials "$work/alice.bin" \
    --server-base-port "$port" --window 320x200 >"$work/host.out" 2>"$work/host.err" &
  host=$!
  timeout 60 "$driver" --script "$work/guest.txt" --storage "$work/guest" --credentials "$work/bob.bin" \
    --server-base-port "$port" --window 320x200 >"$work/out.txt" 2>"$work/err.txt" &
  guest=$!
  wait "$guest" || fail "the guest of game $number ($game) failed"
  wait "$host" || { cp "$work/host.out" "$work/out.txt"; cp "$work/host.err" "$work/err.txt"; fail "the host of game $number failed"; }
  [ -s "$work/host/recordings/recording$number.bin" ] || fail "the recording of game $number was not downloaded"
  number=$((number + 1))
done

for game in vipers aviators; do
  "$match" --game "$game" --players 4 --seed 3 --out "$work/$game-match.bin" >"$work/out.txt" 2>"$work/err.txt" ||
    fail "tandem-match $game failed"
done
"$match" --game aviators --players 2 --seed 7 --tamper --out "$work/order-changed.bin" >"$work/out.txt" 2>"$work/err.txt" ||
  fail "tandem-match --tamper failed"

recordings=("$work"/host/recordings/recording{0..5}.bin "$work/vipers-match.bin" "$work/aviators-match.bin")
"$verify" "${recordings[@]}" >"$work/out.txt" 2>"$work/err.txt" || fail "the real recordings did not all verify"
[ "$(grep -c '^OK ' "$work/out.txt")" -eq 8 ] || fail "not eight OK lines"
grep -q '^8 of 8 recordings reproduced their agreed result$' "$work/out.txt" || fail "no summary line"
grep -Eq '^OK .*recording2\.bin: reproduced the agreed result \(end frame [0-9]+, .*; [0-9]+ frames in .* ms, [0-9]+x real time$' \
  "$work/out.txt" || fail "the Aviators line lacks its frames or speed"

# Tampered: every report of the result in the header ends with the end state checksum (the header's
# last 8 bytes for the last one); a bit of each copy is flipped, so that the players still agree but on a
# result the replay doesn't reach. Cut off: half a file.
python3 - "$work/host/recordings/recording0.bin" "$work/tampered.bin" "$work/cut.bin" <<'PY' || fail "tampering"
import struct, sys
data = bytearray(open(sys.argv[1], "rb").read())
(header,) = struct.unpack_from("<Q", data, 0)
checksum = bytes(data[header:8 + header])
at, copies = 8, 0
while (found := data.find(checksum, at, 8 + header)) >= 0:
    data[found + 7] ^= 0x80
    at, copies = found + 8, copies + 1
assert copies == 2, copies
open(sys.argv[2], "wb").write(data)
open(sys.argv[3], "wb").write(data[: len(data) // 2])
PY
"$verify" "$work/order-changed.bin" "$work/tampered.bin" "${recordings[1]}" "$work/cut.bin" "$work/no-such-file.bin" \
  >"$work/out.txt" 2>"$work/err.txt"
status=$?
[ "$status" -eq 1 ] || fail "the run with a tampered file ended with status $status, not 1"
grep -q '^DIFFERS .*order-changed\.bin: the replay arrived at ' "$work/out.txt" || fail "the changed order went unnoticed"
grep -q '^DIFFERS .*tampered\.bin: the replay arrived at ' "$work/out.txt" || fail "the changed result went unnoticed"
grep -q '^OK .*recording1\.bin: ' "$work/out.txt" || fail "the good recording beside the tampered one did not verify"
grep -q '^ERROR .*cut\.bin: ' "$work/out.txt" || fail "the cut-off recording gave no error line"
grep -q '^ERROR .*no-such-file\.bin: ' "$work/out.txt" || fail "the missing file gave no error line"
grep -q '^1 of 5 recordings reproduced their agreed result$' "$work/out.txt" || fail "wrong summary"
[ "$(wc -l <"$work/out.txt")" -eq 6 ] || fail "not one line per file"
echo "verify_recordings: passed"
