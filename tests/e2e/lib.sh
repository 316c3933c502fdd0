# Shared by the end-to-end scripts: a scratch directory removed at exit, headless video by default,
# and fail, which prints its message and the last run's output and ends the script with status 1.
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export SDL_VIDEODRIVER=${SDL_VIDEODRIVER:-dummy}
fail() { echo "FAIL: $*"; echo "--- stdout"; cat "$work/out.txt"; echo "--- stderr"; cat "$work/err.txt"; exit 1; }
