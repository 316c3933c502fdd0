#!/usr/bin/env bash
# Installs the dependencies (once), builds the release configuration and starts the client.
# Arguments are passed to the client, e.g. --start-windowed.
set -euo pipefail
cd "$(dirname "$0")/.."
if [ "$(id -u)" = 0 ]; then
  bash scripts/bootstrap-deps.sh
else
  sudo bash scripts/bootstrap-deps.sh
fi
cmake --preset release >/dev/null
cmake --build --preset release
exec build/release/bin/tandem-client "$@"
