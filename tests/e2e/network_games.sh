#!/usr/bin/env bash
# Network games end to end: our server on loopback and headless drivers as its clients. Two players
# play a ranked Glow Horde game, a ranked Vipers game, a Glow Horde co-op challenge and a ranked
# Aviators game, then three players a ranked Glow Horde game, each to the same end frame; then a Vipers game whose guest is killed mid-game. Every client must report
# byte-equal results that the server marks as agreed, every client must hold the same ratings, and
# those ratings must be the ones that the Glicko-2 rules give, worked out here independently from the
# reported results. The co-op result must be in every client's high score table, the killed player
# must show as disconnected, and the downloaded recordings must replay to the reported results.
# Usage: network_games.sh SERVER DRIVER SCRIPT_DIRECTORY
set -u
server=$1
driver=$2
scripts=$3
source "$(dirname "$0")/lib.sh"
export TANDEM_AUDIO_DRIVER=${TANDEM_AUDIO_DRIVER:-null}
touch "$work/out.txt" "$work/err.txt"

"$server" account add alice --data "$work/data" --credentials-file "$work/alice.bin" >/dev/null || fail "account add"
"$server" account add bob --data "$work/data" --credentials-file "$work/bob.bin" >/dev/null || fail "account add"
"$server" account add carol --data "$work/data" --credentials-file "$work/carol.bin" >/dev/null || fail "account add"
port=0
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

# script NAME GAME KIND INDEX RESULT [PLAYERS]: a client script with its blanks filled in.
script() {
  sed "s/GAME/$2/; s/KIND/$3/; s/INDEX/$4/; s/RESULTNUMBER/$5/g; s/PLAYERS/${6:-2}/g" "$scripts/$1.txt" >"$work/$1-$5.txt"
}
run() {  # run NAME STORAGE CREDENTIALS SCRIPT: one driver in the background, bounded unless $bound is empty
  mkdir -p "$work/$2"
  ${bound-timeout 150} "$driver" --script "$4" --storage "$work/$2" --credentials "$work/$3" --server-base-port "$port" \
    --window 320x200 --log "$work/$1.jsonl" >"$work/$1.out" 2>"$work/$1.err" &
}
check() {  # check NAME: the driver passed
  wait "$1" || { cp "$work/$2.out" "$work/out.txt"; cp "$work/$2.err" "$work/err.txt"; tail -20 "$work/server.log"; fail "driver $2 failed"; }
}

phase=0
for game in "glow_horde ranked 0 2" "vipers ranked 0 2" "glow_horde challenge 1 2" "aviators ranked 0 2" \
  "glow_horde ranked 1 3"; do
  set -- $game
  script host "$1" "$2" "$3" "$phase" "$4"
  script guest "$1" "$2" "$3" "$phase" "$4"
  run "host$phase" host alice.bin "$work/host-$phase.txt"; host=$!
  run "guest$phase" guest bob.bin "$work/guest-$phase.txt"; guest=$!
  third=""
  if [ "$4" -eq 3 ]; then
    run "third$phase" third carol.bin "$work/guest-$phase.txt"; third=$!
  fi
  check "$host" "host$phase"
  check "$guest" "guest$phase"
  [ -z "$third" ] || check "$third" "third$phase"
  phase=$((phase + 1))
done

# A Vipers game whose guest dies mid-game.
script survivor vipers ranked 0 5
script guest vipers ranked 0 5
# The victim would play on far beyond the host's end; it is killed long before.
sed -i 's/^wait_game_frame 600 20000$/wait_game_frame 1000000 1000000/' "$work/guest-5.txt"
run survivor host alice.bin "$work/survivor-5.txt"; host=$!
# Without a timeout wrapper, so that $! is the driver itself; it is killed below in any case.
bound="" run victim guest bob.bin "$work/guest-5.txt"; victim=$!
for _ in $(seq 300); do grep -q '^Game started' "$work/victim.out" && break; sleep 0.1; done
grep -q '^Game started' "$work/victim.out" || fail "the victim's game did not start"
sleep 0.2
kill -9 "$victim"; wait "$victim" 2>/dev/null
grep -q '^Script passed' "$work/victim.out" && fail "the victim ended by itself before it was killed"
check "$host" survivor

# Every client that saw the same games holds the same tables, and they are the Glicko-2 ratings of
# the agreed results.
python3 - "$work" <<'PY' || fail "the lobby logs are wrong"
import json, math, struct, sys
work = sys.argv[1]

def events(name, kind):
    return [e for e in map(json.loads, open(f"{work}/{name}.jsonl")) if e["event"] == kind]

def result_rows(hexbytes):
    data = bytes.fromhex(hexbytes)
    at = 4  # end frame
    (count,) = struct.unpack_from("<Q", data, at); at += 8
    rows = []
    for _ in range(count):
        (n,) = struct.unpack_from("<Q", data, at); at += 8
        rows.append(list(struct.unpack_from(f"<{n}q", data, at))); at += 8 * n
    assert at + 8 == len(data), "result bytes of unexpected length"
    return rows

SCALE, TAU = 173.7178, 0.5

def glicko(mu, phi, sigma, opponents):  # opponents: (mu, phi, score)
    g = lambda p: 1 / math.sqrt(1 + 3 * p * p / math.pi ** 2)
    E = lambda m, p: 1 / (1 + math.exp(-g(p) * (mu - m)))
    v = 1 / sum(g(p) ** 2 * E(m, p) * (1 - E(m, p)) for m, p, s in opponents)
    d = sum(g(p) * (s - E(m, p)) for m, p, s in opponents)
    delta = v * d
    a = math.log(sigma ** 2)
    f = lambda x: math.exp(x) * (delta ** 2 - phi ** 2 - v - math.exp(x)) / (2 * (phi ** 2 + v + math.exp(x)) ** 2) - (x - a) / TAU ** 2
    if delta ** 2 - phi ** 2 - v > 0:
        B = math.log(delta ** 2 - phi ** 2 - v)
    else:
        k = 1
        while f(a - k * 0.5) < 0:
            k += 1
        B = a - k * 0.5
    A, fA, fB = a, f(a), f(B)
    if abs(B - a) > 1e-6:
        while abs(B - A) > 1e-6:
            C = A + fA * (A - B) / (fB - fA); fC = f(C)
            if fB * fC < 0:
                A, fA = B, fB
            else:
                fA /= 2
            B, fB = C, fC
    new_sigma = math.exp(A / 2)
    new_phi = 1 / math.sqrt(1 / v + 1 / (phi ** 2 + new_sigma ** 2))
    return mu + new_phi ** 2 * d, new_phi, new_sigma

# This computation first proves itself on the published worked example of the Glicko-2 rules.
m, p, s = glicko(0.0, 200 / SCALE, 0.06, [((1400 - 1500) / SCALE, 30 / SCALE, 1.0),
                                         ((1550 - 1500) / SCALE, 100 / SCALE, 0.0),
                                         ((1700 - 1500) / SCALE, 300 / SCALE, 0.0)])
assert (round(m * SCALE + 1500, 2), round(p * SCALE, 2), round(s, 6)) == (1464.05, 151.52, 0.059996), (m, p, s)

tables = {"glow_horde": {}, "ships": {}}
games_rated = [0, 0]
final = events("survivor", "game_results")
assert [g["game"] for g in final] == [0, 1, 2, 3, 4, 5], final
for game in final:
    assert game["finished"] and game["agreed"], game
    reports = [r for r in game["reports"].split(",") if r]
    assert len(set(reports)) == 1
    spec = bytes.fromhex(game["game_spec"])
    which, kind = struct.unpack_from("<HB", spec)
    if kind != 1:
        continue
    rows = result_rows(reports[0])
    players = game["players"].split(",")
    assert game["slots"] == ",".join(str(i) for i in range(len(players))), game["slots"]
    # Every player is a team of one in slots 0, 1, ... and row i is player i's; more is better, element
    # by element. A result of fewer rows must be a draw of all (nobody scored).
    if len(rows) != len(players):
        assert all(r == rows[0] for r in rows), rows
        rows = [rows[0]] * len(players)
    table = tables["glow_horde" if which == 0 else "ships"]
    before = [table.get(p, (0.0, 350 / SCALE, 0.06)) for p in players]
    after = []
    for i, (mu, phi, sigma) in enumerate(before):
        opponents = [(before[j][0], before[j][1], 0.5 if rows[i] == rows[j] else (1.0 if rows[i] > rows[j] else 0.0))
                     for j in range(len(players)) if j != i]
        new = glicko(mu, phi, sigma, opponents)
        f = 1 / math.sqrt(len(opponents))  # several opponents count as about the root of their number
        after.append(tuple(old + (x - old) * f for old, x in zip((mu, phi, sigma), new)))
    for p, r in zip(players, after):
        table[p] = r
    games_rated[which == 0] += 1

def logged(name):
    return {(e["ranking"], e["player"]): (e["rating"], e["deviation"], e["volatility"]) for e in events(name, "rating")}

expected = {(k, p): (mu * SCALE + 1500, phi * SCALE, sigma) for k, t in tables.items() for p, (mu, phi, sigma) in t.items()}
assert len(expected) == 5 and games_rated == [3, 2], (expected, games_rated)  # [ship games, Glow Horde]
for name in ["survivor"]:
    got = logged(name)
    assert got.keys() == expected.keys(), (got, expected)
    for key, values in expected.items():
        for x, y in zip(values, got[key]):
            assert abs(x - y) < 1e-9 * max(1, abs(x)), (key, values, got[key])
# The two clients of each game hold byte-equal reports and the same tables.
for phase in range(5):
    assert events(f"host{phase}", "game_results") == events(f"guest{phase}", "game_results")
    assert logged(f"host{phase}") == logged(f"guest{phase}")
    assert events(f"host{phase}", "high_score") == events(f"guest{phase}", "high_score")
assert events("third4", "game_results") == events("host4", "game_results")
assert logged("third4") == logged("host4")
challenge = [e for e in events("guest2", "high_score") if e["challenge"] == 1]
assert [e["game"] for e in challenge] == [2], challenge
killed = final[5]["reports"].split(",")
assert killed[0] and not killed[1], "the killed player's report should be missing"
print("ratings", {k: tuple(round(x, 6) for x in v) for k, v in expected.items()})
PY
grep -q "Player 1 dropped from game 5" "$work/server.log" || fail "the server didn't drop the killed player"

# The recordings that the host downloaded replay to the reported results on a fresh client.
for number in 0 1 3; do
  rm -rf "$work/replay" && mkdir -p "$work/replay/recordings"
  cp "$work/host/recordings/recording$number.bin" "$work/replay/recordings/" || fail "recording $number was not downloaded"
  timeout 120 "$driver" --script "$scripts/../replay/replay_first_recording.txt" --storage "$work/replay" --window 320x200 \
    --log "$work/replay.jsonl" >"$work/out.txt" 2>"$work/err.txt" || fail "the replay of game $number failed"
  grep -q '"event":"replay_verification","matched":true' "$work/replay.jsonl" || fail "the replay of game $number was not verified"
done
# The server vanishing ends a connected client at the fatal error screen.
run gone host alice.bin "$scripts/lobby_until_gone.txt"; gone=$!
for _ in $(seq 300); do grep -q '^Authentication successful' "$work/gone.out" && break; sleep 0.1; done
sleep 0.3
kill "$server_pid"; wait "$server_pid" 2>/dev/null
wait "$gone"; status=$?
cp "$work/gone.out" "$work/out.txt"; cp "$work/gone.err" "$work/err.txt"
[ "$status" -eq 1 ] && grep -q 'Fatal error at line 5 of the script: Disconnected from lobby server' "$work/gone.err" ||
  fail "a client whose server vanished ended with status $status"

echo "PASS: ranked and co-op network games agreed on every client, ratings match Glicko-2, a killed client was dropped, recordings replayed, a lost server was fatal"
