#!/usr/bin/env bash
# Runs the main job on an example project with an already built trw: a copy
# of the project is opened, checked and generated in <build>/example/.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build="${TRW_BUILD_DIR:-$root/build}"

example="${1:-$root/examples/cia401_io_module/cia401_io_module.trwt}"
workdir="$build/example"
rm -rf "$workdir"
mkdir -p "$workdir"
cp "$example" "$workdir/"

"$build/trw" -project "$workdir/$(basename "$example")"
echo
echo "Generated files in $workdir:"
ls "$workdir"
