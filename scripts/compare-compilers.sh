#!/usr/bin/env bash
# Builds tandem-digest-trace (and what it links) with gcc (build/release) and with clang 16
# (build/clang), runs both on the same seeded games of every game and requires identical per-frame
# digests and results. Options after the script name go to the tool, e.g. --games 3 --seconds 60.
set -euo pipefail
cd "$(dirname "$0")/.."
export SDL_VIDEODRIVER=${SDL_VIDEODRIVER:-dummy}
export TANDEM_AUDIO_DRIVER=${TANDEM_AUDIO_DRIVER:-null}
start=$SECONDS
for preset in release clang-release; do
  cmake --preset "$preset" >/dev/null
  cmake --build --preset "$preset" -j "${JOBS:-2}" --target tandem-digest-trace
  echo "== $preset build done at $((SECONDS - start)) s"
done
bash tests/e2e/compare_digest_traces.sh build/release/bin/tandem-digest-trace build/clang/bin/tandem-digest-trace "$@"
echo "== compared at $((SECONDS - start)) s"
