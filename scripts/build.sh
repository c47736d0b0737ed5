#!/usr/bin/env bash
# Configures and builds Wendrel with CMake and Ninja.
# Usage: scripts/build.sh [--sanitize]   (--sanitize: AddressSanitizer + UBSan in build-asan/)
set -euo pipefail
cd "$(dirname "$0")/.."

build_dir=build
options=()
if [[ "${1:-}" == "--sanitize" ]]; then
    build_dir=build-asan
    options+=(-DWENDREL_SANITIZE=ON -DCMAKE_BUILD_TYPE=Debug)
fi

cmake -S . -B "$build_dir" -G Ninja "${options[@]}" >/dev/null
cmake --build "$build_dir" --parallel "$(nproc)"
