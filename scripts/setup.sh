#!/bin/bash
# setup.sh [GROUP...]: installs the Debian packages that are missing. For the group windows it also
# fetches the sources of GLEW and GLFW into build/. It asks no question, changes nothing else, and prints
# nothing when all packages are there. It needs root or sudo if a package is missing.
#
# The groups are demo (build the library and the command), openxr (build the OpenXR runtime as well, and
# run its demo), linux (build and test), windows (cross-build, run under Wine) and house (format,
# clang-tidy and doxygen). Without a group it installs linux, windows and house.
set -euo pipefail

packages_of()
{
    local demo="g++ cmake ninja-build pkgconf libusb-1.0-0-dev libglew-dev libglfw3-dev libegl-dev
        libgl1-mesa-dri libcli11-dev nlohmann-json3-dev libstb-dev"
    local openxr="$demo libopenxr-dev libopenxr-loader1 libopenxr-utils libx11-dev libxrandr-dev xvfb
        xauth"
    local linux="$openxr python3 python3-pytest python3-venv python3-wheel python3-numpy mypy mono-mcs
        mono-runtime googletest netpbm libbenchmark-dev libumockdev-dev umockdev strace
        openxr-layer-corevalidation chromium"
    # Node.js packages from other sources contain npm and conflict with Debian's packages.
    command -v npm >/dev/null || linux+=" nodejs npm"
    case $1 in
    demo) echo "$demo" ;;
    openxr) echo "$openxr" ;;
    linux) echo "$linux" ;;
    windows) echo "$linux g++-mingw-w64-x86-64-posix wine64 xvfb xz-utils" ;;
    house) echo "$linux clang-format clang-tidy doxygen" ;;
    *) fail "there is no group '$1'; groups are demo, openxr, linux, windows, house" ;;
    esac
}

fail()
{
    echo "setup.sh: $*" >&2
    exit 1
}

is_installed()
{
    [[ $(dpkg-query -W -f '${db:Status-Status}' "$1" 2>/dev/null) == installed ]]
}

[[ $# -gt 0 ]] || set -- linux windows house
missing=()
for group in "$@"; do
    packages=$(packages_of "$group")
    command -v apt-get >/dev/null ||
        fail "this system has no apt-get; install by hand what Debian 12 calls $packages"
    for package in $packages; do
        [[ " ${missing[*]} " == *" $package "* ]] || is_installed "$package" || missing+=("$package")
    done
done
install_missing()
{
    local as_root=() apt log
    if [[ $EUID -ne 0 ]]; then
        command -v sudo >/dev/null || fail "run as root, or install sudo; missing: ${missing[*]}"
        as_root=(sudo)
    fi
    apt=("${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -q -o Dpkg::Use-Pty=0)
    log=$(mktemp)
    trap 'rm -f "$log"' RETURN
    { "${apt[@]}" update && "${apt[@]}" install -y --no-install-recommends "${missing[@]}"; } \
        >"$log" 2>&1 </dev/null || { tail -n 20 "$log" >&2; fail "apt-get failed"; }
}

if [[ ${#missing[@]} -gt 0 ]]; then
    echo "setup.sh: installing with apt-get what '$*' needs: ${missing[*]}"
    install_missing
fi
[[ " $* " != *" windows "* ]] || "$(dirname "$0")/fetch_sources.sh"
