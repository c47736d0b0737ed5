#pragma once

#include "SheetReading.h"

namespace wendrel {

// Hands rows on in order for readers whose formats number their rows and cells, or repeat
// them: gaps become empty rows, and empty rows wait until a row with something in it follows,
// so the empty rows that formatting alone leaves at a table's end never come out (nor are
// ever laid out in memory). Rows and columns beyond what a workbook holds end the reading as
// an unreadable table: that is how hostile files ask for billions of them. So do more than
// sheet::mostReadCells cells in all, which only repeats reach: a few bytes saying "this
// row a million times over" must not turn into gigabytes of output.
class RowAssembly {
public:
    RowAssembly(const SheetRowSink& sink, const SheetProgress& progress);

    // The reader's share of the input read, for progress.
    void setFraction(double fraction) { m_fraction = fraction; }

    // Rows are counted from 0. A row index before the next one is taken as the next one.
    qint64 nextRow() const { return m_nextRow; }
    void skipRows(qint64 count);
    // `row` is passed on `repeat` times at `index` on; its trailing empty cells are dropped.
    void addRow(qint64 index, SheetRow& row, qint64 repeat = 1);

    void finish();

private:
    const SheetRowSink& m_sink;
    const SheetProgress& m_progress;
    double m_fraction = 0;
    qint64 m_nextRow = 0;      // the index the next row passed on will have
    qint64 m_emptyRows = 0;    // rows since then that were empty
    int m_rowsInBatch = 0;
    qint64 m_cells = 0;
    SheetRow m_empty;
};

// The cells of one row as a reader meets them, numbered or repeated: empty cells are only
// counted until a cell with something in it follows, so trailing ones never come out and a
// row can't be made to hold millions of them.
class RowCells {
public:
    // The column the next cell takes.
    qint64 nextColumn() const { return m_cells.size() + m_emptyCells; }
    // Leaves the columns before `column` empty; nothing when the row is already past it.
    void skipTo(qint64 column);
    // `cell` `repeat` times from nextColumn() on. Throws sheet::unreadableTable() when a cell
    // with something in it lands past a workbook's last column.
    void add(const SheetCell& cell, qint64 repeat = 1);

    SheetRow& cells() { return m_cells; }
    void clear();

private:
    SheetRow m_cells;
    qint64 m_emptyCells = 0;
};

}  // namespace wendrel
