#include "PlainTextWriter.h"

#include "TableTextCollector.h"
#include "documents/model/DocumentModel.h"
#include "documents/model/DocumentWalk.h"

#include <QStringList>
#include <QTextDocument>
#include <QTextList>

namespace wendrel::document {

namespace {

// The text of a block's runs without pictures; a line break becomes `lineBreak`.
QString blockText(const QTextBlock& block, const QString& lineBreak)
{
    QString text;
    for (const Run& run : runs(block)) {
        if (!run.picture)
            text += run.text;
    }
    text.replace(QChar::LineSeparator, lineBreak);
    return text;
}

QString listMarker(const QTextBlock& block, const ListPlacement& placement)
{
    if (!placement.ordered)
        return QStringLiteral("• ");
    return QStringLiteral("%1. ").arg(block.textList()->itemNumber(block) + 1);
}

class PlainTextVisitor final : public DocumentVisitor {
public:
    void block(const QTextBlock& block) override
    {
        if (m_tables.inTable()) {
            m_tables.addText(blockText(block, QStringLiteral(" ")));
            return;
        }
        const auto list = listPlacement(block);
        if (!list || headingLevel(block) > 0) {
            const QString text = blockText(block, QStringLiteral("\n"));
            if (!text.trimmed().isEmpty())
                addUnit(text, false);
            return;
        }
        const QString indent(2 * (list->level - 1), u' ');
        const QString marker = listMarker(block, *list);
        QString text = blockText(block, u'\n' + indent + QString(marker.size(), u' '));
        addUnit(indent + marker + text, true);
    }

    void beginTable(const QTextTable& table) override { m_tables.beginTable(table); }
    void beginRow(const QTextTable&, int) override { m_tables.beginRow(); }
    void beginCell(const QTextTableCell& cell) override { m_tables.beginCell(cell); }
    void endCell(const QTextTableCell&) override { m_tables.endCell(); }
    void endRow(const QTextTable& table, int) override { m_tables.endRow(table); }
    void endTable(const QTextTable&) override
    {
        QStringList rows;
        for (const QStringList& cells : m_tables.endTable())
            rows.append(cells.join(u'\t'));
        if (m_tables.inTable())
            m_tables.addText(rows.join(u' '));  // a table in a cell reads as one line
        else if (!rows.isEmpty())
            addUnit(rows.join(u'\n'), false);
    }

    QString text() const { return m_units.isEmpty() ? QString() : m_units.join(QString()) + u'\n'; }

private:
    // List items follow each other line by line; everything else has a blank line between.
    void addUnit(const QString& text, bool listItem)
    {
        if (!m_units.isEmpty())
            m_units.append(listItem && m_lastWasListItem ? QStringLiteral("\n") : QStringLiteral("\n\n"));
        m_units.append(text);
        m_lastWasListItem = listItem;
    }

    QStringList m_units;
    bool m_lastWasListItem = false;
    TableTextCollector m_tables{QStringLiteral(" ")};
};

}  // namespace

QString documentToPlainText(const QTextDocument& document)
{
    PlainTextVisitor visitor;
    walkDocument(document, visitor);
    return visitor.text();
}

}  // namespace wendrel::document
