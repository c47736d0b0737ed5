#include "FolderAccessStore.h"

#include "settings/SettingsStore.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>

namespace wendrel {

namespace {

QString normalized(const QString& folder) { return QDir::cleanPath(QFileInfo(folder).absoluteFilePath()); }

}  // namespace

void FolderAccessStore::load()
{
    m_folders.clear();
    m_unavailable.clear();
    const std::optional<QString> stored = SettingsStore::text(defaultsKey());
    const QJsonArray grants =
        stored ? QJsonDocument::fromJson(stored->toUtf8()).array() : QJsonArray{};
    for (const QJsonValue& grant : grants) {
        const QString folder = grant.toString();
        if (folder.isEmpty())
            continue;
        (QFileInfo(folder).isDir() ? m_folders : m_unavailable).append(folder);
    }
    Q_EMIT foldersChanged();
}

void FolderAccessStore::grant(const QString& folder)
{
    const QString path = normalized(folder);
    if (m_folders.contains(path))
        return;
    m_folders.append(path);
    save();
    Q_EMIT foldersChanged();
}

void FolderAccessStore::remove(const QString& folder)
{
    const QString path = normalized(folder);
    m_folders.removeAll(path);
    m_unavailable.removeAll(path);
    save();
    Q_EMIT foldersChanged();
}

void FolderAccessStore::save()
{
    QJsonArray grants;
    for (const QString& folder : std::as_const(m_folders))
        grants.append(folder);
    for (const QString& folder : std::as_const(m_unavailable))
        grants.append(folder);
    SettingsStore::setText(defaultsKey(),
                           QString::fromUtf8(QJsonDocument(grants).toJson(QJsonDocument::Compact)));
}

}  // namespace wendrel
