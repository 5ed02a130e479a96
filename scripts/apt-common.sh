# Shared by the set-up scripts: installs Debian packages only when some are missing, so that a
# machine already set up never waits for apt. Source it; it defines sudo_cmd, missing and
# apt_install.

sudo_cmd=()
if [ "$(id -u)" -ne 0 ]; then
    sudo_cmd=(sudo)
fi

# Prints those of the named packages (name or name:arch) that are not installed.
missing() {
    local out=()
    for p in "$@"; do
        if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
            out+=("$p")
        fi
    done
    echo "${out[@]:-}"
}

apt_install() {
    local todo
    todo=$(missing "$@")
    if [ -n "$todo" ]; then
        "${sudo_cmd[@]}" apt-get update -qq
        # shellcheck disable=SC2086
        DEBIAN_FRONTEND=noninteractive "${sudo_cmd[@]}" apt-get install -y -qq \
            --no-install-recommends $todo
    fi
}
