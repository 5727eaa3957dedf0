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
filter+=':TalonCalSFR.*:TalonCalSFRS.*:BadInput.*:SfrCurve.*'
# OpenMP's worker threads are still parked when the process exits: still reachable, not lost.
OMP_NUM_THREADS=2 valgrind --tool=memcheck --error-exitcode=1 --leak-check=full \
    --errors-for-leak-kinds=definite --show-leak-kinds=definite --track-origins=no -q \
    "$build/tests/talonvireo_api_tests" --gtest_filter="$filter"
