#!/usr/bin/env bash
# The golden-picture test: draws the demo's 60-frame picture twice, whole and without
# particles, and compares both with docs/demo.png (see golden_compare.cpp for the rules).
#   tests/golden/golden_test.sh DEMO COMPARE [DEMO ARGUMENTS...]
# DEMO may be a command with arguments in one word list (the Wine run passes "wine demo.exe").
set -euo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
demo=$1
compare=$2
shift 2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
$demo --frames 60 --out whole.png "$@" >/dev/null
$demo --frames 60 --out still.png --skip fire,smoke,stagger,shards "$@" >/dev/null
"$compare" "$root/docs/demo.png" whole.png still.png
