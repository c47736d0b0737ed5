#include "OpsCommand.h"

#include "CommandLine.h"
#include "ConsoleOutput.h"
#include "operations/OperationCatalog.h"

#include <QCoreApplication>
#include <QJsonArray>

#include <algorithm>

namespace wendrel {

int runOpsCommand(const OperationCatalog& catalog, const QStringList& files, bool json)
{
    QJsonObject report{{QStringLiteral("files"), QJsonArray::fromStringList(files)}};
    QStringList lines;
    for (RingKind ring : allRingKinds) {
        const QList<FileOperationPtr> entries = catalog.fitting(ring, files);
        QJsonArray jsonEntries;
        lines.append(title(ring));
        qsizetype idWidth = 0;
        for (const FileOperationPtr& entry : entries)
            idWidth = std::max(idWidth, entry->id().size());
        for (const FileOperationPtr& entry : entries) {
            QJsonObject jsonEntry{
                {QStringLiteral("id"), entry->id()},
                {QStringLiteral("title"), entry->title()},
                {QStringLiteral("description"), entry->description()},
                {QStringLiteral("group"), entry->isGroup()},
            };
            // What it would ask for these files, for scripts that pass the answers as options.
            if (const std::optional<PromptRequest> prompt = entry->prompt(files))
                jsonEntry.insert(QStringLiteral("prompt"), toJson(*prompt));
            jsonEntries.append(jsonEntry);
            lines.append(QStringLiteral("  %1  %2").arg(entry->id(), -idWidth).arg(entry->title()));
        }
        if (entries.isEmpty())
            lines.append(QCoreApplication::translate("CommandLine", "  (nothing fits)"));
        report.insert(rawValue(ring), jsonEntries);
    }
    if (json)
        printJson(report);
    else
        printOut(lines.join(u'\n'));
    return exitSuccess;
}

}  // namespace wendrel
