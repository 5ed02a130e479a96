#!/usr/bin/env bash
# Cross-builds the project for AArch64 as the device gets it, without the load report, and runs
# every test under qemu-aarch64 (those that listen to loads, and the tool, need the report and
# are not built). Needs what `scripts/setup.sh --arm64` installs. The build tree is build-arm64
# (or $KORVA_ARM64_BUILD_DIR).
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${KORVA_ARM64_BUILD_DIR:-$root/build-arm64}
jobs=$(nproc)
started=$(date +%s)

# The arm64 7z.so lives in the build tree: a wiped tree gets it back without root.
if [ ! -f "$build/sysroot-extra/usr/lib/p7zip/7z.so" ]; then
    KORVA_ARM64_BUILD_DIR=$build "$root/scripts/setup-arm64.sh" --extra-only
fi

# The host's optimisation level without debug info, which costs a third of the compile time of
# a stage that must stay short; reconfigure with RelWithDebInfo to debug under qemu.
cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_FLAGS_RELEASE="-O2 -DNDEBUG" \
    -DCMAKE_TOOLCHAIN_FILE="$root/cmake/toolchain-aarch64-linux-gnu.cmake" \
    -DKORVA_ARM64_EXTRA_DIR="$build/sysroot-extra" \
    -DKORVA_BUILD_TESTS=ON -DKORVA_BUILD_TOOLS=OFF -DKORVA_LOAD_REPORT=OFF
cmake --build "$build" -j "$jobs"

library=$build/libspatializerparamstorage.so
description=$(file -L "$library")
echo "$description"
case "$description" in
    *"ARM aarch64"*) ;;
    *) echo "test-arm64.sh: $library is not an AArch64 library" >&2; exit 1 ;;
esac

# The toolchain file makes ctest start every test binary through qemu-aarch64 with the
# library path it needs; the loader prefix is also exported for anything started by hand.
export QEMU_LD_PREFIX=/usr/aarch64-linux-gnu
ctest --test-dir "$build" --output-on-failure -j "$jobs"

echo "test-arm64.sh: arm64 build and tests took $(( $(date +%s) - started )) s"
