#!/usr/bin/env bash
# Installs the dependencies (once), builds the server and the client, mints an account whose
# credentials.bin lands in the client's storage directory (beside its executable), starts a local
# tandem-server on 127.0.0.1 and then the client pointed at it. Closing the client stops the server.
# Arguments are passed to the client, e.g. --start-windowed.
#   BASE_PORT=6567 PLAYER_NAME=$USER scripts/run-local-server.sh --start-windowed
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/ensure-deps.sh
BASE_PORT=${BASE_PORT:-6567}
PLAYER_NAME=${PLAYER_NAME:-${USER:-Player}}
cmake --preset release >/dev/null
cmake --build --preset release --target tandem-server tandem-client
bin=build/release/bin
data=build/local-server
if [ ! -f "$bin/credentials.bin" ] || [ ! -f "$data/server.sqlite3" ]; then
  "$bin/tandem-server" account add "$PLAYER_NAME" --data "$data" --credentials-file "$bin/credentials.bin"
fi
"$bin/tandem-server" --base-port "$BASE_PORT" --bind 127.0.0.1 --data "$data" >"$data.log" 2>&1 &
server=$!
trap 'kill "$server" 2>/dev/null; wait "$server" 2>/dev/null || true' EXIT
trap 'exit 143' TERM INT
for _ in $(seq 50); do grep -q '^Server running' "$data.log" 2>/dev/null && break; sleep 0.1; done
grep -q '^Server running' "$data.log" || { cat "$data.log"; exit 1; }
echo "Server on 127.0.0.1:$BASE_PORT (log: $data.log); website: http://127.0.0.1:$((BASE_PORT + 1))/status"
"$bin/tandem-client" --ip 127.0.0.1 --server-base-port "$BASE_PORT" "$@"
