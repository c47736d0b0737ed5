#include "TableTextCollector.h"

#include <QTextTable>

namespace wendrel::document {

void TableTextCollector::beginTable(const QTextTable&)
{
    m_tables.append(TableText{});
}

void TableTextCollector::beginRow()
{
    m_tables.last().cells.clear();
}

void TableTextCollector::beginCell(const QTextTableCell& cell)
{
    TableText& table = m_tables.last();
    while (table.cells.size() < cell.column())
        table.cells.append(QString());  // covered by a cell spanning from the left or above
    table.pieces.clear();
}

void TableTextCollector::addText(const QString& text)
{
    if (!text.trimmed().isEmpty())
        m_tables.last().pieces.append(text.trimmed());
}

void TableTextCollector::endCell()
{
    TableText& table = m_tables.last();
    table.cells.append(table.pieces.join(m_pieceSeparator));
    table.pieces.clear();
}

void TableTextCollector::endRow(const QTextTable& table)
{
    TableText& text = m_tables.last();
    while (text.cells.size() < table.columns())
        text.cells.append(QString());
    text.rows.append(text.cells);
    text.cells.clear();
}

QList<QStringList> TableTextCollector::endTable()
{
    return m_tables.takeLast().rows;
}

}  // namespace wendrel::document
