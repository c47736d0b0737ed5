# Documents: one long real manual (KiCad's PCB editor guide, hundreds of pages with pictures)
# as DOCX, and as Markdown and RTF made from it once by pandoc, converted to DOCX, HTML, EPUB and
# PDF by Wendrel, pandoc and the word processor's headless converter, one file each, side by side.
# Markdown to HTML also against cmark. Then the whole `wendrel run` command for a small
# Markdown page, which should stay within 50 ms.

docs_work=$(mktemp -d "${TMPDIR:-/tmp}/wendrel-bench-docs-XXXXXX")
docs_profile="file://$docs_work/office-profile"
cp "$CORPUS/docs/kicad_pcbnew.docx" "$docs_work/manual.docx"
pandoc "$docs_work/manual.docx" -t gfm -o "$docs_work/manual.md"
pandoc -s "$docs_work/manual.md" -t rtf -o "$docs_work/manual.rtf"
printf 'sources: %s\n' "$(cd "$docs_work" && stat -c '%n %s bytes' manual.md manual.docx manual.rtf | paste -sd, -)"

bench_group "Markdown → HTML: manual.md"
bench_case "wendrel run doc.html" bash -c '"$WENDREL" run doc.html --to "$OUT" "$0"' "$docs_work/manual.md"
bench_case "cmark" bash -c 'cmark "$0" > "$OUT/manual.html"' "$docs_work/manual.md"
bench_case "pandoc -s" bash -c 'pandoc -s "$0" -o "$OUT/manual.html"' "$docs_work/manual.md"
bench_end

for source in md docx rtf; do
    for target in docx html epub pdf; do
        [[ $source == md && $target == html ]] && continue  # above
        [[ $source == "$target" ]] && continue
        bench_group "$source → $target: manual.$source"
        bench_case "wendrel run doc.$target" bash -c '"$WENDREL" run "doc.$1" --to "$OUT" "$0"' \
            "$docs_work/manual.$source" "$target"
        if [[ $target != pdf ]]; then  # pandoc writes PDF only through LaTeX, which isn't installed
            bench_case "pandoc" bash -c 'pandoc -s "$0" -o "$OUT/manual.$1"' "$docs_work/manual.$source" "$target"
        fi
        if [[ $source != md ]]; then  # the word processor reads Markdown as plain text: not the same work
            bench_case "soffice --convert-to" bash -c \
                'soffice -env:UserInstallation="$2" --headless --convert-to "$1" --outdir "$OUT" "$0"' \
                "$docs_work/manual.$source" "$target" "$docs_profile"
        fi
        bench_end
    done
done

head -c 6000 "$CORPUS/docs/benchmark_user_guide.md" > "$docs_work/page.md"
echo
echo "## the whole command for a small Markdown page"
hyperfine -N -w 3 -r 30 --prepare "rm -f '$docs_work/page.html'" "$WENDREL run doc.html $docs_work/page.md" 2>&1 |
    grep -E 'Time|Range'
rm -rf "$docs_work"
