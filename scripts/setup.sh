#!/usr/bin/env bash
# Installs the Debian packages the build, the tests and the benchmarks need.
# Quiet, and a no-op when everything is already present.
set -euo pipefail

packages=(
    g++ make cmake pkg-config binutils
    libopencv-dev     # core + imgproc for the library; tools may use more modules
    libhwy-dev        # Highway: portable SIMD with run-time dispatch
    libgtest-dev      # GoogleTest
    libbenchmark-dev  # Google Benchmark
    clang-format      # formatting check run by the test suite
    python3-dev pybind11-dev python3-numpy python3-pytest  # the Python module and its tests
    python3-pandas python3-dask python3-distributed  # measure_files' tables, and a cluster
    python3-jsonschema  # the JSON documents checked against schema/
    clang-14 libclang-rt-14-dev libomp-14-dev  # libFuzzer and ThreadSanitizer builds
    valgrind          # memcheck over the end-to-end tests
    libcli11-dev nlohmann-json3-dev  # the command line's parser and JSON writer
    libtomlplusplus-dev  # the command line's limits files
    libsqlite3-dev    # the batch command's record
    libraw-dev        # DNG and camera raw files
    dpkg-dev          # cpack's Debian package and its checks
)

missing=()
for p in "${packages[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
        missing+=("$p")
    fi
done
[ ${#missing[@]} -eq 0 ] && exit 0

sudo=""
[ "$(id -u)" -ne 0 ] && sudo="sudo"
echo "setup: installing ${missing[*]}" >&2
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq >/dev/null
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
