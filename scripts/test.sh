#!/usr/bin/env bash
# The whole test suite: installs what is missing, checks the layering of the sources, builds
# everything, starts Xvfb when there is no display, runs the Linux tests and the scenario
# program under the sanitizers, checks both DLLs' export tables, runs the Windows tests
# under Wine, compares the bitmap decoder with the system's under Wine and fuzzes the picture
# readers briefly.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh
scripts/check_layers.sh
scripts/build.sh
source scripts/xvfb.sh

ctest --test-dir build --output-on-failure
# The scenario program, hostile call orders included, with the address and undefined-behaviour
# sanitizers.
scripts/sanitize.sh
scripts/check_exports.sh
# The benchmarks are timed only by scripts/bench.sh; here they just have to run.
build/bench/norvgl_bench --benchmark_min_time=0.01 >/dev/null
scripts/wine_tests.sh
scripts/bitmap_wine_check.sh
# The file readers under the fuzzer for a short bounded time each; longer runs are
# `scripts/fuzz.sh 600`.
scripts/fuzz.sh 30

echo "test: all passed"
