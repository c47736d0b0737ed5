#include "CellReference.h"

#include "SheetLimits.h"

#include <algorithm>

namespace wendrel {

QByteArray columnLetters(int column)
{
    QByteArray letters;
    for (int left = column + 1; left > 0; left = (left - 1) / 26)
        letters.prepend(char('A' + (left - 1) % 26));
    return letters;
}

std::optional<CellPosition> parseCellReference(QStringView reference)
{
    qsizetype at = 0;
    qint64 column = 0;
    while (at < reference.size() && at < 4) {
        const QChar c = reference[at].toUpper();
        if (c < u'A' || c > u'Z')
            break;
        column = column * 26 + (c.unicode() - u'A' + 1);
        ++at;
    }
    if (at == 0 || column > sheet::mostWorkbookColumns)
        return std::nullopt;
    qint64 row = 0;
    const qsizetype digitsStart = at;
    while (at < reference.size() && at - digitsStart < 8 && reference[at] >= u'0' && reference[at] <= u'9')
        row = row * 10 + (reference[at++].unicode() - u'0');
    if (at == digitsStart || at != reference.size() || row < 1 || row > sheet::mostWorkbookRows)
        return std::nullopt;
    return CellPosition{int(column - 1), row - 1};
}

}  // namespace wendrel
