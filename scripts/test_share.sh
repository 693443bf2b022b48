#!/usr/bin/env bash
# The test suite's share of the C and C++ code: non-blank lines of the .c, .cpp, .h and .inl
# files tracked by git, tests/ and fuzz/ against src/, include/, tools/, tests/, fuzz/ and
# bench/ together; then the lines of each test file, largest first.
set -euo pipefail
cd "$(dirname "$0")/.."

files() { git ls-files -- "$@" | grep -E '\.(c|cpp|h|inl)$' || true; }
lines() { xargs -r cat | grep -cvE '^[[:space:]]*$' || true; }

tests=$(files tests fuzz | lines)
all=$(files src include tools tests fuzz bench | lines)
echo "test share: $tests of $all lines, $((100 * tests / all)) % (tests/ and fuzz/)"
files tests fuzz | while read -r file; do
    printf '%6d  %s\n' "$(grep -cvE '^[[:space:]]*$' "$file" || true)" "$file"
done | sort -rn
