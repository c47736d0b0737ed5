#pragma once

#include "RtfContent.h"

namespace wendrel::rtf {

// Puts paragraphs into tables as their marks say: a paragraph's depth is 0 outside tables and
// the table nesting level inside one; cell and row ends close what is open at their depth.
class ContentBuilder {
public:
    // Nesting deeper than this is read as this deep.
    static constexpr int maximumDepth = 16;

    void addParagraph(Paragraph paragraph, int depth);
    void endCell(int depth);
    void endRow(int depth, const RowDefinition& definition);

    // Everything read, with tables still open closed.
    QList<Item> finish();

private:
    struct OpenTable {
        std::shared_ptr<Table> table = std::make_shared<Table>();
        QList<Cell> rowCells;
        QList<Item> cellItems;
    };

    void reachDepth(int depth);
    QList<Item>& itemsAt(int depth);
    void countCell();

    QList<Item> m_body;
    QList<OpenTable> m_open;
    qsizetype m_cells = 0;
};

}  // namespace wendrel::rtf
