# PDF pages as pictures at 300 DPI: a text manual's first 30 pages and a 20-page photo album,
# Wendrel (one job, pages drawn on all cores) against poppler's pdftoppm and MuPDF's mutool
# draw, each given the pages split into $(nproc) ranges run side by side (xargs -P).
# JPEG at quality 92 everywhere; mutool 1.21 writes no JPEG, so it takes part in PNG only.
# The "output MB" column shows what each PNG writer's compression trades for its speed.

jobs=$(nproc)
pdfs=$(mktemp -d "${TMPDIR:-/tmp}/wendrel-bench-pdf-XXXXXX")
qpdf "$CORPUS/pdf/R-intro.pdf" --pages . 1-30 -- "$pdfs/manual30.pdf"
cp "$CORPUS/pdf/photo_album_20p.pdf" "$pdfs/album20.pdf"

# "FIRST LAST" lines splitting pages 1..$1 into $jobs contiguous ranges.
page_ranges() {
    awk -v n="$1" -v j="$jobs" 'BEGIN { per = int((n + j - 1) / j); for (f = 1; f <= n; f += per) print f, (f + per - 1 < n ? f + per - 1 : n) }'
}

for document in manual30 album20; do
    pdf="$pdfs/$document.pdf"
    pages=$(pdfinfo "$pdf" | awk '/^Pages:/ {print $2}')
    ranges=$(page_ranges "$pages")

    bench_group "PDF to PNG, 300 DPI: $document ($pages pages)"
    bench_case "wendrel run pdf.png" bash -c '"$WENDREL" run pdf.png --to "$OUT" "$0"' "$pdf"
    bench_case "pdftoppm -png, xargs -P$jobs" bash -c 'xargs -P"$2" -L1 bash -c "pdftoppm -r 300 -png -f \$0 -l \$1 \"$1\" \"\$OUT/p\"" <<<"$0"' \
        "$ranges" "$pdf" "$jobs"
    bench_case "mutool draw, xargs -P$jobs" bash -c 'xargs -P"$2" -L1 bash -c "mutool draw -q -r 300 -o \"\$OUT/p%d.png\" \"$1\" \$0-\$1" <<<"$0"' \
        "$ranges" "$pdf" "$jobs"
    bench_end

    bench_group "PDF to JPG, 300 DPI, quality 92: $document ($pages pages)"
    bench_case "wendrel run pdf.jpg" bash -c '"$WENDREL" run pdf.jpg --to "$OUT" "$0"' "$pdf"
    bench_case "pdftoppm -jpeg, xargs -P$jobs" \
        bash -c 'xargs -P"$2" -L1 bash -c "pdftoppm -r 300 -jpeg -jpegopt quality=92 -f \$0 -l \$1 \"$1\" \"\$OUT/p\"" <<<"$0"' \
        "$ranges" "$pdf" "$jobs"
    bench_end
done

rm -rf "$pdfs"
