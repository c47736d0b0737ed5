#include "ResultPlacement.h"

#include "FileMoves.h"
#include "FileNames.h"
#include "Logging.h"
#include "OperationError.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

namespace wendrel {

namespace {

// Another program may take the chosen name between the check and the move; each such race
// moves on to the next counter, and this bounds the retries.
constexpr int maximumAttempts = 64;

struct Placement {
    std::optional<QString> destination;
    QString error;
};

Placement placeInto(const ProducedFile& file, const QString& folder)
{
    for (int attempt = 0; attempt < maximumAttempts; ++attempt) {
        const QString destination = uniqueDestination(folder, file.preferredName);
        const MoveAttempt move = moveWithoutReplacing(file.temporaryUrl, destination);
        switch (move.result) {
        case MoveAttempt::Result::moved:
            return {destination, {}};
        case MoveAttempt::Result::destinationTaken:
            continue;
        case MoveAttempt::Result::failed:
            return {std::nullopt, move.error};
        }
    }
    return {std::nullopt, QStringLiteral("every name was taken")};
}

}  // namespace

QString containingFolder(const QString& path)
{
    QString trimmed = path;
    while (trimmed.size() > 1 && trimmed.endsWith(u'/'))
        trimmed.chop(1);
    return QFileInfo(trimmed).absolutePath();
}

QString uniqueDestination(const QString& folder, const QString& name)
{
    const QString chosen = uniqueName(
        name, [&](const QString& candidate) { return itemExists(folder + u'/' + candidate); });
    return folder + u'/' + chosen;
}

QString resultsFolder()
{
    QString downloads = QStandardPaths::writableLocation(QStandardPaths::DownloadLocation);
    if (downloads.isEmpty())
        downloads = QDir::homePath() + QStringLiteral("/Downloads");
    return downloads + QStringLiteral("/Wendrel");
}

QString placeResult(const ProducedFile& file, const std::optional<QString>& folder)
{
    const QString wanted = folder.value_or(containingFolder(file.source));
    const Placement first = placeInto(file, wanted);
    if (first.destination) {
        qCInfo(lcJobs, "%s → %s", qUtf8Printable(file.source), qUtf8Printable(*first.destination));
        return *first.destination;
    }
    qCInfo(lcJobs, "can't write into %s (%s); using the results folder", qUtf8Printable(wanted),
           qUtf8Printable(first.error));

    const QString fallback = resultsFolder();
    if (!QDir().mkpath(fallback)) {
        throw OperationError(QCoreApplication::translate("JobRunner", "Couldn't create the folder %1")
                                 .arg(QDir::toNativeSeparators(fallback)));
    }
    const Placement second = placeInto(file, fallback);
    if (!second.destination) {
        throw OperationError(QCoreApplication::translate("JobRunner", "Couldn't save %1: %2")
                                 .arg(file.preferredName, second.error));
    }
    qCInfo(lcJobs, "%s → %s", qUtf8Printable(file.source), qUtf8Printable(*second.destination));
    return *second.destination;
}

}  // namespace wendrel
