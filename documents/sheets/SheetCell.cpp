#include "SheetCell.h"

#include <charconv>
#include <cmath>

namespace wendrel {

namespace {

QString timeText(QTime time)
{
    if (time.msec() != 0)
        return time.toString(QStringLiteral("HH:mm:ss.zzz"));
    if (time.second() != 0)
        return time.toString(QStringLiteral("HH:mm:ss"));
    return time.toString(QStringLiteral("HH:mm"));
}

}  // namespace

QString numberText(double value)
{
    if (!std::isfinite(value))
        return QStringLiteral("#NUM!");
    if (value == 0)
        return QStringLiteral("0");  // and never "-0"

    // Shortest round trip either way; positional reads better wherever it stays short, which
    // covers every integer a double holds exactly and everyday fractions.
    char buffer[400];
    const double magnitude = std::fabs(value);
    const auto format = magnitude >= 1e-6 && magnitude < 1e21 ? std::chars_format::fixed
                                                              : std::chars_format::scientific;
    const auto written = std::to_chars(buffer, buffer + sizeof buffer, value, format);
    return QString::fromLatin1(buffer, written.ptr - buffer);
}

QString cellText(const SheetCell& cell)
{
    switch (cell.kind) {
    case SheetCell::Kind::empty:
        return {};
    case SheetCell::Kind::text:
        return cell.text;
    case SheetCell::Kind::number:
        return numberText(cell.number);
    case SheetCell::Kind::boolean:
        return cell.boolean ? QStringLiteral("TRUE") : QStringLiteral("FALSE");
    case SheetCell::Kind::date:
        return cell.date.toString(Qt::ISODate);
    case SheetCell::Kind::dateTime:
        return cell.date.toString(Qt::ISODate) + u'T' + timeText(cell.time);
    case SheetCell::Kind::time:
        return timeText(cell.time);
    }
    return {};
}

}  // namespace wendrel
