#!/usr/bin/env bash
# Installs the Debian packages the project needs. `scripts/deps.sh demo` installs only what
# building the library, its tools and the demo and running them on a private X server need
# (the README's main job); without an argument it adds what the test suite needs: GoogleTest,
# Google Benchmark, clang with its sanitizers, the mingw-w64 cross compilers and Wine. Safe to
# run again: it does nothing when all of them are present.
set -euo pipefail

packages=(
    build-essential cmake ninja-build pkg-config
    libgl1-mesa-dev libglu1-mesa-dev libgl1-mesa-dri libglx-mesa0
    libx11-dev libxrandr-dev libpng-dev
    xvfb xauth
)
if [ "${1:-all}" != demo ]; then
    packages+=(
        libgtest-dev libgmock-dev libbenchmark-dev googletest
        x11-utils python3
        g++-mingw-w64-i686 g++-mingw-w64-x86-64 g++-mingw-w64-x86-64-posix wine64 wine
        clang libclang-rt-14-dev llvm
    )
fi

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
