# Images: the corpus's 20 photos through six everyday tasks, Wendrel (one job per task, files
# side by side on all cores) against a shell loop over the vips command-line tool and against
# ImageMagick, at the same qualities. Then compression of a 12-megapixel photo to 500 KB and
# the peak memory for 50-megapixel pictures, one and four at a time.

photos="$CORPUS/images/photos"
settings=$(mktemp -d "${TMPDIR:-/tmp}/wendrel-bench-settings-XXXXXX")
export XDG_CONFIG_HOME="$settings"   # Wendrel's own defaults: balanced quality (0.86), metadata kept

image_task() {
    local title=$1 entry=$2 vips_loop=$3 magick=$4
    bench_group "Images: 20 photos, $title"
    bench_case "wendrel run $entry" bash -c '"$WENDREL" run '"$entry"' --to "$OUT" "$0"/*.jpg' "$photos"
    bench_case "vips, file by file" bash -c 'for f in "$0"/*.jpg; do b=$(basename "${f%.jpg}"); '"$vips_loop"'; done' "$photos"
    bench_case "ImageMagick mogrify" bash -c 'mogrify -path "$OUT" '"$magick"' "$0"/*.jpg' "$photos"
    bench_end
}

image_task "to WebP" image.webp 'vips copy "$f" "$OUT/$b.webp[Q=86]"' '-format webp -quality 86'
image_task "to AVIF" image.avif 'vips copy "$f" "$OUT/$b.avif[Q=86]"' '-format avif -quality 86'
# libheif's x265 scale runs high: Wendrel's 0.86 is libheif quality 55, the same fidelity
# as JPEG at 86, so the other tools get 55 too.
image_task "to HEIC" image.heic 'vips copy "$f" "$OUT/$b.heic[Q=55,compression=hevc]"' '-format heic -quality 55'
image_task "to PNG" image.png 'vips copy "$f" "$OUT/$b.png"' '-format png'
image_task "resize 50%" image.half 'vips resize "$f" "$OUT/$b.jpg[Q=90]" 0.5' '-resize 50% -quality 90'
image_task "fit 1920 px" image.fit1920 'vips thumbnail "$f" "$OUT/$b.jpg[Q=90]" 1920 --height 1920 --size down' '-resize "1920x1920>" -quality 90'

# One 12-megapixel photo (4000 x 3000, cut from the corpus's largest picture) to 500 KB.
big=$(mktemp -d "${TMPDIR:-/tmp}/wendrel-bench-big-XXXXXX")
vips crop "$CORPUS/images/large_painting_5640x3172.jpg" "$big/photo12mp.jpg[Q=92]" 820 86 4000 3000 2>/dev/null
mkdir -p "$settings/Wendrel"
printf '[General]\ncompressionSettings="{\\"mode\\":\\"targetSize\\",\\"targetMB\\":0.5,\\"reducePercent\\":50,\\"qualityPercent\\":75,\\"maxDimension\\":0,\\"format\\":\\"jpeg\\"}"\n' \
    > "$settings/Wendrel/Wendrel.conf"
bench_group "Compress a 12-megapixel photo ($(stat -c %s "$big/photo12mp.jpg") bytes) to 500 KB"
bench_case "wendrel run image.compress" bash -c '"$WENDREL" run image.compress --to "$OUT" "$0"' "$big/photo12mp.jpg"
bench_case "ImageMagick jpeg:extent=500KB" bash -c 'convert "$0" -define jpeg:extent=500KB "$OUT/out.jpg"' "$big/photo12mp.jpg"
bench_end
echo "search detail: $("$WENDREL" run -v image.compress --to "$big" "$big/photo12mp.jpg" 2>&1 | grep -E 'compression search' | sed 's/.*compression search: //')"

# Peak memory: one 50-megapixel picture, then four of them in one job.
vips resize "$CORPUS/images/large_painting_5640x3172.jpg" "$big/a50mp.jpg[Q=92]" 1.67 2>/dev/null
for copy in b c d; do cp "$big/a50mp.jpg" "$big/${copy}50mp.jpg"; done
bench_group "Peak memory, 50-megapixel pictures ($(vipsheader "$big/a50mp.jpg" 2>/dev/null | awk '{print $2}')) to WebP"
bench_case "wendrel, one picture" bash -c '"$WENDREL" run image.webp --to "$OUT" "$0/a50mp.jpg"' "$big"
bench_case "wendrel, four pictures" bash -c '"$WENDREL" run image.webp --to "$OUT" "$0"/?50mp.jpg' "$big"
bench_case "wendrel, fit 1920 of four" bash -c '"$WENDREL" run image.fit1920 --to "$OUT" "$0"/?50mp.jpg' "$big"
bench_end

rm -rf "$big" "$settings"
unset XDG_CONFIG_HOME
