#!/usr/bin/env bash
# Builds the Linux library with its tests and tools, and both Windows DLLs.
set -euo pipefail
cd "$(dirname "$0")/.."
jobs=$(nproc)
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build -j "$jobs"
cmake -S . -B build-win64 -G Ninja -DCMAKE_TOOLCHAIN_FILE=cmake/mingw-x86_64.cmake \
    -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build build-win64 -j "$jobs"
cmake -S . -B build-win32 -G Ninja -DCMAKE_TOOLCHAIN_FILE=cmake/mingw-i686.cmake \
    -DCMAKE_BUILD_TYPE=Release -DNORVGL_TESTS=OFF >/dev/null
cmake --build build-win32 -j "$jobs"
