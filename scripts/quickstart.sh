#!/usr/bin/env bash
# Sets up and builds trw, then runs the main job on an example project: a
# copy of it is opened, checked and generated in build/example/.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

bash "$root/scripts/setup.sh"
bash "$root/scripts/run_example.sh" "$@"
