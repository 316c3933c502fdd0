#!/bin/bash
# The relay under a short load of bots: tandem-load against the real server. It fails on faults only
# (a bot refused or lost, a bot that never gets its steps, a step with wrong orders, a server that
# dies), never on latency figures. Then the same tool must notice a server killed under load.
#   relay_load.sh TANDEM_LOAD TANDEM_SERVER
set -u
load=$1
server=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failed=0

timeout 100 "$load" --server "$server" --players 200 --window 8 --warmup 1 --setup-limit 45 \
  --min-step-fraction 0 --data "$work/run" >"$work/run.out" 2>&1
status=$?
grep -v "acknowledged some data\|Started receiving data" "$work/run.out"
if [ $status -ne 0 ]; then
  echo "FAIL: the load run ended with status $status"
  failed=1
fi
if ! grep -q "^players 200 (50 games" "$work/run.out" || ! grep -q "added relay latency: p50 [0-9]* us" "$work/run.out"; then
  echo "FAIL: the load run didn't report its step"
  failed=1
fi

# A server that is killed four seconds after it started: the run must end in a fault, not a pass.
cat >"$work/dying-server" <<SCRIPT
#!/bin/bash
"$server" "\$@" &
child=\$!
sleep 4
kill -9 \$child
wait \$child
exit 137
SCRIPT
chmod +x "$work/dying-server"
timeout 60 "$load" --server "$work/dying-server" --players 8 --window 5 --warmup 0 --setup-limit 20 \
  --min-step-fraction 0 --data "$work/dying" >"$work/dying.out" 2>&1
status=$?
if [ $status -ne 1 ] || ! grep -q "FAULT: the server died" "$work/dying.out"; then
  echo "FAIL: a server killed under load went unnoticed (status $status)"
  grep -v "acknowledged some data\|Started receiving data" "$work/dying.out"
  failed=1
fi
[ $failed -eq 0 ] && echo "relay load: passed"
exit $failed
