#include "SheetTestTools.h"

#include "operations/OperationError.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace wendrel::test {

namespace {

const QString pythonXlsxCells = QStringLiteral(R"(
import json, sys, zipfile, xml.etree.ElementTree as ET
m = "{http://schemas.openxmlformats.org/spreadsheetml/2006/main}"
package = zipfile.ZipFile(sys.argv[1])
assert package.testzip() is None
strings_root = ET.fromstring(package.read("xl/sharedStrings.xml"))
strings = ["".join(t.text or "" for t in si.iter(m + "t")) for si in strings_root.findall(m + "si")]
print(json.dumps(["strings", strings_root.get("count"), strings_root.get("uniqueCount"), len(strings)]))
styles = ET.fromstring(package.read("xl/styles.xml"))
formats = {f.get("numFmtId"): f.get("formatCode") for f in styles.iter(m + "numFmt")}
cell_formats = [xf.get("numFmtId") for xf in styles.find(m + "cellXfs")]
for c in ET.fromstring(package.read("xl/worksheets/sheet1.xml")).iter(m + "c"):
    kind, value = c.get("t", "n"), c.find(m + "v").text
    if kind == "s":
        value = strings[int(value)]
    print(json.dumps([c.get("r"), kind, formats.get(cell_formats[int(c.get("s", "0"))], ""), value], ensure_ascii=False))
)");

}  // namespace

QStringList xlsxCellsByPython(const QString& path)
{
    const ToolRun run = runPython(pythonXlsxCells, {path});
    if (run.exitCode != 0)
        return {QStringLiteral("python failed: ") + run.errors};
    return run.output.split(u'\n', Qt::SkipEmptyParts);
}

QStringList rowsAsText(const std::function<void(const std::function<void(const SheetRow&)>&)>& read)
{
    QStringList rows;
    read([&](const SheetRow& row) {
        QStringList cells;
        for (const SheetCell& cell : row)
            cells.append(cellText(cell));
        rows.append(cells.join(u'|'));
    });
    return rows;
}

QString errorMessageOf(const std::function<void()>& action)
{
    try {
        action();
    } catch (const OperationError& error) {
        return error.message();
    }
    return QStringLiteral("(no error)");
}

bool writeZipWithPython(const QString& path, const QList<std::pair<QString, QString>>& parts)
{
    QJsonArray list;
    for (const auto& [name, text] : parts)
        list.append(QJsonArray{name, text});
    const QString script = QStringLiteral(R"(
import json, re, sys, zipfile
with zipfile.ZipFile(sys.argv[1], "w", zipfile.ZIP_DEFLATED) as package:
    for name, text in json.loads(sys.argv[2]):
        zeros = re.fullmatch(r"<zeros:(\d+)>", text)
        if not zeros:
            package.writestr(name, text.encode("utf-8"))
            continue
        with package.open(name, "w", force_zip64=True) as part:
            left = int(zeros.group(1))
            block = bytes(1 << 20)
            while left > 0:
                part.write(block[:min(left, len(block))])
                left -= len(block)
)");
    const ToolRun run = runPython(script, {path, QString::fromUtf8(QJsonDocument(list).toJson(QJsonDocument::Compact))});
    return run.exitCode == 0;
}

}  // namespace wendrel::test
