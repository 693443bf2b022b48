#!/usr/bin/env bash
# Line and branch coverage of src/ by the Linux suite: everything ctest lists and the Linux
# side of the scenario program, on a gcov-instrumented Debug build in build-coverage. Prints
# the figures per folder of src/ and for src/ as a whole. Installs gcovr when it is missing;
# runs on a private Xvfb. Not part of the test command.
#   scripts/coverage.sh            whole report
#   NORVGL_COVERAGE_DIR=dir        another build directory (to measure another checkout)
set -euo pipefail
cd "$(dirname "$0")/.."
root=$PWD
dir=${NORVGL_COVERAGE_DIR:-build-coverage}

scripts/deps.sh
if ! command -v gcovr >/dev/null; then
    sudo=""
    [ "$(id -u)" -ne 0 ] && sudo="sudo"
    $sudo apt-get update -qq
    DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends gcovr
fi

cmake -S . -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DCMAKE_C_FLAGS=--coverage \
    -DCMAKE_CXX_FLAGS=--coverage -DCMAKE_EXE_LINKER_FLAGS=--coverage \
    -DCMAKE_SHARED_LINKER_FLAGS=--coverage >/dev/null
cmake --build "$dir" -j "$(nproc)" >/dev/null
find "$dir" -name '*.gcda' -delete

# A display of its own: another program's window over the test windows spoils captures.
unset DISPLAY
source scripts/xvfb.sh
ctest --test-dir "$dir" >"$dir/coverage-ctest.log" 2>&1 ||
    { tail -30 "$dir/coverage-ctest.log"; echo "coverage: ctest failed"; exit 1; }
work=$(mktemp -d)
trap 'rm -rf "$work"; kill $NORVGL_XVFB_PID 2>/dev/null || true' EXIT
(cd "$work" && "$root/$dir/tests/scenario/norvgl_scenario" --gtest_brief=1 >/dev/null) ||
    { echo "coverage: the scenario program failed"; exit 1; }

gcovr --root "$root" --object-directory "$dir" --filter "$root/src/" \
    --exclude-throw-branches --exclude-unreachable-branches \
    --json "$dir/coverage.json" >"$dir/gcovr.log" 2>&1
python3 - "$dir/coverage.json" <<'EOF'
import collections, json, sys
data = json.load(open(sys.argv[1]))
sums = collections.defaultdict(lambda: [0, 0, 0, 0])
for f in data["files"]:
    folder = "/".join(f["file"].split("/")[:2])
    for line in f["lines"]:
        if line.get("gcovr/noncode"):
            continue
        for key in (folder, "src (all)"):
            s = sums[key]
            s[0] += 1
            s[1] += line["count"] > 0
            for branch in line["branches"]:
                s[2] += 1
                s[3] += branch["count"] > 0
def pct(a, b):
    return f"{100.0 * b / a:5.1f} %" if a else "    -  "
print(f"{'folder':<18}{'lines':>16}{'':>10}{'branches':>16}")
for key in sorted(k for k in sums if k != "src (all)") + ["src (all)"]:
    s = sums[key]
    print(f"{key:<18}{s[1]:>7} / {s[0]:<6}{pct(s[0], s[1]):>9}   {s[3]:>6} / {s[2]:<6}{pct(s[2], s[3]):>9}")
EOF
