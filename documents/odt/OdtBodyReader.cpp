#include "OdtBodyReader.h"

#include "OdtNames.h"
#include "OdtStyles.h"
#include "documents/model/DocumentModel.h"
#include "operations/OperationError.h"

#include <QCoreApplication>
#include <QRegularExpression>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextList>
#include <QTextTable>
#include <QXmlStreamReader>

#include <vector>

namespace wendrel::document::odt {

namespace {

// Bounds that no real text document comes near, so a hostile one can't take the reader's
// stack or fill memory with a few bytes of XML.
constexpr int maximumDepth = 200;
constexpr int maximumTableColumns = 1024;
constexpr int maximumRowRepeat = 1000;
constexpr qint64 maximumTableCells = 200'000;
constexpr int maximumSpaces = 10'000;

OperationError tooLarge()
{
    return OperationError(QCoreApplication::translate("OdtReader", "The document is too large or too deeply nested"));
}

// An ODF length ("2.5cm", "12pt", "1in") in points; 0 when it isn't one.
double lengthInPoints(QStringView text)
{
    static const QRegularExpression length(QStringLiteral("^\\s*([0-9]*\\.?[0-9]+)\\s*(cm|mm|in|pt|pc|px)\\s*$"));
    const QRegularExpressionMatch match = length.match(text.toString());
    if (!match.hasMatch())
        return 0;
    const double value = match.captured(1).toDouble();
    const QString unit = match.captured(2);
    if (unit == u"cm")
        return value * 72 / 2.54;
    if (unit == u"mm")
        return value * 72 / 25.4;
    if (unit == u"in")
        return value * 72;
    if (unit == u"pc")
        return value * 12;
    if (unit == u"px")
        return value * 0.75;
    return value;
}

// Where blocks go: the document, or a table cell.
struct Container {
    QTextCursor cursor;
    bool atUnusedBlock = true;  // the cursor's block is empty and still free for the next paragraph
};

struct ListLevel {
    QString style;
    QTextList* list = nullptr;  // made with its first item
};

class BodyReader {
public:
    BodyReader(QXmlStreamReader& xml, const OdtStyles& styles, const PackagePictures& pictures,
               QTextDocument& document)
        : m_xml(xml), m_styles(styles), m_pictures(pictures), m_document(document)
    {
        m_container.cursor = QTextCursor(&document);
    }

    void readText() { readBlocks(0); }

private:
    bool is(const QString& ns, QStringView name) const { return m_xml.namespaceUri() == ns && m_xml.name() == name; }
    QString attribute(const QString& ns, const QString& name) const { return m_xml.attributes().value(ns, name).toString(); }

    void enter(int depth) const
    {
        if (depth > maximumDepth)
            throw tooLarge();
    }

    // Block content of the current element (office:text, a section, a cell, a list item…).
    void readBlocks(int depth)
    {
        enter(depth);
        while (m_xml.readNextStartElement())
            readBlock(depth + 1);
    }

    void readBlock(int depth)
    {
        if (is(textNs, u"p") || is(textNs, u"h")) {
            readParagraph(depth);
        } else if (is(textNs, u"list")) {
            readList(depth);
        } else if (is(tableNs, u"table")) {
            readTable(depth);
        } else if (is(drawNs, u"frame") || is(drawNs, u"a")) {
            // A picture anchored to the page or paragraph, outside any paragraph.
            startBlock(0);
            m_lastWasSpace = true;
            readInline(depth, {}, {});
        } else if (is(textNs, u"sequence-decls") || is(textNs, u"variable-decls") || is(textNs, u"user-field-decls")
                   || is(officeNs, u"forms") || is(textNs, u"tracked-changes") || is(textNs, u"soft-page-break")
                   || is(officeNs, u"annotation") || is(tableNs, u"table-source")) {
            m_xml.skipCurrentElement();
        } else {
            readBlocks(depth);  // sections, indexes and other wrappers: their paragraphs count
        }
    }

    // Starts a new block for a paragraph or heading, taking the free one where there is one.
    void startBlock(int headingLevel)
    {
        QTextBlockFormat block;
        if (headingLevel > 0)
            block.setHeadingLevel(headingLevel);
        const QTextCharFormat text = headingLevel > 0 ? headingCharFormat(headingLevel) : QTextCharFormat();
        if (m_container.atUnusedBlock) {
            m_container.cursor.setBlockFormat(block);
            m_container.cursor.setBlockCharFormat(text);
            m_container.cursor.setCharFormat(text);
        } else {
            m_container.cursor.insertBlock(block, text);
        }
        m_container.atUnusedBlock = false;
        m_base = text;
    }

    void readParagraph(int depth)
    {
        enter(depth);
        const QString style = attribute(textNs, QStringLiteral("style-name"));
        int level = 0;
        if (is(textNs, u"h")) {
            level = attribute(textNs, QStringLiteral("outline-level")).toInt();
            if (level <= 0)
                level = m_styles.headingLevel(style);
            level = std::clamp(level <= 0 ? 1 : level, 1, 6);
        } else {
            level = m_styles.headingLevel(style);
        }

        const bool continuesItem = level == 0 && !m_lists.empty() && m_itemHasParagraph;
        if (continuesItem) {
            // A list item's further paragraphs stay in its block, a line apart.
            m_container.cursor.insertText(QString(QChar::LineSeparator), m_base);
        } else {
            startBlock(level);
            if (level == 0 && !m_lists.empty()) {
                addToList(style);
                m_itemHasParagraph = true;
            }
        }
        m_lastWasSpace = true;
        readInline(depth, m_styles.textProperties(QStringLiteral("paragraph"), style), {});
    }

    void addToList(const QString& paragraphStyle)
    {
        const int level = static_cast<int>(m_lists.size());
        ListLevel& current = m_lists.back();
        if (current.list) {
            current.list->add(m_container.cursor.block());
            return;
        }
        QString style = current.style;
        if (style.isEmpty())
            style = m_styles.listStyleOf(paragraphStyle);
        current.list = m_container.cursor.createList(listFormat(m_styles.isNumbered(style, level), level));
    }

    void readList(int depth)
    {
        enter(depth);
        QString style = attribute(textNs, QStringLiteral("style-name"));
        if (style.isEmpty() && !m_lists.empty())
            style = m_lists.back().style;  // a nested list without a style takes its list's
        m_lists.push_back({style, nullptr});
        while (m_xml.readNextStartElement()) {
            if (is(textNs, u"list-item") || is(textNs, u"list-header")) {
                m_itemHasParagraph = false;
                readBlocks(depth + 1);
                m_itemHasParagraph = false;
            } else {
                m_xml.skipCurrentElement();
            }
        }
        m_lists.pop_back();
    }

    void insertText(const QString& text, const TextProperties& properties, const QString& link)
    {
        if (text.isEmpty())
            return;
        const InlineStyle style{
            .bold = properties.bold.value_or(false),
            .italic = properties.italic.value_or(false),
            .underline = properties.underline.value_or(false),
            .strike = properties.strike.value_or(false),
            .code = properties.code.value_or(false),
            .link = link,
        };
        m_container.cursor.insertText(text, charFormat(style, m_base));
    }

    // Character data: runs of white space count as one space, none at a paragraph's start.
    void insertCharacters(QStringView characters, const TextProperties& properties, const QString& link)
    {
        QString text;
        text.reserve(characters.size());
        for (QChar c : characters) {
            if (c == u' ' || c == u'\t' || c == u'\n' || c == u'\r') {
                if (!m_lastWasSpace)
                    text += u' ';
                m_lastWasSpace = true;
            } else {
                text += c;
                m_lastWasSpace = false;
            }
        }
        insertText(text, properties, link);
    }

    // Paragraph content of the current element, in `properties` and `link`.
    void readInline(int depth, const TextProperties& properties, const QString& link)
    {
        enter(depth);
        while (!m_xml.atEnd()) {
            const QXmlStreamReader::TokenType token = m_xml.readNext();
            if (token == QXmlStreamReader::EndElement || token == QXmlStreamReader::Invalid)
                return;
            if (token == QXmlStreamReader::Characters) {
                insertCharacters(m_xml.text(), properties, link);
                continue;
            }
            if (token != QXmlStreamReader::StartElement)
                continue;
            if (is(textNs, u"span")) {
                const QString style = attribute(textNs, QStringLiteral("style-name"));
                readInline(depth + 1, properties.overlaidWith(m_styles.textProperties(QStringLiteral("text"), style)),
                           link);
            } else if (is(textNs, u"a")) {
                readInline(depth + 1, properties, attribute(xlinkNs, QStringLiteral("href")));
            } else if (is(textNs, u"s")) {
                const int count = std::clamp(attribute(textNs, QStringLiteral("c")).toInt(), 1, maximumSpaces);
                insertText(QString(count, u' '), properties, link);
                m_lastWasSpace = true;
                m_xml.skipCurrentElement();
            } else if (is(textNs, u"tab")) {
                insertText(QStringLiteral("\t"), properties, link);
                m_lastWasSpace = true;
                m_xml.skipCurrentElement();
            } else if (is(textNs, u"line-break")) {
                insertText(QString(QChar::LineSeparator), properties, link);
                m_lastWasSpace = true;
                m_xml.skipCurrentElement();
            } else if (is(drawNs, u"frame")) {
                readFrame(depth + 1, properties, link);
            } else if (is(textNs, u"note")) {
                readNote(depth + 1, properties, link);
            } else if (is(officeNs, u"annotation") || is(textNs, u"soft-page-break") || is(textNs, u"bookmark")
                       || is(textNs, u"bookmark-start") || is(textNs, u"bookmark-end") || is(textNs, u"note-body")
                       || is(textNs, u"tracked-changes") || is(drawNs, u"custom-shape")) {
                m_xml.skipCurrentElement();
            } else {
                readInline(depth + 1, properties, link);  // fields and other wrappers: their text counts
            }
        }
    }

    // A footnote keeps its mark in the text; its body, which the model has no place for, not.
    void readNote(int depth, const TextProperties& properties, const QString& link)
    {
        while (m_xml.readNextStartElement()) {
            if (is(textNs, u"note-citation"))
                readInline(depth + 1, properties, link);
            else
                m_xml.skipCurrentElement();
        }
    }

    // A frame holds a picture (draw:image, perhaps several of which the first readable one
    // counts) or a text box, whose paragraphs join this one, a line apart.
    void readFrame(int depth, const TextProperties& properties, const QString& link)
    {
        enter(depth);
        const double width = lengthInPoints(attribute(svgNs, QStringLiteral("width")));
        const double height = lengthInPoints(attribute(svgNs, QStringLiteral("height")));
        bool placed = false;
        while (m_xml.readNextStartElement()) {
            if (is(drawNs, u"image")) {
                if (!placed)
                    placed = readImage(width, height);
                else
                    m_xml.skipCurrentElement();
            } else if (is(drawNs, u"text-box")) {
                while (m_xml.readNextStartElement()) {
                    if (is(textNs, u"p") || is(textNs, u"h")) {
                        insertText(QString(QChar::LineSeparator), properties, link);
                        m_lastWasSpace = true;
                        readInline(depth + 1, properties, link);
                    } else {
                        m_xml.skipCurrentElement();
                    }
                }
            } else {
                m_xml.skipCurrentElement();
            }
        }
        m_lastWasSpace = false;
    }

    bool readImage(double width, double height)
    {
        QString href = attribute(xlinkNs, QStringLiteral("href"));
        if (href.startsWith(QStringLiteral("./")))
            href.remove(0, 2);
        std::optional<QByteArray> bytes;
        QByteArray inlineData;
        while (m_xml.readNextStartElement()) {
            if (is(officeNs, u"binary-data"))
                inlineData = QByteArray::fromBase64(m_xml.readElementText().toLatin1());
            else
                m_xml.skipCurrentElement();
        }
        if (!inlineData.isEmpty())
            bytes = inlineData;
        else if (!href.isEmpty() && !href.contains(u':'))  // inside the package only
            bytes = m_pictures(href);
        if (!bytes)
            return false;
        QTextImageFormat format = addPicture(m_document, *bytes, width, height);
        if (!picture(m_document, format))
            return false;  // not a picture every writer can embed (a vector drawing): try the next
        m_container.cursor.insertImage(format);
        return true;
    }

    struct CellSpan {
        int row, column, rows, columns;
    };

    struct TableReading {
        QTextTable* table = nullptr;
        int declaredColumns = 0;
        int rows = 0;
        int headerRows = 0;
        bool inHeader = false;
        bool headerEnded = false;
        std::vector<CellSpan> spans;
    };

    void readTable(int depth)
    {
        enter(depth);
        // A table in a list item ends the item's paragraph; the list goes on after it.
        TableReading reading;
        readTableParts(depth + 1, reading);
        QTextTable* table = reading.table;
        if (!table)
            return;
        if (table->rows() > reading.rows)
            table->removeRows(reading.rows, table->rows() - reading.rows);
        for (const CellSpan& span : reading.spans) {
            const int rows = std::min(span.rows, table->rows() - span.row);
            const int columns = std::min(span.columns, table->columns() - span.column);
            if (rows * columns > 1)
                table->mergeCells(span.row, span.column, rows, columns);
        }
        QTextTableFormat format = table->format();
        format.setHeaderRowCount(reading.headerRows);
        table->setFormat(format);
        m_container.cursor = table->lastCursorPosition();
        m_container.cursor.movePosition(QTextCursor::NextBlock);
        m_container.atUnusedBlock = true;
    }

    void readTableParts(int depth, TableReading& reading)
    {
        enter(depth);
        while (m_xml.readNextStartElement()) {
            if (is(tableNs, u"table-column")) {
                const int repeat = std::clamp(attribute(tableNs, QStringLiteral("number-columns-repeated")).toInt(), 1,
                                              maximumTableColumns);
                reading.declaredColumns = std::min(reading.declaredColumns + repeat, maximumTableColumns);
                m_xml.skipCurrentElement();
            } else if (is(tableNs, u"table-header-rows")) {
                reading.inHeader = reading.rows == 0;
                readTableParts(depth + 1, reading);
                reading.inHeader = false;
                reading.headerEnded = true;
            } else if (is(tableNs, u"table-row")) {
                readRow(depth + 1, reading);
            } else if (is(tableNs, u"table-columns") || is(tableNs, u"table-header-columns")
                       || is(tableNs, u"table-column-group") || is(tableNs, u"table-rows")
                       || is(tableNs, u"table-row-group")) {
                readTableParts(depth + 1, reading);
            } else {
                m_xml.skipCurrentElement();
            }
        }
    }

    // Rows are added in growing batches and the spare ones removed at the end: every change
    // to a table's rows makes Qt index its cells anew, so row after row would take time
    // growing with the square of the table's size.
    void appendRows(TableReading& reading, int count)
    {
        countCells(qint64(std::max(1, reading.table ? reading.table->columns() : reading.declaredColumns)) * count);
        const int needed = reading.rows + count;
        if (!reading.table) {
            QTextTableFormat format;
            format.setBorder(1);
            reading.table = m_container.cursor.insertTable(needed, std::max(1, reading.declaredColumns), format);
        } else if (reading.table->rows() < needed) {
            reading.table->appendRows(std::max(needed - reading.table->rows(), reading.table->rows()));
        }
        reading.rows = needed;
        if (reading.inHeader)
            reading.headerRows = reading.rows;
    }

    void countCells(qint64 cells)
    {
        m_cells += cells;
        if (m_cells > maximumTableCells)
            throw tooLarge();
    }

    void readRow(int depth, TableReading& reading)
    {
        enter(depth);
        const int repeat = std::clamp(attribute(tableNs, QStringLiteral("number-rows-repeated")).toInt(), 1,
                                      maximumRowRepeat);
        appendRows(reading, 1);
        const int row = reading.rows - 1;
        int column = 0;
        while (m_xml.readNextStartElement()) {
            const bool covered = is(tableNs, u"covered-table-cell");
            if (!covered && !is(tableNs, u"table-cell")) {
                m_xml.skipCurrentElement();
                continue;
            }
            const int cellRepeat = std::clamp(attribute(tableNs, QStringLiteral("number-columns-repeated")).toInt(), 1,
                                              maximumTableColumns);
            const int rowSpan = std::clamp(attribute(tableNs, QStringLiteral("number-rows-spanned")).toInt(), 1,
                                           maximumRowRepeat);
            const int columnSpan = std::clamp(attribute(tableNs, QStringLiteral("number-columns-spanned")).toInt(), 1,
                                              maximumTableColumns);
            if (column >= maximumTableColumns) {
                m_xml.skipCurrentElement();
                continue;
            }
            const int needed = std::min(column + std::max(cellRepeat, columnSpan), maximumTableColumns);
            countCells(qint64(std::max(0, needed - reading.table->columns())) * reading.rows);
            if (needed > reading.table->columns())
                reading.table->appendColumns(needed - reading.table->columns());
            if (covered) {
                m_xml.skipCurrentElement();
            } else {
                if (rowSpan > 1 || columnSpan > 1)
                    reading.spans.push_back({row, column, rowSpan, columnSpan});
                readCell(depth + 1, reading.table->cellAt(row, column));
            }
            column += cellRepeat;  // a repeated cell's copies stay empty
        }
        if (repeat > 1)
            appendRows(reading, repeat - 1);  // repeated rows are as good as always empty in a text document
    }

    void readCell(int depth, const QTextTableCell& cell)
    {
        const Container outer = m_container;
        std::vector<ListLevel> outerLists;
        outerLists.swap(m_lists);
        const bool outerItemHasParagraph = m_itemHasParagraph;
        const QTextCharFormat outerBase = m_base;

        m_container = {cell.firstCursorPosition(), true};
        m_itemHasParagraph = false;
        readBlocks(depth);

        m_container = outer;
        m_lists.swap(outerLists);
        m_itemHasParagraph = outerItemHasParagraph;
        m_base = outerBase;
    }

    QXmlStreamReader& m_xml;
    const OdtStyles& m_styles;
    const PackagePictures& m_pictures;
    QTextDocument& m_document;
    Container m_container;
    std::vector<ListLevel> m_lists;
    bool m_itemHasParagraph = false;
    bool m_lastWasSpace = true;
    QTextCharFormat m_base;
    qint64 m_cells = 0;
};

}  // namespace

void readOdtBody(QXmlStreamReader& xml, const OdtStyles& styles, const PackagePictures& pictures,
                 QTextDocument& document)
{
    BodyReader(xml, styles, pictures, document).readText();
}

}  // namespace wendrel::document::odt
