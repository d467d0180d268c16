#!/usr/bin/env bash
# Installs the Debian packages that are missing, then configures and builds TarnwickMP4 in
# Release with its tests. Safe to run again: it installs and rebuilds only what is needed.
# Usage: scripts/setup.sh [BUILD_DIR] [extra cmake arguments...]
set -euo pipefail

here=$(cd "$(dirname "$0")/.." && pwd)
build_dir=${1:-"$here/build"}
shift || true

packages=(
    cmake g++ make pkg-config clang-format
    ffmpeg
    fonts-ipafont-gothic # Japanese captions burnt into the film as characters, not boxes
    nlohmann-json3-dev
    libopencv-core-dev libopencv-imgproc-dev libopencv-imgcodecs-dev
    qt6-base-dev libx11-dev
    libgtest-dev xvfb xauth
    desktop-file-utils appstream
)

missing=()
for p in "${packages[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
        missing+=("$p")
    fi
done

if [ ${#missing[@]} -gt 0 ]; then
    sudo_cmd=()
    if [ "$(id -u)" -ne 0 ]; then
        if ! command -v sudo >/dev/null 2>&1; then
            echo "These packages are missing: ${missing[*]}" >&2
            echo "Run this script as root, or install sudo, to install them." >&2
            exit 1
        fi
        sudo_cmd=(sudo)
    fi
    echo "Installing missing packages: ${missing[*]}"
    export DEBIAN_FRONTEND=noninteractive
    # A fresh machine has no package lists yet; an install that fails on stale lists retries
    # after an update.
    if [ -z "$(ls -A /var/lib/apt/lists 2>/dev/null | grep -v -e lock -e partial)" ]; then
        "${sudo_cmd[@]}" apt-get update -qq
    fi
    if ! "${sudo_cmd[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"; then
        "${sudo_cmd[@]}" apt-get update -qq
        "${sudo_cmd[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
    fi
fi

cmake -S "$here" -B "$build_dir" -DCMAKE_BUILD_TYPE=Release "$@"
cmake --build "$build_dir" -j"$(nproc)"
