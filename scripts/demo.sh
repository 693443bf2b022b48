#!/usr/bin/env bash
# The main job: builds the driver and runs the demo host on a window; saves out/demo.png.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh demo
# A build of its own without the tests, whose packages the main job does not install.
cmake -S . -B build-demo -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DNORVGL_BUILD_TESTS=OFF \
    >/dev/null
cmake --build build-demo -j "$(nproc)" --target norvgl_demo
source scripts/xvfb.sh
mkdir -p out
cd out
if [ $# -eq 0 ]; then
    # On a private Xvfb nobody sees the window: 60 frames, then the picture. On a real display
    # the demo runs until its window is closed, and the last frame is saved.
    if [ -n "${NORVGL_XVFB_PID:-}" ]; then
        set -- --frames 60
    fi
    set -- "$@" --out demo.png
fi
../build-demo/tools/norvgl_demo "$@"
