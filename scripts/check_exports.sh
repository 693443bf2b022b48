#!/usr/bin/env bash
# The shipped libraries export exactly the 63 GFX_ names of src/api/exports.txt, and both DLLs
# number them 1 to 63 by their place in the byte-sorted list.
set -euo pipefail
cd "$(dirname "$0")/.."
expected=$(mktemp)
trap 'rm -f "$expected"' EXIT
grep -v '^#' src/api/exports.txt | awk '{ print ++n, $1 }' > "$expected"
if [ "$(wc -l < "$expected")" -ne 63 ]; then
    echo "check_exports: exports.txt lists $(wc -l < "$expected") names, not 63"
    exit 1
fi

linux=$(nm -D --defined-only build/libnorvgl.so | awk '{print $3}' | LC_ALL=C sort)
if [ "$linux" != "$(awk '{print $2}' "$expected" | LC_ALL=C sort)" ]; then
    echo "check_exports: libnorvgl.so exports differ from exports.txt:"
    diff <(echo "$linux") <(awk '{print $2}' "$expected" | LC_ALL=C sort) || true
    exit 1
fi

for dll in build-win32/norvgl.dll build-win64/norvgl.dll; do
    case $dll in build-win32/*) objdump=i686-w64-mingw32-objdump ;; *) objdump=x86_64-w64-mingw32-objdump ;; esac
    # "Ordinal Base n" and rows "[   i] Name": a name's ordinal is i + n.
    dump=$($objdump -p "$dll")
    base=$(echo "$dump" | sed -nE 's/^Ordinal Base\s+([0-9]+).*/\1/p' | head -1)
    actual=$(echo "$dump" | sed -n '/\[Ordinal\/Name Pointer\] Table/,/^$/p' |
        sed -nE 's/^\s*\[\s*([0-9]+)\] (GFX_[A-Za-z]+)$/\1 \2/p' |
        awk -v base="$base" '{ print $1 + base, $2 }' | LC_ALL=C sort -n)
    if [ "$actual" != "$(LC_ALL=C sort -n "$expected")" ]; then
        echo "check_exports: $dll export table differs from exports.txt:"
        diff <(echo "$actual") <(LC_ALL=C sort -n "$expected") || true
        exit 1
    fi
done
echo "check_exports: libnorvgl.so and both DLLs export $(wc -l < "$expected") GFX_ names with their ordinals"
