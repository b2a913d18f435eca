#!/usr/bin/env bash
# Sets up and builds trw, then runs every test (unit, end-to-end and the MCP
# client test) with HOME and the XDG folders in a temporary place, so that
# working copies and per-user settings never touch the real home.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build="${TRW_BUILD_DIR:-$root/build}"

bash "$root/scripts/setup.sh"

source "$root/scripts/isolatedhome.sh"

ctest --test-dir "$build" --output-on-failure -j 2 --timeout 600 "$@"
