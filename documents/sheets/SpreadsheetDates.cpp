#include "SpreadsheetDates.h"

#include <QDateTime>

#include <cmath>

namespace wendrel {

namespace {

constexpr qint64 millisecondsPerDay = 24LL * 60 * 60 * 1000;
constexpr int phantomLeapDay = 60;  // 1900-02-29 in the 1900 system, which has no such day
// Serial days before the phantom day count from 1899-12-31; from it on, from 1899-12-30.
const QDate earlyEpoch1900(1899, 12, 31);
const QDate epoch1900(1899, 12, 30);
const QDate epoch1904(1904, 1, 1);
const QDate lastDay(9999, 12, 31);

}  // namespace

NumberFormatKind builtInFormatKind(int id)
{
    if (id >= 14 && id <= 17)
        return NumberFormatKind::date;
    if ((id >= 18 && id <= 21) || (id >= 45 && id <= 47))
        return NumberFormatKind::time;
    if (id == 22)
        return NumberFormatKind::dateTime;
    return NumberFormatKind::number;
}

NumberFormatKind formatCodeKind(QStringView code)
{
    bool day = false;
    bool month = false;
    bool clock = false;
    for (qsizetype i = 0; i < code.size(); ++i) {
        const QChar c = code[i].toLower();
        if (c == u'"') {
            const qsizetype close = code.indexOf(u'"', i + 1);
            i = close < 0 ? code.size() : close;
        } else if (c == u'[') {
            const qsizetype close = code.indexOf(u']', i + 1);
            i = close < 0 ? code.size() : close;
        } else if (c == u'\\' || c == u'_' || c == u'*') {
            ++i;  // the next character is shown (or its width left) as it is
        } else if (c == u'y' || c == u'd') {
            day = true;
        } else if (c == u'm') {
            month = true;
        } else if (c == u'h' || c == u's') {
            clock = true;
        }
    }
    if (day)
        return clock ? NumberFormatKind::dateTime : NumberFormatKind::date;
    if (clock)
        return NumberFormatKind::time;  // "h:mm", "mm:ss": the m is minutes
    return month ? NumberFormatKind::date : NumberFormatKind::number;
}

std::optional<SheetCell> cellFromSerial(double serial, NumberFormatKind kind, DateSystem system)
{
    if (kind == NumberFormatKind::number || !std::isfinite(serial) || serial < 0 || serial > 3e6)
        return std::nullopt;
    // To the millisecond, as far as a double holds it; 23:59:59.9996 is the next midnight.
    const auto milliseconds = static_cast<qint64>(std::llround(serial * double(millisecondsPerDay)));
    const qint64 days = milliseconds / millisecondsPerDay;
    const QTime time = QTime::fromMSecsSinceStartOfDay(int(milliseconds % millisecondsPerDay));

    if (kind == NumberFormatKind::time) {
        if (days != 0)
            return std::nullopt;
        return SheetCell::ofTime(time);
    }
    QDate date;
    if (system == DateSystem::from1904) {
        date = epoch1904.addDays(days);
    } else {
        if (days == phantomLeapDay || days == 0)
            return std::nullopt;  // 1900-02-29 and 1900-01-00 are no days
        date = (days < phantomLeapDay ? earlyEpoch1900 : epoch1900).addDays(days);
    }
    if (!date.isValid() || date > lastDay)
        return std::nullopt;
    if (kind == NumberFormatKind::date && time.msecsSinceStartOfDay() == 0)
        return SheetCell::ofDate(date);
    return SheetCell::ofDateTime(date, time);
}

SheetCell cellFromIsoDate(const QString& text)
{
    const QDateTime moment = QDateTime::fromString(text, Qt::ISODateWithMs);
    if (moment.isValid() && text.contains(u'T'))
        return SheetCell::ofDateTime(moment.date(), moment.time());
    const QDate day = QDate::fromString(text, Qt::ISODate);
    return day.isValid() ? SheetCell::ofDate(day) : SheetCell::ofText(text);
}

std::optional<double> serialFromDate(QDate date, QTime time)
{
    if (!date.isValid() || date.year() < 1900 || date > lastDay)
        return std::nullopt;
    const qint64 days = date < QDate(1900, 3, 1) ? earlyEpoch1900.daysTo(date) : epoch1900.daysTo(date);
    return double(days) + (time.isValid() ? serialFromTime(time) : 0.0);
}

double serialFromTime(QTime time)
{
    return double(time.msecsSinceStartOfDay()) / double(millisecondsPerDay);
}

}  // namespace wendrel
