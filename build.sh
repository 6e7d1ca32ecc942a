#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# One entry point for a fresh Debian 12 machine (run as root, or with sudo
# available): installs the missing Debian packages, configures and builds.
#   ./build.sh run    build, then start Qorvane
#   ./build.sh test   build, then run every test headless
#   ./build.sh build  build only
#   ./build.sh deb    build the Debian package build-deb/qorvane_<version>_<arch>.deb
#                     from debian/ with dpkg-buildpackage (no tests run)
set -euo pipefail
cd "$(dirname "$0")"

PACKAGES=(cmake g++ make pkg-config qt6-base-dev qt6-base-dev-tools libgl1-mesa-dev
          libxkbcommon-dev libpugixml-dev fonts-liberation xvfb xauth
          openssl desktop-file-utils appstream dpkg-dev file man-db
          libcups2-dev cups printer-driver-cups-pdf poppler-utils
          at-spi2-core python3-pyatspi dbus-x11 x11-utils qt6ct clang-format-14
          libcurl4-openssl-dev qtkeychain-qt6-dev python3-aiosmtpd
          clang-14 libclang-rt-14-dev)  # the last two for fuzz/run.sh only

# For ./build.sh deb only: the package tools and packaging/check-deb.sh's
# lintian and hardening-check. The build's own needs are debian/control's
# Build-Depends, installed with apt-get build-dep.
DEB_PACKAGES=(dpkg-dev devscripts lintian)

# install_missing [apt-get install options --] PACKAGE...
install_missing() {
    local options=()
    if [[ " $* " == *" -- "* ]]; then
        while [ "$1" != "--" ]; do options+=("$1"); shift; done
        shift
    fi
    local missing=()
    for p in "$@"; do
        dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
    done
    [ ${#missing[@]} -eq 0 ] && return 0
    echo "Installing: ${missing[*]}"
    as_root apt-get update -qq
    as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq "${options[@]}" "${missing[@]}"
}

as_root() {
    if [ "$(id -u)" -eq 0 ]; then "$@"; else sudo "$@"; fi
}

# The package is built in a copy of the tree under build-deb/, so the
# results (.deb, .changes, .buildinfo) land in build-deb/ and the checkout
# gets no build files of debhelper's.
build_deb() {
    install_missing --no-install-recommends -- "${DEB_PACKAGES[@]}"
    if ! dpkg-checkbuilddeps 2>/dev/null; then
        as_root apt-get update -qq
        as_root env DEBIAN_FRONTEND=noninteractive apt-get build-dep -y -qq --no-install-recommends ./
    fi
    local version tree
    version=$(dpkg-parsechangelog -S Version)
    tree=build-deb/qorvane-$version
    rm -rf build-deb
    mkdir -p "$tree"
    tar --exclude=./.git --exclude=./build --exclude='./build-*' --exclude='./obj-*' -cf - . | tar -xf - -C "$tree"
    (cd "$tree" && dpkg-buildpackage -us -uc -b)
    rm -rf "$tree"
    echo "Built in build-deb/: $(cd build-deb && echo *.deb *.changes)"
    echo "Check with: packaging/check-deb.sh    Install with: sudo apt install ./build-deb/qorvane_${version}_$(dpkg --print-architecture).deb"
}

build() {
    cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
    cmake --build build -j"$(nproc)"
}

case "${1:-}" in
    run)   install_missing "${PACKAGES[@]}"; build; exec ./build/src/shell/qorvane ;;
    test)  install_missing "${PACKAGES[@]}"; build
           cd build && QT_QPA_PLATFORM=offscreen ctest --output-on-failure -j"$(nproc)" ;;
    build) install_missing "${PACKAGES[@]}"; build ;;
    deb)   build_deb ;;
    *) echo "usage: $0 run|test|build|deb" >&2; exit 64 ;;
esac
