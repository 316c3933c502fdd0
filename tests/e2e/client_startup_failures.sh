#!/usr/bin/env bash
# Options that don't parse end the client with status 1, the parser's message and the usage on the
# standard error stream, before any window or library is made. A shell that can't be made ends it
# with status 1 and SDL's reason on the standard error stream.
set -u
client=$1
source "$(dirname "$0")/lib.sh"

run_expecting_failure() {  # client arguments...
  timeout 20 "$client" "$@" >"$work/out.txt" 2>"$work/err.txt"
  local status=$?
  [ "$status" -eq 1 ] || fail "$* gave status $status, expected 1"
}
check() {  # expected-stderr-text client-arguments...
  local expected=$1; shift
  run_expecting_failure "$@"
  grep -qF -- "$expected" "$work/err.txt" || fail "$*: no \"$expected\" on stderr"
  grep -q '^Usage: client ' "$work/err.txt" || fail "$*: no usage on stderr"
  [ ! -s "$work/out.txt" ] || fail "$*: the shell started (stdout not empty)"
  echo "PASS: $*"
}

check "70000" --server-base-port 70000
check "abc" --server-base-port abc
check "Unknown argument: --no-such-option" --no-such-option
# A valued option with nothing after it is refused, not given its default.
check "Too few arguments for '--ip'." --ip
check "Too few arguments for '--server-base-port'." --start-windowed --server-base-port
check "Too few arguments for '--random-credentials-from'." --random-credentials-from

SDL_VIDEODRIVER=no_such_driver run_expecting_failure
grep -q '^SDL could not initialize! SDL_Error: ' "$work/err.txt" || fail "no SDL failure on stderr"
echo "PASS: an unusable video driver"
