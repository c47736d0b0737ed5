#include "DocumentSamples.h"

#include "documents/model/DocumentModel.h"
#include "documents/model/DocumentWalk.h"

#include <QBuffer>
#include <QImage>
#include <QTextBlock>
#include <QTextImageFormat>
#include <QStringList>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextList>
#include <QTextTable>

namespace wendrel::test {

namespace {

using document::InlineStyle;

void insertStyled(QTextCursor& cursor, const QString& text, const InlineStyle& style)
{
    cursor.insertText(text, document::charFormat(style));
}

QString styled(const document::Run& run, bool withStyles)
{
    if (run.picture)
        return QStringLiteral("[picture]");
    QString text = run.text;
    text.replace(QChar::LineSeparator, QStringLiteral("⏎"));
    if (!withStyles)
        return text;
    const InlineStyle& style = run.style;
    if (style.code)
        text = u'`' + text + u'`';
    if (style.strike)
        text = QStringLiteral("~~") + text + QStringLiteral("~~");
    if (style.underline)
        text = u'_' + text + u'_';
    if (style.italic)
        text = u'*' + text + u'*';
    if (style.bold)
        text = QStringLiteral("**") + text + QStringLiteral("**");
    if (!style.link.isEmpty())
        text = u'[' + text + QStringLiteral("](") + style.link + u')';
    return text;
}

class StructureWriter final : public document::DocumentVisitor {
public:
    StructureWriter(const QTextDocument& document, bool withStyles) : m_document(document), m_withStyles(withStyles) {}

    void block(const QTextBlock& block) override
    {
        QString kind = QStringLiteral("p");
        if (const int level = document::headingLevel(block))
            kind = QStringLiteral("h%1").arg(level);
        else if (const auto list = document::listPlacement(block))
            kind = QStringLiteral("%1%2").arg(list->ordered ? u"ol" : u"ul").arg(list->level);
        QStringList pieces;
        for (document::Run run : document::runs(block)) {
            if (kind.startsWith(u'h'))
                run.style.bold = false;  // headings are bold by their nature, in every format
            if (run.picture) {
                const auto picture = document::picture(m_document, *run.picture);
                m_lines.append(picture ? QStringLiteral("picture %1x%2").arg(picture->pixelWidth).arg(picture->pixelHeight)
                                       : QStringLiteral("picture unreadable"));
            }
            pieces.append(styled(run, m_withStyles));
        }
        const QString text = pieces.join(QString()).simplified();
        if (text.isEmpty() && kind == u"p")
            return;  // empty paragraphs are spacing, which formats keep differently
        m_lines.append(m_prefix + kind + u' ' + text);
    }

    void beginTable(const QTextTable& table) override
    {
        m_lines.append(QStringLiteral("table %1x%2 header %3")
                           .arg(table.columns())
                           .arg(table.rows())
                           .arg(table.format().headerRowCount()));
    }
    void beginCell(const QTextTableCell& cell) override
    {
        m_prefix = QStringLiteral("cell %1,%2 ").arg(cell.row()).arg(cell.column());
    }
    void endCell(const QTextTableCell&) override { m_prefix.clear(); }

    QString text() const { return m_lines.join(u'\n'); }

private:
    const QTextDocument& m_document;
    bool m_withStyles;
    QString m_prefix;
    QStringList m_lines;
};

}  // namespace

QByteArray samplePng()
{
    QImage image(40, 20, QImage::Format_RGB32);
    image.fill(Qt::red);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes;
}

std::unique_ptr<QTextDocument> richSampleDocument()
{
    auto result = std::make_unique<QTextDocument>();
    QTextDocument& doc = *result;
    QTextCursor cursor(&doc);

    document::setHeading(cursor, 1);
    cursor.insertText(QStringLiteral("Quarterly Report"));

    cursor.insertBlock(QTextBlockFormat(), QTextCharFormat());
    insertStyled(cursor, QStringLiteral("Plain, "), {});
    insertStyled(cursor, QStringLiteral("bold"), {.bold = true});
    insertStyled(cursor, QStringLiteral(", "), {});
    insertStyled(cursor, QStringLiteral("italic"), {.italic = true});
    insertStyled(cursor, QStringLiteral(", "), {});
    insertStyled(cursor, QStringLiteral("underlined"), {.underline = true});
    insertStyled(cursor, QStringLiteral(", "), {});
    insertStyled(cursor, QStringLiteral("struck"), {.strike = true});
    insertStyled(cursor, QStringLiteral(", "), {});
    insertStyled(cursor, QStringLiteral("code"), {.code = true});
    insertStyled(cursor, QStringLiteral(", a "), {});
    insertStyled(cursor, QStringLiteral("link"), {.link = QStringLiteral("https://example.org/a?b=1&c=2")});
    insertStyled(cursor, QStringLiteral(" and Ünïcödé — 日本語 <tags> & {braces} \\ back"), {});

    cursor.insertBlock(QTextBlockFormat(), QTextCharFormat());
    document::setHeading(cursor, 2);
    cursor.insertText(QStringLiteral("Lists"));

    cursor.insertBlock(QTextBlockFormat(), QTextCharFormat());
    QTextList* bullets = cursor.createList(document::listFormat(false, 1));
    cursor.insertText(QStringLiteral("First"));
    cursor.insertBlock();
    cursor.insertText(QStringLiteral("Second"));
    cursor.insertBlock();
    cursor.createList(document::listFormat(true, 2));
    cursor.insertText(QStringLiteral("Sub one"));
    cursor.insertBlock();
    cursor.insertText(QStringLiteral("Sub two"));
    cursor.insertBlock();
    bullets->add(cursor.block());
    cursor.insertText(QStringLiteral("Third"));

    cursor.insertBlock(QTextBlockFormat(), QTextCharFormat());
    document::setHeading(cursor, 2);
    cursor.insertText(QStringLiteral("Table"));

    cursor.insertBlock(QTextBlockFormat(), QTextCharFormat());
    QTextTableFormat tableFormat;
    tableFormat.setHeaderRowCount(1);
    QTextTable* table = cursor.insertTable(3, 2, tableFormat);
    const char* cells[3][2] = {{"Name", "Value"}, {"Width", "42"}, {"Text with, comma", "\"quoted\""}};
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 2; ++column) {
            QTextCursor cell = table->cellAt(row, column).firstCursorPosition();
            cell.insertText(QString::fromUtf8(cells[row][column]),
                            document::charFormat({.bold = row == 0}));
        }
    }
    cursor.movePosition(QTextCursor::End);

    cursor.insertBlock(QTextBlockFormat(), QTextCharFormat());
    cursor.insertText(QStringLiteral("A picture: "));
    cursor.insertImage(document::addPicture(doc, samplePng(), 30, 15));
    cursor.insertText(QStringLiteral(" and a line") + QChar(QChar::LineSeparator) + QStringLiteral("break."));
    return result;
}

QList<QSizeF> pictureSizes(const QTextDocument& document)
{
    QList<QSizeF> sizes;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        for (auto it = block.begin(); !it.atEnd(); ++it) {
            if (it.fragment().charFormat().isImageFormat()) {
                const QTextImageFormat image = it.fragment().charFormat().toImageFormat();
                sizes.append(QSizeF(image.width(), image.height()));
            }
        }
    }
    return sizes;
}

QString structureOf(const QTextDocument& document, bool withStyles)
{
    StructureWriter writer(document, withStyles);
    document::walkDocument(document, writer);
    return writer.text();
}

}  // namespace wendrel::test
