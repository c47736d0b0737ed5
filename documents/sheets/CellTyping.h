#pragma once

#include "SheetCell.h"

#include <optional>

namespace wendrel {

// What a field of a delimited file holds, for formats that keep types (a workbook made from a
// CSV). The rule is deliberately narrow, because a wrong guess destroys data that a right one
// only decorates:
//   - empty: an empty field;
//   - number: a plain decimal as programs write it: an optional minus, digits with an optional
//     '.' fraction (or a fraction alone, ".5"), an optional exponent ("1e-3", "2.5E+8"). It
//     stays text when the integer part has a leading zero ("007", "-01.5": codes, not amounts),
//     when it has more than 15 significant digits (card numbers, IDs: a double would round
//     them), when it has a plus sign ("+4420…" is a phone number far more often than an
//     amount), a thousands separator or a decimal comma ("1,5"), spaces, or overflows;
//   - boolean: exactly TRUE or FALSE, as spreadsheets write them;
//   - date: ISO yyyy-mm-dd of a real day from 1900 on (what a workbook can hold);
//   - dateTime: the same day then 'T' and hh:mm, hh:mm:ss or hh:mm:ss.fff;
//   - text: everything else, exactly as written.
SheetCell typedCell(const QString& field);

// A number as a workbook stores it (any form C++ reads: "1e-07", "-0.5", blanks around it);
// nothing for anything else.
std::optional<double> storedNumber(QStringView text);

}  // namespace wendrel
