#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Installs the Debian packages the build and the tests need, if any are missing.
# Sourced by ./run and ./test; pass "run" or "test" to pick the package set, "vm" for
# the wireless stack the hwsim VM tests borrow from this machine (see tests/hwsim/run),
# "sensor" for the Prometheus server and the browser the sensor's tests drive, or "desktop"
# for the tools of the desktop tests (package checks, the Wayland compositor).
set -euo pipefail

corvane_packages() {
    # Build and run.
    local pkgs=(cmake g++ make pkg-config
        qt6-base-dev qt6-base-dev-tools qt6-charts-dev qt6-svg-dev libqt6svg6 qt6-qpa-plugins
        qt6-httpserver-dev
        libgl-dev libqt6opengl6-dev libxkbcommon-dev libvulkan-dev libnl-3-dev libnl-genl-3-dev libpcap-dev fonts-dejavu-core
        qt6-wayland)
    if [ "${1:-run}" = test ]; then
        # Tests, benchmarks, the screenshot test and the D-Bus mocks.
        pkgs+=(libgtest-dev libgmock-dev googletest libbenchmark-dev xvfb xauth
            dbus python3 python3-dbusmock)
    fi
    if [ "${1:-run}" = desktop ]; then
        # The package checks (tests/package) and the tests on a Wayland compositor.
        pkgs=(appstream desktop-file-utils lintian dpkg-dev file man-db gzip weston qt6-wayland)
    fi
    if [ "${1:-run}" = vm ]; then
        # The VM runs on this machine's root file system, so these run inside it.
        pkgs=(qemu-system-x86 busybox-static kmod cpio file openssl python3 util-linux
            iproute2 iw wireless-regdb hostapd wpasupplicant network-manager udev dbus polkitd)
    fi
    if [ "${1:-run}" = sensor ]; then
        # promtool comes with the server.
        pkgs=(prometheus chromium)
    fi
    local list
    list=$(cat "$(dirname "${BASH_SOURCE[0]}")/extra-packages-${1:-run}.txt" 2>/dev/null || true)
    # shellcheck disable=SC2206
    pkgs+=($list)
    printf '%s\n' "${pkgs[@]}"
}

corvane_install_deps() {
    local set=${1:-run}
    local missing=()
    local p
    for p in $(corvane_packages "$set"); do
        if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
            missing+=("$p")
        fi
    done
    [ ${#missing[@]} -eq 0 ] && return 0
    local cmd=(apt-get install -y --no-install-recommends "${missing[@]}")
    if [ "$(id -u)" -eq 0 ]; then
        echo "Installing missing packages: ${missing[*]}" >&2
        apt-get update -qq
        local guard= status=0
        if { [ "$set" = vm ] || [ "$set" = sensor ]; } && [ ! -e /usr/sbin/policy-rc.d ]; then
            # NetworkManager, udev and polkit are there for the VM only, Prometheus for the
            # tests, which start their own: never start them as services, whatever the init.
            guard=/usr/sbin/policy-rc.d
            printf '#!/bin/sh\nexit 101\n' >"$guard" && chmod +x "$guard"
        fi
        DEBIAN_FRONTEND=noninteractive "${cmd[@]}" >&2 || status=$?
        [ -z "$guard" ] || rm -f "$guard"
        return $status
    elif command -v sudo >/dev/null 2>&1 && sudo -n true 2>/dev/null; then
        echo "Installing missing packages with sudo: ${missing[*]}" >&2
        sudo apt-get update -qq
        sudo DEBIAN_FRONTEND=noninteractive "${cmd[@]}" >&2
    else
        echo "Missing Debian packages. Install them with:" >&2
        echo "  sudo apt-get update && sudo ${cmd[*]}" >&2
        return 1
    fi
}
