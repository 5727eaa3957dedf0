#!/usr/bin/env bash
# Builds the libFuzzer harnesses with clang-14 (AddressSanitizer + UndefinedBehaviorSanitizer)
# and runs each for FUZZ_SECONDS (default 30), one per core at a time, from the seed corpus in fuzz/corpus. A crash,
# a sanitizer report, a leak, a broken contract or a timeout fails the run; the input is
# left in the build folder. New inputs go to a scratch corpus, never into the repository.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
build="${1:-$root/build-fuzz}"
seconds="${FUZZ_SECONDS:-30}"
# -O1 and line tables by default: the build is the larger part of CI's fuzzing time, and the
# sanitizers need no more. A long campaign may build with FUZZ_OPT="-O2 -g" for more runs.
opt="${FUZZ_OPT:--O1 -g1}"
CC=clang-14 CXX=clang++-14 cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    "-DCMAKE_CXX_FLAGS_RELWITHDEBINFO=$opt -DNDEBUG" "-DCMAKE_C_FLAGS_RELWITHDEBINFO=$opt -DNDEBUG" \
    -DTALONVIREO_FUZZ=ON -DTALONVIREO_BUILD_TESTS=OFF -DTALONVIREO_BUILD_BENCH=OFF \
    -DTALONVIREO_BUILD_TOOLS=OFF -DTALONVIREO_BUILD_PYTHON=OFF >/dev/null
harnesses=(RegionSfrFuzz RegionListFuzz LocateFuzz FrameMeasurementFuzz ConvertFuzz GreyRoadDiffFuzz
    ChartMeasurementFuzz)
cmake --build "$build" --parallel "$(nproc)" --target "${harnesses[@]}"

# One harness per core at a time, each for its full time.
run_harness() {
    local h="$1" work="$build/corpus-work/$1" log="$build/$1.log"
    mkdir -p "$work" "$build/artifacts"
    (cd "$build/artifacts" && "$build/fuzz/$h" -max_total_time="$seconds" -timeout=20 \
        -rss_limit_mb=2048 -print_final_stats=1 -artifact_prefix="$build/artifacts/$h-" \
        "$work" "$root/fuzz/corpus/$h") >"$log" 2>&1
}
slots="$(nproc)"
pids=()
for h in "${harnesses[@]}"; do
    while [ "$(jobs -rp | wc -l)" -ge "$slots" ]; do
        wait -n || true
    done
    run_harness "$h" &
    pids+=("$!")
done
total=0
failed=0
for i in "${!harnesses[@]}"; do
    h="${harnesses[$i]}"
    log="$build/$h.log"
    if ! wait "${pids[$i]}"; then
        tail -40 "$log"
        echo "fuzz: $h FAILED (log $log, input in $build/artifacts)" >&2
        failed=1
        continue
    fi
    runs="$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")"
    total=$((total + runs))
    echo "fuzz: $h: $runs executions in ${seconds} s, no findings"
done
[ "$failed" -eq 0 ] || exit 1
echo "fuzz: $total executions in total"
