#!/usr/bin/env bash
# The kit's programs on the demo's assets and broken samples: the checker's verdicts and the
# limits it names, the viewer's pictures and its errors, and each example run headless.
#   tests/tools/tools_test.sh TOOLS_DIR   (build/tools: the programs and demo-assets/)
set -euo pipefail
tools=$(cd "$1" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cp -r "$tools/demo-assets/." "$work"
cd "$work"
failed=0
fail() { echo "tools_test: $*"; failed=1; }

# The checker: every sample's verdict, and the limit each broken one exceeds.
expect_check() { # FILE STATUS TEXT
    local out status=0
    out=$("$tools/norvgl-check" "$1") || status=$?
    [ "$status" -eq "$2" ] || fail "norvgl-check $1 exited $status, not $2"
    grep -qF -- "$3" <<<"$out" || fail "norvgl-check $1 does not say: $3"
}
expect_check font.bmp 0 "becomes a texture of 128 x 128"
expect_check font.bmp 0 "pure black and become transparent"
expect_check ground.bmp 0 "RLE8"
expect_check crate.bmp 0 "4 bits per pixel"
expect_check logo.bmp 0 "becomes a texture of 256 x 256 (sides rounded to a square power of two): the picture is stretched to it"
expect_check stone.3df 0 "6 levels read: 64x64 32x32 16x16 8x8 4x4 2x2"
expect_check stone.3df 0 "with RPROP_MIPMAPS set it draws UNTEXTURED"
expect_check scene.wrl 0 "texture named: STONE.3DF"
expect_check scene.wrl 0 "bounds: min -11.2725 0 -11.2725, max 11.2725 42 11.2725"
expect_check broken_cut.bmp 1 "refused: the file is shorter than its file size field says"
expect_check broken_16bit.bmp 1 "Could not create bitmap: bits = 16"
expect_check broken_limits.wrl 1 "LIMIT line length: 1 line longer than 1023 characters"
expect_check broken_limits.wrl 1 "LIMIT name length: 1 name longer than 127 characters"
expect_check broken_limits.wrl 1 "LIMIT face size: 1 face of more than 3 points"
expect_check missing.wrl 1 "not found"

# The viewer: each sample to a picture; a missing and a broken file named with the driver's
# error title.
for sample in scene.wrl font.bmp crate.bmp logo.bmp stone.3df; do
    "$tools/norvgl-view" "$sample" --out "view-$sample.png" >/dev/null ||
        fail "norvgl-view $sample failed"
    [ -s "view-$sample.png" ] || fail "norvgl-view $sample saved no picture"
done
expect_view_error() { # FILE TEXT
    local out
    if out=$("$tools/norvgl-view" "$1" --out x.png 2>&1); then
        fail "norvgl-view $1 succeeded"
    fi
    grep -qF -- "$2" <<<"$out" || fail "norvgl-view $1 does not say: $2 (it said: $out)"
}
expect_view_error missing.bmp "GFX_LoadPicture failed: File not found"
expect_view_error broken_cut.bmp "GFX_LoadPicture failed: Invalid file data"
expect_view_error missing.wrl "cannot read the file"

# The examples, headless.
for example in picture text triangle model particles; do
    "$tools/norvgl_example_$example" --frames 5 --out "$example.png" ||
        fail "example $example failed"
    [ -s "$example.png" ] || fail "example $example saved no picture"
done
[ "$failed" -eq 0 ] && echo "tools_test: passed"
exit "$failed"
