#include "CellTyping.h"

#include <charconv>
#include <cmath>
#include <optional>

namespace wendrel {

namespace {

// Workbooks count days from 1900; anything earlier stays the text it was.
constexpr int firstYearInWorkbooks = 1900;
// A double keeps 15 significant decimal digits whatever their value.
constexpr int mostSignificantDigits = 15;

bool isDigit(QChar c) { return c >= u'0' && c <= u'9'; }

// Digits at `at` (moving it past them), how many.
int skipDigits(QStringView text, qsizetype& at)
{
    const qsizetype start = at;
    while (at < text.size() && isDigit(text[at]))
        ++at;
    return int(at - start);
}

std::optional<double> plainNumber(QStringView text)
{
    qsizetype at = 0;
    if (at < text.size() && text[at] == u'-')
        ++at;
    const qsizetype integerStart = at;
    const int integerDigits = skipDigits(text, at);
    if (integerDigits > 1 && text[integerStart] == u'0')
        return std::nullopt;
    int fractionDigits = 0;
    qsizetype fractionStart = at;
    if (at < text.size() && text[at] == u'.') {
        ++at;
        fractionStart = at;
        fractionDigits = skipDigits(text, at);
        if (fractionDigits == 0)  // "1." is how a heading or a list number ends, not a value
            return std::nullopt;
    }
    if (integerDigits + fractionDigits == 0)
        return std::nullopt;
    if (at < text.size() && (text[at] == u'e' || text[at] == u'E')) {
        ++at;
        if (at < text.size() && (text[at] == u'-' || text[at] == u'+'))
            ++at;
        if (skipDigits(text, at) == 0)
            return std::nullopt;
    }
    if (at != text.size())
        return std::nullopt;

    // Significant digits run from the first non-zero digit to the last digit written.
    QString digits = text.sliced(integerStart, integerDigits).toString();
    digits += text.sliced(fractionStart, fractionDigits);
    qsizetype firstSignificant = 0;
    while (firstSignificant < digits.size() && digits[firstSignificant] == u'0')
        ++firstSignificant;
    if (digits.size() - firstSignificant > mostSignificantDigits)
        return std::nullopt;

    const QByteArray latin = text.toLatin1();
    double value = 0;
    const auto parsed = std::from_chars(latin.constData(), latin.constData() + latin.size(), value);
    if (parsed.ec != std::errc() || parsed.ptr != latin.constData() + latin.size() || !std::isfinite(value))
        return std::nullopt;
    return value;
}

// The number made of exactly `count` digits at `at`, or -1.
int fixedDigits(QStringView text, qsizetype at, int count)
{
    if (at + count > text.size())
        return -1;
    int value = 0;
    for (int i = 0; i < count; ++i) {
        if (!isDigit(text[at + i]))
            return -1;
        value = value * 10 + (text[at + i].unicode() - u'0');
    }
    return value;
}

std::optional<QDate> isoDay(QStringView text)
{
    if (text.size() < 10 || text[4] != u'-' || text[7] != u'-')
        return std::nullopt;
    const int year = fixedDigits(text, 0, 4);
    const int month = fixedDigits(text, 5, 2);
    const int day = fixedDigits(text, 8, 2);
    if (year < firstYearInWorkbooks || !QDate::isValid(year, month, day))
        return std::nullopt;
    return QDate(year, month, day);
}

// hh:mm, hh:mm:ss or hh:mm:ss.fff (one to three fraction digits).
std::optional<QTime> isoTime(QStringView text)
{
    if (text.size() < 5 || text[2] != u':')
        return std::nullopt;
    const int hour = fixedDigits(text, 0, 2);
    const int minute = fixedDigits(text, 3, 2);
    int second = 0;
    int millisecond = 0;
    qsizetype at = 5;
    if (at < text.size()) {
        if (text[at] != u':' || (second = fixedDigits(text, at + 1, 2)) < 0)
            return std::nullopt;
        at += 3;
        if (at < text.size()) {
            if (text[at] != u'.')
                return std::nullopt;
            const QStringView fraction = text.sliced(at + 1);
            if (fraction.isEmpty() || fraction.size() > 3)
                return std::nullopt;
            const int value = fixedDigits(fraction, 0, int(fraction.size()));
            if (value < 0)
                return std::nullopt;
            millisecond = value * (fraction.size() == 1 ? 100 : fraction.size() == 2 ? 10 : 1);
        }
    }
    if (!QTime::isValid(hour, minute, second, millisecond))
        return std::nullopt;
    return QTime(hour, minute, second, millisecond);
}

}  // namespace

std::optional<double> storedNumber(QStringView text)
{
    const QByteArray latin = text.trimmed().toLatin1();
    double value = 0;
    const auto parsed = std::from_chars(latin.constData(), latin.constData() + latin.size(), value);
    if (latin.isEmpty() || parsed.ec != std::errc() || parsed.ptr != latin.constData() + latin.size())
        return std::nullopt;
    return value;
}

SheetCell typedCell(const QString& field)
{
    if (field.isEmpty())
        return {};
    const QChar first = field.front();
    if (isDigit(first) || first == u'-' || first == u'.') {
        if (const std::optional<double> number = plainNumber(field))
            return SheetCell::ofNumber(*number);
        if (const std::optional<QDate> day = isoDay(field)) {
            if (field.size() == 10)
                return SheetCell::ofDate(*day);
            if (field[10] == u'T') {
                if (const std::optional<QTime> time = isoTime(QStringView(field).sliced(11)))
                    return SheetCell::ofDateTime(*day, *time);
            }
        }
        return SheetCell::ofText(field);
    }
    if (field == u"TRUE")
        return SheetCell::ofBoolean(true);
    if (field == u"FALSE")
        return SheetCell::ofBoolean(false);
    return SheetCell::ofText(field);
}

}  // namespace wendrel
