#include "OperationCatalog.h"

#include <QCoreApplication>

#include <algorithm>

namespace wendrel {

bool OperationCatalog::add(FileOperationPtr entry)
{
    if (!entry || m_byId.contains(entry->id()))
        return false;
    QList<FileOperationPtr>& ring = m_rings[static_cast<size_t>(entry->ring())];
    // After every entry of lower or equal rank: unlisted ids keep their registration order.
    const auto position = std::upper_bound(
        ring.begin(), ring.end(), entry->rank(),
        [](int wanted, const FileOperationPtr& other) { return wanted < other->rank(); });
    ring.insert(position, entry);
    m_byId.insert(entry->id(), std::move(entry));
    return true;
}

const QList<FileOperationPtr>& OperationCatalog::entries(RingKind ring) const
{
    return m_rings[static_cast<size_t>(ring)];
}

QList<FileOperationPtr> OperationCatalog::fitting(RingKind ring, const QStringList& paths) const
{
    QList<ContentType> types;
    types.reserve(paths.size());
    for (const QString& path : paths)
        types.append(ContentType::ofFile(path));

    QList<FileOperationPtr> result;
    for (const FileOperationPtr& entry : entries(ring)) {
        const bool takesAll = std::all_of(types.cbegin(), types.cend(), [&](const ContentType& type) {
            return entry->accepts(type);
        });
        if (takesAll)
            result.append(entry);
    }
    return result;
}

FileOperationPtr OperationCatalog::find(const QString& id) const { return m_byId.value(id); }

std::optional<QString> OperationCatalog::refusal(const FileOperation& entry, const QStringList& paths)
{
    for (const QString& path : paths) {
        if (!entry.accepts(ContentType::ofFile(path))) {
            return QCoreApplication::translate("OperationCatalog", "%1 doesn't work with this file")
                .arg(entry.title());
        }
    }
    return std::nullopt;
}

}  // namespace wendrel
