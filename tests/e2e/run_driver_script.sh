#!/usr/bin/env bash
# Runs one driver script headless in a fresh storage directory, in a small window (everything is drawn
# every frame), bounded in time, and passes if the driver says that the script passed.
# Usage: run_driver_script.sh DRIVER SCRIPT [TIME_LIMIT_SECONDS [DRIVER_OPTIONS...]]
set -u
driver=$1
script=$2
limit=${3:-300}
shift $(( $# < 3 ? $# : 3 ))
source "$(dirname "$0")/lib.sh"
export SDL_AUDIO_DRIVER=${SDL_AUDIO_DRIVER:-dummy}

timeout "$limit" "$driver" --script "$script" --storage "$work/storage" --window 640x360 "$@" >"$work/out.txt" 2>"$work/err.txt"
status=$?
if [ "$status" -ne 0 ] || ! grep -q '^Script passed after [0-9]* frames$' "$work/out.txt"; then
  echo "FAIL: $(basename "$script") ended with status $status"
  grep -v '^ALSA\|^Jack\|^Cannot connect\|^jack' "$work/err.txt"
  exit 1
fi
echo "PASS: $(basename "$script"): $(grep '^Script passed' "$work/out.txt")"
