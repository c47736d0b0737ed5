#include "ExtractionTarget.h"

#include <QList>

namespace wendrel {

std::optional<QByteArray> extractionTarget(QByteArrayView root, QByteArrayView entryName)
{
    QList<QByteArrayView> steps;
    for (qsizetype start = 0; start <= entryName.size();) {
        qsizetype end = entryName.indexOf('/', start);
        if (end < 0)
            end = entryName.size();
        const QByteArrayView step = entryName.sliced(start, end - start);
        start = end + 1;
        if (step.isEmpty() || step == ".")
            continue;
        if (step.contains('\0'))
            return std::nullopt;
        if (step == "..") {
            if (steps.isEmpty())
                return std::nullopt;
            steps.removeLast();
            continue;
        }
        steps.append(step);
    }
    if (steps.isEmpty())
        return std::nullopt;

    QByteArray target = root.toByteArray();
    while (target.size() > 1 && target.endsWith('/'))
        target.chop(1);
    for (const QByteArrayView step : std::as_const(steps)) {
        if (!target.endsWith('/'))
            target += '/';
        target += step;
    }
    return target;
}

}  // namespace wendrel
