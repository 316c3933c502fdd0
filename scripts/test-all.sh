#!/usr/bin/env bash
# Installs the dependencies (once), builds every configuration and runs every test headless:
#   1. the fuzz targets, each for a bounded time, under ASan and UBSan;
#   2. unit and end-to-end tests of the debug build, under ASan and UBSan;
#   3. the same seeded games by a gcc and a clang build of tandem-digest-trace: identical digests;
#   4. unit and end-to-end tests of the release build, whose summary ends the output.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/ensure-deps.sh
export SDL_VIDEODRIVER=${SDL_VIDEODRIVER:-dummy}
export TANDEM_AUDIO_DRIVER=${TANDEM_AUDIO_DRIVER:-null}
start=$SECONDS
stage() { printf '\n== %s (at %d s)\n' "$1" $((SECONDS - start)); }

stage "Fuzz targets"
SECONDS_PER_TARGET=${SECONDS_PER_TARGET:-12} bash scripts/run-fuzzers.sh

stage "Debug build with AddressSanitizer and UndefinedBehaviorSanitizer"
cmake --preset debug >/dev/null
cmake --build --preset debug -j 2
ctest --preset debug -j 2

stage "The same games built by gcc and by clang"
bash scripts/compare-compilers.sh --games 2

stage "Release build"
cmake --preset release >/dev/null
cmake --build --preset release -j 2
ctest --preset release -j 2
