#!/usr/bin/env bash
# The website of a real tandem-server in headless chromium: every page is loaded and screenshotted,
# and the pages' text is checked in the DOM chromium built. Screenshots are kept in OUT_DIR.
#   website_screenshots.sh TANDEM_SERVER OUT_DIR
set -euo pipefail
server=$1
out=$2
mkdir -p "$out"
work=$(mktemp -d)
pid=
cleanup() {
  [ -n "$pid" ] && kill "$pid" 2>/dev/null && wait "$pid" 2>/dev/null
  rm -rf "$work"
}
trap cleanup EXIT

"$server" account add Host --data "$work/data" >/dev/null 2>&1
: >"$work/log"  # exists before the server opens it, for the loop below
"$server" --base-port 0 --web-port 0 --bind 127.0.0.1 --data "$work/data" >"$work/log" 2>&1 &
pid=$!
for _ in $(seq 100); do
  web=$(sed -n 's/^Website listening on [0-9.]* port \([0-9]*\)$/\1/p' "$work/log")
  lobby=$(sed -n 's/^Lobby listening on [0-9.]* port \([0-9]*\)$/\1/p' "$work/log")
  [ -n "$web" ] && [ -n "$lobby" ] && break
  sleep 0.1
done
[ -n "$web" ] || { echo "server did not start"; cat "$work/log"; exit 1; }
base=http://127.0.0.1:$web

browse() {  # browse NAME URL: screenshot and DOM of one page
  timeout 60 chromium --headless --no-sandbox --disable-gpu --hide-scrollbars --user-data-dir="$work/profile" \
    --window-size=1100,900 --screenshot="$out/$1.png" "$2" >/dev/null 2>&1
  timeout 60 chromium --headless --no-sandbox --disable-gpu --user-data-dir="$work/profile" \
    --dump-dom "$2" 2>/dev/null >"$work/$1.html"
  [ -s "$out/$1.png" ] || { echo "no screenshot of $1"; exit 1; }
}
expect() {  # expect NAME TEXT
  grep -qF -- "$2" "$work/$1.html" || { echo "page $1 lacks: $2"; exit 1; }
}

browse gettingstarted "$base/gettingstarted?v=0.1.3"
expect gettingstarted "--server-base-port $lobby"
browse setup "$base/setup?v=0.1.3"
expect setup "Create my account"
browse download "$base/download?v=0.1.3"
expect download "Your client is version 0.1.3. It is the version that this server speaks."
browse download_old "$base/download?v=0.1.2"
expect download_old "This server needs client version 0.1.3."
browse download_hostile "$base/download?v=%3Cscript%3Ealert(1)%3C/script%3E"
if grep -q '<script>' "$work/download_hostile.html"; then echo "the version query reached the page"; exit 1; fi
browse status "$base/status"
expect status "No games played yet."

# The account page is the answer to the form's POST: chromium shows the page that the server returned.
curl -s -d name=Browser "$base/setup" >"$work/account_page.html"
browse account "file://$work/account_page.html"
expect account "Welcome, Browser."
grep -qE 'id="credentials">[A-Za-z0-9_-]{36}<' "$work/account.html" || { echo "no credentials string"; exit 1; }
expect account 'download="credentials.bin"'
echo "website pages checked; screenshots in $out"
