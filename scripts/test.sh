#!/usr/bin/env bash
# The whole test suite: installs what is missing, builds everything, starts Xvfb when there is
# no display, runs the Linux tests, checks both DLLs' export tables and runs the Windows tests
# under Wine.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh
scripts/build.sh
source scripts/xvfb.sh

ctest --test-dir build --output-on-failure
scripts/check_exports.sh
# The benchmarks are timed only by scripts/bench.sh; here they just have to run.
build/bench/norvgl_bench --benchmark_min_time=0.01 >/dev/null
scripts/wine_tests.sh

echo "test: all passed"
