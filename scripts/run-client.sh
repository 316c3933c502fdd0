#!/usr/bin/env bash
# Installs the dependencies (once), builds the release configuration and starts the client.
# Arguments are passed to the client, e.g. --start-windowed.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/ensure-deps.sh
cmake --preset release >/dev/null
cmake --build --preset release
exec build/release/bin/tandem-client "$@"
