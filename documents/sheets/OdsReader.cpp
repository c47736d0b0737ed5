#include "WorkbookReading.h"

#include "RowAssembly.h"
#include "CellTyping.h"
#include "SheetErrors.h"
#include "SheetLimits.h"
#include "SheetPackage.h"
#include "SpreadsheetDates.h"

#include <QDir>
#include <QRegularExpression>


namespace wendrel {

namespace {

// content.xml holds the whole spreadsheet; it goes to a scratch file, never to memory, and
// this only bounds the disk it takes.
constexpr qint64 largestContent = 8LL * 1024 * 1024 * 1024;
// One cell's text, as long as a delimited field may be.
constexpr qsizetype longestCellText = sheet::longestDelimitedField;

const QString officeNamespace = QStringLiteral("urn:oasis:names:tc:opendocument:xmlns:office:1.0");
const QString tableNamespace = QStringLiteral("urn:oasis:names:tc:opendocument:xmlns:table:1.0");
const QString textNamespace = QStringLiteral("urn:oasis:names:tc:opendocument:xmlns:text:1.0");

qint64 repeatCount(const SheetXmlReader& xml, const QString& namespaceUri, QLatin1StringView attribute)
{
    bool ok = false;
    const qint64 count = xml.attribute(namespaceUri, attribute).toLongLong(&ok);
    return ok && count >= 1 ? count : 1;
}


// "PT14H30M05.5S", a duration, as the time of day it is when under a day.
std::optional<QTime> timeOfDay(const QString& duration)
{
    static const QRegularExpression pattern(
        QStringLiteral(R"(^PT(?:(\d+)H)?(?:(\d+)M)?(?:(\d+(?:\.\d+)?)S)?$)"));
    const QRegularExpressionMatch match = pattern.match(duration.trimmed());
    if (!match.hasMatch())
        return std::nullopt;
    const qint64 hours = match.captured(1).toLongLong();
    const qint64 minutes = match.captured(2).toLongLong();
    const double seconds = match.captured(3).toDouble();
    const qint64 milliseconds = (hours * 60 + minutes) * 60'000 + qRound64(seconds * 1000);
    if (hours > 24 || minutes > 24 * 60 || milliseconds >= 24LL * 60 * 60 * 1000)
        return std::nullopt;
    return QTime::fromMSecsSinceStartOfDay(int(milliseconds));
}

class ContentReader {
public:
    ContentReader(QFile& content, RowAssembly& rows) : m_file(content), m_xml(&content), m_rows(rows) {}

    int read()
    {
        int tables = 0;
        int depth = 0;
        int spreadsheetDepth = -1;  // inside office:spreadsheet, how deep it is
        while (!m_xml.atEnd()) {
            const QXmlStreamReader::TokenType token = m_xml.next();
            if (token == QXmlStreamReader::EndElement) {
                if (depth-- == spreadsheetDepth)
                    spreadsheetDepth = -1;
                continue;
            }
            if (token != QXmlStreamReader::StartElement)
                continue;
            ++depth;
            if (m_xml.name() == u"spreadsheet" && spreadsheetDepth < 0) {
                spreadsheetDepth = depth;
            } else if (m_xml.name() == u"table" && spreadsheetDepth == depth - 1) {
                if (tables++ == 0)
                    readTable();
                else
                    m_xml.skipCurrentElement();
                --depth;  // both end on the table's end element
            }
        }
        m_xml.checkEnded();
        return tables;
    }

private:
    // Rows may sit inside header-row and row-group elements at any depth.
    void readTable()
    {
        int depth = 1;
        while (depth > 0 && !m_xml.atEnd()) {
            const QXmlStreamReader::TokenType token = m_xml.next();
            if (token == QXmlStreamReader::EndElement) {
                --depth;
            } else if (token == QXmlStreamReader::StartElement) {
                if (m_xml.name() == u"table-row")
                    readRow();
                else if (m_xml.name() == u"table-columns" || m_xml.name() == u"table-column"
                         || m_xml.name() == u"shapes" || m_xml.name() == u"named-expressions")
                    m_xml.skipCurrentElement();
                else
                    ++depth;
            }
        }
        m_xml.checkEnded();
    }

    void readRow()
    {
        const qint64 repeat = repeatCount(m_xml, tableNamespace, QLatin1StringView("number-rows-repeated"));
        m_cells.clear();
        while (!m_xml.atEnd()) {
            const QXmlStreamReader::TokenType token = m_xml.next();
            if (token == QXmlStreamReader::EndElement)
                break;  // the row's own end: cells are read whole below
            if (token != QXmlStreamReader::StartElement)
                continue;
            if (m_xml.name() == u"table-cell" || m_xml.name() == u"covered-table-cell") {
                const qint64 cellRepeat = repeatCount(m_xml, tableNamespace, QLatin1StringView("number-columns-repeated"));
                m_cells.add(readCell(), cellRepeat);
            } else {
                m_xml.skipCurrentElement();
            }
        }
        m_xml.checkEnded();
        m_rows.setFraction(m_file.size() > 0 ? double(m_file.pos()) / double(m_file.size()) : 0);
        m_rows.addRow(m_rows.nextRow(), m_cells.cells(), repeat);
    }

    SheetCell readCell()
    {
        // Office's own attributes: newer writers add a value-type of their own beside them.
        const QString type = m_xml.attribute(officeNamespace, QLatin1StringView("value-type"));
        const QString value = m_xml.attribute(officeNamespace, QLatin1StringView("value"));
        const QString dateValue = m_xml.attribute(officeNamespace, QLatin1StringView("date-value"));
        const QString timeValue = m_xml.attribute(officeNamespace, QLatin1StringView("time-value"));
        const QString booleanValue = m_xml.attribute(officeNamespace, QLatin1StringView("boolean-value"));
        const QString stringValue = m_xml.attribute(officeNamespace, QLatin1StringView("string-value"));
        const QString text = cellText();

        if (type == u"float" || type == u"percentage" || type == u"currency") {
            if (const std::optional<double> number = storedNumber(value))
                return SheetCell::ofNumber(*number);
        } else if (type == u"date") {
            const SheetCell date = cellFromIsoDate(dateValue.trimmed());
            if (date.kind != SheetCell::Kind::text)
                return date;
        } else if (type == u"time") {
            if (const std::optional<QTime> time = timeOfDay(timeValue))
                return SheetCell::ofTime(*time);
        } else if (type == u"boolean") {
            return SheetCell::ofBoolean(booleanValue.trimmed() == u"true" || booleanValue.trimmed() == u"1");
        } else if (type == u"string" && !stringValue.isEmpty()) {
            return SheetCell::ofText(stringValue);
        }
        return text.isEmpty() ? SheetCell{} : SheetCell::ofText(text);
    }

    // The paragraphs of the cell, one line each; comments (office:annotation) are no part of it.
    QString cellText()
    {
        QString text;
        int paragraphs = 0;
        int depth = 1;
        while (depth > 0 && !m_xml.atEnd()) {
            const QXmlStreamReader::TokenType token = m_xml.next();
            if (token == QXmlStreamReader::EndElement) {
                --depth;
            } else if (token == QXmlStreamReader::StartElement) {
                if (m_xml.name() == u"annotation") {
                    m_xml.skipCurrentElement();
                } else if (m_xml.name() == u"p" || m_xml.name() == u"h") {
                    if (paragraphs++ > 0)
                        append(text, u"\n");
                    appendParagraph(text);
                } else {
                    ++depth;
                }
            }
        }
        m_xml.checkEnded();
        return text;
    }

    void appendParagraph(QString& text)
    {
        int depth = 1;
        while (depth > 0 && !m_xml.atEnd()) {
            const QXmlStreamReader::TokenType token = m_xml.next();
            if (token == QXmlStreamReader::Characters) {
                append(text, m_xml.text());
            } else if (token == QXmlStreamReader::EndElement) {
                --depth;
            } else if (token == QXmlStreamReader::StartElement) {
                if (m_xml.name() == u"s") {
                    const qint64 spaces = repeatCount(m_xml, textNamespace, QLatin1StringView("c"));
                    if (spaces > longestCellText)
                        throw sheet::unreadableTable(QStringLiteral("a run of spaces too long"));
                    append(text, QString(qsizetype(spaces), u' '));
                    m_xml.skipCurrentElement();
                } else if (m_xml.name() == u"tab") {
                    append(text, u"\t");
                    m_xml.skipCurrentElement();
                } else if (m_xml.name() == u"line-break") {
                    append(text, u"\n");
                    m_xml.skipCurrentElement();
                } else if (m_xml.name() == u"annotation" || m_xml.name() == u"note") {
                    m_xml.skipCurrentElement();
                } else {
                    ++depth;  // spans, links, fields: their text counts
                }
            }
        }
    }

    static void append(QString& text, QStringView more)
    {
        if (text.size() + more.size() > longestCellText)
            throw sheet::unreadableTable(QStringLiteral("a cell's text too long"));
        text += more;
    }

    QFile& m_file;
    SheetXmlReader m_xml;
    RowAssembly& m_rows;
    RowCells m_cells;
};

}  // namespace

WorkbookSummary readOds(const QString& path, const QString& scratchFolder, const SheetRowSink& sink,
                        const SheetProgress& progress)
{
    const SheetPackage package(path);
    QFile content(QDir(scratchFolder).filePath(QStringLiteral("content.xml")));
    if (!package.extract(QStringLiteral("content.xml"), content.fileName(), largestContent))
        throw sheet::unreadableTable(QStringLiteral("no content.xml"));
    if (!content.open(QIODevice::ReadOnly))
        throw sheet::unreadableTable(content.errorString());
    RowAssembly rows(sink, progress);
    const int tables = ContentReader(content, rows).read();
    if (tables == 0)
        throw sheet::unreadableTable(QStringLiteral("no table"));
    rows.finish();
    content.close();
    content.remove();
    return {.sheets = tables};
}

}  // namespace wendrel
