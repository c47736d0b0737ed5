# Images: the corpus's 20 photos through six everyday tasks, Wendrel (one job per task, files
# side by side on all cores) against the fastest tools for each task run with the same
# parallelism: one process per file, $(nproc) at a time (xargs -P). Then one large photo on its
# own, where only an encoder's own threads can help, its compression to 500 KB against a
# resize-then-jpegoptim pipeline, and the peak memory for 50-megapixel pictures.
# Every case writes at the same quality; the "output MB" column shows the work was alike.

photos="$CORPUS/images/photos"
jobs=$(nproc)
settings=$(mktemp -d "${TMPDIR:-/tmp}/wendrel-bench-settings-XXXXXX")
export XDG_CONFIG_HOME="$settings"   # Wendrel's own defaults: balanced quality (0.86), metadata kept

image_task() {
    local title=$1 entry=$2; shift 2
    bench_group "Images: 20 photos, $title"
    bench_case "wendrel run $entry" bash -c '"$WENDREL" run '"$entry"' --to "$OUT" "$0"/*.jpg' "$photos"
    while (($#)); do
        # In the command, $f is the photo and $b its base name.
        bench_case "$1, xargs -P$jobs" \
            bash -c 'find "$0" -maxdepth 1 -name "*.jpg" -print0 | xargs -0 -P"$1" -n1 bash -c "$2" photo' \
            "$photos" "$jobs" 'f=$1; b=$(basename "${f%.jpg}"); '"$2"
        shift 2
    done
    bench_end
}

# Quality 0.86 in each tool's own terms: libwebp and vips take 86; libaom's constant-quality
# level 9 is what libheif makes of 86; x265 through libheif gets 55, which Wendrel uses for
# HEIC to match JPEG's fidelity at 86. Chroma at 4:2:0 everywhere, as Wendrel writes it.
image_task "to WebP" image.webp \
    "cwebp -mt" 'cwebp -quiet -mt -q 86 "$f" -o "$OUT/$b.webp"' \
    "vips" 'vips copy "$f" "$OUT/$b.webp[Q=86]"'
image_task "to AVIF" image.avif \
    "avifenc" 'avifenc -j 1 -s 6 -y 420 --min 0 --max 63 -a end-usage=q -a cq-level=9 "$f" "$OUT/$b.avif" >/dev/null' \
    "vips" 'vips copy "$f" "$OUT/$b.avif[Q=86,effort=3]"'
image_task "to HEIC" image.heic \
    "heif-enc" 'heif-enc -q 55 -o "$OUT/$b.heic" "$f" >/dev/null' \
    "vips" 'vips copy "$f" "$OUT/$b.heic[Q=55,compression=hevc]"'
image_task "to PNG" image.png \
    "vips" 'vips copy "$f" "$OUT/$b.png"'
# Resizing writes at quality 0.9 (JPEG 90), a step above the conversions: it keeps the format.
image_task "resize 50%" image.half \
    "vips resize" 'vips resize "$f" "$OUT/$b.jpg[Q=90]" 0.5'
image_task "fit 1920 px" image.fit1920 \
    "vipsthumbnail" 'vipsthumbnail "$f" --size 1920x1920 -o "$OUT/$b.jpg[Q=90]"'

# One 17.9-megapixel photo on its own: no other files to run beside it.
large="$CORPUS/images/large_painting_5640x3172.jpg"
bench_group "One 17.9-megapixel JPEG to WebP"
bench_case "wendrel run image.webp" bash -c '"$WENDREL" run image.webp --to "$OUT" "$0"' "$large"
bench_case "cwebp -mt" bash -c 'cwebp -quiet -mt -q 86 "$0" -o "$OUT/out.webp"' "$large"
bench_case "cwebp" bash -c 'cwebp -quiet -q 86 "$0" -o "$OUT/out.webp"' "$large"
bench_case "vips copy" bash -c 'vips copy "$0" "$OUT/out.webp[Q=86]"' "$large"
bench_end

# The same photo to 500 KB. The pipeline is what a user would script: shrink to the size
# Wendrel's search settles on (measured first, so both do equal work), then jpegoptim's own
# size search.
mkdir -p "$settings/Wendrel"
printf '[General]\ncompressionSettings="{\\"mode\\":\\"targetSize\\",\\"targetMB\\":0.5,\\"reducePercent\\":50,\\"qualityPercent\\":75,\\"maxDimension\\":0,\\"format\\":\\"jpeg\\"}"\n' \
    > "$settings/Wendrel/Wendrel.conf"
probe=$(mktemp -d "${TMPDIR:-/tmp}/wendrel-bench-probe-XXXXXX")
search=$("$WENDREL" run -v image.compress --to "$probe" "$large" 2>&1 | grep -E 'compression search' | sed 's/.*compression search: //')
compressed_width=$(vipsheader -f width "$probe"/*.jpg)
scale=$(awk -v w="$compressed_width" 'BEGIN { printf "%.6f", w / 5640 }')
bench_group "Compress the 17.9-megapixel photo to 500 KB (Wendrel: $search)"
bench_case "wendrel run image.compress" bash -c '"$WENDREL" run image.compress --to "$OUT" "$0"' "$large"
bench_case "vips resize + jpegoptim --size" \
    bash -c 'vips resize "$0" "$OUT/out.jpg[Q=95,strip]" "$1" && jpegoptim -q --size=488 "$OUT/out.jpg"' "$large" "$scale"
bench_end
rm -rf "$probe"

# Peak memory: one 50-megapixel picture, then four of them in one job.
big=$(mktemp -d "${TMPDIR:-/tmp}/wendrel-bench-big-XXXXXX")
vips resize "$large" "$big/a50mp.jpg[Q=92]" 1.67 2>/dev/null
for copy in b c d; do cp "$big/a50mp.jpg" "$big/${copy}50mp.jpg"; done
bench_group "Peak memory, 50-megapixel pictures ($(vipsheader "$big/a50mp.jpg" 2>/dev/null | awk '{print $2}')) to WebP"
bench_case "wendrel, one picture" bash -c '"$WENDREL" run image.webp --to "$OUT" "$0/a50mp.jpg"' "$big"
bench_case "wendrel, four pictures" bash -c '"$WENDREL" run image.webp --to "$OUT" "$0"/?50mp.jpg' "$big"
bench_case "wendrel, fit 1920 of four" bash -c '"$WENDREL" run image.fit1920 --to "$OUT" "$0"/?50mp.jpg' "$big"
bench_end

rm -rf "$big" "$settings"
unset XDG_CONFIG_HOME
