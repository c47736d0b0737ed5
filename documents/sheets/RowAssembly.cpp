#include "RowAssembly.h"

#include "SheetErrors.h"
#include "SheetLimits.h"

namespace wendrel {

RowAssembly::RowAssembly(const SheetRowSink& sink, const SheetProgress& progress)
    : m_sink(sink), m_progress(progress)
{
}

void RowAssembly::skipRows(qint64 count)
{
    m_emptyRows += count;
    if (m_nextRow + m_emptyRows > sheet::mostWorkbookRows)
        m_emptyRows = sheet::mostWorkbookRows - m_nextRow;  // never reached by a row with cells
}

void RowAssembly::addRow(qint64 index, SheetRow& row, qint64 repeat)
{
    while (!row.isEmpty() && row.back().isEmpty())
        row.removeLast();
    const qint64 at = std::max(index, m_nextRow + m_emptyRows);
    if (row.isEmpty()) {
        skipRows(at - (m_nextRow + m_emptyRows) + repeat);
        return;
    }
    if (at + repeat > sheet::mostWorkbookRows)
        throw sheet::unreadableTable(QStringLiteral("more rows than a workbook holds"));
    m_cells += repeat * row.size();
    if (m_cells > sheet::mostReadCells)
        throw sheet::unreadableTable(QStringLiteral("more cells than a table holds"));
    for (; m_nextRow < at; ++m_nextRow)
        m_sink(m_empty);
    m_emptyRows = 0;
    for (qint64 copy = 0; copy < repeat; ++copy, ++m_nextRow) {
        m_sink(row);
        if (++m_rowsInBatch == sheet::rowsPerBatch) {
            m_rowsInBatch = 0;
            if (m_progress)
                m_progress(m_fraction);
        }
    }
}

void RowAssembly::finish()
{
    if (m_progress)
        m_progress(1);
}

void RowCells::skipTo(qint64 column)
{
    if (column > nextColumn())
        m_emptyCells += column - nextColumn();
}

void RowCells::add(const SheetCell& cell, qint64 repeat)
{
    if (repeat <= 0)
        return;
    if (cell.isEmpty()) {
        m_emptyCells = std::min(m_emptyCells + repeat, qint64(sheet::mostWorkbookColumns) + 1);
        return;
    }
    if (nextColumn() + repeat > sheet::mostWorkbookColumns)
        throw sheet::unreadableTable(QStringLiteral("more columns than a workbook holds"));
    m_cells.resize(m_cells.size() + m_emptyCells);
    m_emptyCells = 0;
    for (qint64 copy = 0; copy < repeat; ++copy)
        m_cells.append(cell);
}

void RowCells::clear()
{
    m_cells.clear();
    m_emptyCells = 0;
}

}  // namespace wendrel
