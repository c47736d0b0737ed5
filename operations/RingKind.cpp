#include "RingKind.h"

#include <QCoreApplication>

namespace wendrel {

QString rawValue(RingKind kind)
{
    switch (kind) {
    case RingKind::convert: return QStringLiteral("convert");
    case RingKind::tools: return QStringLiteral("tools");
    case RingKind::actions: return QStringLiteral("actions");
    }
    return {};
}

std::optional<RingKind> ringKindFromRawValue(QStringView raw)
{
    for (RingKind kind : allRingKinds) {
        if (raw == rawValue(kind))
            return kind;
    }
    return std::nullopt;
}

QString title(RingKind kind)
{
    switch (kind) {
    case RingKind::convert: return QCoreApplication::translate("RingKind", "Convert");
    case RingKind::tools: return QCoreApplication::translate("RingKind", "Tools");
    case RingKind::actions: return QCoreApplication::translate("RingKind", "Actions");
    }
    return {};
}

RingKind nextRing(RingKind kind)
{
    return allRingKinds[(static_cast<size_t>(kind) + 1) % allRingKinds.size()];
}

}  // namespace wendrel
