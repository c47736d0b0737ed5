#include "OdtContentWriter.h"

#include "documents/model/DocumentModel.h"
#include "documents/model/DocumentWalk.h"

#include <QBuffer>
#include <QHash>
#include <QMap>
#include <QTextDocument>
#include <QTextList>
#include <QTextTable>
#include <QXmlStreamWriter>

#include <vector>

namespace wendrel::document::odt {

namespace {

constexpr int listLevels = 10;  // as many as the format's list styles describe

// Characters XML 1.0 can't hold (control characters, lone surrogates) are left out.
QString xmlSafe(QStringView text)
{
    QString out;
    out.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        if (c.isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate()) {
            out += c;
            out += text[++i];
        } else if (c.isSurrogate() || c == QChar(0xfffe) || c == QChar(0xffff)
                   || (c.unicode() < 0x20 && c != u'\t' && c != u'\n' && c != u'\r')) {
            continue;
        } else {
            out += c;
        }
    }
    return out;
}

QString points(double value) { return QString::number(value, 'f', 2) + QStringLiteral("pt"); }

// Writes the automatic styles the body asks for, named in the order first asked.
class AutomaticStyles {
public:
    QString textStyle(const InlineStyle& style)
    {
        const QString key = QStringLiteral("%1%2%3%4%5")
                                .arg(style.bold).arg(style.italic).arg(style.underline).arg(style.strike).arg(style.code);
        auto it = m_textStyles.find(key);
        if (it == m_textStyles.end()) {
            it = m_textStyles.insert(key, QStringLiteral("T%1").arg(m_textStyles.size() + 1));
            writeTextStyle(*it, style);
        }
        return *it;
    }

    // A list style whose levels are numbered where `numbered` says ('n') and bulleted elsewhere.
    QString listStyle(const QString& numbered)
    {
        auto it = m_listStyles.find(numbered);
        if (it == m_listStyles.end()) {
            it = m_listStyles.insert(numbered, QStringLiteral("L%1").arg(m_listStyles.size() + 1));
            writeListStyle(*it, numbered);
        }
        return *it;
    }

    void writeFixedStyles()
    {
        m_xml.writeStartElement(QStringLiteral("style:style"));
        m_xml.writeAttribute(QStringLiteral("style:name"), QStringLiteral("Cell"));
        m_xml.writeAttribute(QStringLiteral("style:family"), QStringLiteral("table-cell"));
        m_xml.writeEmptyElement(QStringLiteral("style:table-cell-properties"));
        m_xml.writeAttribute(QStringLiteral("fo:padding"), QStringLiteral("0.1cm"));
        m_xml.writeAttribute(QStringLiteral("fo:border"), QStringLiteral("0.5pt solid #000000"));
        m_xml.writeEndElement();
        m_xml.writeStartElement(QStringLiteral("style:style"));
        m_xml.writeAttribute(QStringLiteral("style:name"), QStringLiteral("Picture"));
        m_xml.writeAttribute(QStringLiteral("style:family"), QStringLiteral("graphic"));
        m_xml.writeEmptyElement(QStringLiteral("style:graphic-properties"));
        m_xml.writeAttribute(QStringLiteral("style:vertical-pos"), QStringLiteral("top"));
        m_xml.writeAttribute(QStringLiteral("style:vertical-rel"), QStringLiteral("baseline"));
        m_xml.writeEndElement();
    }

    QByteArray bytes() const { return m_bytes; }

private:
    void writeTextStyle(const QString& name, const InlineStyle& style)
    {
        m_xml.writeStartElement(QStringLiteral("style:style"));
        m_xml.writeAttribute(QStringLiteral("style:name"), name);
        m_xml.writeAttribute(QStringLiteral("style:family"), QStringLiteral("text"));
        m_xml.writeEmptyElement(QStringLiteral("style:text-properties"));
        if (style.bold) {
            for (const char* attribute : {"fo:font-weight", "style:font-weight-asian", "style:font-weight-complex"})
                m_xml.writeAttribute(QString::fromLatin1(attribute), QStringLiteral("bold"));
        }
        if (style.italic) {
            for (const char* attribute : {"fo:font-style", "style:font-style-asian", "style:font-style-complex"})
                m_xml.writeAttribute(QString::fromLatin1(attribute), QStringLiteral("italic"));
        }
        if (style.underline) {
            m_xml.writeAttribute(QStringLiteral("style:text-underline-style"), QStringLiteral("solid"));
            m_xml.writeAttribute(QStringLiteral("style:text-underline-width"), QStringLiteral("auto"));
            m_xml.writeAttribute(QStringLiteral("style:text-underline-color"), QStringLiteral("font-color"));
        }
        if (style.strike) {
            m_xml.writeAttribute(QStringLiteral("style:text-line-through-style"), QStringLiteral("solid"));
            m_xml.writeAttribute(QStringLiteral("style:text-line-through-type"), QStringLiteral("single"));
        }
        if (style.code) {
            m_xml.writeAttribute(QStringLiteral("style:font-name"), QStringLiteral("Liberation Mono"));
            m_xml.writeAttribute(QStringLiteral("fo:font-family"), QStringLiteral("'Liberation Mono'"));
            m_xml.writeAttribute(QStringLiteral("style:font-family-generic"), QStringLiteral("modern"));
            m_xml.writeAttribute(QStringLiteral("style:font-pitch"), QStringLiteral("fixed"));
        }
        m_xml.writeEndElement();
    }

    void writeListStyle(const QString& name, const QString& numbered)
    {
        static const QString bullets[] = {QStringLiteral("•"), QStringLiteral("◦"), QStringLiteral("▪")};
        m_xml.writeStartElement(QStringLiteral("text:list-style"));
        m_xml.writeAttribute(QStringLiteral("style:name"), name);
        for (int level = 1; level <= listLevels; ++level) {
            const bool isNumbered = numbered.at(level - 1) == u'n';
            m_xml.writeStartElement(isNumbered ? QStringLiteral("text:list-level-style-number")
                                               : QStringLiteral("text:list-level-style-bullet"));
            m_xml.writeAttribute(QStringLiteral("text:level"), QString::number(level));
            if (isNumbered) {
                m_xml.writeAttribute(QStringLiteral("style:num-suffix"), QStringLiteral("."));
                m_xml.writeAttribute(QStringLiteral("style:num-format"), QStringLiteral("1"));
            } else {
                m_xml.writeAttribute(QStringLiteral("text:bullet-char"), bullets[(level - 1) % 3]);
            }
            m_xml.writeStartElement(QStringLiteral("style:list-level-properties"));
            m_xml.writeAttribute(QStringLiteral("text:list-level-position-and-space-mode"),
                                 QStringLiteral("label-alignment"));
            m_xml.writeEmptyElement(QStringLiteral("style:list-level-label-alignment"));
            const QString indent = QString::number(0.635 * (level + 1), 'f', 3) + QStringLiteral("cm");
            m_xml.writeAttribute(QStringLiteral("text:label-followed-by"), QStringLiteral("listtab"));
            m_xml.writeAttribute(QStringLiteral("text:list-tab-stop-position"), indent);
            m_xml.writeAttribute(QStringLiteral("fo:text-indent"), QStringLiteral("-0.635cm"));
            m_xml.writeAttribute(QStringLiteral("fo:margin-left"), indent);
            m_xml.writeEndElement();
            m_xml.writeEndElement();
        }
        m_xml.writeEndElement();
    }

    QByteArray m_bytes;
    QBuffer m_buffer{&m_bytes};
    QXmlStreamWriter m_xml{[this] {
        m_buffer.open(QIODevice::WriteOnly);
        return &m_buffer;
    }()};
    QHash<QString, QString> m_textStyles;
    QHash<QString, QString> m_listStyles;
};

// The list shape of the list items from `first` on: per level, whether the first item seen
// there is numbered. Later levels default to bullets.
QString listShape(const QTextBlock& first)
{
    QString shape(listLevels, u'b');
    QString seen(listLevels, u'-');
    for (QTextBlock block = first; block.isValid() && block.textList() && headingLevel(block) == 0;
         block = block.next()) {
        const auto placement = listPlacement(block);
        const int index = std::min(placement->level, listLevels) - 1;
        if (seen[index] == u'-') {
            seen[index] = u'x';
            shape[index] = placement->ordered ? u'n' : u'b';
        }
    }
    return shape;
}

class BodyWriter final : public DocumentVisitor {
public:
    BodyWriter(const QTextDocument& document, AutomaticStyles& styles, QXmlStreamWriter& xml)
        : m_document(document), m_styles(styles), m_xml(xml)
    {
        m_lists.emplace_back();
    }

    void block(const QTextBlock& block) override
    {
        const int level = headingLevel(block);
        const auto list = level == 0 ? listPlacement(block) : std::nullopt;
        if (list)
            openListItem(block, *list);
        else
            closeLists();

        if (level > 0) {
            m_xml.writeStartElement(QStringLiteral("text:h"));
            m_xml.writeAttribute(QStringLiteral("text:style-name"), QStringLiteral("Heading_20_%1").arg(level));
            m_xml.writeAttribute(QStringLiteral("text:outline-level"), QString::number(level));
        } else {
            m_xml.writeStartElement(QStringLiteral("text:p"));
            m_xml.writeAttribute(QStringLiteral("text:style-name"),
                                 m_cellDepth > 0 ? QStringLiteral("Table_20_Contents")
                                 : list          ? QStringLiteral("List_20_Contents")
                                                 : QStringLiteral("Text_20_body"));
        }
        writeRuns(block, level > 0);
        m_xml.writeEndElement();
    }

    void beginTable(const QTextTable& table) override
    {
        closeLists();
        ++m_tableCount;
        m_xml.writeStartElement(QStringLiteral("table:table"));
        m_xml.writeAttribute(QStringLiteral("table:name"), QStringLiteral("Table%1").arg(m_tableCount));
        m_xml.writeEmptyElement(QStringLiteral("table:table-column"));
        m_xml.writeAttribute(QStringLiteral("table:number-columns-repeated"), QString::number(table.columns()));
        m_nextColumn.push_back(0);
    }

    void beginRow(const QTextTable& table, int row) override
    {
        if (row == 0 && headerRows(table) > 0)
            m_xml.writeStartElement(QStringLiteral("table:table-header-rows"));
        m_xml.writeStartElement(QStringLiteral("table:table-row"));
        m_nextColumn.back() = 0;
    }

    void beginCell(const QTextTableCell& cell) override
    {
        writeCoveredCellsUpTo(cell.column());
        m_xml.writeStartElement(QStringLiteral("table:table-cell"));
        m_xml.writeAttribute(QStringLiteral("table:style-name"), QStringLiteral("Cell"));
        m_xml.writeAttribute(QStringLiteral("office:value-type"), QStringLiteral("string"));
        if (cell.columnSpan() > 1)
            m_xml.writeAttribute(QStringLiteral("table:number-columns-spanned"), QString::number(cell.columnSpan()));
        if (cell.rowSpan() > 1)
            m_xml.writeAttribute(QStringLiteral("table:number-rows-spanned"), QString::number(cell.rowSpan()));
        m_nextColumn.back() = cell.column() + 1;  // the columns it spans follow as covered cells
        ++m_cellDepth;
        m_lists.emplace_back();
    }

    void endCell(const QTextTableCell&) override
    {
        closeLists();
        m_lists.pop_back();
        --m_cellDepth;
        m_xml.writeEndElement();
    }

    void endRow(const QTextTable& table, int row) override
    {
        writeCoveredCellsUpTo(table.columns());
        m_xml.writeEndElement();
        if (row + 1 == headerRows(table))
            m_xml.writeEndElement();
    }

    void endTable(const QTextTable&) override
    {
        m_nextColumn.pop_back();
        m_xml.writeEndElement();
    }

    void finish() { closeLists(); }

    QList<PackagedPicture> pictures() const { return m_pictures; }

private:
    struct OpenList {
        const QTextList* list = nullptr;  // none for a level that only holds a deeper one
        int level = 0;
    };

    static int headerRows(const QTextTable& table) { return std::clamp(table.format().headerRowCount(), 0, table.rows()); }

    void writeCoveredCellsUpTo(int column)
    {
        for (; m_nextColumn.back() < column; ++m_nextColumn.back())
            m_xml.writeEmptyElement(QStringLiteral("table:covered-table-cell"));
    }

    std::vector<OpenList>& lists() { return m_lists.back(); }

    void closeTopList()
    {
        m_xml.writeEndElement();  // text:list-item
        m_xml.writeEndElement();  // text:list
        lists().pop_back();
    }

    void closeLists()
    {
        while (!lists().empty())
            closeTopList();
    }

    void openListItem(const QTextBlock& block, const ListPlacement& placement)
    {
        const QTextList* list = block.textList();
        const int level = std::min(placement.level, listLevels);
        while (!lists().empty()
               && (lists().back().level > level || (lists().back().level == level && lists().back().list != list)))
            closeTopList();
        if (!lists().empty() && lists().back().level == level) {
            m_xml.writeEndElement();
            m_xml.writeStartElement(QStringLiteral("text:list-item"));
            return;
        }
        if (lists().empty())
            m_shape = listShape(block);
        for (int opened = lists().empty() ? 1 : lists().back().level + 1; opened <= level; ++opened) {
            // Every list names its style: readers that take a nested list's own style and
            // readers that take the outermost one's both see this list's kind.
            QString shape = m_shape;
            if (opened == level)
                shape[level - 1] = placement.ordered ? u'n' : u'b';
            m_xml.writeStartElement(QStringLiteral("text:list"));
            m_xml.writeAttribute(QStringLiteral("text:style-name"), m_styles.listStyle(shape));
            m_xml.writeStartElement(QStringLiteral("text:list-item"));
            lists().push_back({opened == level ? list : nullptr, opened});
        }
    }

    void writeRuns(const QTextBlock& block, bool heading)
    {
        const QList<Run> all = runs(block);
        m_previousWasSpace = true;  // a paragraph's leading space would be dropped
        for (qsizetype i = 0; i < all.size();) {
            const QString link = all[i].style.link;
            if (!link.isEmpty()) {
                m_xml.writeStartElement(QStringLiteral("text:a"));
                m_xml.writeAttribute(QStringLiteral("xlink:type"), QStringLiteral("simple"));
                m_xml.writeAttribute(QStringLiteral("xlink:href"), xmlSafe(link));
                m_xml.writeAttribute(QStringLiteral("text:style-name"), QStringLiteral("Internet_20_link"));
            }
            for (; i < all.size() && all[i].style.link == link; ++i)
                writeRun(all[i], heading, i + 1 == all.size());
            if (!link.isEmpty())
                m_xml.writeEndElement();
        }
    }

    void writeRun(const Run& run, bool heading, bool last)
    {
        if (run.picture) {
            writePicture(*run.picture);
            m_previousWasSpace = false;
            return;
        }
        InlineStyle style = run.style;
        style.link.clear();
        if (heading)
            style.bold = false;  // the heading style is bold
        const bool plain = style == InlineStyle{};
        if (!plain) {
            m_xml.writeStartElement(QStringLiteral("text:span"));
            m_xml.writeAttribute(QStringLiteral("text:style-name"), m_styles.textStyle(style));
        }
        writeText(xmlSafe(run.text), last);
        if (!plain)
            m_xml.writeEndElement();
    }

    // Spaces that a reader would collapse (more than one, or first in a paragraph or line, or
    // last) are written as text:s; tabs and line breaks as their elements.
    void writeText(const QString& text, bool lastRun)
    {
        QString pending;
        auto flush = [&] {
            if (!pending.isEmpty())
                m_xml.writeCharacters(pending);
            pending.clear();
        };
        for (qsizetype i = 0; i < text.size(); ++i) {
            const QChar c = text[i];
            if (c == u' ') {
                qsizetype count = 1;
                while (i + count < text.size() && text[i + count] == u' ')
                    ++count;
                const bool atEnd = lastRun && i + count == text.size();
                qsizetype asElement = count;
                if (!m_previousWasSpace && !atEnd) {
                    pending += u' ';
                    --asElement;
                }
                if (asElement > 0) {
                    flush();
                    m_xml.writeEmptyElement(QStringLiteral("text:s"));
                    if (asElement > 1)
                        m_xml.writeAttribute(QStringLiteral("text:c"), QString::number(asElement));
                }
                i += count - 1;
                m_previousWasSpace = true;
            } else if (c == u'\t' || c == QChar::LineSeparator || c == u'\n' || c == u'\r') {
                flush();
                m_xml.writeEmptyElement(c == u'\t' ? QStringLiteral("text:tab") : QStringLiteral("text:line-break"));
                m_previousWasSpace = true;
            } else {
                pending += c;
                m_previousWasSpace = false;
            }
        }
        flush();
    }

    void writePicture(const QTextImageFormat& format)
    {
        const auto found = picture(m_document, format);
        if (!found)
            return;
        QString path = m_picturePaths.value(format.name());
        if (path.isEmpty()) {
            path = QStringLiteral("Pictures/%1.%2").arg(m_pictures.size() + 1).arg(found->extension);
            m_picturePaths.insert(format.name(), path);
            m_pictures.append({path, found->mimeType, found->bytes});
        }
        // Sizes in points as the model keeps them; missing ones from the pixels at 96 per inch.
        double width = format.width();
        double height = format.height();
        const double aspect = double(found->pixelHeight) / found->pixelWidth;
        if (width <= 0 && height <= 0) {
            width = found->pixelWidth * 0.75;
            height = found->pixelHeight * 0.75;
        } else if (width <= 0) {
            width = height / aspect;
        } else if (height <= 0) {
            height = width * aspect;
        }
        ++m_frameCount;
        m_xml.writeStartElement(QStringLiteral("draw:frame"));
        m_xml.writeAttribute(QStringLiteral("draw:style-name"), QStringLiteral("Picture"));
        m_xml.writeAttribute(QStringLiteral("draw:name"), QStringLiteral("Picture%1").arg(m_frameCount));
        m_xml.writeAttribute(QStringLiteral("text:anchor-type"), QStringLiteral("as-char"));
        m_xml.writeAttribute(QStringLiteral("svg:width"), points(width));
        m_xml.writeAttribute(QStringLiteral("svg:height"), points(height));
        m_xml.writeAttribute(QStringLiteral("draw:z-index"), QStringLiteral("0"));
        m_xml.writeEmptyElement(QStringLiteral("draw:image"));
        m_xml.writeAttribute(QStringLiteral("xlink:href"), path);
        m_xml.writeAttribute(QStringLiteral("xlink:type"), QStringLiteral("simple"));
        m_xml.writeAttribute(QStringLiteral("xlink:show"), QStringLiteral("embed"));
        m_xml.writeAttribute(QStringLiteral("xlink:actuate"), QStringLiteral("onLoad"));
        m_xml.writeEndElement();
    }

    const QTextDocument& m_document;
    AutomaticStyles& m_styles;
    QXmlStreamWriter& m_xml;
    std::vector<std::vector<OpenList>> m_lists;  // per cell being written, the document's first
    QString m_shape;
    std::vector<int> m_nextColumn;
    int m_cellDepth = 0;
    int m_tableCount = 0;
    int m_frameCount = 0;
    bool m_previousWasSpace = true;
    QHash<QString, QString> m_picturePaths;
    QList<PackagedPicture> m_pictures;
};

const char* const contentStart =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<office:document-content"
    " xmlns:office=\"urn:oasis:names:tc:opendocument:xmlns:office:1.0\""
    " xmlns:style=\"urn:oasis:names:tc:opendocument:xmlns:style:1.0\""
    " xmlns:text=\"urn:oasis:names:tc:opendocument:xmlns:text:1.0\""
    " xmlns:table=\"urn:oasis:names:tc:opendocument:xmlns:table:1.0\""
    " xmlns:draw=\"urn:oasis:names:tc:opendocument:xmlns:drawing:1.0\""
    " xmlns:fo=\"urn:oasis:names:tc:opendocument:xmlns:xsl-fo-compatible:1.0\""
    " xmlns:xlink=\"http://www.w3.org/1999/xlink\""
    " xmlns:svg=\"urn:oasis:names:tc:opendocument:xmlns:svg-compatible:1.0\""
    " office:version=\"1.3\">"
    "<office:font-face-decls>"
    "<style:font-face style:name=\"Liberation Mono\" svg:font-family=\"&apos;Liberation Mono&apos;\""
    " style:font-family-generic=\"modern\" style:font-pitch=\"fixed\"/>"
    "</office:font-face-decls>";

}  // namespace

OdtContent writeOdtContent(const QTextDocument& document)
{
    AutomaticStyles styles;
    styles.writeFixedStyles();

    QByteArray body;
    QBuffer buffer(&body);
    buffer.open(QIODevice::WriteOnly);
    QXmlStreamWriter xml(&buffer);
    BodyWriter writer(document, styles, xml);
    walkDocument(document, writer);
    writer.finish();

    OdtContent content;
    content.contentXml = QByteArray(contentStart) + "<office:automatic-styles>" + styles.bytes()
                         + "</office:automatic-styles><office:body><office:text>" + body
                         + "</office:text></office:body></office:document-content>\n";
    content.pictures = writer.pictures();
    return content;
}

}  // namespace wendrel::document::odt
