#!/usr/bin/env bash
# Measures Auto Enhance on the corpus photos and on pictures derived from them for the cases a
# one-click enhance gets wrong most easily: a night scene, a high-key picture, a stormy sky, a
# colour cast. Prints a Markdown table (see measure_enhance.cpp for the columns).
#
# Usage: bench/enhance/measure.sh [--corpus DIR] [--save DIR]
#   --corpus: where the corpus lives (bench/make_corpus.sh builds it); default ./bench-corpus
#   --save:   also write the originals and the results there, for before/after strips
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
root=$(dirname "$(dirname "$here")")

corpus="$root/bench-corpus"
save=
while (($#)); do
    case $1 in
        --corpus) corpus=$(realpath -m "$2"); shift 2 ;;
        --save) save=$(realpath -m "$2"); shift 2 ;;
        -h|--help) sed -n '2,9p' "$0"; exit 0 ;;
        *) echo "unknown argument: $1" >&2; exit 2 ;;
    esac
done
photos="$corpus/images/photos"
compgen -G "$photos/*.jpg" >/dev/null || { echo "no photos in $photos: run bench/make_corpus.sh" >&2; exit 1; }

build="$root/build"
cmake -S "$root" -B "$build" -G Ninja -DWENDREL_BUILD_MEASURING_TOOLS=ON >/dev/null
cmake --build "$build" --target measure_enhance >/dev/null

derived=$(mktemp -d)
trap 'rm -rf "$derived"' EXIT
# Night: the forest path with its tones pushed down (out = in^1.8), most of it near black.
vips gamma "$photos/plasma_Path.jpg" "$derived/derived_night_Path.png" --exponent 0.55
# High key: the misty jetty lifted (out = in^0.55) into a pale, bright picture.
vips gamma "$photos/plasma_ColdRipple.jpg" "$derived/derived_highkey_ColdRipple.png" --exponent 1.8
# Stormy sky: the kite's blue sky darkened and drained to a dull, slaty blue.
vips colourspace "$photos/plasma_Kite.jpg" "$derived/lch.v" lch
vips linear "$derived/lch.v" "$derived/stormy.v" "0.7 0.45 1" "0 0 0"
vips colourspace "$derived/stormy.v" "$derived/derived_stormy_Kite.png" srgb
# A real cast: the forest path as a badly balanced camera would see it, everything bluish.
vips linear "$photos/plasma_Path.jpg" "$derived/derived_bluecast_Path.png" "0.85 0.95 1.05" "0 6 24" --uchar
rm "$derived"/*.v

if [[ -n $save ]]; then
    mkdir -p "$save/original" "$save/enhanced"
    cp "$photos"/*.jpg "$derived"/*.png "$save/original/"
    "$build/bench/enhance/measure_enhance" --save "$save/enhanced" "$photos"/*.jpg "$derived"/*.png
else
    "$build/bench/enhance/measure_enhance" "$photos"/*.jpg "$derived"/*.png
fi
