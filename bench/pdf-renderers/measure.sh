#!/usr/bin/env bash
# Renders the same pages at 300 DPI with each renderer Debian ships (poppler's C++ interface
# with its own rasteriser, poppler-glib with cairo, libvips' pdfload), single-threaded and with
# a worker per core, each run in a process of its own so its peak memory is its own.
# Prints one line per run; docs/pdf-rendering.md holds the figures and the choice.
#
# Usage: bench/pdf-renderers/measure.sh [--corpus DIR] [--binary PATH]
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
root=$(dirname "$(dirname "$here")")

corpus="$root/bench-corpus"
binary=
while (($#)); do
    case $1 in
        --corpus) corpus=$(realpath -m "$2"); shift 2 ;;
        --binary) binary=$(realpath -m "$2"); shift 2 ;;
        -h|--help) sed -n '2,7p' "$0"; exit 0 ;;
        *) echo "unknown argument: $1" >&2; exit 2 ;;
    esac
done
[[ -f "$corpus/pdf/R-intro.pdf" ]] || { echo "no PDFs in $corpus/pdf: run bench/make_corpus.sh" >&2; exit 1; }

if [[ -z "$binary" ]]; then
    build="$root/build"
    cmake -S "$root" -B "$build" -G Ninja -DWENDREL_BUILD_MEASURING_TOOLS=ON >/dev/null
    cmake --build "$build" --target measure_pdf_renderers >/dev/null
    binary="$build/bench/pdf-renderers/measure_pdf_renderers"
fi

cores=$(nproc)
# Text pages of a manual, then photo pages.
for set in "R-intro.pdf 1 20" "photo_album_20p.pdf 1 20"; do
    read -r file first last <<<"$set"
    echo "== $file pages $first-$last at 300 DPI"
    for renderer in poppler-cpp poppler-glib vips; do
        for threads in 1 "$cores"; do
            "$binary" "$renderer" "$corpus/pdf/$file" "$first" "$last" 300 "$threads"
        done
    done
done
