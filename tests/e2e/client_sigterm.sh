#!/usr/bin/env bash
# The real client, started from another working directory, finds data/ beside itself, runs its main
# loop headless, and ends with status 0 when it is sent SIGTERM (SDL turns it into a quit event).
set -u
client=$1
source "$(dirname "$0")/lib.sh"
cd "$work"

timeout --preserve-status -k 10 -s TERM 3 "$client" >"$work/out.txt" 2>"$work/err.txt"
status=$?
[ "$status" -eq 0 ] || fail "exit status $status, expected 0"
grep -q '^Linked against SDL ' "$work/out.txt" || fail "the shell didn't start"
grep -q 'Fatal error' "$work/err.txt" && fail "the run ended in a fatal error"
[ ! -e "$work/userdata" ] || fail "the client wrote into the working directory instead of beside itself"
echo "PASS: client ran from $work and exited 0 on SIGTERM"
