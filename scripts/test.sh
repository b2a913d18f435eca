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

# The DBC reader tests once more, built alone under AddressSanitizer and
# UndefinedBehaviorSanitizer: a read past a buffer or a leak fails them.
sanitized="$build-sanitize"
cmake -S "$root" -B "$sanitized" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DTRW_SANITIZE_DBC=ON >/dev/null
cmake --build "$sanitized" -j "$(nproc)"
ctest --test-dir "$sanitized" --output-on-failure --timeout 600 "$@"
