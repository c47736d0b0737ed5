#include "DocumentWalk.h"

#include <QTextDocument>
#include <QTextFrame>
#include <QTextTable>

namespace wendrel::document {

namespace {

void walkFrameItems(QTextFrame::iterator it, DocumentVisitor& visitor);

void walkTable(const QTextTable& table, DocumentVisitor& visitor)
{
    visitor.beginTable(table);
    for (int row = 0; row < table.rows(); ++row) {
        visitor.beginRow(table, row);
        for (int column = 0; column < table.columns(); ++column) {
            const QTextTableCell cell = table.cellAt(row, column);
            if (cell.row() != row || cell.column() != column)
                continue;  // covered by a spanning cell
            visitor.beginCell(cell);
            walkFrameItems(cell.begin(), visitor);
            visitor.endCell(cell);
        }
        visitor.endRow(table, row);
    }
    visitor.endTable(table);
}

void walkFrameItems(QTextFrame::iterator it, DocumentVisitor& visitor)
{
    for (; !it.atEnd(); ++it) {
        if (QTextFrame* child = it.currentFrame()) {
            if (const auto* table = qobject_cast<const QTextTable*>(child))
                walkTable(*table, visitor);
            else
                walkFrameItems(child->begin(), visitor);
        } else if (it.currentBlock().isValid()) {
            visitor.block(it.currentBlock());
        }
    }
}

}  // namespace

QList<Run> runs(const QTextBlock& block)
{
    QList<Run> result;
    for (auto it = block.begin(); !it.atEnd(); ++it) {
        const QTextFragment fragment = it.fragment();
        if (!fragment.isValid())
            continue;
        const QTextCharFormat format = fragment.charFormat();
        if (format.isImageFormat()) {
            // One object replacement character per picture.
            for (qsizetype i = 0; i < fragment.length(); ++i)
                result.append(Run{.style = inlineStyle(format), .picture = format.toImageFormat()});
            continue;
        }
        const InlineStyle style = inlineStyle(format);
        QString text = fragment.text();
        text.remove(QChar::ObjectReplacementCharacter);
        if (text.isEmpty())
            continue;
        if (!result.isEmpty() && !result.last().picture && result.last().style == style)
            result.last().text += text;
        else
            result.append(Run{.text = text, .style = style});
    }
    return result;
}

void walkDocument(const QTextDocument& document, DocumentVisitor& visitor)
{
    walkFrameItems(document.rootFrame()->begin(), visitor);
}

}  // namespace wendrel::document
