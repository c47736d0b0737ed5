#include "OpsCommand.h"

#include "CommandLine.h"
#include "ConsoleOutput.h"
#include "operations/OperationCatalog.h"

#include <QCoreApplication>
#include <QJsonArray>

#include <algorithm>

namespace wendrel {

namespace {

// Each ring's name, then its entries as "  id  title" with the ids in one column, or
// `noEntries`; the JSON report holds one array per ring.
template <typename Describe>
int printByRing(const QList<std::pair<RingKind, QList<FileOperationPtr>>>& rings, QJsonObject report, bool json,
                const QString& noEntries, Describe describe)
{
    QStringList lines;
    for (const auto& [ring, entries] : rings) {
        lines.append(title(ring));
        qsizetype idWidth = 0;
        for (const FileOperationPtr& entry : entries)
            idWidth = std::max(idWidth, entry->id().size());
        QJsonArray jsonEntries;
        for (const FileOperationPtr& entry : entries) {
            jsonEntries.append(describe(*entry));
            lines.append(QStringLiteral("  %1  %2").arg(entry->id(), -idWidth).arg(entry->title()));
        }
        if (entries.isEmpty())
            lines.append(noEntries);
        report.insert(rawValue(ring), jsonEntries);
    }
    if (json)
        printJson(report);
    else
        printOut(lines.join(u'\n'));
    return exitSuccess;
}

QJsonObject basicDescription(const FileOperation& entry)
{
    return {
        {QStringLiteral("id"), entry.id()},
        {QStringLiteral("title"), entry.title()},
        {QStringLiteral("description"), entry.description()},
        {QStringLiteral("group"), entry.isGroup()},
    };
}

}  // namespace

int runOpsCommand(const OperationCatalog& catalog, const QStringList& files, bool json)
{
    QList<std::pair<RingKind, QList<FileOperationPtr>>> rings;
    for (RingKind ring : allRingKinds)
        rings.append({ring, catalog.fitting(ring, files)});
    return printByRing(rings, {{QStringLiteral("files"), QJsonArray::fromStringList(files)}}, json,
                       QCoreApplication::translate("CommandLine", "  (nothing fits)"), [&](const FileOperation& entry) {
                           QJsonObject description = basicDescription(entry);
                           // What it would ask for these files, for scripts that pass the answers as options.
                           if (const std::optional<PromptRequest> prompt = entry.prompt(files))
                               description.insert(QStringLiteral("prompt"), toJson(*prompt));
                           return description;
                       });
}

int runAllOpsCommand(const OperationCatalog& catalog, bool json)
{
    QList<std::pair<RingKind, QList<FileOperationPtr>>> rings;
    for (RingKind ring : allRingKinds)
        rings.append({ring, catalog.entries(ring)});
    return printByRing(rings, {}, json, QCoreApplication::translate("CommandLine", "  (no entries yet)"),
                       basicDescription);
}

}  // namespace wendrel
