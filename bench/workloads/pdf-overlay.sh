# PDF overlays: page numbers and a watermark stamped over every page of the corpus's longest
# manual, against qpdf overlaying a one-page stamp on every page (--repeat=1), the same work
# of placing a form over each page with the content left as it is. One file, one process each.
# The bytes each adds to the file are listed after the table.

overlay_work=$(mktemp -d "${TMPDIR:-/tmp}/wendrel-bench-overlay-XXXXXX")
overlay_source="$CORPUS/pdf/R-fullrefman.pdf"
overlay_pages=$(qpdf --show-npages "$overlay_source")

# The anchor's stamp: one Letter page with a line of text in a standard font, its cross-reference
# table written by qpdf.
printf '%s\n' '%PDF-1.4' \
    '1 0 obj << /Type /Catalog /Pages 2 0 R >> endobj' \
    '2 0 obj << /Type /Pages /Kids [3 0 R] /Count 1 >> endobj' \
    '3 0 obj << /Type /Page /Parent 2 0 R /MediaBox [0 0 612 792] /Contents 4 0 R /Resources << /Font << /F1 5 0 R >> >> >> endobj' \
    '4 0 obj << /Length 60 >> stream' \
    'BT /F1 72 Tf 0.8 0 0 rg 90 300 Td (CONFIDENTIAL) Tj ET' \
    'endstream endobj' \
    '5 0 obj << /Type /Font /Subtype /Type1 /BaseFont /Helvetica-Bold >> endobj' \
    'trailer << /Size 6 /Root 1 0 R >>' '%%EOF' >"$overlay_work/stamp-raw.pdf"
qpdf "$overlay_work/stamp-raw.pdf" "$overlay_work/stamp.pdf" 2>/dev/null || [[ $? -eq 3 ]]

bench_group "PDF overlays: every page of R-fullrefman.pdf ($overlay_pages pages)"
bench_case "qpdf --overlay stamp.pdf --repeat=1" \
    bash -c 'qpdf "$0" --overlay "$1" --repeat=1 -- "$OUT/stamped.pdf"' "$overlay_source" "$overlay_work/stamp.pdf"
bench_case "wendrel run pdf.number" bash -c '"$WENDREL" run pdf.number --to "$OUT" "$0"' "$overlay_source"
bench_case "wendrel run pdf.watermark" \
    bash -c '"$WENDREL" run pdf.watermark --text CONFIDENTIAL --to "$OUT" "$0"' "$overlay_source"
bench_end

# One more run of each, to compare what they added to the file.
qpdf "$overlay_source" --overlay "$overlay_work/stamp.pdf" --repeat=1 -- "$overlay_work/qpdf.pdf"
mkdir "$overlay_work/number" "$overlay_work/watermark"
"$WENDREL" run pdf.number --to "$overlay_work/number" "$overlay_source" >/dev/null
"$WENDREL" run pdf.watermark --text CONFIDENTIAL --to "$overlay_work/watermark" "$overlay_source" >/dev/null
echo
printf '%-34s %14s %14s\n' result "bytes added" "per page"
source_size=$(stat -c %s "$overlay_source")
overlay_number=("$overlay_work/number/"*.pdf) overlay_watermark=("$overlay_work/watermark/"*.pdf)
for made in "qpdf --overlay:$overlay_work/qpdf.pdf" "pdf.number:${overlay_number[0]}" \
            "pdf.watermark:${overlay_watermark[0]}"; do
    awk -v name="${made%%:*}" -v size="$(stat -c %s "${made#*:}")" -v source="$source_size" -v pages="$overlay_pages" \
        'BEGIN { printf "%-34s %14d %14.0f\n", name, size - source, (size - source) / pages }'
done
rm -rf "$overlay_work"
