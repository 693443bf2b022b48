#!/usr/bin/env bash
# Installs the library built in BUILD_DIR into a scratch prefix and builds the tiny host three
# ways, as hosts do: find_package(norvgl), pkg-config, and add_subdirectory of the sources.
# Each runs two frames on $DISPLAY and must save a green picture.
#   tests/install/install_test.sh BUILD_DIR
set -euo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
build=$(cd "$1" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
kit=$root/tools/common

cmake --install "$build" --prefix "$work/prefix" >/dev/null

run() {
    (cd "$work" && "$1" --frames 2 --out "$work/$2.png")
    # The centre pixel of the saved picture, read with Python's own zlib.
    python3 - "$work/$2.png" <<'PY'
import struct, sys, zlib
data = open(sys.argv[1], 'rb').read()
width, height = struct.unpack('>II', data[16:24])
pos, idat = 8, b''
while pos < len(data):
    size, kind = struct.unpack('>I4s', data[pos:pos + 8])
    idat += data[pos + 8:pos + 8 + size] if kind == b'IDAT' else b''
    pos += 12 + size
rows = zlib.decompress(idat)
stride = 3 * width + 1
# Row 0 is stored unfiltered or with Sub (its own left neighbour): undo both for one pixel.
row = bytearray(rows[1:stride])
if rows[0] == 1:
    for i in range(3, len(row)):
        row[i] = (row[i] + row[i - 3]) & 255
elif rows[0] not in (0, 2):
    sys.exit('first row filter %d' % rows[0])
pixel = tuple(row[3 * (width // 2):3 * (width // 2) + 3])
if pixel != (0, 255, 0):
    sys.exit('%s: top row centre is %s, not green' % (sys.argv[1], pixel))
PY
    echo "install_test: $2 host ran"
}

cmake -S "$root/tests/install" -B "$work/package" -G Ninja -DCMAKE_PREFIX_PATH="$work/prefix" \
    >/dev/null
cmake --build "$work/package" >/dev/null
run "$work/package/tiny_host" find_package

export PKG_CONFIG_PATH=$work/prefix/lib/pkgconfig
cc -Wall -Wextra -c "$root/tests/install/tiny_host.c" -I"$kit" $(pkg-config --cflags norvgl) \
    -o "$work/tiny_host.o"
c++ -std=c++20 "$work/tiny_host.o" "$kit/host_c.cpp" "$kit/host_image.cpp" \
    "$kit/host_window_x11.cpp" -I"$kit" $(pkg-config --cflags --libs norvgl) -lX11 \
    -Wl,-rpath,"$work/prefix/lib" -o "$work/tiny_host_pkgconfig"
run "$work/tiny_host_pkgconfig" pkg-config

cmake -S "$root/tests/install" -B "$work/subdirectory" -G Ninja -DNORVGL_SOURCE="$root" >/dev/null
cmake --build "$work/subdirectory" -j "$(nproc)" >/dev/null
run "$work/subdirectory/tiny_host" add_subdirectory
