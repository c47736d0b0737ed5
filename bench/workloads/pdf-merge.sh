# PDF merge: the corpus's long manual (thousands of pages, with bookmarks, links and named
# destinations) and the photo album, merged by Wendrel, qpdf and MuPDF's mutool. After the
# table, what each output kept: pages, bookmarks, link annotations and named destinations
# (counted by one small Python check over qpdf's JSON, the same for every output).

merge_manual="$CORPUS/pdf/R-fullrefman.pdf" merge_album="$CORPUS/pdf/photo_album_20p.pdf"
merge_work=$(mktemp -d "${TMPDIR:-/tmp}/wendrel-bench-merge-XXXXXX")

bench_group "PDF merge: $(basename "$merge_manual") + $(basename "$merge_album")"
bench_case "wendrel run pdf.merge" bash -c '"$WENDREL" run pdf.merge --to "$OUT" "$0" "$1"' "$merge_manual" "$merge_album"
bench_case "qpdf --empty --pages" bash -c 'qpdf --empty --pages "$0" "$1" -- "$OUT/out.pdf"' "$merge_manual" "$merge_album"
bench_case "mutool merge" bash -c 'mutool merge -o "$OUT/out.pdf" "$0" "$1"' "$merge_manual" "$merge_album"
bench_end

# One more run of each, to see what they kept.
"$WENDREL" run pdf.merge --to "$merge_work/wendrel" "$merge_manual" "$merge_album" >/dev/null
qpdf --empty --pages "$merge_manual" "$merge_album" -- "$merge_work/qpdf.pdf"
mutool merge -o "$merge_work/mutool.pdf" "$merge_manual" "$merge_album"

merge_kept() {
    qpdf --json --json-key=pages --json-key=outlines --json-key=qpdf "$1" | python3 -c '
import json, sys
document = json.load(sys.stdin)
def count(items):
    return sum(1 + count(item["kids"]) for item in items)
objects = document["qpdf"][1]
root = next(v["value"] for v in objects.values() if isinstance(v.get("value"), dict) and v["value"].get("/Type") == "/Catalog")
def resolve(value):
    return objects.get("obj:" + value, {}).get("value") if isinstance(value, str) and value.endswith(" R") else value
def tree_names(node):
    node = resolve(node)
    if not isinstance(node, dict):
        return 0
    return len(node.get("/Names", [])) // 2 + sum(tree_names(kid) for kid in resolve(node.get("/Kids", [])) or [])
links = sum(1 for v in objects.values() if isinstance(v.get("value"), dict) and v["value"].get("/Subtype") == "/Link")
names = resolve(root.get("/Names")) or {}
dests = resolve(root.get("/Dests")) or {}
print(len(document["pages"]), count(document["outlines"]), links, tree_names(names.get("/Dests")) + len(dests))
'
}
echo
printf '%-24s %8s %10s %8s %12s %12s\n' output pages bookmarks links "named dests" MB
for made in "wendrel:$merge_work/wendrel/$(basename "${merge_manual%.pdf}") Merged.pdf" "qpdf:$merge_work/qpdf.pdf" \
            "mutool:$merge_work/mutool.pdf" "the manual alone:$merge_manual"; do
    read -r pages bookmarks links names < <(merge_kept "${made#*:}")
    awk -v name="${made%%:*}" -v p="$pages" -v b="$bookmarks" -v l="$links" -v n="$names" -v size="$(stat -c %s "${made#*:}")" \
        'BEGIN { printf "%-24s %8d %10d %8d %12d %12.2f\n", name, p, b, l, n, size / 1e6 }'
done
rm -rf "$merge_work"
