#pragma once

#include <QList>
#include <QString>
#include <QStringList>

class QTextTable;
class QTextTableCell;

namespace wendrel::document {

// Gathers a table's text row by row for writers that put a row on one line, tables in cells
// included. Cells covered by a spanning cell count as empty, so columns stay aligned.
class TableTextCollector {
public:
    // `pieceSeparator` joins the paragraphs of one cell.
    explicit TableTextCollector(QString pieceSeparator) : m_pieceSeparator(std::move(pieceSeparator)) {}

    bool inTable() const { return !m_tables.isEmpty(); }

    void beginTable(const QTextTable& table);
    void beginRow();
    void beginCell(const QTextTableCell& cell);
    // A piece of the current cell's text (a paragraph); blank pieces are left out.
    void addText(const QString& text);
    void endCell();
    void endRow(const QTextTable& table);
    // The finished table: per row, the text of every column.
    QList<QStringList> endTable();

private:
    struct TableText {
        QList<QStringList> rows;
        QStringList cells;
        QStringList pieces;
    };

    QString m_pieceSeparator;
    QList<TableText> m_tables;
};

}  // namespace wendrel::document
