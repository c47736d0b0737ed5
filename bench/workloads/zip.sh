# ZIP: the whole corpus folder (photos, audio, a video, PDFs, documents and many small files)
# packed by Wendrel, Info-ZIP at its default level and 7-Zip with one thread per core (-mmt,
# the strongest anchor: Info-ZIP has no threads); then one archive of it unpacked by Wendrel,
# Info-ZIP and 7-Zip. Archive sizes are listed after the packing table.

zip_work=$(mktemp -d "${TMPDIR:-/tmp}/wendrel-bench-zip-XXXXXX")
zip_parent=$(dirname "$CORPUS") zip_name=$(basename "$CORPUS")
zip_files=$(find "$CORPUS" -type f | wc -l)
zip_megabytes=$(du -sb "$CORPUS" | awk '{printf "%.0f", $1 / 1e6}')

bench_group "ZIP: pack the corpus ($zip_megabytes MB, $zip_files files)"
bench_case "wendrel run archive.zip" bash -c '"$WENDREL" run archive.zip --to "$OUT" "$0/"' "$CORPUS"
bench_case "zip -r (default level)" bash -c 'cd "$0" && zip -qr "$OUT/corpus.zip" "$1"' "$zip_parent" "$zip_name"
bench_case "7z a -tzip -mmt=$(nproc)" bash -c 'cd "$0" && 7z a -tzip -mmt="$2" -bd "$OUT/corpus.zip" "$1" >/dev/null' "$zip_parent" "$zip_name" "$(nproc)"
bench_end

# One more run of each, to compare what they wrote.
"$WENDREL" run archive.zip --to "$zip_work/wendrel" "$CORPUS/" >/dev/null
(cd "$zip_parent" && zip -qr "$zip_work/zip.zip" "$zip_name")
(cd "$zip_parent" && 7z a -tzip -mmt="$(nproc)" -bd "$zip_work/7z.zip" "$zip_name" >/dev/null)
echo
printf '%-34s %14s %10s\n' archive bytes "vs zip -r"
for made in "wendrel:$zip_work/wendrel/$zip_name.zip" "zip -r:$zip_work/zip.zip" "7z a -tzip:$zip_work/7z.zip"; do
    awk -v name="${made%%:*}" -v size="$(stat -c %s "${made#*:}")" -v reference="$(stat -c %s "$zip_work/zip.zip")" \
        'BEGIN { printf "%-34s %14d %9.3fx\n", name, size, size / reference }'
done

# The archive most people are sent: Info-ZIP's.
bench_group "ZIP: unpack the corpus archive made by zip -r"
bench_case "wendrel run archive.unzip" bash -c '"$WENDREL" run archive.unzip --to "$OUT" "$0"' "$zip_work/zip.zip"
bench_case "unzip" bash -c 'unzip -q "$0" -d "$OUT"' "$zip_work/zip.zip"
bench_case "7z x -mmt=$(nproc)" bash -c '7z x -mmt="$1" -bd -o"$OUT" "$0" >/dev/null' "$zip_work/zip.zip" "$(nproc)"
bench_end
rm -rf "$zip_work"
