#!/usr/bin/env bash
# The main job: builds spatializer-paramtool and runs it on the bundled example tuning file, first
# the check of what the library made of it and the store's summary, then every parameter blob the
# store builds from the file. Needs what scripts/setup.sh installs. The build tree is build (or
# $KORVA_BUILD_DIR).
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${KORVA_BUILD_DIR:-$root/build}
jobs=$(nproc)

cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DKORVA_BUILD_TOOLS=ON
cmake --build "$build" -j "$jobs" --target spatializer-paramtool
tool=$build/tools/spatializer-paramtool

echo "== spatializer-paramtool check (the bundled example)"
"$tool" check
echo
echo "== spatializer-paramtool blobs (the bundled example)"
"$tool" blobs
