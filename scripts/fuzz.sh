#!/usr/bin/env bash
# Builds the libFuzzer targets of the file readers in build-fuzz (clang, address and
# undefined behaviour sanitizers; the VRML target also builds models from what it reads) and
# runs each for the given number of seconds, starting from a seed corpus made by our asset
# writer (and the VRML samples). Fails when a target finds a crash.
# Usage: scripts/fuzz.sh SECONDS
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:?usage: scripts/fuzz.sh SECONDS}
scripts/deps.sh
cmake -S fuzz -B build-fuzz -G Ninja -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_BUILD_TYPE=Debug >/dev/null
cmake --build build-fuzz -j "$(nproc)"
# Absolute paths: a target may work in a directory of its own.
root=$PWD
corpus=$root/build-fuzz/corpus
mkdir -p "$corpus/texture_file" "$corpus/bitmap" build-fuzz/artifacts
build-fuzz/fuzz_seeds "$corpus/texture_file" "$corpus/bitmap"
mkdir -p "$corpus/vrml"
# The VRML samples are a second, read-only seed directory; the keywords come as a dictionary.
declare -A extra=([texture_file]="" [bitmap]=""
    [vrml]="-max_len=8192 -dict=$root/fuzz/vrml.dict $root/assets/vrml")
status=0
for target in texture_file bitmap vrml; do
    echo "fuzz: $target for $seconds s"
    # shellcheck disable=SC2086
    if ! build-fuzz/fuzz_$target -max_total_time="$seconds" -timeout=20 -rss_limit_mb=2048 \
        -print_final_stats=1 -artifact_prefix="$root/build-fuzz/artifacts/$target-" \
        "$corpus/$target" ${extra[$target]} >build-fuzz/$target.log 2>&1; then
        echo "fuzz: $target failed; see build-fuzz/$target.log and build-fuzz/artifacts/"
        tail -n 40 build-fuzz/$target.log
        status=1
    else
        grep -E '^stat::number_of_executed_units|^#[0-9]+.*DONE' build-fuzz/$target.log | tail -n 2 || true
    fi
done
exit $status
