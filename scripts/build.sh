#!/usr/bin/env bash
# Builds the Linux library with its tests and tools, and both Windows DLLs.
set -euo pipefail
cd "$(dirname "$0")/.."
jobs=$(nproc)

# A build directory keeps the compiler it was first configured with, whatever its toolchain
# file says later: start it afresh when the toolchain names another compiler.
configure_cross() {
    local dir=$1 toolchain=$2 wanted
    shift 2
    wanted=$(sed -nE 's/^set\(CMAKE_CXX_COMPILER ([^ )]+)\)$/\1/p' "$toolchain")
    local fresh=()
    if compgen -G "$dir/CMakeFiles/*/CMakeCXXCompiler.cmake" >/dev/null &&
        ! grep -qs "^set(CMAKE_CXX_COMPILER \"\(.*/\)\?$wanted\")" \
            "$dir"/CMakeFiles/*/CMakeCXXCompiler.cmake; then
        fresh=(--fresh)
    fi
    cmake "${fresh[@]}" -S . -B "$dir" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$toolchain" "$@" >/dev/null
}

cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build -j "$jobs"
configure_cross build-win64 cmake/mingw-x86_64.cmake -DCMAKE_BUILD_TYPE=Release
cmake --build build-win64 -j "$jobs"
configure_cross build-win32 cmake/mingw-i686.cmake -DCMAKE_BUILD_TYPE=Release -DNORVGL_TESTS=OFF
cmake --build build-win32 -j "$jobs"
