#!/usr/bin/env bash
# Two builds of tandem-digest-trace (by gcc and by clang, say) play the same seeded games of every game
# and must print byte-identical per-frame digests and results.
#   compare_digest_traces.sh TRACE_A TRACE_B [tool options...]
set -uo pipefail
first=$1 second=$2
shift 2
source "$(dirname "$0")/lib.sh"
export TANDEM_AUDIO_DRIVER=${TANDEM_AUDIO_DRIVER:-null}

for which in a b; do
  binary=$first
  [ "$which" = b ] && binary=$second
  timeout 600 "$binary" "$@" --out "$work/trace-$which.txt" >"$work/out.txt" 2>"$work/err.txt" ||
    fail "$binary exited with status $?"
  tail -n 1 "$work/err.txt"
done

# Each trace must hold every game with digests of many frames, so that equality means something.
for game in "Glow Horde" "Aviators" "Vipers"; do
  grep -q "^== $game: " "$work/trace-a.txt" || fail "no $game game in the trace of $first"
done
lines=$(wc -l <"$work/trace-a.txt")
[ "$lines" -ge 3000 ] || fail "only $lines lines in the trace of $first"

if ! cmp -s "$work/trace-a.txt" "$work/trace-b.txt"; then
  echo "FAIL: the traces differ; first differences (< $first, > $second):"
  diff "$work/trace-a.txt" "$work/trace-b.txt" | head -n 20
  exit 1
fi
echo "PASS: $lines identical lines of digests and results"
