#!/usr/bin/env bash
# Builds the fuzz targets (preset "fuzz": clang, libFuzzer, ASan, UBSan) and runs each for a bounded
# time from the seed corpus in fuzz/corpus/<target>/. A target fails the run if it crashes, trips a
# sanitizer or one of its own checks, leaks, or makes a single allocation above MALLOC_LIMIT_MB.
# New inputs found go to a scratch directory, not into the tree; a failing input is kept in
# build/fuzz/artifacts/.
#
#   SECONDS_PER_TARGET=20  RSS_LIMIT_MB=512  MALLOC_LIMIT_MB=64  scripts/run-fuzzers.sh [target...]
set -euo pipefail
cd "$(dirname "$0")/.."

SECONDS_PER_TARGET=${SECONDS_PER_TARGET:-20}
RSS_LIMIT_MB=${RSS_LIMIT_MB:-512}
MALLOC_LIMIT_MB=${MALLOC_LIMIT_MB:-64}

cmake --preset fuzz >/dev/null
cmake --build --preset fuzz -j 2

BIN=build/fuzz/bin
ARTIFACTS=build/fuzz/artifacts
mkdir -p "$ARTIFACTS"
SCRATCH=$(mktemp -d)
trap 'rm -rf "$SCRATCH"' EXIT

if [ $# -gt 0 ]; then
  targets=("$@")
else
  mapfile -t targets < build/fuzz/fuzz-targets.txt
fi

# Runs one target and leaves its lines of the summary in $SCRATCH/<target>.line, and
# $SCRATCH/<target>.failed when it failed.
run_target() {
  local target=$1 seeds=fuzz/corpus/$1 log=$SCRATCH/$1.log line=$SCRATCH/$1.line
  if [ ! -d "$seeds" ]; then
    echo "no seed corpus in $seeds" >"$line"
    touch "$SCRATCH/$target.failed"
    return
  fi
  mkdir -p "$SCRATCH/$target"
  if "$BIN/fuzz_$target" "$SCRATCH/$target" "$seeds" \
      -max_total_time="$SECONDS_PER_TARGET" -rss_limit_mb="$RSS_LIMIT_MB" -malloc_limit_mb="$MALLOC_LIMIT_MB" \
      -artifact_prefix="$ARTIFACTS/$target-" -print_final_stats=1 >"$log" 2>&1; then
    local runs cov
    runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
    cov=$(grep -o 'cov: [0-9]*' "$log" | tail -1 || true)
    printf '%-20s ok      %10s executions in %ss, %s\n' "$target" "$runs" "$SECONDS_PER_TARGET" "$cov" >"$line"
  else
    { printf '%-20s FAILED  (see below)\n' "$target"
      grep -E 'ERROR|SUMMARY|fuzz check failed|Test unit written' "$log" | head -20 || true; } >"$line"
    cp "$log" "$ARTIFACTS/$target.log"
    touch "$SCRATCH/$target.failed"
  fi
}

# FUZZ_JOBS targets run side by side (one per core by default); the summary keeps the list's order.
FUZZ_JOBS=${FUZZ_JOBS:-$(nproc)}
for target in "${targets[@]}"; do
  while [ "$(jobs -rp | wc -l)" -ge "$FUZZ_JOBS" ]; do wait -n || true; done
  run_target "$target" &
done
wait
failed=()
for target in "${targets[@]}"; do
  cat "$SCRATCH/$target.line"
  [ ! -e "$SCRATCH/$target.failed" ] || failed+=("$target")
done

if [ ${#failed[@]} -gt 0 ]; then
  echo "Fuzz targets that failed: ${failed[*]} (logs and inputs in $ARTIFACTS/)" >&2
  exit 1
fi
echo "All ${#targets[@]} fuzz targets ran without a failure."
