#include "FileManagerIntegration.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QSaveFile>

#include <algorithm>

namespace wendrel {

namespace {

QString translate(const char* text) { return QCoreApplication::translate("FileManagerIntegration", text); }

constexpr QFileDevice::Permissions executablePermissions =
    QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner | QFileDevice::ReadGroup
    | QFileDevice::ExeGroup | QFileDevice::ReadOther | QFileDevice::ExeOther;

FileReport failure(const QString& path, const QString& error) { return {path, FileOutcome::failed, error}; }

std::optional<QByteArray> readAll(const QString& path, QString* error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        *error = translate("can't read %1: %2").arg(path, file.errorString());
        return std::nullopt;
    }
    return file.readAll();
}

// Writes through QSaveFile, so a failure never leaves half a file, and an existing file keeps
// its permissions.
FileReport write(const QString& path, const QByteArray& content, bool executable)
{
    if (!QDir().mkpath(QFileInfo(path).path()))
        return failure(path, translate("can't create the folder %1").arg(QFileInfo(path).path()));
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size() || !file.commit())
        return failure(path, translate("can't write %1: %2").arg(path, file.errorString()));
    if (executable && !QFile::setPermissions(path, executablePermissions))
        return failure(path, translate("can't make %1 executable").arg(path));
    return {path, FileOutcome::written, {}};
}

// The folders that don't exist yet on the way to `folder`, which writing a file in it creates.
QStringList missingFolders(const QString& folder)
{
    QStringList missing;
    for (QString current = QDir::cleanPath(folder); !QFileInfo(current).exists();) {
        missing.append(current);
        const QString parent = QFileInfo(current).path();
        if (parent == current)
            break;
        current = parent;
    }
    return missing;
}

bool occupied(const QFileInfo& info) { return info.exists() || info.isSymLink(); }

QList<FileReport> installOwnFiles(const QList<OwnFile>& files)
{
    // Worked out before anything is written: the three files of a folder all note its creation.
    QHash<QString, QStringList> createdFolders;
    for (const OwnFile& file : files) {
        const QString folder = QFileInfo(file.path).path();
        if (!createdFolders.contains(folder))
            createdFolders.insert(folder, missingFolders(folder));
    }

    QList<FileReport> reports;
    for (const OwnFile& file : files) {
        const QFileInfo info(file.path);
        QByteArray content = withFoldersCreated(file.content, createdFolders.value(info.path()));
        if (occupied(info)) {
            if (!info.isFile()) {
                reports.append({file.path, FileOutcome::leftAlone, {}});
                continue;
            }
            QString error;
            const std::optional<QByteArray> existing = readAll(file.path, &error);
            if (!existing) {
                reports.append(failure(file.path, error));
                continue;
            }
            if (!isWendrelFile(*existing)) {
                reports.append({file.path, FileOutcome::leftAlone, {}});
                continue;
            }
            content = withFoldersCreated(file.content, foldersCreatedFor(*existing));
            if (*existing == content && (!file.executable || info.isExecutable())) {
                reports.append({file.path, FileOutcome::unchanged, {}});
                continue;
            }
        }
        reports.append(write(file.path, content, file.executable));
    }
    return reports;
}

QList<FileReport> removeOwnFiles(const QList<OwnFile>& files, QStringList* createdFolders)
{
    QList<FileReport> reports;
    for (const OwnFile& file : files) {
        const QFileInfo info(file.path);
        if (!occupied(info)) {
            reports.append({file.path, FileOutcome::absent, {}});
            continue;
        }
        QString error;
        const std::optional<QByteArray> existing = info.isFile() ? readAll(file.path, &error) : QByteArray();
        if (!existing) {
            reports.append(failure(file.path, error));
        } else if (!isWendrelFile(*existing)) {
            reports.append({file.path, FileOutcome::leftAlone, {}});
        } else if (!QFile::remove(file.path)) {
            reports.append(failure(file.path, translate("can't delete %1").arg(file.path)));
        } else {
            createdFolders->append(foldersCreatedFor(*existing));
            reports.append({file.path, FileOutcome::removed, {}});
        }
    }
    return reports;
}

// Thunar's default actions, which a new uca.xml must carry to keep them visible.
QByteArray thunarSystemDefault(const IntegrationHomes& homes)
{
    for (const QString& folder : homes.configDirs) {
        QFile file(folder + QStringLiteral("/Thunar/uca.xml"));
        if (file.open(QIODevice::ReadOnly))
            return file.readAll();
    }
    return {};
}

QString unreadableThunarFile(const QString& path)
{
    return translate("%1 isn't a custom-actions file Wendrel can read; it was left unchanged").arg(path);
}

FileReport installThunarActions(const IntegrationHomes& homes, const QString& executable)
{
    const QString path = thunarActionsPath(homes);
    const QFileInfo info(path);
    const bool isNew = !occupied(info);
    if (!isNew && !info.isFile())
        return {path, FileOutcome::leftAlone, {}};
    QString error;
    const std::optional<QByteArray> existing =
        isNew ? newThunarActionsFile(thunarSystemDefault(homes), missingFolders(info.path())) : readAll(path, &error);
    if (!existing)
        return failure(path, error);
    const std::optional<QByteArray> merged = thunarActionsWithWendrel(*existing, executable);
    if (!merged)
        return failure(path, unreadableThunarFile(path));
    if (!isNew && *merged == *existing)
        return {path, FileOutcome::unchanged, {}};
    return write(path, *merged, false);
}

FileReport removeThunarActions(const IntegrationHomes& homes, QStringList* createdFolders)
{
    const QString path = thunarActionsPath(homes);
    const QFileInfo info(path);
    if (!info.isFile())
        return {path, FileOutcome::absent, {}};
    QString error;
    const std::optional<QByteArray> existing = readAll(path, &error);
    if (!existing)
        return failure(path, error);
    const std::optional<QByteArray> stripped = thunarActionsWithoutWendrel(*existing);
    if (!stripped)
        return failure(path, unreadableThunarFile(path));
    if (*stripped == *existing)
        return {path, FileOutcome::absent, {}};
    if (isUnchangedThunarFileOfWendrel(*existing, thunarSystemDefault(homes))) {
        if (!QFile::remove(path))
            return failure(path, translate("can't delete %1").arg(path));
        createdFolders->append(foldersCreatedFor(*existing));
        return {path, FileOutcome::removed, {}};
    }
    FileReport report = write(path, *stripped, false);
    if (report.outcome == FileOutcome::written)
        report.outcome = FileOutcome::removed;
    return report;
}

// Deepest first; a folder that holds anything stays.
void removeEmptyFolders(QStringList folders)
{
    folders.removeDuplicates();
    std::sort(folders.begin(), folders.end(), [](const QString& a, const QString& b) { return a.size() > b.size(); });
    for (const QString& folder : folders)
        QDir().rmdir(folder);
}

}  // namespace

QString rawValue(FileOutcome outcome)
{
    switch (outcome) {
    case FileOutcome::written: return QStringLiteral("written");
    case FileOutcome::unchanged: return QStringLiteral("unchanged");
    case FileOutcome::removed: return QStringLiteral("removed");
    case FileOutcome::absent: return QStringLiteral("absent");
    case FileOutcome::leftAlone: return QStringLiteral("leftAlone");
    case FileOutcome::failed: return QStringLiteral("failed");
    }
    return {};
}

QList<FileManagerReport> installFileManagerActions(const IntegrationHomes& homes, const QString& executable)
{
    QList<FileManagerReport> reports;
    for (FileManager manager : allFileManagers) {
        FileManagerReport report{manager, {}};
        if (manager == FileManager::thunar)
            report.files.append(installThunarActions(homes, executable));
        else
            report.files = installOwnFiles(ownFiles(manager, homes, executable));
        reports.append(report);
    }
    return reports;
}

QList<FileManagerReport> removeFileManagerActions(const IntegrationHomes& homes)
{
    QList<FileManagerReport> reports;
    QStringList createdFolders;
    for (FileManager manager : allFileManagers) {
        FileManagerReport report{manager, {}};
        if (manager == FileManager::thunar)
            report.files.append(removeThunarActions(homes, &createdFolders));
        else
            report.files = removeOwnFiles(ownFiles(manager, homes, {}), &createdFolders);
        reports.append(report);
    }
    removeEmptyFolders(createdFolders);
    return reports;
}

}  // namespace wendrel
