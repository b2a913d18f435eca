#!/usr/bin/env bash
# Sets up and builds trw, then runs every test (unit, end-to-end and the MCP
# client test) with HOME and the XDG folders in a temporary place, so that
# working copies and per-user settings never touch the real home.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build="${TRW_BUILD_DIR:-$root/build}"

TRW_WITH_TEST_TOOLS=1 bash "$root/scripts/setup.sh"

source "$root/scripts/isolatedhome.sh"

ctest --test-dir "$build" --output-on-failure -j 2 --timeout 600 "$@"

# The whole run, not a selection of tests, goes on with the hostile-input
# step: the suite again under the sanitizers, then each fuzz program for a
# bounded time. TRW_SKIP_SANITIZE=1 leaves it out of a quick local run.
if [ $# -eq 0 ] && [ "${TRW_SKIP_SANITIZE:-0}" != 1 ]; then
    bash "$root/scripts/sanitize.sh"
fi
