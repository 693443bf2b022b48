#!/usr/bin/env bash
# Builds the Linux library with its tests and tools (once as the tests run it, once in Release
# as a packager builds it, so that warnings of the optimiser are seen), and both Windows DLLs.
# Warnings are errors here.
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

cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DNORVGL_WERROR=ON >/dev/null
cmake --build build -j "$jobs"
cmake -S . -B build-release -G Ninja -DCMAKE_BUILD_TYPE=Release -DNORVGL_WERROR=ON >/dev/null
cmake --build build-release -j "$jobs"
configure_cross build-win64 cmake/mingw-x86_64.cmake -DCMAKE_BUILD_TYPE=Release -DNORVGL_WERROR=ON
cmake --build build-win64 -j "$jobs"
configure_cross build-win32 cmake/mingw-i686.cmake -DCMAKE_BUILD_TYPE=Release -DNORVGL_WERROR=ON \
    -DNORVGL_BUILD_TESTS=OFF -DNORVGL_BUILD_TOOLS=OFF
cmake --build build-win32 -j "$jobs"
