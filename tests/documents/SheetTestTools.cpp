#include "SheetTestTools.h"

#include "operations/OperationError.h"

#include <QProcess>
#include <QStandardPaths>

namespace wendrel::test {

bool hasPython() { return !QStandardPaths::findExecutable(QStringLiteral("python3")).isEmpty(); }

ToolRun runPython(const QString& script, const QStringList& arguments)
{
    QProcess python;
    python.start(QStringLiteral("python3"), QStringList{QStringLiteral("-c"), script} + arguments);
    if (!python.waitForFinished(120'000)) {
        python.kill();
        python.waitForFinished();
        return {};
    }
    return {python.exitCode(), QString::fromUtf8(python.readAllStandardOutput()),
            QString::fromUtf8(python.readAllStandardError())};
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

}  // namespace wendrel::test

#include <QJsonArray>
#include <QJsonDocument>

namespace wendrel::test {

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
