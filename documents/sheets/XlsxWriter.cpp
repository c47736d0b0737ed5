#include "XlsxWriter.h"

#include "CellReference.h"
#include "OoxmlText.h"
#include "SheetErrors.h"
#include "SheetLimits.h"
#include "SpreadsheetDates.h"
#include "documents/zip/ZipWriter.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>

#include <cmath>

namespace wendrel {

namespace {

constexpr qsizetype flushBytes = 1 << 20;

const QByteArray xmlDeclaration = QByteArrayLiteral("<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n");
const QByteArray mainNamespace = QByteArrayLiteral("http://schemas.openxmlformats.org/spreadsheetml/2006/main");

// Styles of cellXfs in styles.xml, by index.
constexpr const char* dateStyle = " s=\"1\"";
constexpr const char* dateTimeStyle = " s=\"2\"";
constexpr const char* timeStyle = " s=\"3\"";

OperationError unwritable(const QFile& file)
{
    return OperationError::withReason(QCoreApplication::translate("SheetOperations", "Couldn't write the workbook"),
                                      file.errorString());
}

void openForWriting(QFile& file)
{
    if (!file.open(QIODevice::ReadWrite | QIODevice::Truncate))
        throw unwritable(file);
}

void writeAll(QFile& file, QByteArray& buffer)
{
    if (file.write(buffer) != buffer.size())
        throw unwritable(file);
    buffer.clear();
}

// The start of sharedStrings.xml. Its counts are known only at the end, so the header is
// written first with room for the largest counts (blanks before '>' are allowed in a tag),
// and written again over itself once they are known.
QByteArray sharedStringsHeader(qint64 count, qint64 uniqueCount)
{
    QByteArray header = xmlDeclaration + "<sst xmlns=\"" + mainNamespace + "\" count=\""
                        + QByteArray::number(count) + "\" uniqueCount=\"" + QByteArray::number(uniqueCount) + '"';
    const qsizetype width = xmlDeclaration.size() + mainNamespace.size() + 80;
    return header.leftJustified(width, ' ') + '>';
}

QByteArray contentTypes()
{
    return xmlDeclaration + R"(<Types xmlns="http://schemas.openxmlformats.org/package/2006/content-types">)"
           R"(<Default Extension="rels" ContentType="application/vnd.openxmlformats-package.relationships+xml"/>)"
           R"(<Default Extension="xml" ContentType="application/xml"/>)"
           R"(<Override PartName="/xl/workbook.xml" ContentType="application/vnd.openxmlformats-officedocument.spreadsheetml.sheet.main+xml"/>)"
           R"(<Override PartName="/xl/worksheets/sheet1.xml" ContentType="application/vnd.openxmlformats-officedocument.spreadsheetml.worksheet+xml"/>)"
           R"(<Override PartName="/xl/styles.xml" ContentType="application/vnd.openxmlformats-officedocument.spreadsheetml.styles+xml"/>)"
           R"(<Override PartName="/xl/sharedStrings.xml" ContentType="application/vnd.openxmlformats-officedocument.spreadsheetml.sharedStrings+xml"/>)"
           R"(<Override PartName="/docProps/core.xml" ContentType="application/vnd.openxmlformats-package.core-properties+xml"/>)"
           R"(<Override PartName="/docProps/app.xml" ContentType="application/vnd.openxmlformats-officedocument.extended-properties+xml"/>)"
           "</Types>";
}

QByteArray packageRelationships()
{
    return xmlDeclaration + R"(<Relationships xmlns="http://schemas.openxmlformats.org/package/2006/relationships">)"
           R"(<Relationship Id="rId1" Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/officeDocument" Target="xl/workbook.xml"/>)"
           R"(<Relationship Id="rId2" Type="http://schemas.openxmlformats.org/package/2006/relationships/metadata/core-properties" Target="docProps/core.xml"/>)"
           R"(<Relationship Id="rId3" Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/extended-properties" Target="docProps/app.xml"/>)"
           "</Relationships>";
}

QByteArray workbook()
{
    return xmlDeclaration + "<workbook xmlns=\"" + mainNamespace + "\" "
           R"(xmlns:r="http://schemas.openxmlformats.org/officeDocument/2006/relationships">)"
           R"(<sheets><sheet name="Sheet1" sheetId="1" r:id="rId1"/></sheets></workbook>)";
}

QByteArray workbookRelationships()
{
    return xmlDeclaration + R"(<Relationships xmlns="http://schemas.openxmlformats.org/package/2006/relationships">)"
           R"(<Relationship Id="rId1" Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/worksheet" Target="worksheets/sheet1.xml"/>)"
           R"(<Relationship Id="rId2" Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/styles" Target="styles.xml"/>)"
           R"(<Relationship Id="rId3" Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/sharedStrings" Target="sharedStrings.xml"/>)"
           "</Relationships>";
}

// Three number formats of its own, so dates read as ISO dates in every locale; the cell styles
// 1, 2 and 3 use them.
QByteArray styles()
{
    return xmlDeclaration + "<styleSheet xmlns=\"" + mainNamespace + "\">"
           R"(<numFmts count="3"><numFmt numFmtId="164" formatCode="yyyy-mm-dd"/>)"
           R"(<numFmt numFmtId="165" formatCode="yyyy-mm-dd hh:mm:ss"/><numFmt numFmtId="166" formatCode="hh:mm:ss"/></numFmts>)"
           R"(<fonts count="1"><font><sz val="11"/><name val="Liberation Sans"/><family val="2"/></font></fonts>)"
           R"(<fills count="2"><fill><patternFill patternType="none"/></fill><fill><patternFill patternType="gray125"/></fill></fills>)"
           R"(<borders count="1"><border><left/><right/><top/><bottom/><diagonal/></border></borders>)"
           R"(<cellStyleXfs count="1"><xf numFmtId="0" fontId="0" fillId="0" borderId="0"/></cellStyleXfs>)"
           R"(<cellXfs count="4"><xf numFmtId="0" fontId="0" fillId="0" borderId="0" xfId="0"/>)"
           R"(<xf numFmtId="164" fontId="0" fillId="0" borderId="0" xfId="0" applyNumberFormat="1"/>)"
           R"(<xf numFmtId="165" fontId="0" fillId="0" borderId="0" xfId="0" applyNumberFormat="1"/>)"
           R"(<xf numFmtId="166" fontId="0" fillId="0" borderId="0" xfId="0" applyNumberFormat="1"/></cellXfs>)"
           R"(<cellStyles count="1"><cellStyle name="Normal" xfId="0" builtinId="0"/></cellStyles>)"
           "</styleSheet>";
}

QByteArray coreProperties()
{
    const QByteArray now = QDateTime::currentDateTimeUtc().toString(Qt::ISODate).toLatin1();
    return xmlDeclaration + R"(<cp:coreProperties xmlns:cp="http://schemas.openxmlformats.org/package/2006/metadata/core-properties" )"
           R"(xmlns:dc="http://purl.org/dc/elements/1.1/" xmlns:dcterms="http://purl.org/dc/terms/" )"
           R"(xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance">)"
           R"(<dcterms:created xsi:type="dcterms:W3CDTF">)" + now + "</dcterms:created>"
           R"(<dcterms:modified xsi:type="dcterms:W3CDTF">)" + now + "</dcterms:modified></cp:coreProperties>";
}

QByteArray appProperties()
{
    return xmlDeclaration + R"(<Properties xmlns="http://schemas.openxmlformats.org/officeDocument/2006/extended-properties">)"
           "<Application>Wendrel</Application></Properties>";
}

}  // namespace

XlsxWriter::XlsxWriter(const QString& scratchFolder)
    : m_sheet(QDir(scratchFolder).filePath(QStringLiteral("sheet1.xml"))),
      m_strings(QDir(scratchFolder).filePath(QStringLiteral("sharedStrings.xml")))
{
    openForWriting(m_sheet);
    openForWriting(m_strings);
    m_sheetBuffer = xmlDeclaration + "<worksheet xmlns=\"" + mainNamespace + "\"><sheetData>";
    m_stringBuffer = sharedStringsHeader(0, 0);
}

void XlsxWriter::writeRow(const SheetRow& row)
{
    if (m_rows == sheet::mostWorkbookRows)
        throw sheet::tooManyRowsForWorkbook();
    ++m_rows;
    qsizetype last = row.size() - 1;
    while (last >= 0 && row[last].isEmpty())
        --last;
    if (last < 0)
        return;  // an empty row is a row number nobody names
    if (last >= sheet::mostWorkbookColumns)
        throw sheet::tooManyColumnsForWorkbook();

    m_rowNumber = QByteArray::number(m_rows);
    m_sheetBuffer += "<row r=\"" + m_rowNumber + "\">";
    for (qsizetype column = 0; column <= last; ++column)
        appendCell(int(column), row[column]);
    m_sheetBuffer += "</row>";
    if (m_sheetBuffer.size() >= flushBytes)
        flushSheet();
    if (m_stringBuffer.size() >= flushBytes)
        flushStrings();
}

void XlsxWriter::appendValueCell(const QByteArray& reference, const char* attributes, const QByteArray& value)
{
    m_sheetBuffer.append("<c r=\"").append(reference).append('"').append(attributes);
    m_sheetBuffer.append("><v>").append(value).append("</v></c>");
}

void XlsxWriter::appendCell(int column, const SheetCell& cell)
{
    if (cell.isEmpty())
        return;
    const QByteArray reference = columnLetters(column) + m_rowNumber;
    switch (cell.kind) {
    case SheetCell::Kind::empty:
        return;
    case SheetCell::Kind::number:
        if (std::isfinite(cell.number)) {
            appendValueCell(reference, "", numberText(cell.number).toLatin1());
            return;
        }
        break;
    case SheetCell::Kind::boolean:
        appendValueCell(reference, " t=\"b\"", cell.boolean ? "1" : "0");
        return;
    case SheetCell::Kind::date:
    case SheetCell::Kind::dateTime:
        if (const std::optional<double> serial = serialFromDate(cell.date, cell.time)) {
            appendValueCell(reference, cell.kind == SheetCell::Kind::date ? dateStyle : dateTimeStyle,
                            numberText(*serial).toLatin1());
            return;
        }
        break;
    case SheetCell::Kind::time:
        appendValueCell(reference, timeStyle, numberText(serialFromTime(cell.time)).toLatin1());
        return;
    case SheetCell::Kind::text:
        break;
    }
    // Text, and what a workbook can't hold as a value: its text.
    appendValueCell(reference, " t=\"s\"", QByteArray::number(sharedString(cellText(cell))));
}

int XlsxWriter::sharedString(const QString& text)
{
    if (text.size() > sheet::longestWorkbookCell)
        throw sheet::cellTooLongForWorkbook();
    ++m_stringUses;
    const auto found = m_stringIndex.constFind(text);
    if (found != m_stringIndex.constEnd())
        return found.value();
    const int index = int(m_stringIndex.size());
    m_stringIndex.insert(text, index);
    // Blanks at either end would be dropped without the preserve mark.
    const bool keepBlanks = !text.isEmpty() && (text.front().isSpace() || text.back().isSpace());
    m_stringBuffer += keepBlanks ? "<si><t xml:space=\"preserve\">" : "<si><t>";
    appendOoxmlText(m_stringBuffer, text);
    m_stringBuffer += "</t></si>";
    return index;
}

void XlsxWriter::flushSheet() { writeAll(m_sheet, m_sheetBuffer); }

void XlsxWriter::flushStrings() { writeAll(m_strings, m_stringBuffer); }

void XlsxWriter::finish(const QString& destination)
{
    m_sheetBuffer += "</sheetData></worksheet>";
    flushSheet();
    m_stringBuffer += "</sst>";
    flushStrings();
    QByteArray header = sharedStringsHeader(m_stringUses, m_stringIndex.size());
    if (!m_strings.seek(0))
        throw unwritable(m_strings);
    writeAll(m_strings, header);
    if (!m_sheet.flush() || !m_strings.flush())
        throw unwritable(m_sheet);

    QFile archive(destination);
    if (!archive.open(QIODevice::WriteOnly | QIODevice::Truncate))
        throw unwritable(archive);
    ZipWriter zip(archive);
    const QDateTime now = QDateTime::currentDateTime();
    const auto deflated = ZipWriter::Compression::deflateWhenSmaller;
    zip.addEntry(QStringLiteral("[Content_Types].xml"), contentTypes(), deflated, now);
    zip.addEntry(QStringLiteral("_rels/.rels"), packageRelationships(), deflated, now);
    zip.addEntry(QStringLiteral("docProps/core.xml"), coreProperties(), deflated, now);
    zip.addEntry(QStringLiteral("docProps/app.xml"), appProperties(), deflated, now);
    zip.addEntry(QStringLiteral("xl/workbook.xml"), workbook(), deflated, now);
    zip.addEntry(QStringLiteral("xl/_rels/workbook.xml.rels"), workbookRelationships(), deflated, now);
    zip.addEntry(QStringLiteral("xl/styles.xml"), styles(), deflated, now);
    zip.addItem(m_strings.fileName(), QStringLiteral("xl/sharedStrings.xml"));
    zip.addItem(m_sheet.fileName(), QStringLiteral("xl/worksheets/sheet1.xml"));
    zip.finish();
    if (!archive.flush())
        throw unwritable(archive);
}

}  // namespace wendrel
