#!/usr/bin/env bash
# Installs whatever Tidewick needs on Debian 12 that is not there yet.
# Run as root (or through sudo). Installs nothing when all is present.
set -euo pipefail

packages=(
    cmake g++ ninja-build make pkg-config
    clang libclang-rt-14-dev
    libc6-dev-arm64-cross libstdc++-12-dev-arm64-cross
    qt6-base-dev qt6-declarative-dev qt6-declarative-dev-tools qt6-svg-dev
    qml6-module-qtqml qml6-module-qtqml-models qml6-module-qtqml-workerscript
    qml6-module-qtquick qml6-module-qtquick-window qml6-module-qtquick-layouts
    qml6-module-qtquick-shapes qml6-module-qtquick-templates qml6-module-qtquick-controls
    qml6-module-qtquick-dialogs qml6-module-qt-labs-folderlistmodel qml6-module-qttest
    qt6-image-formats-plugins libplist-dev
    adwaita-icon-theme fonts-dejavu-core fonts-noto-cjk xvfb xauth dbus-daemon
    libzstd-dev
    # Peers whose saved scans the tests open and the benchmarks race; the app
    # does not need them.
    ncdu gdu zstd
)

missing=()
for p in "${packages[@]}"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if ((${#missing[@]})); then
    echo "Installing: ${missing[*]}"
    export DEBIAN_FRONTEND=noninteractive
    apt-get update -qq
    apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi
