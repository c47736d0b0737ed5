#include "MarkdownWriter.h"

#include "MarkdownInline.h"
#include "TableTextCollector.h"
#include "documents/model/DocumentModel.h"
#include "documents/model/DocumentWalk.h"

#include <QStringList>
#include <QTextDocument>
#include <QTextList>

#include <vector>

namespace wendrel::document {

namespace {

QString tableRow(const QStringList& cells, qsizetype columns)
{
    QStringList padded = cells;
    while (padded.size() < columns)
        padded.append(QString());
    for (QString& cell : padded) {
        if (cell.isEmpty())
            cell = QStringLiteral(" ");
    }
    return QStringLiteral("| ") + padded.join(QStringLiteral(" | ")) + QStringLiteral(" |");
}

QString markdownTable(const QList<QStringList>& rows)
{
    qsizetype columns = 1;
    for (const QStringList& row : rows)
        columns = std::max(columns, row.size());
    QStringList lines;
    for (const QStringList& row : rows) {
        lines.append(tableRow(row, columns));
        if (lines.size() == 1)
            lines.append(tableRow(QStringList(columns, QStringLiteral("---")), columns));
    }
    return lines.join(u'\n');
}

class MarkdownVisitor final : public DocumentVisitor {
public:
    void block(const QTextBlock& block) override
    {
        if (m_tables.inTable()) {
            QString text = blockMarkdown(block, MarkdownPlace::tableCell);
            if (const auto list = listPlacement(block); list && !text.isEmpty())
                text.prepend(list->ordered ? QStringLiteral("%1. ").arg(block.textList()->itemNumber(block) + 1)
                                           : QStringLiteral("• "));
            m_tables.addText(text);
            return;
        }
        if (const int level = headingLevel(block)) {
            const QString text = blockMarkdown(block, MarkdownPlace::heading);
            if (!text.isEmpty())
                addUnit(QString(level, u'#') + u' ' + text);
            return;
        }
        if (const auto list = listPlacement(block)) {
            listItem(block, *list);
            return;
        }
        const QString text = blockMarkdown(block, MarkdownPlace::paragraph);
        if (!text.isEmpty())
            addUnit(text);
    }

    void beginTable(const QTextTable& table) override { m_tables.beginTable(table); }
    void beginRow(const QTextTable&, int) override { m_tables.beginRow(); }
    void beginCell(const QTextTableCell& cell) override { m_tables.beginCell(cell); }
    void endCell(const QTextTableCell&) override { m_tables.endCell(); }
    void endRow(const QTextTable& table, int) override { m_tables.endRow(table); }
    void endTable(const QTextTable&) override
    {
        const QList<QStringList> rows = m_tables.endTable();
        if (m_tables.inTable()) {
            // A table in a cell has no Markdown form: its text, row after row.
            QStringList text;
            for (const QStringList& row : rows)
                text.append(row.join(u' ').trimmed());
            m_tables.addText(text.join(u' '));
        } else if (!rows.isEmpty()) {
            addUnit(markdownTable(rows));
        }
    }

    QString text() const { return m_units.isEmpty() ? QString() : m_units.join(QString()) + u'\n'; }

private:
    void listItem(const QTextBlock& block, const ListPlacement& list)
    {
        const QTextList* textList = block.textList();
        if (list.level == 1 && textList != m_outerList) {
            // Two lists one after the other would run together; a different marker keeps
            // them apart.
            if (m_lastWasListItem)
                m_alternateMarkers = !m_alternateMarkers;
            m_outerList = textList;
            m_lastWasListItem = false;  // a blank line before it
        }
        QString marker;
        if (list.ordered)
            marker = QStringLiteral("%1%2 ").arg(textList->itemNumber(block) + 1).arg(QChar(m_alternateMarkers ? u')' : u'.'));
        else
            marker = m_alternateMarkers ? QStringLiteral("* ") : QStringLiteral("- ");

        // An item's text starts where its parent item's text starts.
        const auto depth = static_cast<size_t>(list.level - 1);
        if (m_contentColumns.size() > depth)
            m_contentColumns.resize(depth);
        const int indent = m_contentColumns.empty() ? 0 : m_contentColumns.back();
        const int contentColumn = indent + static_cast<int>(marker.size());
        m_contentColumns.push_back(contentColumn);

        QString text = blockMarkdown(block, MarkdownPlace::paragraph);
        text.replace(u'\n', u'\n' + QString(contentColumn, u' '));
        addUnit(QString(indent, u' ') + marker + text, true);
    }

    // List items follow each other line by line; everything else has a blank line between.
    void addUnit(const QString& text, bool listItem = false)
    {
        if (!m_units.isEmpty())
            m_units.append(listItem && m_lastWasListItem ? QStringLiteral("\n") : QStringLiteral("\n\n"));
        m_units.append(text);
        m_lastWasListItem = listItem;
        if (!listItem) {
            m_contentColumns.clear();
            m_outerList = nullptr;
        }
    }

    QStringList m_units;
    bool m_lastWasListItem = false;
    bool m_alternateMarkers = false;
    const QTextList* m_outerList = nullptr;
    std::vector<int> m_contentColumns;
    TableTextCollector m_tables{QStringLiteral("<br>")};
};

}  // namespace

QString documentToMarkdown(const QTextDocument& document)
{
    MarkdownVisitor visitor;
    walkDocument(document, visitor);
    return visitor.text();
}

}  // namespace wendrel::document
