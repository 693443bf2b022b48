#!/usr/bin/env bash
# Compares the Linux bitmap decoder with the system's StretchDIBits run under Wine on a fixed
# set of generated bitmaps (palettes, RLE, both row orders, stretches up and down).
set -euo pipefail
cd "$(dirname "$0")/.."
jobs=$(nproc)
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build -j "$jobs" --target norvgl_dibcompare
cmake -S . -B build-win64 -G Ninja -DCMAKE_TOOLCHAIN_FILE=cmake/mingw-x86_64.cmake \
    -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build build-win64 -j "$jobs" --target norvgl_dibref
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
build/tools/norvgl_dibcompare make "$work"
export WINEPREFIX=${NORVGL_WINEPREFIX:-$PWD/build-win64/wineprefix}
export WINEDEBUG=-all
wine build-win64/tools/norvgl_dibref.exe "$(winepath -w "$work/list.txt" 2>/dev/null)"
build/tools/norvgl_dibcompare check "$work"
