#!/usr/bin/env bash
# Installs the Debian 12 packages trw needs (when missing) and builds it into
# build/. Safe to run again: it only installs what is absent and rebuilds
# what changed.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build="${TRW_BUILD_DIR:-$root/build}"

packages=(
    build-essential
    clang
    cmake
    ninja-build
    ccache
    qt6-base-dev
    libqt6sql6-sqlite
    libgtest-dev
    libgmock-dev
    libxml2-utils
    python3-canmatrix
    python3-jsonschema
    dpkg-dev
    file
    groff-base
)

# The test run judges the HTML pages in a real browser and parses the C#
# side of the J1939 adapter with mcs; the main job needs neither.
if [ "${TRW_WITH_TEST_TOOLS:-0}" = 1 ]; then
    packages+=(chromium python3 mono-mcs)
fi

missing=()
for package in "${packages[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed"; then
        missing+=("$package")
    fi
done

if [ ${#missing[@]} -gt 0 ]; then
    echo "Installing: ${missing[*]}"
    sudo=""
    if [ "$(id -u)" -ne 0 ]; then
        sudo="sudo"
    fi
    $sudo env DEBIAN_FRONTEND=noninteractive apt-get update -q
    $sudo env DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends "${missing[@]}"
fi

cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo
cmake --build "$build" -j "$(nproc)"
