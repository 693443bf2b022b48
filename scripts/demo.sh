#!/usr/bin/env bash
# The main job: builds the driver and runs the demo host on a window.
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
../build-demo/tools/norvgl_demo "$@"
