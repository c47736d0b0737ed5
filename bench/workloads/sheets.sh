# Spreadsheets: a CSV of a million cells (100,000 rows × 10 columns of text, quoted text with
# commas and line breaks, integers, decimals, dates, date-times, booleans and leading-zero
# codes) to XLSX and that workbook back to CSV. Wendrel against LibreOffice's spreadsheet
# converting headless (when installed) and Python's csv module with a plain streaming XLSX
# writer and reader of its own (inline strings, no shared-string table: the least work a
# typed workbook takes).

sheets=$(mktemp -d "${TMPDIR:-/tmp}/wendrel-bench-sheets-XXXXXX")
python3 - "$sheets/table.csv" <<'PY'
import csv, datetime, random, sys
random.seed(7)
words = "alder birch cedar dogwood elm fir ginkgo hazel ilex juniper larch maple oak pine rowan".split()
day = datetime.date(2020, 1, 1)
with open(sys.argv[1], "w", newline="", encoding="utf-8") as out:
    rows = csv.writer(out)
    rows.writerow(["id", "name", "note", "count", "price", "day", "moment", "paid", "code", "city"])
    for i in range(1, 100_000):
        note = " ".join(random.choices(words, k=random.randint(1, 6)))
        if i % 50 == 0:
            note += ', "quoted"\nsecond line'
        rows.writerow([i, random.choice(words).title(), note, random.randint(-5000, 5000),
                       "%.2f" % random.uniform(0, 10000), (day + datetime.timedelta(days=i % 1500)).isoformat(),
                       "%sT%02d:%02d" % ((day + datetime.timedelta(days=i % 900)).isoformat(), i % 24, i % 60),
                       random.choice(["TRUE", "FALSE"]), "%06d" % random.randint(0, 999999),
                       random.choice(["Zürich", "São Paulo", "Kraków", "Oslo", "Lyon"])])
PY

# The Python anchors: csv in, a one-sheet workbook out with ZIP deflate; and iterparse back.
cat > "$sheets/to_xlsx.py" <<'PY'
import csv, os, re, sys, zipfile
from xml.sax.saxutils import escape
number = re.compile(r"-?(0|[1-9]\d*)(\.\d+)?([eE][-+]?\d+)?$")
def column(i):
    name = ""
    i += 1
    while i:
        i, r = divmod(i - 1, 26)
        name = chr(65 + r) + name
    return name
source, target = sys.argv[1], sys.argv[2]
main = "http://schemas.openxmlformats.org/spreadsheetml/2006/main"
rel = "http://schemas.openxmlformats.org/officeDocument/2006/relationships"
with zipfile.ZipFile(target, "w", zipfile.ZIP_DEFLATED) as z:
    z.writestr("[Content_Types].xml", '<Types xmlns="http://schemas.openxmlformats.org/package/2006/content-types">'
               '<Default Extension="rels" ContentType="application/vnd.openxmlformats-package.relationships+xml"/>'
               '<Default Extension="xml" ContentType="application/xml"/>'
               '<Override PartName="/xl/workbook.xml" ContentType="application/vnd.openxmlformats-officedocument.spreadsheetml.sheet.main+xml"/>'
               '<Override PartName="/xl/worksheets/sheet1.xml" ContentType="application/vnd.openxmlformats-officedocument.spreadsheetml.worksheet+xml"/></Types>')
    z.writestr("_rels/.rels", '<Relationships xmlns="http://schemas.openxmlformats.org/package/2006/relationships">'
               '<Relationship Id="r1" Type="%s/officeDocument" Target="xl/workbook.xml"/></Relationships>' % rel)
    z.writestr("xl/workbook.xml", '<workbook xmlns="%s" xmlns:r="%s"><sheets><sheet name="Sheet1" sheetId="1" r:id="r1"/>'
               '</sheets></workbook>' % (main, rel))
    z.writestr("xl/_rels/workbook.xml.rels", '<Relationships xmlns="http://schemas.openxmlformats.org/package/2006/relationships">'
               '<Relationship Id="r1" Type="%s/worksheet" Target="worksheets/sheet1.xml"/></Relationships>' % rel)
    with z.open("xl/worksheets/sheet1.xml", "w") as sheet, open(source, newline="", encoding="utf-8-sig") as f:
        sheet.write(('<worksheet xmlns="%s"><sheetData>' % main).encode())
        for r, row in enumerate(csv.reader(f), 1):
            cells = []
            for c, value in enumerate(row):
                ref = "%s%d" % (column(c), r)
                if number.match(value):
                    cells.append('<c r="%s"><v>%s</v></c>' % (ref, value))
                elif value:
                    cells.append('<c r="%s" t="inlineStr"><is><t xml:space="preserve">%s</t></is></c>' % (ref, escape(value)))
            sheet.write(('<row r="%d">%s</row>' % (r, "".join(cells))).encode())
        sheet.write(b"</sheetData></worksheet>")
PY
cat > "$sheets/to_csv.py" <<'PY'
import csv, sys, zipfile, xml.etree.ElementTree as ET
m = "{http://schemas.openxmlformats.org/spreadsheetml/2006/main}"
source, target = sys.argv[1], sys.argv[2]
with zipfile.ZipFile(source) as z:
    strings = []
    if "xl/sharedStrings.xml" in z.namelist():
        with z.open("xl/sharedStrings.xml") as part:
            for _, e in ET.iterparse(part):
                if e.tag == m + "si":
                    strings.append("".join(t.text or "" for t in e.iter(m + "t")))
                    e.clear()
    with z.open("xl/worksheets/sheet1.xml") as part, open(target, "w", newline="", encoding="utf-8") as out:
        rows = csv.writer(out)
        for _, e in ET.iterparse(part):
            if e.tag != m + "row":
                continue
            values = []
            for c in e.iter(m + "c"):
                kind, v = c.get("t"), c.find(m + "v")
                if kind == "s":
                    values.append(strings[int(v.text)])
                elif kind == "inlineStr":
                    values.append("".join(t.text or "" for t in c.iter(m + "t")))
                else:
                    values.append(v.text if v is not None else "")
            rows.writerow(values)
            e.clear()
PY

table="$sheets/table.csv"
"$WENDREL" run sheet.xlsx --to "$sheets" "$table" >/dev/null
workbook="$sheets/table.xlsx"
have_calc=
if command -v soffice >/dev/null && soffice --headless -env:UserInstallation="file://$sheets/profile" \
        --convert-to xlsx --outdir "$sheets/probe" "$table" >/dev/null 2>&1 && [[ -f "$sheets/probe/table.xlsx" ]]; then
    have_calc=1
fi

bench_group "Sheets: CSV of 1,000,000 cells ($(du -m "$table" | cut -f1) MB) to XLSX"
bench_case "wendrel run sheet.xlsx" bash -c '"$WENDREL" run sheet.xlsx --to "$OUT" "$0"' "$table"
bench_case "python3 csv + streaming writer" bash -c 'python3 "$1/to_xlsx.py" "$0" "$OUT/table.xlsx"' "$table" "$sheets"
[[ -n $have_calc ]] && bench_case "libreoffice --convert-to xlsx" bash -c \
    'soffice --headless -env:UserInstallation="file://$1/profile" --convert-to xlsx --outdir "$OUT" "$0" >/dev/null' "$table" "$sheets"
bench_end

bench_group "Sheets: that workbook ($(du -m "$workbook" | cut -f1) MB) back to CSV"
bench_case "wendrel run sheet.csv" bash -c '"$WENDREL" run sheet.csv --to "$OUT" "$0"' "$workbook"
bench_case "python3 iterparse + csv" bash -c 'python3 "$1/to_csv.py" "$0" "$OUT/table.csv"' "$workbook" "$sheets"
[[ -n $have_calc ]] && bench_case "libreoffice --convert-to csv" bash -c \
    'soffice --headless -env:UserInstallation="file://$1/profile" --convert-to csv --outdir "$OUT" "$0" >/dev/null' "$workbook" "$sheets"
bench_end
[[ -n $have_calc ]] || echo "(libreoffice-calc-nogui isn't installed: no LibreOffice rows)"
rm -rf "$sheets"
