#pragma once

#include <QDate>
#include <QList>
#include <QString>
#include <QTime>

namespace wendrel {

// One cell of a table as every sheet reader gives it and every writer takes it. Values keep
// their type from reader to writer: a number stays a number and a date a date, so a workbook
// made from a CSV sorts and sums the way its columns mean.
struct SheetCell {
    enum class Kind {
        empty,
        text,
        number,
        boolean,
        date,      // a calendar day
        dateTime,  // a day and a time of it
        time,      // a time of day alone
    };

    Kind kind = Kind::empty;
    QString text;       // text
    double number = 0;  // number
    bool boolean = false;
    QDate date;         // date, dateTime
    QTime time;         // dateTime, time

    static SheetCell ofText(QString value) { return {.kind = Kind::text, .text = std::move(value)}; }
    static SheetCell ofNumber(double value) { return {.kind = Kind::number, .number = value}; }
    static SheetCell ofBoolean(bool value) { return {.kind = Kind::boolean, .boolean = value}; }
    static SheetCell ofDate(QDate value) { return {.kind = Kind::date, .date = value}; }
    static SheetCell ofDateTime(QDate day, QTime at) { return {.kind = Kind::dateTime, .date = day, .time = at}; }
    static SheetCell ofTime(QTime value) { return {.kind = Kind::time, .time = value}; }

    bool isEmpty() const { return kind == Kind::empty || (kind == Kind::text && text.isEmpty()); }

    friend bool operator==(const SheetCell&, const SheetCell&) = default;
};

// A row as it is read: cells from the first column on, as many as the row has. Rows of one
// table may differ in length; nobody pads them.
using SheetRow = QList<SheetCell>;

// The cell as text, the way a delimited file holds it: numbers in the shortest form that reads
// back to the same value (integers in full, never "1e+15" or "1.0000000002"), dates and times in
// ISO 8601 ("2024-03-09", "2024-03-09T14:30", seconds and milliseconds only when not zero),
// booleans as TRUE and FALSE.
QString cellText(const SheetCell& cell);

// The shortest decimal text that reads back to exactly `value`: positional for everyday
// magnitudes, scientific only for the very large and very small. Infinite and NaN values,
// which no table format holds, give "#NUM!" as spreadsheets show them.
QString numberText(double value);

}  // namespace wendrel
