# PDF page tools: a manual of 100+ pages split into one PDF per page, by Wendrel and by
# qpdf --split-pages (one core); every page of it turned right, by Wendrel and qpdf --rotate;
# the big reference manual locked with a password (AES-256), by Wendrel, qpdf --encrypt and
# mutool clean. The locked files' sizes are listed against the original's after the table.

pages_source="$CORPUS/pdf/R-intro.pdf"
pages_big="$CORPUS/pdf/R-fullrefman.pdf"
pages_count=$(qpdf --show-npages "$pages_source")
pages_big_count=$(qpdf --show-npages "$pages_big")
pages_work=$(mktemp -d "${TMPDIR:-/tmp}/wendrel-bench-pdf-XXXXXX")

bench_group "PDF: split $(basename "$pages_source") ($pages_count pages) into one file per page"
bench_case "wendrel run pdf.split" bash -c '"$WENDREL" run pdf.split --to "$OUT" "$0"' "$pages_source"
bench_case "qpdf --split-pages" bash -c 'qpdf --split-pages "$0" "$OUT/page-%d.pdf"' "$pages_source"
bench_end

bench_group "PDF: turn every page of $(basename "$pages_big") ($pages_big_count pages) right"
bench_case "wendrel run pdf.rotate" bash -c '"$WENDREL" run pdf.rotate --to "$OUT" "$0"' "$pages_big"
bench_case "qpdf --rotate=+90" bash -c 'qpdf --rotate=+90 "$0" "$OUT/rotated.pdf"' "$pages_big"
bench_end

bench_group "PDF: lock $(basename "$pages_big") ($pages_big_count pages) with a password, AES-256"
bench_case "wendrel run pdf.password" bash -c '"$WENDREL" run pdf.password --password pw --to "$OUT" "$0"' "$pages_big"
bench_case "qpdf --encrypt pw pw 256" bash -c 'qpdf --encrypt pw pw 256 -- "$0" "$OUT/locked.pdf"' "$pages_big"
bench_case "mutool clean -E aes-256" bash -c 'mutool clean -E aes-256 -U pw -O pw "$0" "$OUT/locked.pdf"' "$pages_big"
bench_end

"$WENDREL" run pdf.password --password pw --to "$pages_work" "$pages_big" >/dev/null
qpdf --encrypt pw pw 256 -- "$pages_big" "$pages_work/qpdf.pdf"
mutool clean -E aes-256 -U pw -O pw "$pages_big" "$pages_work/mutool.pdf"
echo
printf '%-34s %14s %12s\n' "locked file" bytes "vs original"
for made in "original:$pages_big" "wendrel:$(ls "$pages_work"/*Protected.pdf)" "qpdf --encrypt:$pages_work/qpdf.pdf" \
    "mutool clean:$pages_work/mutool.pdf"; do
    awk -v name="${made%%:*}" -v size="$(stat -c %s "${made#*:}")" -v reference="$(stat -c %s "$pages_big")" \
        'BEGIN { printf "%-34s %14d %11.3fx\n", name, size, size / reference }'
done
rm -rf "$pages_work"
