#include "EntryId.h"

#include <QByteArray>
#include <QSet>

#include <mutex>

namespace wendrel {

EntryId EntryId::atRunTime(const QString& id)
{
    // Kept for the life of the process, so the id outlives every entry that bears it; ids are
    // few and repeat, so the set stays small.
    static std::mutex mutex;
    static QSet<QByteArray> interned;
    const std::lock_guard lock(mutex);
    const QByteArray& kept = *interned.insert(id.toLatin1());
    return EntryId(kept.constData(), ringRankOf(std::string_view(kept.constData(), size_t(kept.size()))));
}

}  // namespace wendrel
