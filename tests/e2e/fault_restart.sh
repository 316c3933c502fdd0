#!/usr/bin/env bash
# Faults between games: nothing finished may be lost. Our server on loopback, headless drivers as its
# clients. Game 0 (Glow Horde) is played to its end; during game 1 (Vipers) the guest is killed and then
# the server itself is killed, which also ends the host with a fatal error; the server restarts on the
# same data directory and game 2 (Aviators) is played to its end; the server is stopped and restarted
# once more. A client that played none of them must then see games 0 and 2 with the same reports the
# players saw, game 1 as finished, the same ratings, and recordings byte-equal to those downloaded
# before the restarts, which replay to the agreed results.
# Usage: fault_restart.sh SERVER DRIVER SCRIPT_DIRECTORY
set -u
server=$1
driver=$2
scripts=$3
source "$(dirname "$0")/lib.sh"
export TANDEM_AUDIO_DRIVER=${TANDEM_AUDIO_DRIVER:-null}
touch "$work/out.txt" "$work/err.txt"

for name in alice bob carol; do
  "$server" account add "$name" --data "$work/data" --credentials-file "$work/$name.bin" >/dev/null 2>&1 || fail "account add"
done
server_pid=""
trap 'kill $server_pid 2>/dev/null; wait $server_pid 2>/dev/null; rm -rf "$work"' EXIT
start_server() {  # on $port if set, otherwise on a free one found by trying
  local fixed=${port:-}
  for attempt in 1 2 3 4 5 6 7 8 9 10; do
    [ -n "$fixed" ] || port=$((20000 + RANDOM % 40000))
    "$server" --base-port "$port" --bind 127.0.0.1 --data "$work/data" --no-website >>"$work/server.log" 2>&1 &
    server_pid=$!
    for _ in $(seq 50); do
      [ "$(grep -c '^Server running' "$work/server.log")" -gt "$starts" ] && { starts=$((starts + 1)); return 0; }
      kill -0 "$server_pid" 2>/dev/null || break
      sleep 0.1
    done
    kill "$server_pid" 2>/dev/null; wait "$server_pid" 2>/dev/null
    sleep 0.5  # a fixed port may still be held for a moment after the last server died
  done
  cat "$work/server.log"; fail "the server did not start"
}
starts=0
port=""
start_server

# script NAME GAME NUMBER: a two-player ranked client script with its blanks filled in.
script() {
  sed "s/GAME/$2/; s/KIND/ranked/; s/INDEX/0/; s/RESULTNUMBER/$3/g; s/PLAYERS/2/g" "$scripts/$1.txt" >"$work/$1-$3.txt"
}
run() {  # run NAME CREDENTIALS SCRIPT: one driver in the background; its storage is the directory NAME
  mkdir -p "$work/$1"
  timeout 120 "$driver" --script "$3" --storage "$work/$1" --credentials "$work/$2" --server-base-port "$port" \
    --window 320x200 --log "$work/$1.jsonl" >"$work/$1.out" 2>"$work/$1.err" &
}
check() {  # check PID NAME: the driver passed
  wait "$1" || { cp "$work/$2.out" "$work/out.txt"; cp "$work/$2.err" "$work/err.txt"; tail -20 "$work/server.log"; fail "driver $2 failed"; }
}
play() {  # play GAME NUMBER: a whole game of two players
  script host "$1" "$2"
  script guest "$1" "$2"
  run "host$2" alice.bin "$work/host-$2.txt"; local host=$!
  run "guest$2" bob.bin "$work/guest-$2.txt"; local guest=$!
  check "$host" "host$2"
  check "$guest" "guest$2"
}

play glow_horde 0

# Game 1: both clients would play on far beyond any end; the guest is killed, then the server.
script host vipers 1
script guest vipers 1
sed -i 's/^wait_game_frame 600 20000$/wait_game_frame 1000000 1000000/' "$work/host-1.txt" "$work/guest-1.txt"
run host1 alice.bin "$work/host-1.txt"; host=$!
mkdir -p "$work/guest1"
"$driver" --script "$work/guest-1.txt" --storage "$work/guest1" --credentials "$work/bob.bin" --server-base-port "$port" \
  --window 320x200 >"$work/guest1.out" 2>"$work/guest1.err" &
victim=$!
for _ in $(seq 300); do grep -q '^Game started' "$work/guest1.out" && break; sleep 0.1; done
grep -q '^Game started' "$work/guest1.out" || fail "game 1 did not start"
sleep 0.3
kill -9 "$victim"; wait "$victim" 2>/dev/null
sleep 0.3
kill -9 "$server_pid"; wait "$server_pid" 2>/dev/null
wait "$host"; status=$?
cp "$work/host1.out" "$work/out.txt"; cp "$work/host1.err" "$work/err.txt"
[ "$status" -eq 1 ] && grep -q '^Fatal error' "$work/host1.err" || fail "the host of game 1 ended with status $status when its server died"

start_server
play aviators 2
kill -TERM "$server_pid"; wait "$server_pid"
grep -q '^Server stopped' "$work/server.log" || fail "the server did not stop cleanly"
start_server

run inspector carol.bin "$scripts/inspector.txt"; inspector=$!
check "$inspector" inspector
grep -q 'Game 1 finished' "$work/server.log" && fail "game 1 ended before the server was killed"

python3 - "$work" <<'PY' || fail "the games after the restarts differ from those before"
import json, sys
work = sys.argv[1]

def events(name, kind):
    return [e for e in map(json.loads, open(f"{work}/{name}.jsonl")) if e["event"] == kind]

after = {g["game"]: g for g in events("inspector", "game_results")}
assert sorted(after) == [0, 1, 2], sorted(after)
# What the players saw when their game ended is what a client sees after the restarts, byte for byte.
assert after[0] == [g for g in events("host0", "game_results") if g["game"] == 0][0], after[0]
assert after[2] == [g for g in events("host2", "game_results") if g["game"] == 2][0], after[2]
for number in (0, 2):
    reports = after[number]["reports"].split(",")
    assert len(reports) == 2 and reports[0] and reports[0] == reports[1], after[number]
assert after[1]["finished"] and after[1]["reports"] == ",", after[1]  # nobody reported game 1
ratings = lambda name: sorted((e["ranking"], e["player"], e["rating"], e["deviation"], e["volatility"])
                              for e in events(name, "rating"))
assert ratings("inspector") == ratings("host2"), (ratings("inspector"), ratings("host2"))
PY

# The recordings downloaded after the restarts are the ones downloaded before, and they replay.
for number in 0 2; do
  cmp "$work/host$number/recordings/recording$number.bin" "$work/inspector/recordings/recording$number.bin" ||
    fail "recording $number changed across the restarts"
  rm -rf "$work/replay" && mkdir -p "$work/replay/recordings"
  cp "$work/inspector/recordings/recording$number.bin" "$work/replay/recordings/"
  timeout 120 "$driver" --script "$scripts/../replay/replay_first_recording.txt" --storage "$work/replay" --window 320x200 \
    --log "$work/replay.jsonl" >"$work/out.txt" 2>"$work/err.txt" || fail "the replay of game $number failed"
  grep -q '"event":"replay_verification","matched":true' "$work/replay.jsonl" || fail "the replay of game $number was not verified"
done
echo "PASS: killed clients and a killed and a stopped server lost no finished game, report, rating or recording"
