#include "RtfDocumentAssembly.h"

#include <QHash>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextList>
#include <QTextTable>

#include <algorithm>

namespace wendrel::rtf {

namespace {

// Wider rows keep their extra cells' text in the last column.
constexpr int maximumColumns = 64;

// Writes items into one frame (the document or a table cell), starting in its empty first block.
class FrameWriter {
public:
    FrameWriter(QTextDocument& document, QTextCursor cursor) : m_document(document), m_cursor(cursor) {}

    void write(const QList<Item>& items)
    {
        for (const Item& item : items) {
            if (const auto* paragraph = std::get_if<Paragraph>(&item))
                writeParagraph(*paragraph);
            else
                writeTable(*std::get<std::shared_ptr<Table>>(item));
        }
    }

private:
    void startBlock()
    {
        if (m_blockUsed)
            m_cursor.insertBlock(QTextBlockFormat(), QTextCharFormat());
        m_blockUsed = true;
    }

    void writeParagraph(const Paragraph& paragraph)
    {
        startBlock();
        QTextBlockFormat blockFormat;
        blockFormat.setHeadingLevel(paragraph.headingLevel);
        m_cursor.setBlockFormat(blockFormat);
        placeInList(paragraph.listItem);

        const QTextCharFormat base = paragraph.headingLevel > 0 ? document::headingCharFormat(paragraph.headingLevel)
                                                                : QTextCharFormat();
        m_cursor.setCharFormat(base);
        for (const Span& span : paragraph.spans) {
            if (span.picture) {
                m_cursor.insertImage(document::addPicture(m_document, span.picture->bytes, span.picture->widthPoints,
                                                          span.picture->heightPoints));
            } else {
                m_cursor.insertText(span.text, document::charFormat(span.style, base));
            }
        }
    }

    // Items of one list at one level join one QTextList; a deeper level opens a list of its
    // own, and anything that isn't a list item ends them all.
    void placeInList(const std::optional<ListItem>& item)
    {
        if (!item) {
            m_lists.clear();
            return;
        }
        for (auto it = m_lists.begin(); it != m_lists.end();) {
            if (it.key() > item->level)
                it = m_lists.erase(it);
            else
                ++it;
        }
        const auto found = m_lists.constFind(item->level);
        if (found != m_lists.constEnd() && found->list == item->list && found->ordered == item->ordered) {
            found->textList->add(m_cursor.block());
            return;
        }
        QTextList* list = m_cursor.createList(document::listFormat(item->ordered, item->level));
        m_lists.insert(item->level, OpenList{.list = item->list, .ordered = item->ordered, .textList = list});
    }

    struct Placement {
        int row = 0;
        int column = 0;
        int rowSpan = 1;
        int columnSpan = 1;
        const Cell* cell = nullptr;
        QList<const Cell*> extra;  // cells past the last column, kept in this one
    };

    void writeTable(const Table& table)
    {
        QList<Placement> placements;
        QHash<qint64, qsizetype> owner;  // (row, column) -> placement
        int columns = 1;
        const int rows = static_cast<int>(table.rows.size());
        for (int row = 0; row < rows; ++row) {
            int column = 0;
            qsizetype last = -1;
            int coveredFromAbove = 0;  // cells of this row under a merge continued from above
            qsizetype coveringPlacement = -1;
            for (const Cell& cell : table.rows[row].cells) {
                if (cell.mergedWithPrevious && coveredFromAbove > 0) {
                    --coveredFromAbove;
                    placements[coveringPlacement].extra.append(&cell);
                    continue;
                }
                coveredFromAbove = 0;
                if (cell.mergedWithPrevious && last >= 0 && placements[last].row == row) {
                    if (column < maximumColumns) {
                        ++placements[last].columnSpan;
                        owner.insert(qint64(row) << 32 | column, last);
                        ++column;
                    }
                    placements[last].extra.append(&cell);
                    continue;
                }
                if (column >= maximumColumns) {
                    if (last >= 0)
                        placements[last].extra.append(&cell);
                    continue;
                }
                const auto above = owner.constFind(qint64(row - 1) << 32 | column);
                if (cell.mergedWithAbove && above != owner.constEnd()) {
                    Placement& start = placements[*above];
                    if (start.column == column && start.row + start.rowSpan == row) {
                        ++start.rowSpan;
                        for (int c = column; c < column + start.columnSpan && c < maximumColumns; ++c)
                            owner.insert(qint64(row) << 32 | c, *above);
                        start.extra.append(&cell);
                        column += start.columnSpan;
                        coveredFromAbove = start.columnSpan - 1;
                        coveringPlacement = *above;
                        last = -1;
                        continue;
                    }
                }
                placements.append(Placement{.row = row, .column = column, .cell = &cell});
                last = placements.size() - 1;
                owner.insert(qint64(row) << 32 | column, last);
                ++column;
            }
            columns = std::max(columns, column);
        }

        int headerRows = 0;
        while (headerRows < rows && table.rows[headerRows].header)
            ++headerRows;

        startBlock();
        QTextTableFormat format;
        format.setHeaderRowCount(headerRows);
        QTextTable* textTable = m_cursor.insertTable(rows, columns, format);
        for (const Placement& placement : placements) {
            FrameWriter cellWriter(m_document, textTable->cellAt(placement.row, placement.column).firstCursorPosition());
            cellWriter.write(placement.cell->items);
            for (const Cell* extra : placement.extra)
                cellWriter.write(extra->items);
        }
        for (const Placement& placement : placements) {
            if (placement.rowSpan > 1 || placement.columnSpan > 1)
                textTable->mergeCells(placement.row, placement.column, placement.rowSpan, placement.columnSpan);
        }
        // Qt keeps an empty block after every table; what follows goes there.
        m_cursor.setPosition(textTable->lastPosition() + 1);
        m_blockUsed = false;
        m_lists.clear();
    }

    struct OpenList {
        int list = 0;
        bool ordered = false;
        QTextList* textList = nullptr;
    };

    QTextDocument& m_document;
    QTextCursor m_cursor;
    bool m_blockUsed = false;
    QHash<int, OpenList> m_lists;  // by level
};

}  // namespace

std::unique_ptr<QTextDocument> assembleDocument(const QList<Item>& items)
{
    auto document = std::make_unique<QTextDocument>();
    FrameWriter(*document, QTextCursor(document.get())).write(items);
    return document;
}

}  // namespace wendrel::rtf
