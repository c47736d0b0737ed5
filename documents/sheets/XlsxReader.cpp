#include "WorkbookReading.h"

#include "CellReference.h"
#include "OoxmlText.h"
#include "RowAssembly.h"
#include "CellTyping.h"
#include "SheetErrors.h"
#include "SheetPackage.h"
#include "SpreadsheetDates.h"

#include <QDateTime>
#include <QDir>
#include <QHash>


namespace wendrel {

namespace {

// Parts held in memory are small in any real workbook; the shared strings of a million
// distinct cells take some tens of megabytes.
constexpr qint64 largestSmallPart = 16 * 1024 * 1024;
constexpr qint64 largestSharedStrings = 512 * 1024 * 1024;
// The sheet goes to a scratch file, never to memory; this only bounds the disk it takes.
constexpr qint64 largestSheet = 8LL * 1024 * 1024 * 1024;

struct Relationship {
    QString type;
    QString target;  // a part name, resolved
};

// "../media/x.png" from "xl/" gives "media/x.png"; a leading "/" is from the package's root.
QString resolvePart(const QString& folder, const QString& target)
{
    if (target.startsWith(u'/'))
        return QDir::cleanPath(target.mid(1));
    QString resolved = QDir::cleanPath(folder.isEmpty() ? target : folder + u'/' + target);
    while (resolved.startsWith(QStringLiteral("../")))
        resolved.remove(0, 3);
    return resolved;
}

QString folderOf(const QString& part)
{
    const qsizetype slash = part.lastIndexOf(u'/');
    return slash < 0 ? QString() : part.left(slash);
}

QString relationshipsPartOf(const QString& part)
{
    const QString folder = folderOf(part);
    const QString name = part.mid(folder.isEmpty() ? 0 : folder.size() + 1);
    return (folder.isEmpty() ? QString() : folder + u'/') + QStringLiteral("_rels/") + name + QStringLiteral(".rels");
}

QHash<QString, Relationship> readRelationships(const SheetPackage& package, const QString& ofPart)
{
    QHash<QString, Relationship> relationships;
    const std::optional<QByteArray> xml = package.read(relationshipsPartOf(ofPart), largestSmallPart);
    if (!xml)
        return relationships;
    SheetXmlReader reader(*xml);
    while (!reader.atEnd()) {
        if (reader.next() == QXmlStreamReader::StartElement && reader.name() == u"Relationship"
            && reader.attribute(u"TargetMode") != u"External") {
            relationships.insert(reader.attribute(u"Id"),
                                 {reader.attribute(u"Type"), resolvePart(folderOf(ofPart), reader.attribute(u"Target"))});
        }
    }
    return relationships;
}

QString targetOfType(const QHash<QString, Relationship>& relationships, QStringView typeEnding)
{
    for (const Relationship& relationship : relationships) {
        if (relationship.type.endsWith(typeEnding))
            return relationship.target;
    }
    return {};
}

struct Workbook {
    QString firstSheetId;
    int sheets = 0;
    DateSystem dates = DateSystem::from1900;
};

Workbook readWorkbook(const QByteArray& xml)
{
    Workbook workbook;
    SheetXmlReader reader(xml);
    while (!reader.atEnd()) {
        if (reader.next() != QXmlStreamReader::StartElement)
            continue;
        if (reader.name() == u"workbookPr") {
            const QString system = reader.attribute(u"date1904");
            if (system == u"1" || system == u"true")
                workbook.dates = DateSystem::from1904;
        } else if (reader.name() == u"sheet") {
            if (workbook.sheets++ == 0)
                workbook.firstSheetId = reader.attribute(u"id");
        }
    }
    return workbook;
}

QStringList readSharedStrings(const QByteArray& xml)
{
    QStringList strings;
    SheetXmlReader reader(xml);
    while (!reader.atEnd()) {
        // Runs of rich text join; phonetic guides (rPh) are no part of the text.
        if (reader.next() == QXmlStreamReader::StartElement && reader.name() == u"si")
            strings.append(decodeOoxmlEscapes(reader.elementText(u"rPh")));
    }
    return strings;
}

// What each cell style shows numbers as, by the style's index.
QList<NumberFormatKind> readStyleKinds(const QByteArray& xml)
{
    QHash<int, NumberFormatKind> customFormats;
    QList<NumberFormatKind> kinds;
    SheetXmlReader reader(xml);
    bool inCellStyles = false;
    while (!reader.atEnd()) {
        const QXmlStreamReader::TokenType token = reader.next();
        if (token == QXmlStreamReader::EndElement && reader.name() == u"cellXfs")
            inCellStyles = false;
        if (token != QXmlStreamReader::StartElement)
            continue;
        if (reader.name() == u"numFmt") {
            customFormats.insert(reader.attribute(u"numFmtId").toInt(), formatCodeKind(reader.attribute(u"formatCode")));
        } else if (reader.name() == u"cellXfs") {
            inCellStyles = true;
        } else if (inCellStyles && reader.name() == u"xf") {
            const int id = reader.attribute(u"numFmtId").toInt();
            kinds.append(customFormats.value(id, builtInFormatKind(id)));
        }
    }
    return kinds;
}


class SheetReader {
public:
    SheetReader(QFile& sheet, const QStringList& strings, const QList<NumberFormatKind>& styleKinds,
                DateSystem dates, RowAssembly& rows)
        : m_file(sheet), m_xml(&sheet), m_strings(strings), m_styleKinds(styleKinds), m_dates(dates), m_rows(rows)
    {
    }

    void read()
    {
        while (!m_xml.atEnd()) {
            const QXmlStreamReader::TokenType token = m_xml.next();
            if (token == QXmlStreamReader::StartElement) {
                if (m_xml.name() == u"row")
                    startRow();
                else if (m_xml.name() == u"c" && m_inRow)
                    readCell();
            } else if (token == QXmlStreamReader::EndElement && m_xml.name() == u"row" && m_inRow) {
                m_rows.setFraction(m_file.size() > 0 ? double(m_file.pos()) / double(m_file.size()) : 0);
                m_rows.addRow(m_rowIndex, m_cells.cells());
                m_inRow = false;
            }
        }
        m_xml.checkEnded();
    }

private:
    void startRow()
    {
        m_inRow = true;
        m_cells.clear();
        bool ok = false;
        const qint64 number = m_xml.attribute(u"r").toLongLong(&ok);
        m_rowIndex = ok && number >= 1 ? number - 1 : m_rows.nextRow();
    }

    void readCell()
    {
        // A cell's own attributes are never prefixed: looked up once, by name.
        const QXmlStreamAttributes attributes = m_xml.attributes();
        const QStringView reference = attributes.value(QLatin1StringView("r"));
        if (!reference.isEmpty()) {
            const std::optional<CellPosition> position = parseCellReference(reference);
            if (!position)
                throw sheet::unreadableTable(QStringLiteral("cell reference ") + reference.toString());
            m_cells.skipTo(position->column);
        }
        const QString type = attributes.value(QLatin1StringView("t")).toString();
        const QString style = attributes.value(QLatin1StringView("s")).toString();
        QString value;
        std::optional<QString> inlineText;
        while (!m_xml.atEnd()) {
            const QXmlStreamReader::TokenType token = m_xml.next();
            if (token == QXmlStreamReader::EndElement && m_xml.name() == u"c")
                break;
            if (token != QXmlStreamReader::StartElement)
                continue;
            if (m_xml.name() == u"v")
                value = m_xml.elementText();
            else if (m_xml.name() == u"is")
                inlineText = decodeOoxmlEscapes(m_xml.elementText(u"rPh"));
            else
                m_xml.elementText();  // a formula and the like: its value is in <v>
        }
        m_xml.checkEnded();
        m_cells.add(cell(type, style, value, inlineText));
    }

    SheetCell cell(const QString& type, const QString& style, const QString& value,
                   const std::optional<QString>& inlineText) const
    {
        if (type == u"s") {
            bool ok = false;
            const int index = value.toInt(&ok);
            if (!ok || index < 0 || index >= m_strings.size())
                throw sheet::unreadableTable(QStringLiteral("shared string ") + value);
            return SheetCell::ofText(m_strings[index]);
        }
        if (type == u"inlineStr")
            return SheetCell::ofText(inlineText.value_or(value));
        if (type == u"str" || type == u"e")
            return SheetCell::ofText(decodeOoxmlEscapes(value));
        if (type == u"b")
            return value.trimmed().isEmpty() ? SheetCell{}
                                             : SheetCell::ofBoolean(value.trimmed() == u"1" || value.trimmed() == u"true");
        if (type == u"d")
            return value.isEmpty() ? SheetCell{} : cellFromIsoDate(value.trimmed());
        if (value.isEmpty())
            return {};
        const std::optional<double> number = storedNumber(value);
        if (!number)
            return SheetCell::ofText(value);  // not what a number cell should hold, but all it says
        const int styleIndex = style.toInt();
        if (styleIndex > 0 && styleIndex < m_styleKinds.size()) {
            if (const std::optional<SheetCell> date = cellFromSerial(*number, m_styleKinds[styleIndex], m_dates))
                return *date;
        }
        return SheetCell::ofNumber(*number);
    }

    QFile& m_file;
    SheetXmlReader m_xml;
    const QStringList& m_strings;
    const QList<NumberFormatKind>& m_styleKinds;
    DateSystem m_dates;
    RowAssembly& m_rows;
    RowCells m_cells;
    qint64 m_rowIndex = 0;
    bool m_inRow = false;
};

}  // namespace

WorkbookSummary readXlsx(const QString& path, const QString& scratchFolder, const SheetRowSink& sink,
                         const SheetProgress& progress)
{
    const SheetPackage package(path);
    QString workbookPart = targetOfType(readRelationships(package, QString()), u"/officeDocument");
    if (workbookPart.isEmpty())
        workbookPart = QStringLiteral("xl/workbook.xml");
    const std::optional<QByteArray> workbookXml = package.read(workbookPart, largestSmallPart);
    if (!workbookXml)
        throw sheet::unreadableTable(QStringLiteral("no workbook part"));
    const Workbook workbook = readWorkbook(*workbookXml);
    const QHash<QString, Relationship> relationships = readRelationships(package, workbookPart);
    const QString sheetPart = relationships.value(workbook.firstSheetId).target;
    if (workbook.sheets == 0 || sheetPart.isEmpty())
        throw sheet::unreadableTable(QStringLiteral("no sheet"));

    QStringList strings;
    const QString stringsPart = targetOfType(relationships, u"/sharedStrings");
    if (!stringsPart.isEmpty()) {
        if (const std::optional<QByteArray> xml = package.read(stringsPart, largestSharedStrings))
            strings = readSharedStrings(*xml);
    }
    QList<NumberFormatKind> styleKinds;
    const QString stylesPart = targetOfType(relationships, u"/styles");
    if (!stylesPart.isEmpty()) {
        if (const std::optional<QByteArray> xml = package.read(stylesPart, largestSmallPart))
            styleKinds = readStyleKinds(*xml);
    }

    QFile sheetFile(QDir(scratchFolder).filePath(QStringLiteral("sheet.xml")));
    if (!package.extract(sheetPart, sheetFile.fileName(), largestSheet))
        throw sheet::unreadableTable(QStringLiteral("no part ") + sheetPart);
    if (!sheetFile.open(QIODevice::ReadOnly))
        throw sheet::unreadableTable(sheetFile.errorString());
    RowAssembly rows(sink, progress);
    SheetReader(sheetFile, strings, styleKinds, workbook.dates, rows).read();
    rows.finish();
    sheetFile.close();
    sheetFile.remove();
    return {.sheets = workbook.sheets};
}

}  // namespace wendrel
