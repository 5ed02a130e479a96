#!/usr/bin/env bash
# Builds the project and runs every test. Used by the README's test command and by CI.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${KORVA_BUILD_DIR:-$root/build}
jobs=$(nproc)

cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DKORVA_BUILD_TESTS=ON
cmake --build "$build" -j "$jobs"
ctest --test-dir "$build" --output-on-failure -j "$jobs"
