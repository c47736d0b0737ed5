#include "JobEvent.h"

#include <QJsonArray>

namespace wendrel {

QJsonObject JobEvent::toJson() const
{
    return {
        {QStringLiteral("operationID"), operationId},
        {QStringLiteral("ring"), rawValue(ring)},
        {QStringLiteral("clickMode"), clickMode},
        {QStringLiteral("inputs"), QJsonArray::fromStringList(inputs)},
        {QStringLiteral("results"), QJsonArray::fromStringList(results)},
    };
}

}  // namespace wendrel
