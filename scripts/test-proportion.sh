#!/usr/bin/env bash
# Prints the lines of test code (tests/: C++, Python, shell) next to the lines of product code
# (the layers' C++), so the suite's size can be kept in proportion to what it tests.
set -euo pipefail
cd "$(dirname "$0")/.."

count() { git ls-files -co --exclude-standard -- "$@" | xargs -r cat | wc -l; }
product=$(count 'app/*.cpp' 'app/*.h' 'imaging/*.cpp' 'imaging/*.h' 'documents/*.cpp' 'documents/*.h' \
    'operations/*.cpp' 'operations/*.h' 'platform/*.cpp' 'platform/*.h' 'ring/*.cpp' 'ring/*.h' \
    'triggers/*.cpp' 'triggers/*.h' 'media/*.cpp' 'media/*.h')
tests=$(count 'tests/*.cpp' 'tests/*.h' 'tests/*.py' 'tests/*.sh')
awk -v t="$tests" -v p="$product" 'BEGIN { printf "Test code: %d lines, product code: %d lines (%.0f %%)\n", t, p, 100 * t / p }'
