#!/usr/bin/env bash
# The scenario program on both systems: the Linux build on the X display, the 64-bit Windows
# build under Wine on the same display, then a comparison of their results, debug logs, window
# captures, texture dumps and notes. Builds nothing: run scripts/build.sh first. Exits non-zero
# on any failure.
set -euo pipefail
cd "$(dirname "$0")/.."
root=$PWD

linux_program=$root/build/tests/scenario/norvgl_scenario
compare=$root/build/tests/scenario/norvgl_compare_runs
windows_program=$root/build-win64/scenario/norvgl_scenario.exe
for file in "$linux_program" "$compare" "$windows_program" "$root/build-win64/scenario/norvgl.dll"; do
    if [ ! -f "$file" ]; then
        echo "wine_tests: $file is missing: run scripts/build.sh first"
        exit 1
    fi
done
if ! command -v wine >/dev/null; then
    echo "wine_tests: wine is not installed: run scripts/deps.sh"
    exit 1
fi
source scripts/xvfb.sh

started=$SECONDS
runs=$root/build/scenario-runs
rm -rf "$runs"
mkdir -p "$runs/linux" "$runs/windows"

echo "wine_tests: Linux scenario"
(cd "$runs/linux" && NORVGL_SCENARIO_OUT=$runs/linux "$linux_program" --gtest_brief=1)

# Wine: a prefix of our own that never asks anything. The .NET and HTML engines it would offer
# to download are turned off, and windows are left to Wine rather than to a window manager, of
# which the test display has none (Wine would wait for one at every window it hides).
export WINEPREFIX=$root/build-win64/wineprefix
export WINEARCH=win64
export WINEDEBUG=-all
export WINEDLLOVERRIDES="mscoree,mshtml="
finish() {
    wineserver -k 2>/dev/null || true
    if [ -n "${NORVGL_XVFB_PID:-}" ]; then kill "$NORVGL_XVFB_PID" 2>/dev/null || true; fi
}
trap finish EXIT
if [ ! -f "$WINEPREFIX/.norvgl-ready" ]; then
    echo "wine_tests: creating the Wine prefix $WINEPREFIX"
    rm -rf "$WINEPREFIX"
    timeout 180 wineboot -i >/dev/null 2>&1 || { echo "wine_tests: wineboot failed"; exit 1; }
    timeout 60 wine reg add 'HKCU\Software\Wine\X11 Driver' /v Managed /d N /f >/dev/null 2>&1
    timeout 60 wineserver -w
    touch "$WINEPREFIX/.norvgl-ready"
fi

echo "wine_tests: Windows scenario under Wine"
# Wine's drive Z: is the root of the Linux file system.
windows_out="Z:${runs//\//\\}\\windows"
(cd "$runs/windows" &&
    NORVGL_SCENARIO_OUT=$windows_out timeout 300 wine "$windows_program" --gtest_brief=1)

echo "wine_tests: comparing the runs"
# Both systems draw with the same software rasteriser and their bitmaps (the system's
# StretchDIBits on Windows, our decoder on Linux) have matched exactly: any difference fails.
"$compare" "$runs/linux" "$runs/windows"

# The demo built for Windows against the same golden picture as the Linux one, on the assets
# the Linux build made.
echo "wine_tests: the Windows demo against the golden picture"
assets="Z:${root//\//\\}\\build\\tools\\demo-assets"
timeout 300 tests/golden/golden_test.sh "wine $root/build-win64/tools/norvgl_demo.exe" \
    "$root/build/tests/norvgl_golden_compare" --assets "$assets"
echo "wine_tests: passed in $((SECONDS - started)) s"
