#!/usr/bin/env bash
# Installs the build into a scratch prefix and builds a small effect-like project against it with
# find_package(spatializerparamstorage), then runs it: the exported package, the headers' layout
# and the installed libraries' search paths are all exercised.
set -euo pipefail
build=$1
source_dir=$2
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

cmake --install "$build" --prefix "$scratch/prefix" >/dev/null
cmake -S "$source_dir" -B "$scratch/consumer" -DCMAKE_PREFIX_PATH="$scratch/prefix" >/dev/null
cmake --build "$scratch/consumer" >/dev/null
size=$("$scratch/consumer/consumer" 2>/dev/null)
if [ "$size" != "1824" ]; then
    echo "consumer printed '$size', expected the common table's 1824 bytes"
    exit 1
fi
echo "installed package ok"
