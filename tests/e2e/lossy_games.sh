#!/usr/bin/env bash
# Four-player games over a bad link: our server on loopback, and four paced headless drivers that reach
# it through lossy_proxy.py, which drops a fifth of all datagrams and duplicates, delays and reorders the
# rest. One ranked four-player game of each game (Glow Horde, Aviators, Vipers) is played to END_FRAME.
# Every client must report a byte-equal result that the server marks as agreed, every client must see
# the same played games, and the host's downloaded recordings must replay to the agreed results. The
# frames that stalled on each client are printed (and appended to FIGURES_FILE when given), and the
# proxy's counts must show that the faults really happened.
# Usage: lossy_games.sh SERVER DRIVER SCRIPT_DIRECTORY [END_FRAME [SEED [FIGURES_FILE]]]
# TANDEM_PROXY_OPTIONS, when set, overrides the proxy's fault options (for example "--drop 0 --duplicate 0
# --delay-ms 0 --jitter-ms 0" for a clean link to compare with); the counts are then not checked.
set -u
server=$1
driver=$2
scripts=$3
end_frame=${4:-300}
seed=${5:-1}
figures=${6:-}
proxy_options=${TANDEM_PROXY_OPTIONS:-}
source "$(dirname "$0")/lib.sh"
proxy_script="$(dirname "$0")/lossy_proxy.py"
export TANDEM_AUDIO_DRIVER=${TANDEM_AUDIO_DRIVER:-null}
touch "$work/out.txt" "$work/err.txt"
# A game at 60 frames a second, plus the lobby around it, with a wide margin for a busy machine.
game_seconds=$((end_frame / 60 + 60))
lifetime=$((3 * game_seconds + 60))

players=(ann ben cat dan)
for name in "${players[@]}"; do
  "$server" account add "$name" --data "$work/data" --credentials-file "$work/$name.bin" >/dev/null 2>&1 || fail "account add"
done
server_pid=""
proxy_pid=""
trap 'kill $server_pid $proxy_pid 2>/dev/null; wait $server_pid $proxy_pid 2>/dev/null; rm -rf "$work"' EXIT
started() {  # started LOG LINE PID: waits up to 5 seconds for LINE in LOG while PID lives
  for _ in $(seq 50); do grep -q "^$2" "$1" && return 0; kill -0 "$3" 2>/dev/null || return 1; sleep 0.1; done
  return 1
}
for attempt in 1 2 3 4 5; do
  port=$((20000 + RANDOM % 20000))
  proxy_port=$((port + 20000))
  "$server" --base-port "$port" --bind 127.0.0.1 --data "$work/data" --no-website >"$work/server.log" 2>&1 &
  server_pid=$!
  if started "$work/server.log" 'Server running' "$server_pid"; then
    python3 "$proxy_script" --listen-base "$proxy_port" --server-base "$port" --seed "$seed" --lifetime "$lifetime" \
      $proxy_options >"$work/proxy.log" 2>&1 &
    proxy_pid=$!
    started "$work/proxy.log" 'Proxy running' "$proxy_pid" && break
    kill "$proxy_pid" 2>/dev/null; wait "$proxy_pid" 2>/dev/null; proxy_pid=""
  fi
  kill "$server_pid" 2>/dev/null; wait "$server_pid" 2>/dev/null; server_pid=""
done
[ -n "$proxy_pid" ] || { cat "$work/server.log" "$work/proxy.log" 2>/dev/null; fail "the server and the proxy did not start"; }

# script NAME GAME INDEX NUMBER: a client script of a four-player ranked game with its blanks filled in.
script() {
  sed "s/GAME/$2/; s/KIND/ranked/; s/INDEX/$3/; s/RESULTNUMBER/$4/g; s/PLAYERS/4/g; s/^wait_game_frame 600 /wait_game_frame $end_frame /" \
    "$scripts/$1.txt" >"$work/$1-$4.txt"
}

number=0
for game in "glow_horde 2" "aviators 1" "vipers 1"; do
  set -- $game
  script host "$1" "$2" "$number"
  script guest "$1" "$2" "$number"
  pids=()
  for client in 0 1 2 3; do
    role=guest
    [ "$client" -eq 0 ] && role=host
    name=${players[$client]}
    mkdir -p "$work/$name"
    timeout "$game_seconds" "$driver" --paced --script "$work/$role-$number.txt" --storage "$work/$name" \
      --credentials "$work/$name.bin" --server-base-port "$proxy_port" --window 320x200 \
      --log "$work/$name-$number.jsonl" >"$work/$name-$number.out" 2>"$work/$name-$number.err" &
    pids+=($!)
  done
  for client in 0 1 2 3; do
    name=${players[$client]}
    wait "${pids[$client]}" || {
      cp "$work/$name-$number.out" "$work/out.txt"; cp "$work/$name-$number.err" "$work/err.txt"
      tail -20 "$work/server.log"; fail "$1: driver $name failed"; }
  done
  number=$((number + 1))
done

kill -TERM "$proxy_pid"; wait "$proxy_pid"; proxy_pid=""
python3 - "$work" "$end_frame" "$seed" "${figures:-/dev/null}" "$proxy_options" <<'PY' || fail "the games over the lossy link are wrong"
import json, re, sys
work, end_frame, seed, figures, options = sys.argv[1], int(sys.argv[2]), sys.argv[3], sys.argv[4], sys.argv[5]
players = ["ann", "ben", "cat", "dan"]
games = ["Glow Horde", "Aviators", "Vipers"]

def events(name, kind):
    return [e for e in map(json.loads, open(f"{work}/{name}.jsonl")) if e["event"] == kind]

lines = []
for number, game in enumerate(games):
    logs = [events(f"{p}-{number}", "game_results") for p in players]
    assert all(log == logs[0] for log in logs), f"{game}: the clients saw different played games"
    played = [g for g in logs[0] if g["game"] == number]
    assert len(played) == 1, logs[0]
    played = played[0]
    assert played["finished"] and played["agreed"], played
    reports = played["reports"].split(",")
    assert len(reports) == 4 and all(reports) and len(set(reports)) == 1, f"{game}: reports {reports}"
    # The result's first four bytes are its end frame, little-endian.
    assert int.from_bytes(bytes.fromhex(reports[0])[:4], "little") >= end_frame, reports[0]
    ends = [events(f"{p}-{number}", "driver_end")[0] for p in players]
    assert all(e["passed"] for e in ends), ends
    stalled = [e["stalled_frames"] for e in ends]
    longest = [e["longest_stall"] for e in ends]
    lines.append(f"{game}: {end_frame} frames, stalled frames per client {stalled} (total {sum(stalled)}), "
                 f"longest stall {max(longest)} frames")

counts = dict(re.findall(r"(\w+)=(\d+)", open(f"{work}/proxy.log").read()))
counts = {k: int(v) for k, v in counts.items()}
assert counts["received"] > 1000, counts
if not options:
    # A fifth of the datagrams are dropped; with thousands of them the share is close to it.
    assert 0.17 < counts["dropped"] / counts["received"] < 0.23, counts
    assert counts["duplicated"] > 0 and counts["reordered"] > 0, counts
lines.append(f"proxy (seed {seed}{', ' + options if options else ''}): " + ", ".join(f"{k} {v}" for k, v in counts.items()))
with open(figures, "a") as out:
    for line in lines:
        print(line)
        out.write(line + "\n")
PY

# The recordings that the host downloaded replay to the agreed results on a fresh client.
sed "s/^wait_game_end 3000$/wait_game_end $((end_frame + 3000))/" "$scripts/../replay/replay_first_recording.txt" >"$work/replay.txt"
for number in 0 1 2; do
  rm -rf "$work/replay" && mkdir -p "$work/replay/recordings"
  cp "$work/ann/recordings/recording$number.bin" "$work/replay/recordings/" || fail "recording $number was not downloaded"
  timeout "$game_seconds" "$driver" --script "$work/replay.txt" --storage "$work/replay" --window 320x200 \
    --log "$work/replay.jsonl" >"$work/out.txt" 2>"$work/err.txt" || fail "the replay of game $number failed"
  grep -q '"event":"replay_verification","matched":true' "$work/replay.jsonl" || fail "the replay of game $number was not verified"
done
echo "PASS: four-player games of every game agreed byte for byte through a lossy link, and their recordings replayed"
