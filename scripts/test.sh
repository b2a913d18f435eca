#!/usr/bin/env bash
# Sets up and builds trw, then runs every test (unit, end-to-end and the MCP
# client test) with HOME and the XDG folders in a temporary place, so that
# working copies and per-user settings never touch the real home.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build="${TRW_BUILD_DIR:-$root/build}"

# The whole run, not a selection of tests, ends with the hostile-input step,
# which builds with clang.
hostile=0
if [ $# -eq 0 ] && [ -z "${TRW_SKIP_SANITIZE:-}" ]; then
    hostile=1
    export TRW_EXTRA_PACKAGES="clang libclang-rt-14-dev"
fi

bash "$root/scripts/setup.sh"

home=$(mktemp -d)
trap 'rm -rf "$home"' EXIT
export HOME="$home"
export XDG_DATA_HOME="$home/.local/share"
export XDG_CONFIG_HOME="$home/.config"
export XDG_CACHE_HOME="$home/.cache"
export XDG_RUNTIME_DIR="$home/.runtime"
mkdir -p "$XDG_DATA_HOME" "$XDG_CONFIG_HOME" "$XDG_CACHE_HOME" "$XDG_RUNTIME_DIR"
chmod 700 "$XDG_RUNTIME_DIR"

ctest --test-dir "$build" --output-on-failure -j 2 --timeout 600 "$@"

if [ "$hostile" -eq 1 ]; then
    bash "$root/scripts/sanitize.sh"
fi
