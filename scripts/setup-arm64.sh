#!/usr/bin/env bash
# Installs what the AArch64 cross build and its emulated test run need on Debian 12: the cross
# g++, qemu-user, and the arm64 builds of the libraries the host build links. Idempotent: the
# architecture is added once, apt is only asked when something is missing, and 7z.so is only
# fetched when it is not there yet.
#
#   scripts/setup-arm64.sh              everything
#   scripts/setup-arm64.sh --extra-only only fetch 7z.so (no root needed once arm64 is known to apt)
#
# Debian's arm64 libbacktrace (pulled in by libutils) needs 7z.so from p7zip-full, whose arm64
# package cannot be installed beside the amd64 one. It is unpacked instead into a folder of the
# arm64 build tree that scripts/test-arm64.sh puts on the emulator's library path:
# $KORVA_ARM64_BUILD_DIR/sysroot-extra (default build-arm64/sysroot-extra).
set -euo pipefail

root=$(cd "$(dirname "$0")/.." && pwd)
build=${KORVA_ARM64_BUILD_DIR:-$root/build-arm64}
extra=$build/sysroot-extra

extra_only=0
for arg in "$@"; do
    case "$arg" in
        --extra-only) extra_only=1 ;;
        *) echo "setup-arm64.sh: unknown option $arg" >&2; exit 2 ;;
    esac
done

# shellcheck source=scripts/apt-common.sh
. "$(dirname "$0")/apt-common.sh"

toolchain_packages=(g++-aarch64-linux-gnu qemu-user file)
arm64_packages=(
    android-libutils-dev:arm64 android-liblog-dev:arm64 android-libcutils-dev:arm64
    android-libbase-dev:arm64
    libxml2-dev:arm64 libgtest-dev:arm64 libgmock-dev:arm64
)

install_packages() {
    if ! dpkg --print-foreign-architectures | grep -qx arm64; then
        # The arm64 packages below are then missing, so the lists are refreshed next.
        "${sudo_cmd[@]}" dpkg --add-architecture arm64
    fi
    apt_install "${toolchain_packages[@]}" "${arm64_packages[@]}"
}

fetch_7z() {
    if [ -f "$extra/usr/lib/p7zip/7z.so" ]; then
        return 0
    fi
    local work
    work=$(mktemp -d)
    trap 'rm -rf "$work"; trap - RETURN' RETURN
    # As root, apt would hand the download to its _apt user, who cannot write to a private
    # temporary folder.
    local apt_opts=(-qq)
    if [ "$(id -u)" -eq 0 ]; then
        apt_opts+=(-o APT::Sandbox::User=root)
    fi
    if ! (cd "$work" && apt-get download "${apt_opts[@]}" p7zip-full:arm64); then
        # A machine whose lists predate the arm64 architecture: refresh them once and retry.
        "${sudo_cmd[@]}" apt-get update -qq
        (cd "$work" && apt-get download "${apt_opts[@]}" p7zip-full:arm64)
    fi
    mkdir -p "$extra"
    dpkg-deb -x "$work"/p7zip-full_*_arm64.deb "$extra"
    test -f "$extra/usr/lib/p7zip/7z.so"
}

if [ "$extra_only" = 0 ]; then
    install_packages
fi
fetch_7z
echo "setup-arm64: toolchain, arm64 libraries and $extra/usr/lib/p7zip/7z.so ready"
