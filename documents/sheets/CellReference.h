#pragma once

#include <QByteArray>
#include <QStringView>

#include <optional>

namespace wendrel {

// Column letters as workbooks name them: 0 is "A", 25 "Z", 26 "AA".
QByteArray columnLetters(int column);

struct CellPosition {
    int column = 0;  // from 0
    qint64 row = 0;  // from 0
};

// "B7" → column 1, row 6. Nothing for anything else, or for positions past what a workbook
// holds (a hostile reference can't make a reader fill a row of millions of empty cells).
std::optional<CellPosition> parseCellReference(QStringView reference);

}  // namespace wendrel
