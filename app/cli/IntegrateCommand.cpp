#include "IntegrateCommand.h"

#include "CommandLine.h"
#include "ConsoleOutput.h"
#include "app/shell/FileManagerIntegration.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QJsonArray>

namespace wendrel {

namespace {

QString translate(const char* text) { return QCoreApplication::translate("CommandLine", text); }

QString restartHint()
{
    return translate("Some file managers see the change only when they start again: quit them with "
                     "'nautilus -q', 'caja -q', 'nemo -q' or 'thunar -q' (Dolphin: close its windows) "
                     "and open them again.");
}

// "Nautilus: installed in /home/me/.local/share/nautilus/scripts", naming folders, or the file
// for Thunar, whose actions share one file with the user's.
QString summaryLine(const FileManagerReport& report, bool removing)
{
    QStringList changed;
    QStringList kept;
    QStringList problems;
    for (const FileReport& file : report.files) {
        const QString place = report.manager == FileManager::thunar ? file.path : QFileInfo(file.path).path();
        switch (file.outcome) {
        case FileOutcome::written:
        case FileOutcome::removed:
            if (!changed.contains(place))
                changed.append(place);
            break;
        case FileOutcome::unchanged:
            if (!kept.contains(place))
                kept.append(place);
            break;
        case FileOutcome::leftAlone:
            problems.append(translate("left %1 alone: it isn't Wendrel's").arg(file.path));
            break;
        case FileOutcome::failed:
            if (!problems.contains(file.error))  // the files of one folder fail alike
                problems.append(file.error);
            break;
        case FileOutcome::absent:
            break;
        }
    }
    const QString separator = translate(" and ");
    QStringList parts;
    if (!changed.isEmpty())
        parts.append((removing ? translate("removed from %1") : translate("installed in %1")).arg(changed.join(separator)));
    if (!kept.isEmpty())
        parts.append(translate("already installed in %1").arg(kept.join(separator)));
    if (parts.isEmpty())
        parts.append(removing ? translate("nothing to remove") : translate("not installed"));
    return fileManagerName(report.manager) + QStringLiteral(": ") + (parts + problems).join(QStringLiteral("; "));
}

QJsonObject jsonReport(const QList<FileManagerReport>& reports, bool removing)
{
    QJsonArray managers;
    for (const FileManagerReport& report : reports) {
        QJsonArray files;
        for (const FileReport& file : report.files) {
            QJsonObject entry{{QStringLiteral("path"), file.path}, {QStringLiteral("outcome"), rawValue(file.outcome)}};
            if (!file.error.isEmpty())
                entry.insert(QStringLiteral("error"), file.error);
            files.append(entry);
        }
        managers.append(QJsonObject{{QStringLiteral("name"), fileManagerName(report.manager)},
                                    {QStringLiteral("summary"), summaryLine(report, removing)},
                                    {QStringLiteral("files"), files}});
    }
    return {{QStringLiteral("action"), removing ? QStringLiteral("remove") : QStringLiteral("install")},
            {QStringLiteral("fileManagers"), managers},
            {QStringLiteral("hint"), restartHint()}};
}

}  // namespace

int runIntegrateCommand(bool remove, bool json)
{
    const IntegrationHomes homes = IntegrationHomes::current();
    const QList<FileManagerReport> reports = remove ? removeFileManagerActions(homes)
                                                    : installFileManagerActions(homes, QCoreApplication::applicationFilePath());
    // A user's file where Wendrel's would go leaves that install incomplete; on removal it is
    // simply not Wendrel's to take.
    bool complete = true;
    for (const FileManagerReport& report : reports) {
        for (const FileReport& file : report.files)
            complete = complete && file.outcome != FileOutcome::failed && (remove || file.outcome != FileOutcome::leftAlone);
    }
    if (json) {
        printJson(jsonReport(reports, remove));
    } else {
        for (const FileManagerReport& report : reports)
            printOut(summaryLine(report, remove));
        printOut(restartHint());
    }
    return complete ? exitSuccess : exitJobFailed;
}

}  // namespace wendrel
