#!/usr/bin/env bash
# Builds the Linux library and the scenario program with clang's address and undefined-
# behaviour sanitizers in build-asan and runs the scenario program there: the hostile call
# orders and every host scenario, on a real window. Fails on any report. Needs a display
# (the test command provides one).
set -euo pipefail
cd "$(dirname "$0")/.."
cmake -S . -B build-asan -G Ninja -DCMAKE_BUILD_TYPE=Debug -DCMAKE_C_COMPILER=clang \
    -DCMAKE_CXX_COMPILER=clang++ -DNORVGL_SANITIZE=ON -DNORVGL_WERROR=ON >/dev/null
cmake --build build-asan -j "$(nproc)" --target norvgl_scenario
export ASAN_OPTIONS="detect_leaks=1:abort_on_error=1"
export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
(cd "$work" && "$OLDPWD/build-asan/tests/scenario/norvgl_scenario" --gtest_brief=1)
echo "sanitize: scenario clean under ASan and UBSan"
