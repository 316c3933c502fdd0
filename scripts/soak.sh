#!/usr/bin/env bash
# The long determinism soak: random games of Glow Horde, Aviators and Vipers (two to four clients, any
# legal settings, random and malformed orders, a relay with random latency) played through the lockstep
# harness; every client of every game must agree frame by frame. Builds tandem_tests (release), then
# runs the three games side by side, each in its own process with its own log in build/release/soak/.
#   scripts/soak.sh [GAMES_PER_GAME]     (default 3334, 10,002 games in all)
# TANDEM_LOCKSTEP_SOAK_SECONDS caps each game's duration; TANDEM_LOCKSTEP_SOAK_FIRST moves the seeds.
# Each log says every minute how many games have agreed so far. Exit status 0 when every game agreed.
set -euo pipefail
cd "$(dirname "$0")/.."
per_game=${1:-3334}
[[ "$per_game" =~ ^[1-9][0-9]*$ ]] || { echo "usage: $0 [GAMES_PER_GAME]" >&2; exit 2; }
export SDL_VIDEODRIVER=${SDL_VIDEODRIVER:-dummy}
export TANDEM_AUDIO_DRIVER=${TANDEM_AUDIO_DRIVER:-null}
cmake --preset release >/dev/null
cmake --build --preset release -j "${JOBS:-2}" --target tandem_tests
logs=$PWD/build/release/soak
mkdir -p "$logs"
start=$SECONDS
pids=()
for suite in GlowHordeLockstep AviatorsLockstep VipersLockstep; do
  (cd build/release/bin &&
     TANDEM_LOCKSTEP_SOAK=$per_game exec ./tandem_tests --gtest_filter="$suite.SoakManyMoreRandomGames") \
    >"$logs/$suite.log" 2>&1 &
  pids+=($!)
done
status=0
for pid in "${pids[@]}"; do
  wait "$pid" || status=1
done
for suite in GlowHordeLockstep AviatorsLockstep VipersLockstep; do
  printf '%s: %s\n' "$suite" "$(grep -E '^[0-9]+ games \(seeds' "$logs/$suite.log" | tail -n 1)"
  grep -q "^\[       OK \] $suite.SoakManyMoreRandomGames" "$logs/$suite.log" || { echo "  FAILED, see $logs/$suite.log"; status=1; }
done
echo "soak of $((3 * per_game)) games: $([ $status = 0 ] && echo passed || echo FAILED) in $((SECONDS - start)) s"
exit $status
