#include "RtfContentBuilder.h"

#include "operations/OperationError.h"

#include <algorithm>

namespace wendrel::rtf {

namespace {

// Cells are the one thing a small file can ask for in great numbers (a few bytes each, and a
// table is as wide as its widest row), so their count is capped well above real documents.
constexpr qsizetype maximumCells = 200'000;

}  // namespace

void ContentBuilder::countCell()
{
    if (++m_cells > maximumCells)
        throw OperationError(QStringLiteral("The document's tables are too large to read"));
}

QList<Item>& ContentBuilder::itemsAt(int depth)
{
    return depth == 0 ? m_body : m_open[depth - 1].cellItems;
}

void ContentBuilder::reachDepth(int depth)
{
    depth = std::clamp(depth, 0, maximumDepth);
    while (m_open.size() > depth) {
        OpenTable closing = m_open.takeLast();
        // A row left open (its end mark missing) still counts, with what it has.
        if (!closing.cellItems.isEmpty()) {
            countCell();
            closing.rowCells.append(Cell{.items = closing.cellItems});
        }
        if (!closing.rowCells.isEmpty())
            closing.table->rows.append(Row{.cells = closing.rowCells});
        if (!closing.table->rows.isEmpty())
            itemsAt(static_cast<int>(m_open.size())).append(closing.table);
    }
    while (m_open.size() < depth)
        m_open.append(OpenTable{});
}

void ContentBuilder::addParagraph(Paragraph paragraph, int depth)
{
    reachDepth(depth);
    itemsAt(static_cast<int>(m_open.size())).append(std::move(paragraph));
}

void ContentBuilder::endCell(int depth)
{
    reachDepth(std::max(depth, 1));
    OpenTable& open = m_open.last();
    countCell();
    open.rowCells.append(Cell{.items = std::move(open.cellItems)});
    open.cellItems.clear();
}

void ContentBuilder::endRow(int depth, const RowDefinition& definition)
{
    reachDepth(std::max(depth, 1));
    OpenTable& open = m_open.last();
    if (!open.cellItems.isEmpty())
        endCell(static_cast<int>(m_open.size()));
    if (open.rowCells.isEmpty())
        return;
    Row row{.cells = std::move(open.rowCells), .header = definition.header};
    open.rowCells.clear();
    for (qsizetype index = 0; index < row.cells.size() && index < definition.cells.size(); ++index) {
        row.cells[index].mergedWithPrevious = definition.cells[index].withPrevious && index > 0;
        row.cells[index].mergedWithAbove = definition.cells[index].withAbove;
    }
    open.table->rows.append(std::move(row));
}

QList<Item> ContentBuilder::finish()
{
    reachDepth(0);
    return std::move(m_body);
}

}  // namespace wendrel::rtf
