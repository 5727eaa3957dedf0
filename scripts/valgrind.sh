#!/usr/bin/env bash
# Valgrind memcheck over the end-to-end measurement tests of a plain build (default: build):
# one member per record, road to grey and region rule on its full-size rendered frame, the
# pipeline's failure paths and the region API. Any error or definitely lost byte fails.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
build="${1:-$root/build}"
filter='EveryMember/FrameMeasurement.*/TenBitK31R22BX:EveryMember/FrameMeasurement.*/TenBitHLX6C'
filter+=':EveryMember/FrameMeasurement.*/TenBitRQ8:FrameMeasurementContract.ANullImage*'
filter+=':FrameMeasurementContract.ParametersFailing*:FrameMeasurementContract.ACentreNear*'
filter+=':TalonCalSFR.*:TalonCalSFRS.*:BadInput.*:SfrCurve.*:MemberTracker.RefusesBadInput*'
# Highway's library reads the time stamp counter with RDTSCP while it loads. Valgrind runs
# that instruction only when CPUID announces it; some hypervisors hide it although the
# processor executes it, and then nothing that links the library can start under valgrind.
if ! grep -qw rdtscp /proc/cpuinfo; then
    echo "valgrind: skipped: this processor's CPUID hides RDTSCP, which valgrind then refuses" \
        "(Highway runs it at load time); ASan, UBSan, TSan and the fuzzers still run" >&2
    exit 0
fi
# OpenMP's worker threads are still parked when the process exits: still reachable, not lost.
OMP_NUM_THREADS=2 valgrind --tool=memcheck --error-exitcode=1 --leak-check=full \
    --errors-for-leak-kinds=definite --show-leak-kinds=definite --track-origins=no -q \
    "$build/tests/talonvireo_api_tests" --gtest_filter="$filter"
