#!/usr/bin/env bash
# One entry point for a fresh Debian 12 machine (run as root, or with sudo
# available): installs the missing Debian packages, configures and builds.
#   ./build.sh run    build, then start Qorvane
#   ./build.sh test   build, then run every test headless
#   ./build.sh build  build only
#   ./build.sh deb    build the Debian package build-deb/qorvane_<version>_amd64.deb
set -euo pipefail
cd "$(dirname "$0")"

PACKAGES=(cmake g++ make pkg-config qt6-base-dev qt6-base-dev-tools libgl1-mesa-dev
          libxkbcommon-dev libpugixml-dev fonts-liberation xvfb xauth
          openssl desktop-file-utils appstream dpkg-dev file man-db
          libcups2-dev cups printer-driver-cups-pdf poppler-utils
          at-spi2-core python3-pyatspi dbus-x11 x11-utils
          clang-14 libclang-rt-14-dev)  # the last two for fuzz/run.sh only

install_missing() {
    local missing=()
    for p in "${PACKAGES[@]}"; do
        dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
    done
    [ ${#missing[@]} -eq 0 ] && return 0
    echo "Installing: ${missing[*]}"
    local sudo=""
    [ "$(id -u)" -ne 0 ] && sudo="sudo"
    $sudo apt-get update -qq
    DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq "${missing[@]}"
}

build() {
    cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
    cmake --build build -j"$(nproc)"
}

case "${1:-}" in
    run)   install_missing; build; exec ./build/src/shell/qorvane ;;
    test)  install_missing; build
           cd build && QT_QPA_PLATFORM=offscreen ctest --output-on-failure -j"$(nproc)" ;;
    build) install_missing; build ;;
    deb)   install_missing
           cmake -S . -B build-deb -DCMAKE_BUILD_TYPE=Release -DQOR_BUILD_TESTS=OFF -DQOR_BUILD_BENCH=OFF >/dev/null
           cmake --build build-deb -j"$(nproc)"
           (cd build-deb && cpack -G DEB)
           echo "Install with: sudo apt install ./build-deb/qorvane_*_amd64.deb" ;;
    *) echo "usage: $0 run|test|build|deb" >&2; exit 64 ;;
esac
