#!/usr/bin/env bash
# A long fuzz campaign outside CI: runs one harness of build-fuzz (built by scripts/fuzz.sh)
# for SECONDS on one core, growing a scratch corpus that later campaigns (and campaigns running
# beside it) start from, and
# prints the executions, the wall time and the rate. Any finding stops it with status 1 and
# leaves the input in build-fuzz/artifacts.
#   scripts/fuzz_campaign.sh GreyRoadDiffFuzz 5400
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
harness="${1:?harness name}"
seconds="${2:?seconds}"
build="${3:-$root/build-fuzz}"
work="$build/campaign-corpus/$harness"
mkdir -p "$work" "$build/artifacts"
# One log per run, so that campaigns of the same harness can run side by side (one per core)
# sharing the corpus.
log="$build/campaign-$harness-$$.log"
start=$(date +%s)
if ! (cd "$build/artifacts" && "$build/fuzz/$harness" -max_total_time="$seconds" -timeout=60 \
        -rss_limit_mb=2048 -print_final_stats=1 -artifact_prefix="$build/artifacts/$harness-" \
        "$work" "$root/fuzz/corpus/$harness") >"$log" 2>&1; then
    tail -40 "$log"
    echo "campaign: $harness FAILED (log $log)" >&2
    exit 1
fi
elapsed=$(($(date +%s) - start))
runs="$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")"
echo "campaign: $harness: $runs executions in $elapsed s ($((runs / (elapsed > 0 ? elapsed : 1))) per second), no findings"
