#!/usr/bin/env bash
# The kit's programs on the demo's assets and broken samples: the checker's verdicts and the
# limits it names, the viewer's pictures and its errors, and each example run headless.
#   tests/tools/tools_test.sh TOOLS_DIR   (build/tools: the programs and demo-assets/; the
#                                          VRML samples come from assets/vrml)
set -euo pipefail
tools=$(cd "$1" && pwd)
samples=$(cd "$(dirname "$0")/../../assets/vrml" && pwd)
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

# The pixels of a PNG that differ from its most common colour: for the viewer's pictures of
# models, what is drawn over the backdrop.
drawn_pixels() { # FILE.png
    python3 - "$1" <<'EOF'
import struct, sys, zlib
from collections import Counter
data, pos, idat = open(sys.argv[1], "rb").read(), 8, b""
while pos < len(data):
    length, kind = struct.unpack(">I4s", data[pos:pos + 8])
    if kind == b"IHDR":
        width, height, _, color = struct.unpack(">IIBB", data[pos + 8:pos + 18])
    elif kind == b"IDAT":
        idat += data[pos + 8:pos + 8 + length]
    pos += 12 + length
bpp = {2: 3, 6: 4}[color]
raw, stride = zlib.decompress(idat), width * bpp
prev, colours = bytearray(stride), Counter()
for y in range(height):
    start = y * (stride + 1)
    kind, line = raw[start], bytearray(raw[start + 1:start + 1 + stride])
    for x in range(stride):
        a, b = (line[x - bpp] if x >= bpp else 0), prev[x]
        c = prev[x - bpp] if x >= bpp else 0
        p = a + b - c
        paeth = a if abs(p - a) <= min(abs(p - b), abs(p - c)) else b if abs(p - b) <= abs(p - c) else c
        line[x] = (line[x] + (0, a, b, (a + b) // 2, paeth)[kind]) & 255
    colours.update(bytes(line[i:i + 3]) for i in range(0, stride, bpp))
    prev = line
print(width * height - colours.most_common(1)[0][1])
EOF
}

# The viewer: each sample to a picture, every model showing over the backdrop whichever way
# its faces turn; a missing and a broken file named with the driver's error title.
for sample in scene.wrl font.bmp crate.bmp logo.bmp stone.3df "$samples"/*.wrl; do
    name=$(basename "$sample")
    "$tools/norvgl-view" "$sample" --out "view-$name.png" >/dev/null 2>&1 ||
        fail "norvgl-view $name failed"
    [ -s "view-$name.png" ] || fail "norvgl-view $name saved no picture"
    if [[ $name == *.wrl ]] && [ "$(drawn_pixels "view-$name.png")" -lt 100 ]; then
        fail "norvgl-view $name shows nothing but its backdrop"
    fi
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
