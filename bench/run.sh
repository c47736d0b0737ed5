#!/usr/bin/env bash
# Times Wendrel against the command-line tools people would otherwise use, side by side in one
# run on the same files, and prints the ratios.
#
# Usage: bench/run.sh [--corpus DIR] [--runs N] [WORKLOAD...]
#   WORKLOAD: a file name in bench/workloads/ without .sh (default: all of them)
#   --corpus: where the corpus lives; built with bench/make_corpus.sh when missing
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
root=$(dirname "$here")

corpus="$root/bench-corpus"
workloads=()
while (($#)); do
    case $1 in
        --corpus) corpus=$(realpath -m "$2"); shift 2 ;;
        --runs) export BENCH_RUNS=$2; shift 2 ;;
        -h|--help) sed -n '2,8p' "$0"; exit 0 ;;
        *) workloads+=("$1"); shift ;;
    esac
done
((${#workloads[@]})) || workloads=($(ls "$here/workloads" | sed 's/\.sh$//'))

"$root/scripts/bootstrap.sh"
# The tools the benchmarks compare against, from Debian's packages; the tests don't need them.
anchors=(webp libavif-bin libheif-examples jpegoptim p7zip-full hyperfine ghostscript img2pdf mupdf-tools cmark
         libreoffice-calc-nogui  # the spreadsheet converter the sheets workload compares against
         sox bc)  # peak normalisation the media workload compares against; bc for its gains
missing=(); for package in "${anchors[@]}"; do dpkg -s "$package" >/dev/null 2>&1 || missing+=("$package"); done
if ((${#missing[@]})); then
    as_root=(); [[ $(id -u) -eq 0 ]] || as_root=(sudo)
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends "${missing[@]}"
fi
"$root/scripts/build.sh" >/dev/null
[[ -d "$corpus" ]] || "$here/make_corpus.sh" "$corpus"

export WENDREL="$root/build/app/wendrel" CORPUS="$corpus"
source "$here/lib.sh"

echo "# Wendrel benchmarks, $(date -u '+%Y-%m-%d %H:%M UTC'), $(nproc) cores, $(git -C "$root" rev-parse --short HEAD 2>/dev/null || echo unversioned)"
for workload in "${workloads[@]}"; do
    source "$here/workloads/$workload.sh"
done
