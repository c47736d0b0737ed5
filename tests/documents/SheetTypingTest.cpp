#include "documents/sheets/CellReference.h"
#include "documents/sheets/CellTyping.h"
#include "documents/sheets/OoxmlText.h"
#include "documents/sheets/SpreadsheetDates.h"

#include <gtest/gtest.h>

using namespace wendrel;
using namespace Qt::StringLiterals;

namespace {

SheetCell number(double value) { return SheetCell::ofNumber(value); }
SheetCell text(const char16_t* value) { return SheetCell::ofText(QString::fromUtf16(value)); }
SheetCell day(int y, int m, int d) { return SheetCell::ofDate(QDate(y, m, d)); }
SheetCell moment(int y, int mo, int d, int h, int mi, int s = 0, int ms = 0)
{
    return SheetCell::ofDateTime(QDate(y, mo, d), QTime(h, mi, s, ms));
}

}  // namespace

TEST(CellTyping, OnlyUnmistakableNumbersDatesAndBooleansLoseTheirQuotes)
{
    const struct {
        const char16_t* field;
        SheetCell cell;
    } typed[] = {
        {u"", SheetCell{}}, {u"42", number(42)}, {u"-17", number(-17)}, {u"0", number(0)}, {u"0.25", number(0.25)},
        {u"-0.5", number(-0.5)}, {u".5", number(0.5)}, {u"3.14159", number(3.14159)}, {u"1e3", number(1000)},
        {u"2.5E-3", number(0.0025)},
        {u"123456789012345", number(123456789012345.0)},      // 15 digits: a double keeps them
        {u"0.000000000000001", number(1e-15)},                  // leading zeros aren't significant
        {u"TRUE", SheetCell::ofBoolean(true)}, {u"FALSE", SheetCell::ofBoolean(false)}, {u"2024-02-29", day(2024, 2, 29)},
        {u"2024-03-09T14:30", moment(2024, 3, 9, 14, 30)}, {u"2024-03-09T14:30:05", moment(2024, 3, 9, 14, 30, 5)},
        {u"2024-03-09T14:30:05.25", moment(2024, 3, 9, 14, 30, 5, 250)},
    };
    for (const auto& testCase : typed)
        EXPECT_EQ(typedCell(QString::fromUtf16(testCase.field)), testCase.cell)
            << QString::fromUtf16(testCase.field).toStdString();
    // Codes with their zeros, numbers a double can't hold (1e400) or whose digits it would lose
    // (a 16-digit card number), days that don't exist or come before what a workbook counts:
    // all stay text as written.
    for (const char16_t* field : {u"007", u"-01.5", u"+44 20 7946 0958", u"+12", u"1,5", u"1,000", u"1 000", u" 42", u"1.",
                                  u"1e", u"1e400", u"4111111111111111", u"1234567890.123456", u"12:30", u"true",
                                  u"2023-02-29", u"1899-12-31", u"2024-03-09T24:00", u"2024-03-09 14:30", u"2024-3-9",
                                  u"09/03/2024", u"N/A"})
        EXPECT_EQ(typedCell(QString::fromUtf16(field)), text(field)) << QString::fromUtf16(field).toStdString();
}

TEST(CellText, NumbersInTheShortestFormThatReadsBackTheSame)
{
    const struct {
        double value;
        const char* text;
    } cases[] = {
        {42, "42"}, {-0.0, "0"}, {0.1 + 0.2, "0.30000000000000004"}, {1.0000000002, "1.0000000002"}, {0.1, "0.1"},
        {1e15, "1000000000000000"},
        {9007199254740993.0, "9007199254740992"},   // the integer the double holds, in full
        {123456789012345.0, "123456789012345"}, {2.5e-3, "0.0025"}, {1.5e-7, "1.5e-07"},
        {6.02214076e23, "6.02214076e+23"}, {-1234.5, "-1234.5"}, {std::numeric_limits<double>::infinity(), "#NUM!"},
    };
    for (const auto& testCase : cases) {
        EXPECT_EQ(numberText(testCase.value), QLatin1String(testCase.text)) << testCase.text;
        if (std::isfinite(testCase.value)) {
            EXPECT_EQ(numberText(testCase.value).toDouble(), testCase.value) << testCase.text;
        }
    }
}

TEST(CellText, DatesTimesAndBooleansAsIso)
{
    EXPECT_EQ(cellText(day(2024, 3, 9)), u"2024-03-09");
    EXPECT_EQ(cellText(moment(2024, 3, 9, 14, 30)), u"2024-03-09T14:30");
    EXPECT_EQ(cellText(moment(2024, 3, 9, 14, 30, 5)), u"2024-03-09T14:30:05");
    EXPECT_EQ(cellText(moment(2024, 3, 9, 0, 0, 0, 7)), u"2024-03-09T00:00:00.007");
    EXPECT_EQ(cellText(SheetCell::ofTime(QTime(8, 5))), u"08:05");
    EXPECT_EQ(cellText(SheetCell::ofBoolean(true)), u"TRUE");
    EXPECT_EQ(cellText(SheetCell::ofBoolean(false)), u"FALSE");
    EXPECT_EQ(cellText(SheetCell{}), u"");
}

TEST(WorkbookDates, SerialsInBothDateSystems)
{
    using Kind = NumberFormatKind;
    const struct {
        double serial;
        Kind kind;
        DateSystem system;
        std::optional<SheetCell> cell;
    } cases[] = {
        {1, Kind::date, DateSystem::from1900, day(1900, 1, 1)},
        {59, Kind::date, DateSystem::from1900, day(1900, 2, 28)},
        {60, Kind::date, DateSystem::from1900, std::nullopt},        // the leap day 1900 never had
        {61, Kind::date, DateSystem::from1900, day(1900, 3, 1)},
        {45360, Kind::date, DateSystem::from1900, day(2024, 3, 9)},
        {45360.5, Kind::date, DateSystem::from1900, moment(2024, 3, 9, 12, 0)},  // the time isn't dropped
        {45360.604166666664, Kind::dateTime, DateSystem::from1900, moment(2024, 3, 9, 14, 30)},
        {43898, Kind::date, DateSystem::from1904, day(2024, 3, 9)},
        {0, Kind::date, DateSystem::from1904, day(1904, 1, 1)},
        {0.75, Kind::time, DateSystem::from1900, SheetCell::ofTime(QTime(18, 0))},
        {1.25, Kind::time, DateSystem::from1900, std::nullopt},       // 30 hours is a duration
        {-1, Kind::date, DateSystem::from1900, std::nullopt}, {1e9, Kind::date, DateSystem::from1900, std::nullopt},
        {45360, Kind::number, DateSystem::from1900, std::nullopt},
        {2958465, Kind::date, DateSystem::from1900, day(9999, 12, 31)},
        {2958466, Kind::date, DateSystem::from1900, std::nullopt},
    };
    for (const auto& testCase : cases)
        EXPECT_EQ(cellFromSerial(testCase.serial, testCase.kind, testCase.system), testCase.cell) << testCase.serial;

    EXPECT_EQ(serialFromDate(QDate(1900, 1, 1)), 1);
    EXPECT_EQ(serialFromDate(QDate(1900, 2, 28)), 59);
    EXPECT_EQ(serialFromDate(QDate(1900, 3, 1)), 61);
    EXPECT_EQ(serialFromDate(QDate(2024, 3, 9), QTime(18, 0)), 45360.75);
    EXPECT_EQ(serialFromDate(QDate(1899, 12, 31)), std::nullopt);
}

TEST(WorkbookDates, FormatCodesShowDatesByTheirLettersOutsideQuotesAndBrackets)
{
    using Kind = NumberFormatKind;
    const struct {
        const char16_t* code;
        Kind kind;
    } cases[] = {
        {u"General", Kind::number}, {u"0.00", Kind::number}, {u"#,##0.00 [$€-407]", Kind::number},
        {u"0.0 \"days\"", Kind::number}, {u"[Red]0.00;[Blue]-0.00", Kind::number}, {u"0\\d", Kind::number},
        {u"0_)", Kind::number}, {u"yyyy-mm-dd", Kind::date}, {u"dd/mm/yyyy;@", Kind::date},
        {u"[$-409]mmmm d, yyyy", Kind::date}, {u"mmm-yy", Kind::date}, {u"yyyy-mm-dd hh:mm:ss", Kind::dateTime},
        {u"d.m.yy h:mm", Kind::dateTime}, {u"h:mm AM/PM", Kind::time}, {u"[h]:mm:ss", Kind::time},
        {u"mm:ss.0", Kind::time},
    };
    for (const auto& testCase : cases)
        EXPECT_EQ(formatCodeKind(QString::fromUtf16(testCase.code)), testCase.kind)
            << QString::fromUtf16(testCase.code).toStdString();
    EXPECT_EQ(builtInFormatKind(14), Kind::date);
    EXPECT_EQ(builtInFormatKind(22), Kind::dateTime);
    EXPECT_EQ(builtInFormatKind(46), Kind::time);
    EXPECT_EQ(builtInFormatKind(2), Kind::number);
}

TEST(CellReferences, LettersAndNumbersWithinAWorkbooksBounds)
{
    EXPECT_EQ(columnLetters(0), "A");
    EXPECT_EQ(columnLetters(25), "Z");
    EXPECT_EQ(columnLetters(26), "AA");
    EXPECT_EQ(columnLetters(16383), "XFD");
    const auto at = [](const char16_t* reference) {
        const auto position = parseCellReference(QString::fromUtf16(reference));
        return position ? std::optional(std::pair(position->column, position->row)) : std::nullopt;
    };
    EXPECT_EQ(at(u"A1"), std::pair(0, qint64(0)));
    EXPECT_EQ(at(u"B7"), std::pair(1, qint64(6)));
    EXPECT_EQ(at(u"XFD1048576"), std::pair(16383, qint64(1048575)));
    for (const char16_t* wrong : {u"", u"A", u"1", u"A0", u"XFE1", u"A1048577", u"A1B", u"$A$1", u"AAAAA1"})
        EXPECT_EQ(at(wrong), std::nullopt) << QString::fromUtf16(wrong).toStdString();
}

TEST(WorkbookText, ControlCharactersAndLookalikeEscapesSurviveTheXml)
{
    const QString original = u"tab\there, bell\u0007, <b>&\u0001 and a literal _x0041_"_s;
    QByteArray xml;
    appendOoxmlText(xml, original);
    EXPECT_EQ(xml, "tab\there, bell_x0007_, &lt;b&gt;&amp;_x0001_ and a literal _x005F_x0041_");
    // The reader sees the XML unescaped; the _xHHHH_ escapes are undone after.
    EXPECT_EQ(decodeOoxmlEscapes(u"tab\there, bell_x0007_, <b>&_x0001_ and a literal _x005F_x0041_"_s), original);
}
