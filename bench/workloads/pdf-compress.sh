# PDF compression: Wendrel's balanced level (pictures at 150 per inch of their placement, JPEG
# 0.65, text kept) against Ghostscript's pdfwrite at /ebook (150 dpi) and /screen (72 dpi), on
# a picture-heavy document and a long text one. Ghostscript writes a PDF on one thread;
# Wendrel encodes a document's pictures on all cores, so one file per case is the fair unit.
# After the timings, one more run of each: output size against the input's and whether the
# text is still there (pdftotext's word count before and after).

pdf_work=$(mktemp -d "${TMPDIR:-/tmp}/wendrel-bench-pdf-XXXXXX")
pdf_settings=$(mktemp -d "${TMPDIR:-/tmp}/wendrel-bench-settings-XXXXXX")
export XDG_CONFIG_HOME="$pdf_settings"

pdf_pictures="$CORPUS/pdf/photo_album_20p.pdf"
# A picture document of tens of megabytes: the album when it is that large, else one made from
# the corpus photos, a page each.
if (($(stat -c %s "$pdf_pictures") < 10000000)); then
    img2pdf "$CORPUS"/images/photos/*.jpg -o "$pdf_work/photos.pdf"
    pdf_pictures="$pdf_work/photos.pdf"
fi
pdf_text="$CORPUS/pdf/R-fullrefman.pdf"

pdf_words() { pdftotext "$1" - 2>/dev/null | wc -w; }

for pdf_source in "$pdf_pictures" "$pdf_text"; do
    pdf_name=$(basename "$pdf_source")
    pdf_pages=$(pdfinfo "$pdf_source" | awk '/^Pages:/ {print $2}')
    bench_group "PDF compress: $pdf_name ($(stat -c %s "$pdf_source" | awk '{printf "%.1f", $1 / 1e6}') MB, $pdf_pages pages)"
    bench_case "wendrel run pdf.compress (balanced)" \
        bash -c '"$WENDREL" run pdf.compress --mode quality --quality balanced --rasterize no --to "$OUT" "$0"' "$pdf_source"
    bench_case "gs pdfwrite /ebook" \
        bash -c 'gs -q -dNOPAUSE -dBATCH -dSAFER -sDEVICE=pdfwrite -dPDFSETTINGS=/ebook -sOutputFile="$OUT/out.pdf" "$0"' "$pdf_source"
    bench_case "gs pdfwrite /screen" \
        bash -c 'gs -q -dNOPAUSE -dBATCH -dSAFER -sDEVICE=pdfwrite -dPDFSETTINGS=/screen -sOutputFile="$OUT/out.pdf" "$0"' "$pdf_source"
    bench_end

    rm -rf "$pdf_work/out" && mkdir -p "$pdf_work/out"
    "$WENDREL" run pdf.compress --mode quality --quality balanced --rasterize no --to "$pdf_work/out" "$pdf_source" >/dev/null 2>&1
    gs -q -dNOPAUSE -dBATCH -dSAFER -sDEVICE=pdfwrite -dPDFSETTINGS=/ebook -sOutputFile="$pdf_work/out/ebook.pdf" "$pdf_source"
    gs -q -dNOPAUSE -dBATCH -dSAFER -sDEVICE=pdfwrite -dPDFSETTINGS=/screen -sOutputFile="$pdf_work/out/screen.pdf" "$pdf_source"
    echo
    printf '%-34s %14s %10s %10s\n' output bytes "vs input" words
    for made in "input:$pdf_source" "wendrel balanced:$(ls "$pdf_work"/out/*Compressed.pdf)" \
                "gs /ebook:$pdf_work/out/ebook.pdf" "gs /screen:$pdf_work/out/screen.pdf"; do
        awk -v name="${made%%:*}" -v size="$(stat -c %s "${made#*:}")" -v input="$(stat -c %s "$pdf_source")" \
            -v words="$(pdf_words "${made#*:}")" \
            'BEGIN { printf "%-34s %14d %9.3fx %10d\n", name, size, size / input, words }'
    done
done
rm -rf "$pdf_work" "$pdf_settings"
