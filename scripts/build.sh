#!/usr/bin/env bash
# Configures and builds one build tree: scripts/build.sh DIR [extra cmake arguments...]
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
dir="$1"
shift
# setup.sh installs numpy and pytest for Debian's python3, so the module is built for it.
cmake -S "$root" -B "$dir" -DCMAKE_BUILD_TYPE="${BUILD_TYPE:-Release}" \
    -DPython3_EXECUTABLE=/usr/bin/python3 "$@" >/dev/null
cmake --build "$dir" --parallel "$(nproc)"
