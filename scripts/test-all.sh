#!/usr/bin/env bash
# Installs the dependencies (once), builds every configuration and runs every test headless.
# Ends with the test runner's summary of the release build.
set -euo pipefail
cd "$(dirname "$0")/.."
if [ "$(id -u)" = 0 ]; then
  bash scripts/bootstrap-deps.sh
else
  sudo bash scripts/bootstrap-deps.sh
fi
export SDL_VIDEODRIVER=${SDL_VIDEODRIVER:-dummy}
export SDL_AUDIO_DRIVER=${SDL_AUDIO_DRIVER:-dummy}

echo "== Unit and end-to-end tests under AddressSanitizer and UndefinedBehaviorSanitizer"
cmake --preset debug >/dev/null
cmake --build --preset debug
ctest --preset debug -j 2

echo "== Unit and end-to-end tests, release build"
cmake --preset release >/dev/null
cmake --build --preset release
ctest --preset release -j 2
