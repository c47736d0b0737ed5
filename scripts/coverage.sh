#!/usr/bin/env bash
# Builds the suite with gcov instrumentation in build-coverage/, runs it, and prints line
# coverage of the product code (tests and generated code left out), plus how large the tests
# are next to the code they test.
# Usage: scripts/coverage.sh [CTEST ARGUMENT...]   (for example -R operations_ to run a part)
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/bootstrap.sh
build_dir=build-coverage
cmake -S . -B "$build_dir" -G Ninja -DCMAKE_BUILD_TYPE=Debug \
    -DCMAKE_CXX_FLAGS="--coverage -O0" -DCMAKE_EXE_LINKER_FLAGS=--coverage \
    -DCMAKE_SHARED_LINKER_FLAGS=--coverage >/dev/null
cmake --build "$build_dir" --parallel "$(nproc)"

find "$build_dir" -name '*.gcda' -delete
ctest --test-dir "$build_dir" --parallel "$(nproc)" "$@" >"$build_dir/ctest.log" || {
    grep -E 'Failed|Timeout|tests passed' "$build_dir/ctest.log" >&2
}

# lcov 1.16 warns about its own Perl on every run; those lines say nothing about the code.
quiet() { "$@" 2> >(grep -v 'redefined at' >&2); }
quiet lcov --quiet --capture --directory "$build_dir" --output-file "$build_dir/all.info"
folders=() patterns=()
for folder in app imaging documents operations platform ring triggers media; do
    [[ -d $folder ]] && folders+=("$folder") && patterns+=("$PWD/$folder/*")
done
quiet lcov --quiet --extract "$build_dir/all.info" "${patterns[@]}" --output-file "$build_dir/product.info"
echo "Line coverage of the product code:"
quiet lcov --summary "$build_dir/product.info" 2>&1 | grep -E 'lines|functions'
for folder in "${folders[@]}"; do
    quiet lcov --quiet --extract "$build_dir/product.info" "$PWD/$folder/*" --output-file "$build_dir/$folder.info"
    printf '  %-12s %s\n' "$folder" "$(quiet lcov --summary "$build_dir/$folder.info" 2>&1 | grep -m1 'lines' | sed 's/^ *lines\.*: //')"
done
scripts/test-proportion.sh
