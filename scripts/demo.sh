#!/usr/bin/env bash
# The main job: builds the driver and runs the demo host on a window.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh demo
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build -j "$(nproc)" --target norvgl_demo
source scripts/xvfb.sh
mkdir -p out
cd out
../build/tools/norvgl_demo "$@"
