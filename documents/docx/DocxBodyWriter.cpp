#include "DocxBodyWriter.h"

#include "DocxTemplates.h"
#include "documents/model/DocumentWalk.h"

#include <QHash>
#include <QTextDocument>
#include <QTextList>
#include <QTextTable>
#include <QUrl>
#include <QXmlStreamWriter>

#include <cmath>
#include <vector>

namespace wendrel::docx {

namespace {

const QString wordNs = QStringLiteral("http://schemas.openxmlformats.org/wordprocessingml/2006/main");
const QString relationshipsNs = QStringLiteral("http://schemas.openxmlformats.org/officeDocument/2006/relationships");
const QString wordDrawingNs = QStringLiteral("http://schemas.openxmlformats.org/drawingml/2006/wordprocessingDrawing");
const QString drawingNs = QStringLiteral("http://schemas.openxmlformats.org/drawingml/2006/main");
const QString pictureNs = QStringLiteral("http://schemas.openxmlformats.org/drawingml/2006/picture");

constexpr int textWidthTwips = 11906 - 2 * 1440;  // an A4 page less its margins
constexpr double emuPerPoint = 12700;
constexpr double emuPerPixel = 9525;              // at 96 pixels per inch
constexpr qint64 textWidthEmu = qint64(textWidthTwips) * 635;
constexpr int firstBodyRelationship = 100;

QByteArray relationshipXml(const QString& id, QStringView type, const QString& target, bool external)
{
    return (QStringLiteral("<Relationship Id=\"%1\" Type=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships/%2\" Target=\"%3\"%4/>")
                .arg(id, type, xmlSafe(target).toHtmlEscaped(), external ? QStringLiteral(" TargetMode=\"External\"") : QString()))
        .toUtf8();
}

class BodyWriter final : public document::DocumentVisitor {
public:
    explicit BodyWriter(const QTextDocument& document) : m_document(document), m_xml(&m_result.documentXml)
    {
        m_xml.writeStartDocument(QStringLiteral("1.0"), true);
        m_xml.writeNamespace(wordNs, QStringLiteral("w"));
        m_xml.writeNamespace(relationshipsNs, QStringLiteral("r"));
        m_xml.writeNamespace(wordDrawingNs, QStringLiteral("wp"));
        m_xml.writeNamespace(drawingNs, QStringLiteral("a"));
        m_xml.writeNamespace(pictureNs, QStringLiteral("pic"));
        m_xml.writeStartElement(wordNs, QStringLiteral("document"));
        m_xml.writeStartElement(wordNs, QStringLiteral("body"));
    }

    WrittenBody finish()
    {
        m_xml.writeStartElement(wordNs, QStringLiteral("sectPr"));
        writeEmpty(u"pgSz", {{u"w", QStringLiteral("11906")}, {u"h", QStringLiteral("16838")}});
        writeEmpty(u"pgMar", {{u"top", QStringLiteral("1440")}, {u"right", QStringLiteral("1440")},
                              {u"bottom", QStringLiteral("1440")}, {u"left", QStringLiteral("1440")},
                              {u"header", QStringLiteral("708")}, {u"footer", QStringLiteral("708")},
                              {u"gutter", QStringLiteral("0")}});
        m_xml.writeEndElement();  // sectPr
        m_xml.writeEndElement();  // body
        m_xml.writeEndElement();  // document
        m_xml.writeEndDocument();
        return std::move(m_result);
    }

    void block(const QTextBlock& block) override
    {
        m_xml.writeStartElement(wordNs, QStringLiteral("p"));
        writeParagraphProperties(block);
        QList<document::Run> runs = document::runs(block);
        QString openLink;
        for (document::Run& run : runs) {
            if (document::headingLevel(block))
                run.style.bold = false;  // the heading's style is bold already
            if (run.style.link != openLink) {
                if (!openLink.isEmpty())
                    m_xml.writeEndElement();  // hyperlink
                openLink = startLink(run.style.link);
            }
            if (run.picture)
                writePicture(*run.picture);
            else
                writeTextRun(run);
        }
        if (!openLink.isEmpty())
            m_xml.writeEndElement();
        m_xml.writeEndElement();  // p
        if (!m_cells.empty())
            m_cells.back().endsWithParagraph = true;
    }

    void beginTable(const QTextTable& table) override
    {
        if (!m_cells.empty())
            m_cells.back().endsWithParagraph = false;
        m_xml.writeStartElement(wordNs, QStringLiteral("tbl"));
        m_xml.writeStartElement(wordNs, QStringLiteral("tblPr"));
        writeEmpty(u"tblStyle", {{u"val", QStringLiteral("TableGrid")}});
        writeEmpty(u"tblW", {{u"w", QStringLiteral("5000")}, {u"type", QStringLiteral("pct")}});
        writeEmpty(u"tblLook", {{u"val", QStringLiteral("04A0")}});
        m_xml.writeEndElement();
        m_xml.writeStartElement(wordNs, QStringLiteral("tblGrid"));
        for (int column = 0; column < table.columns(); ++column)
            writeEmpty(u"gridCol", {{u"w", QString::number(columnWidth(table))}});
        m_xml.writeEndElement();
    }

    void endTable(const QTextTable&) override { m_xml.writeEndElement(); }

    void beginRow(const QTextTable& table, int row) override
    {
        m_xml.writeStartElement(wordNs, QStringLiteral("tr"));
        if (row < table.format().headerRowCount()) {
            m_xml.writeStartElement(wordNs, QStringLiteral("trPr"));
            writeEmpty(u"tblHeader", {});
            m_xml.writeEndElement();
        }
        m_rows.push_back({&table, row, 0});
    }

    void endRow(const QTextTable& table, int) override
    {
        writeContinuedCells(table.columns());
        m_rows.pop_back();
        m_xml.writeEndElement();  // tr
    }

    void beginCell(const QTextTableCell& cell) override
    {
        writeContinuedCells(cell.column());
        m_xml.writeStartElement(wordNs, QStringLiteral("tc"));
        writeCellProperties(*m_rows.back().table, cell.columnSpan(), cell.rowSpan() > 1 ? u"restart" : u"");
        m_rows.back().nextColumn = cell.column() + cell.columnSpan();
        m_cells.push_back({});
    }

    void endCell(const QTextTableCell&) override
    {
        // A cell ends with a paragraph, even after a table.
        if (!m_cells.back().endsWithParagraph)
            writeEmpty(u"p", {});
        m_cells.pop_back();
        m_xml.writeEndElement();  // tc
    }

private:
    struct Attribute {
        QStringView name;
        QString value;
    };
    struct RowState {
        const QTextTable* table = nullptr;
        int row = 0;
        int nextColumn = 0;
    };
    struct CellState {
        bool endsWithParagraph = false;
    };

    void writeEmpty(QStringView name, std::initializer_list<Attribute> attributes)
    {
        m_xml.writeEmptyElement(wordNs, name.toString());
        for (const Attribute& attribute : attributes)
            m_xml.writeAttribute(wordNs, attribute.name.toString(), attribute.value);
    }

    static int columnWidth(const QTextTable& table) { return textWidthTwips / std::max(1, table.columns()); }

    void writeCellProperties(const QTextTable& table, int columnSpan, QStringView verticalMerge)
    {
        m_xml.writeStartElement(wordNs, QStringLiteral("tcPr"));
        writeEmpty(u"tcW", {{u"w", QString::number(columnWidth(table) * columnSpan)}, {u"type", QStringLiteral("dxa")}});
        if (columnSpan > 1)
            writeEmpty(u"gridSpan", {{u"val", QString::number(columnSpan)}});
        if (verticalMerge == u"restart")
            writeEmpty(u"vMerge", {{u"val", QStringLiteral("restart")}});
        else if (verticalMerge == u"continue")
            writeEmpty(u"vMerge", {});
        m_xml.writeEndElement();
    }

    // Cells of this row covered by a cell above that spans down, up to `column`: each gets a
    // <w:tc> that continues the merge, as rows must account for every grid column.
    void writeContinuedCells(int column)
    {
        RowState& state = m_rows.back();
        const QTextTable& table = *state.table;
        while (state.nextColumn < column) {
            const QTextTableCell cell = table.cellAt(state.row, state.nextColumn);
            if (!cell.isValid()) {
                ++state.nextColumn;
                continue;
            }
            if (cell.row() < state.row && cell.column() == state.nextColumn) {
                m_xml.writeStartElement(wordNs, QStringLiteral("tc"));
                writeCellProperties(table, cell.columnSpan(), u"continue");
                writeEmpty(u"p", {});
                m_xml.writeEndElement();
            }
            state.nextColumn = cell.column() + cell.columnSpan();
        }
    }

    void writeParagraphProperties(const QTextBlock& block)
    {
        const int heading = document::headingLevel(block);
        const auto list = document::listPlacement(block);
        if (!heading && !list)
            return;
        m_xml.writeStartElement(wordNs, QStringLiteral("pPr"));
        if (heading) {
            writeEmpty(u"pStyle", {{u"val", QStringLiteral("Heading%1").arg(heading)}});
        } else {
            writeEmpty(u"pStyle", {{u"val", QStringLiteral("ListParagraph")}});
            m_xml.writeStartElement(wordNs, QStringLiteral("numPr"));
            writeEmpty(u"ilvl", {{u"val", QString::number(std::clamp(list->level, 1, 9) - 1)}});
            writeEmpty(u"numId", {{u"val", QString::number(numberingOf(*block.textList(), list->ordered))}});
            m_xml.writeEndElement();
        }
        m_xml.writeEndElement();
    }

    // Each list has a numbering instance of its own, so an ordered list starts again at 1.
    int numberingOf(const QTextList& list, bool ordered)
    {
        if (const auto found = m_numberings.constFind(&list); found != m_numberings.cend())
            return found.value();
        const int id = static_cast<int>(m_numberings.size()) + 1;
        m_numberings.insert(&list, id);
        QByteArray xml = "<w:num w:numId=\"" + QByteArray::number(id) + "\"><w:abstractNumId w:val=\""
                         + QByteArray::number(ordered ? decimalAbstractNumbering : bulletAbstractNumbering) + "\"/>";
        if (ordered) {
            for (int level = 0; level < 9; ++level)
                xml += "<w:lvlOverride w:ilvl=\"" + QByteArray::number(level) + "\"><w:startOverride w:val=\"1\"/></w:lvlOverride>";
        }
        m_result.numberings += xml + "</w:num>";
        return id;
    }

    QString newRelationship(QStringView type, const QString& target, bool external)
    {
        const QString id = QStringLiteral("rId%1").arg(firstBodyRelationship + m_relationshipCount++);
        m_result.relationships += relationshipXml(id, type, target, external);
        return id;
    }

    // Opens a w:hyperlink for `link` and returns it; returns empty (nothing opened) for no link
    // or one that isn't a valid address.
    QString startLink(const QString& link)
    {
        if (link.isEmpty())
            return {};
        if (link.startsWith(u'#') && link.size() > 1) {
            m_xml.writeStartElement(wordNs, QStringLiteral("hyperlink"));
            m_xml.writeAttribute(wordNs, QStringLiteral("anchor"), xmlSafe(link.mid(1)));
            return link;
        }
        const QUrl url(link);
        if (!url.isValid())
            return {};
        auto found = m_links.constFind(link);
        if (found == m_links.cend())
            found = m_links.insert(link, newRelationship(u"hyperlink", QString::fromUtf8(url.toEncoded()), true));
        m_xml.writeStartElement(wordNs, QStringLiteral("hyperlink"));
        m_xml.writeAttribute(relationshipsNs, QStringLiteral("id"), found.value());
        return link;
    }

    void writeRunProperties(const document::InlineStyle& style)
    {
        if (!style.bold && !style.italic && !style.underline && !style.strike && !style.code && style.link.isEmpty())
            return;
        m_xml.writeStartElement(wordNs, QStringLiteral("rPr"));
        if (!style.link.isEmpty())
            writeEmpty(u"rStyle", {{u"val", QStringLiteral("Hyperlink")}});
        else if (style.code)
            writeEmpty(u"rStyle", {{u"val", QStringLiteral("VerbatimChar")}});
        if (style.code) {
            const QString font = QStringLiteral("Courier New");
            writeEmpty(u"rFonts", {{u"ascii", font}, {u"hAnsi", font}, {u"cs", font}});
        }
        if (style.bold)
            writeEmpty(u"b", {});
        if (style.italic)
            writeEmpty(u"i", {});
        if (style.strike)
            writeEmpty(u"strike", {});
        if (style.underline)
            writeEmpty(u"u", {{u"val", QStringLiteral("single")}});
        m_xml.writeEndElement();
    }

    void writeTextRun(const document::Run& run)
    {
        m_xml.writeStartElement(wordNs, QStringLiteral("r"));
        writeRunProperties(run.style);
        QString pending;
        const auto flush = [&] {
            if (pending.isEmpty())
                return;
            m_xml.writeStartElement(wordNs, QStringLiteral("t"));
            m_xml.writeAttribute(QStringLiteral("xml:space"), QStringLiteral("preserve"));
            m_xml.writeCharacters(pending);
            m_xml.writeEndElement();
            pending.clear();
        };
        for (QChar character : xmlSafe(run.text)) {
            if (character == u'\t') {
                flush();
                writeEmpty(u"tab", {});
            } else if (character == QChar::LineSeparator || character == u'\n' || character == u'\r'
                       || character == QChar::ParagraphSeparator) {
                flush();
                writeEmpty(u"br", {});
            } else {
                pending += character;
            }
        }
        flush();
        m_xml.writeEndElement();  // r
    }

    // Extent in EMU: the picture's size in points when set, its pixels at 96 per inch
    // otherwise, scaled down to the text's width.
    static std::pair<qint64, qint64> extentOf(const QTextImageFormat& format, const document::Picture& picture)
    {
        double width = picture.pixelWidth * emuPerPixel;
        double height = picture.pixelHeight * emuPerPixel;
        const double aspect = double(picture.pixelHeight) / picture.pixelWidth;
        if (format.width() > 0 && format.height() > 0) {
            width = format.width() * emuPerPoint;
            height = format.height() * emuPerPoint;
        } else if (format.width() > 0) {
            width = format.width() * emuPerPoint;
            height = width * aspect;
        } else if (format.height() > 0) {
            height = format.height() * emuPerPoint;
            width = height / aspect;
        }
        if (width > textWidthEmu) {
            height *= textWidthEmu / width;
            width = textWidthEmu;
        }
        return {std::max<qint64>(1, std::llround(width)), std::max<qint64>(1, std::llround(height))};
    }

    void writePicture(const QTextImageFormat& format)
    {
        const std::optional<document::Picture> picture = document::picture(m_document, format);
        if (!picture)
            return;  // nothing that can be embedded
        auto found = m_pictures.constFind(format.name());
        if (found == m_pictures.cend()) {
            const QString fileName = QStringLiteral("image%1.%2").arg(m_result.media.size() + 1).arg(picture->extension);
            m_result.media.append({QStringLiteral("word/media/") + fileName, picture->bytes});
            found = m_pictures.insert(format.name(), newRelationship(u"image", QStringLiteral("media/") + fileName, false));
        }
        const auto [cx, cy] = extentOf(format, *picture);
        const QString id = QString::number(++m_drawingCount);
        const QString name = QStringLiteral("Picture %1").arg(id);

        m_xml.writeStartElement(wordNs, QStringLiteral("r"));
        m_xml.writeStartElement(wordNs, QStringLiteral("drawing"));
        m_xml.writeStartElement(wordDrawingNs, QStringLiteral("inline"));
        for (const char* distance : {"distT", "distB", "distL", "distR"})
            m_xml.writeAttribute(QString::fromLatin1(distance), QStringLiteral("0"));
        m_xml.writeEmptyElement(wordDrawingNs, QStringLiteral("extent"));
        m_xml.writeAttribute(QStringLiteral("cx"), QString::number(cx));
        m_xml.writeAttribute(QStringLiteral("cy"), QString::number(cy));
        m_xml.writeEmptyElement(wordDrawingNs, QStringLiteral("docPr"));
        m_xml.writeAttribute(QStringLiteral("id"), id);
        m_xml.writeAttribute(QStringLiteral("name"), name);
        m_xml.writeStartElement(wordDrawingNs, QStringLiteral("cNvGraphicFramePr"));
        m_xml.writeEmptyElement(drawingNs, QStringLiteral("graphicFrameLocks"));
        m_xml.writeAttribute(QStringLiteral("noChangeAspect"), QStringLiteral("1"));
        m_xml.writeEndElement();
        m_xml.writeStartElement(drawingNs, QStringLiteral("graphic"));
        m_xml.writeStartElement(drawingNs, QStringLiteral("graphicData"));
        m_xml.writeAttribute(QStringLiteral("uri"), pictureNs);
        m_xml.writeStartElement(pictureNs, QStringLiteral("pic"));
        m_xml.writeStartElement(pictureNs, QStringLiteral("nvPicPr"));
        m_xml.writeEmptyElement(pictureNs, QStringLiteral("cNvPr"));
        m_xml.writeAttribute(QStringLiteral("id"), id);
        m_xml.writeAttribute(QStringLiteral("name"), name);
        m_xml.writeEmptyElement(pictureNs, QStringLiteral("cNvPicPr"));
        m_xml.writeEndElement();  // nvPicPr
        m_xml.writeStartElement(pictureNs, QStringLiteral("blipFill"));
        m_xml.writeEmptyElement(drawingNs, QStringLiteral("blip"));
        m_xml.writeAttribute(relationshipsNs, QStringLiteral("embed"), found.value());
        m_xml.writeStartElement(drawingNs, QStringLiteral("stretch"));
        m_xml.writeEmptyElement(drawingNs, QStringLiteral("fillRect"));
        m_xml.writeEndElement();  // stretch
        m_xml.writeEndElement();  // blipFill
        m_xml.writeStartElement(pictureNs, QStringLiteral("spPr"));
        m_xml.writeStartElement(drawingNs, QStringLiteral("xfrm"));
        m_xml.writeEmptyElement(drawingNs, QStringLiteral("off"));
        m_xml.writeAttribute(QStringLiteral("x"), QStringLiteral("0"));
        m_xml.writeAttribute(QStringLiteral("y"), QStringLiteral("0"));
        m_xml.writeEmptyElement(drawingNs, QStringLiteral("ext"));
        m_xml.writeAttribute(QStringLiteral("cx"), QString::number(cx));
        m_xml.writeAttribute(QStringLiteral("cy"), QString::number(cy));
        m_xml.writeEndElement();  // xfrm
        m_xml.writeStartElement(drawingNs, QStringLiteral("prstGeom"));
        m_xml.writeAttribute(QStringLiteral("prst"), QStringLiteral("rect"));
        m_xml.writeEmptyElement(drawingNs, QStringLiteral("avLst"));
        m_xml.writeEndElement();  // prstGeom
        m_xml.writeEndElement();  // spPr
        m_xml.writeEndElement();  // pic
        m_xml.writeEndElement();  // graphicData
        m_xml.writeEndElement();  // graphic
        m_xml.writeEndElement();  // inline
        m_xml.writeEndElement();  // drawing
        m_xml.writeEndElement();  // r
    }

    const QTextDocument& m_document;
    WrittenBody m_result;
    QXmlStreamWriter m_xml;
    std::vector<RowState> m_rows;
    std::vector<CellState> m_cells;
    QHash<const QTextList*, int> m_numberings;
    QHash<QString, QString> m_links;     // target → relationship id
    QHash<QString, QString> m_pictures;  // picture resource → relationship id
    int m_relationshipCount = 0;
    int m_drawingCount = 0;
};

}  // namespace

QString xmlSafe(const QString& text)
{
    QString result;
    result.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar character = text[i];
        const char16_t code = character.unicode();
        if (character.isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate()) {
            result += character;
            result += text[++i];
        } else if (character.isSurrogate() || code == 0xFFFE || code == 0xFFFF) {
            continue;
        } else if (code < 0x20 && code != u'\t' && code != u'\n' && code != u'\r') {
            continue;
        } else {
            result += character;
        }
    }
    return result;
}

WrittenBody writeBody(const QTextDocument& document)
{
    BodyWriter writer(document);
    document::walkDocument(document, writer);
    return writer.finish();
}

}  // namespace wendrel::docx
