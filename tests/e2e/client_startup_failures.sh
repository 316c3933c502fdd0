#!/usr/bin/env bash
# Options that don't parse end the client with status 1, the parser's message and the usage on the
# standard error stream, before any window or library is made. A shell that can't be made ends it
# with status 1 and SDL's reason on the standard error stream.
set -u
client=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export SDL_VIDEODRIVER=${SDL_VIDEODRIVER:-dummy}

check() {
  local expected=$1; shift
  timeout 20 "$client" "$@" >"$work/out.txt" 2>"$work/err.txt"
  local status=$?
  if [ "$status" -ne 1 ]; then echo "FAIL: $* gave status $status, expected 1"; cat "$work/err.txt"; exit 1; fi
  if ! grep -qF -- "$expected" "$work/err.txt"; then echo "FAIL: $*: no \"$expected\" on stderr"; cat "$work/err.txt"; exit 1; fi
  if ! grep -q '^Usage: client ' "$work/err.txt"; then echo "FAIL: $*: no usage on stderr"; cat "$work/err.txt"; exit 1; fi
  if [ -s "$work/out.txt" ]; then echo "FAIL: $*: the shell started (stdout not empty)"; cat "$work/out.txt"; exit 1; fi
  echo "PASS: $*"
}

check "70000" --server-base-port 70000
check "abc" --server-base-port abc
check "Unknown argument: --no-such-option" --no-such-option

SDL_VIDEODRIVER=no_such_driver timeout 20 "$client" >"$work/out.txt" 2>"$work/err.txt"
status=$?
if [ "$status" -ne 1 ]; then echo "FAIL: an unusable video driver gave status $status, expected 1"; cat "$work/err.txt"; exit 1; fi
if ! grep -q '^SDL could not initialize! SDL_Error: ' "$work/err.txt"; then echo "FAIL: no SDL failure on stderr"; cat "$work/err.txt"; exit 1; fi
echo "PASS: an unusable video driver"
