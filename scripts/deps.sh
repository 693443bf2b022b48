#!/usr/bin/env bash
# Installs every Debian package that building, testing and the demo need. Safe to run again:
# it does nothing when all of them are present.
set -euo pipefail

packages=(
    build-essential cmake ninja-build pkg-config
    libgtest-dev libgmock-dev libbenchmark-dev googletest
    libgl1-mesa-dev libglu1-mesa-dev libgl1-mesa-dri libglx-mesa0
    libx11-dev libxrandr-dev libpng-dev
    xvfb xauth x11-utils
    g++-mingw-w64-i686 g++-mingw-w64-x86-64 g++-mingw-w64-x86-64-posix wine64 wine
    clang libclang-rt-14-dev llvm
)

missing=()
for p in "${packages[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
        missing+=("$p")
    fi
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "deps: installing ${missing[*]}"
sudo=""
[ "$(id -u)" -ne 0 ] && sudo="sudo"
$sudo apt-get update -qq
DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
