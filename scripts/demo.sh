#!/usr/bin/env bash
# Main job: set up, build, render a synthetic chart as a raw frame, measure every edge and
# show it beside the truth (writes talonvireo-demo.png and talonvireo-demo.json).
# Extra arguments go to `talonvireo-sfr demo` (try --help).
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
"$root/scripts/setup.sh"
"$root/scripts/build.sh" "$root/build" >/dev/null
exec "$root/build/tools/cli/talonvireo-sfr" demo "$@"
