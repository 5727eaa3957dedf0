#!/usr/bin/env bash
# ThreadSanitizer over the concurrency tests: the library, its OpenMP demosaic and the tests
# built with clang-14 and LLVM's libomp (whose synchronisation ThreadSanitizer understands;
# GCC's libgomp is not instrumented and reports its own barriers as races). libarcher tells
# ThreadSanitizer about OpenMP's synchronisation; tests/tsan.supp drops reports raised inside
# the uninstrumented runtime itself.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
build="${1:-$root/build-tsan}"
# -O1 and line tables: enough for ThreadSanitizer's reports, and a quicker build.
CC=clang-14 CXX=clang++-14 cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    "-DCMAKE_CXX_FLAGS_RELWITHDEBINFO=-O1 -g1 -DNDEBUG" "-DCMAKE_C_FLAGS_RELWITHDEBINFO=-O1 -g1 -DNDEBUG" \
    -DTALONVIREO_TSAN=ON -DTALONVIREO_BUILD_BENCH=OFF -DTALONVIREO_BUILD_PYTHON=OFF >/dev/null
cmake --build "$build" --parallel "$(nproc)" --target talonvireo_concurrency_tests
OMP_TOOL_LIBRARIES=/usr/lib/llvm-14/lib/libarcher.so \
TSAN_OPTIONS="halt_on_error=1 second_deadlock_stack=1 suppressions=$root/tests/tsan.supp" \
    "$build/tests/talonvireo_concurrency_tests" \
    --gtest_filter='*FourThreadsAtOnce*:*ThreadsGiveIdenticalResults*'
