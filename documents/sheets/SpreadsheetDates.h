#pragma once

#include "SheetCell.h"

#include <optional>

namespace wendrel {

// How workbooks keep dates: a number of days (the fraction being the time of day) counted
// from an epoch, shown as a date by the cell's number format.

enum class DateSystem {
    from1900,  // serial 1 is 1900-01-01; serial 60 is a 29 February 1900 that never was
    from1904,  // serial 0 is 1904-01-01 (workbooks from old Macs)
};

// What a number format shows a value as.
enum class NumberFormatKind { number, date, dateTime, time };

// The kind of a built-in format id: 14–17 dates, 18–21 and 45–47 times, 22 a date and time.
NumberFormatKind builtInFormatKind(int id);

// The kind of a format code: a date when y, m or d, a time when h or s, appear outside quoted
// text, [brackets] (colours, locales, elapsed hours), escaped characters and fill or padding
// characters; both make a date and time. An 'm' beside h or s is minutes, not months.
NumberFormatKind formatCodeKind(QStringView code);

// The cell a serial number shown as `kind` stands for: a date, date and time or time of day.
// Nothing for values no calendar holds (negative, past 9999, the 1900 system's phantom leap
// day, a time of day of a day or more): they stay numbers.
std::optional<SheetCell> cellFromSerial(double serial, NumberFormatKind kind, DateSystem system);

// A date or date and time in ISO 8601 as workbooks store them typed ("2024-03-09",
// "2024-03-09T14:30:00.5"); other text stays text.
SheetCell cellFromIsoDate(const QString& text);

// The 1900-system serial of a date (and time), as a workbook writes it; nothing before 1900.
std::optional<double> serialFromDate(QDate date, QTime time = {});
double serialFromTime(QTime time);

}  // namespace wendrel
