#!/usr/bin/env bash
# Runs the benchmarks (submission cost against a plain copy loop, whole frames against a naive
# host, the particle pass against a plain loop of the same quads) on a window, starting Xvfb
# when there is no display. Extra arguments go to the benchmark binary, e.g.
# --benchmark_repetitions=5.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build -j "$(nproc)" --target norvgl_bench
source scripts/xvfb.sh
build/bench/norvgl_bench "$@"
