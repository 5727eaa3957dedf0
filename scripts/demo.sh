#!/usr/bin/env bash
# Main job: set up, build, render a synthetic slanted edge, measure it and show the figures.
# Extra arguments go to `talonvireo-sfr demo` (try --help).
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
"$root/scripts/setup.sh"
"$root/scripts/build.sh" "$root/build" >/dev/null
exec "$root/build/tools/cli/talonvireo-sfr" demo "$@"
