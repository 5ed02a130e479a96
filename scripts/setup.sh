#!/usr/bin/env bash
# Installs every system package the project needs on Debian 12. Idempotent: packages already
# present are left alone, and apt is only asked when something is missing.
#
#   scripts/setup.sh            host build, tests, tool, benchmarks and fuzzing, Chromium for
#                               the test that opens the tool's HTML report, and Node.js with
#                               vscode-jsonrpc and Neovim for the language server's client tests
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
    chromium neovim
)
# A machine may already have Node.js from elsewhere (with npm inside it): keep it.
command -v node >/dev/null || host_packages+=(nodejs)
command -v npm >/dev/null || host_packages+=(npm)

apt_install "${host_packages[@]}"

# The client tests' npm packages, as the lock file pins them, in one place outside the checkout
# so that a clone anywhere finds them (tests/tool/CMakeLists.txt looks there). Reinstalled only
# when the lock file changed.
lsp_client=${KORVA_LSP_CLIENT_DIR:-/usr/local/lib/korva-lsp-client}
lock=$(dirname "$0")/../tests/tool/lsp/package-lock.json
if ! cmp -s "$lock" "$lsp_client/package-lock.json" || [ ! -d "$lsp_client/node_modules" ]; then
    "${sudo_cmd[@]}" mkdir -p "$lsp_client"
    "${sudo_cmd[@]}" cp "$lock" "$(dirname "$lock")/package.json" "$lsp_client/"
    (cd "$lsp_client" && "${sudo_cmd[@]}" npm ci --no-audit --no-fund --loglevel=error)
fi

if [ "$want_arm64" = 1 ]; then
    "$(dirname "$0")/setup-arm64.sh"
fi
