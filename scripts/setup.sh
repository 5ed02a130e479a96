#!/usr/bin/env bash
# Installs every system package the project needs on Debian 12. Idempotent: packages already
# present are left alone, and apt is only asked when something is missing.
#
#   scripts/setup.sh            host build, tests, tool, benchmarks and fuzzing, and Chromium
#                               for the test that opens the tool's HTML report
#   scripts/setup.sh --arm64    additionally the AArch64 cross toolchain and arm64 libraries
set -euo pipefail

want_arm64=0
for arg in "$@"; do
    case "$arg" in
        --arm64) want_arm64=1 ;;
        *) echo "setup.sh: unknown option $arg" >&2; exit 2 ;;
    esac
done

# shellcheck source=scripts/apt-common.sh
. "$(dirname "$0")/apt-common.sh"

host_packages=(
    build-essential cmake pkg-config file
    android-libutils-dev android-liblog-dev android-libcutils-dev android-libbase-dev
    libxml2-dev libxml2-utils
    libgtest-dev libgmock-dev libbenchmark-dev
    libcli11-dev nlohmann-json3-dev
    clang libclang-rt-14-dev valgrind python3
    blueprint-tools
    chromium
)

apt_install "${host_packages[@]}"

if [ "$want_arm64" = 1 ]; then
    "$(dirname "$0")/setup-arm64.sh"
fi
