#include "DocxDocumentBuilder.h"

#include <QTextCursor>
#include <QTextDocument>
#include <QTextList>
#include <QTextTable>

namespace wendrel::docx {

namespace {

class Builder {
public:
    // `cursor` stands in an empty block that the first block written takes over.
    Builder(QTextDocument& document, QTextCursor cursor, const PictureSource& pictures)
        : m_document(document), m_cursor(std::move(cursor)), m_pictures(pictures)
    {
    }

    void build(const std::vector<ContentBlock>& blocks)
    {
        for (const ContentBlock& block : blocks) {
            if (block.table)
                table(*block.table);
            else
                paragraph(block.paragraph);
        }
    }

private:
    struct OpenList {
        QTextList* list = nullptr;
        int numberingId = 0;
        bool ordered = false;
    };

    void paragraph(const ContentParagraph& paragraph)
    {
        if (!m_blockUnused)
            m_cursor.insertBlock(QTextBlockFormat(), QTextCharFormat());
        m_blockUnused = false;
        clearBlockFormat();
        document::setHeading(m_cursor, paragraph.headingLevel);
        if (paragraph.list && paragraph.headingLevel == 0)
            placeInList(*paragraph.list);
        else
            m_lists.clear();

        const QTextCharFormat base = paragraph.headingLevel ? document::headingCharFormat(paragraph.headingLevel)
                                                            : QTextCharFormat();
        for (const ContentRun& run : paragraph.runs) {
            if (run.picture)
                insertPicture(*run.picture, run.style.link);
            else
                m_cursor.insertText(run.text, document::charFormat(run.style, base));
        }
    }

    void placeInList(const ListItem& item)
    {
        const auto level = static_cast<size_t>(item.level);
        m_lists.resize(level);
        OpenList& open = m_lists[level - 1];
        if (open.list && open.numberingId == item.numberingId && open.ordered == item.ordered) {
            open.list->add(m_cursor.block());
        } else {
            open = OpenList{.list = m_cursor.createList(document::listFormat(item.ordered, item.level)),
                            .numberingId = item.numberingId,
                            .ordered = item.ordered};
        }
    }

    void insertPicture(const PictureReference& reference, const QString& link)
    {
        const std::optional<QByteArray> bytes = m_pictures(reference.partPath);
        if (!bytes)
            return;
        QTextImageFormat format = document::addPicture(m_document, *bytes, reference.widthPoints, reference.heightPoints);
        if (!link.isEmpty()) {
            format.setAnchor(true);
            format.setAnchorHref(link);
        }
        m_cursor.insertImage(format);
    }

    void table(const ContentTable& content)
    {
        m_lists.clear();
        QTextTableFormat format;
        format.setHeaderRowCount(content.headerRows);
        format.setCellPadding(2);
        format.setBorder(1);
        // Placed right after the block before it: Qt keeps that block apart from the table, so
        // no empty paragraph comes between.
        QTextTable* table = m_cursor.insertTable(content.rows, content.columns, format);

        // Spans are taken in reading order; one that would overlap an earlier span is dropped.
        std::vector<bool> covered(static_cast<size_t>(content.rows) * content.columns, false);
        const auto at = [&](int row, int column) { return static_cast<size_t>(row) * content.columns + column; };
        for (const ContentCell& cell : content.cells) {
            if (cell.row >= content.rows || cell.column >= content.columns || covered[at(cell.row, cell.column)])
                continue;
            const int rowSpan = std::min(cell.rowSpan, content.rows - cell.row);
            int columnSpan = std::min(cell.columnSpan, content.columns - cell.column);
            for (int c = 1; c < columnSpan; ++c) {
                if (covered[at(cell.row, cell.column + c)]) {
                    columnSpan = c;
                    break;
                }
            }
            for (int r = 0; r < rowSpan; ++r) {
                for (int c = 0; c < columnSpan; ++c)
                    covered[at(cell.row + r, cell.column + c)] = true;
            }
            if (rowSpan > 1 || columnSpan > 1)
                table->mergeCells(cell.row, cell.column, rowSpan, columnSpan);
        }

        for (const ContentCell& cell : content.cells) {
            if (cell.row >= content.rows || cell.column >= content.columns)
                continue;
            const QTextTableCell target = table->cellAt(cell.row, cell.column);
            if (target.row() != cell.row || target.column() != cell.column)
                continue;  // its place went to an earlier span
            Builder inCell(m_document, target.lastCursorPosition(), m_pictures);
            inCell.m_blockUnused = target.firstPosition() == target.lastPosition();
            inCell.build(cell.blocks);
        }

        m_cursor.setPosition(table->lastPosition() + 1);
        m_blockUnused = true;
        clearBlockFormat();
    }

    // The block after a table carries the format of the block the table was placed after;
    // every block is given its own. (Not the block's character format: in a table cell that
    // one holds the cell's spans.)
    void clearBlockFormat()
    {
        if (QTextList* list = m_cursor.currentList())
            list->remove(m_cursor.block());
        m_cursor.setBlockFormat(QTextBlockFormat());
        m_cursor.setCharFormat(QTextCharFormat());
    }

    QTextDocument& m_document;
    QTextCursor m_cursor;
    const PictureSource& m_pictures;
    bool m_blockUnused = true;
    std::vector<OpenList> m_lists;  // by level, outermost first
};

}  // namespace

void buildDocument(QTextDocument& document, const std::vector<ContentBlock>& body, const PictureSource& pictures)
{
    document.setUndoRedoEnabled(false);
    // One edit block: outside one, every insertion lays out its whole paragraph again to place
    // the cursor, which makes long paragraphs quadratic.
    QTextCursor cursor(&document);
    cursor.beginEditBlock();
    Builder(document, cursor, pictures).build(body);
    cursor.endEditBlock();
}

}  // namespace wendrel::docx
