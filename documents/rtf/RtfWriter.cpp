#include "RtfWriter.h"

#include "RtfOutput.h"

#include "documents/model/DocumentModel.h"
#include "documents/model/DocumentWalk.h"

#include <QBuffer>
#include <QHash>
#include <QImage>
#include <QTextDocument>
#include <QTextList>
#include <QTextTable>

#include <array>

namespace wendrel {

namespace rtf {
namespace {

constexpr int bodyFont = 0;
constexpr int codeFont = 1;
constexpr int linkColour = 1;
constexpr int bodySize = 24;  // half-points
constexpr int headingSizes[7] = {bodySize, 40, 32, 28, 24, 22, 20};
constexpr int textWidth = 9360;  // twips: a letter page less one-inch margins
constexpr int listIndentStep = 720;

// Each outermost list and the lists nested in it become one RTF list, its levels bulleted or
// numbered as the nested lists are, so readers see one nested list and number each from one.
class ListCollector final : public document::DocumentVisitor {
public:
    void block(const QTextBlock& block) override
    {
        const auto placement = document::listPlacement(block);
        if (!placement) {
            m_current = -1;
            return;
        }
        const int level = std::clamp(placement->level, 1, 9);
        const QTextList* list = block.textList();
        const bool joins = m_current >= 0 && (level > 1 || m_outer == nullptr || m_outer == list) &&
                           (!levels[m_current][level - 1] || *levels[m_current][level - 1] == placement->ordered);
        if (!joins) {
            levels.append(Levels{});
            m_current = static_cast<int>(levels.size()) - 1;
            m_outer = nullptr;
        }
        if (level == 1)
            m_outer = list;
        levels[m_current][level - 1] = placement->ordered;
        numbers.insert(block.blockNumber(), m_current + 1);
    }

    using Levels = std::array<std::optional<bool>, 9>;  // ordered or not, per level
    QList<Levels> levels;
    QHash<int, int> numbers;  // block number -> RTF list number

private:
    int m_current = -1;
    const QTextList* m_outer = nullptr;
};

class Writer final : public document::DocumentVisitor {
public:
    explicit Writer(const QTextDocument& document) : m_document(document) {}

    QByteArray write()
    {
        ListCollector lists;
        document::walkDocument(m_document, lists);
        m_listNumbers = lists.numbers;

        m_out.open();
        m_out.word("rtf", 1);
        m_out.word("ansi");
        m_out.word("ansicpg", 1252);
        m_out.word("deff", bodyFont);
        m_out.word("uc", 1);
        m_out.newLine();
        writeFontTable();
        writeColourTable();
        writeStyleSheet();
        writeListTables(lists.levels);
        m_out.word("viewkind", 4);
        m_out.newLine();

        m_openParagraph.append(false);
        document::walkDocument(m_document, *this);
        if (m_openParagraph.last())
            m_out.word("par");
        m_out.close();
        m_out.newLine();
        return m_out.take();
    }

    void block(const QTextBlock& block) override
    {
        closeOpenParagraph();
        const int depth = static_cast<int>(m_tables.size());
        m_out.newLine();
        m_out.word("pard");
        m_out.word("plain");
        writeTablePlacement(depth);
        const int heading = document::headingLevel(block);
        const auto list = heading == 0 ? document::listPlacement(block) : std::nullopt;
        if (heading > 0) {
            m_out.word("s", heading);
            m_out.word("outlinelevel", heading - 1);
            m_out.word("sb", 240);
            m_out.word("sa", 120);
            m_out.word("keepn");
        } else if (list) {
            m_out.word("ls", m_listNumbers.value(block.blockNumber()));
            m_out.word("ilvl", std::clamp(list->level, 1, 9) - 1);
            m_out.word("li", listIndentStep * list->level);
            m_out.word("fi", -360);
        }
        m_out.word("f", bodyFont);
        m_out.word("fs", headingSizes[heading]);
        if (heading > 0)
            m_out.word("b");
        if (list)
            writeTypedMarker(block, *list);
        for (const document::Run& run : document::runs(block))
            writeRun(run);
        m_openParagraph.last() = true;
    }

    void beginTable(const QTextTable& table) override
    {
        closeOpenParagraph();
        const int available = m_tables.isEmpty() ? textWidth : m_tables.last().columnWidth;
        m_tables.append(OpenTable{.table = &table, .columnWidth = std::max(360, available / std::max(1, table.columns()))});
        m_openParagraph.append(false);
    }

    void endTable(const QTextTable&) override
    {
        m_tables.removeLast();
        m_openParagraph.removeLast();
    }

    void beginRow(const QTextTable& table, int row) override
    {
        m_tables.last().nextColumn = 0;
        if (m_tables.size() == 1) {
            m_out.newLine();
            writeRowDefinition(table, row);
        }
    }

    void endRow(const QTextTable& table, int row) override
    {
        fillCoveredCells(table.columns());
        m_out.newLine();
        if (m_tables.size() == 1) {
            writeRowDefinition(table, row);
            m_out.word("row");
        } else {
            m_out.open();
            m_out.word("*");
            m_out.word("nesttableprops");
            writeRowDefinition(table, row);
            m_out.word("nestrow");
            m_out.close();
            m_out.open();
            m_out.word("nonesttables");
            m_out.word("par");
            m_out.close();
        }
    }

    void beginCell(const QTextTableCell& cell) override { fillCoveredCells(cell.column()); }

    void endCell(const QTextTableCell& cell) override
    {
        if (!m_openParagraph.last()) {
            m_out.word("pard");
            m_out.word("plain");
            writeTablePlacement(static_cast<int>(m_tables.size()));
        }
        endCellMark();
        m_tables.last().nextColumn = cell.column() + 1;
    }

private:
    struct OpenTable {
        const QTextTable* table = nullptr;
        int columnWidth = 0;
        int nextColumn = 0;
    };

    void closeOpenParagraph()
    {
        if (m_openParagraph.last()) {
            m_out.word("par");
            m_openParagraph.last() = false;
        }
    }

    void writeTablePlacement(int depth)
    {
        if (depth == 0)
            return;
        m_out.word("intbl");
        if (depth > 1)
            m_out.word("itap", depth);
    }

    void endCellMark()
    {
        m_out.word(m_tables.size() > 1 ? "nestcell" : "cell");
        m_openParagraph.last() = false;
    }

    // Cells covered by a merge still take their place in RTF, empty.
    void fillCoveredCells(int upTo)
    {
        OpenTable& open = m_tables.last();
        for (; open.nextColumn < upTo; ++open.nextColumn) {
            m_out.newLine();
            m_out.word("pard");
            m_out.word("plain");
            writeTablePlacement(static_cast<int>(m_tables.size()));
            endCellMark();
        }
    }

    void writeRowDefinition(const QTextTable& table, int row)
    {
        const OpenTable& open = m_tables.last();
        m_out.word("trowd");
        m_out.word("trgaph", 108);
        m_out.word("trleft", 0);
        if (row < table.format().headerRowCount())
            m_out.word("trhdr");
        for (int column = 0; column < table.columns(); ++column) {
            const QTextTableCell cell = table.cellAt(row, column);
            const bool startsRow = cell.row() == row;
            const bool startsColumn = cell.column() == column;
            if (!startsRow)
                m_out.word("clvmrg");
            else if (startsColumn && cell.rowSpan() > 1)
                m_out.word("clvmgf");
            if (!startsColumn)
                m_out.word("clmrg");
            else if (cell.columnSpan() > 1)
                m_out.word("clmgf");
            for (const char* side : {"clbrdrt", "clbrdrl", "clbrdrb", "clbrdrr"}) {
                m_out.word(side);
                m_out.word("brdrs");
                m_out.word("brdrw", 10);
            }
            m_out.word("cellx", open.columnWidth * (column + 1));
        }
    }

    void writeTypedMarker(const QTextBlock& block, const document::ListPlacement& list)
    {
        // Readers that know list tables skip this; simpler ones show the marker it holds.
        m_out.open();
        m_out.word("listtext");
        m_out.word("f", bodyFont);
        if (list.ordered)
            m_out.text(block.textList()->itemText(block));
        else
            m_out.text(u"\u2022");
        m_out.word("tab");
        m_out.close();
    }

    void writeRun(const document::Run& run)
    {
        if (run.picture) {
            writePicture(*run.picture);
            return;
        }
        const document::InlineStyle& style = run.style;
        const bool link = !style.link.isEmpty();
        if (link) {
            m_out.open();
            m_out.word("field");
            m_out.open();
            m_out.word("*");
            m_out.word("fldinst");
            m_out.open();
            QString target = style.link;
            target.replace(u'"', QStringLiteral("%22"));
            m_out.text(QStringLiteral("HYPERLINK \"%1\"").arg(target));
            m_out.close();
            m_out.close();
            m_out.open();
            m_out.word("fldrslt");
        }
        m_out.open();
        if (style.bold)
            m_out.word("b");
        if (style.italic)
            m_out.word("i");
        if (style.underline || link)
            m_out.word("ul");
        if (style.strike)
            m_out.word("strike");
        if (style.code)
            m_out.word("f", codeFont);
        if (link)
            m_out.word("cf", linkColour);
        m_out.text(run.text);
        m_out.close();
        if (link) {
            m_out.close();
            m_out.close();
        }
    }

    void writePicture(const QTextImageFormat& format)
    {
        auto picture = document::picture(m_document, format);
        if (!picture)
            return;
        if (picture->extension == u"gif") {
            // RTF has no GIF pictures: the picture goes as PNG.
            QImage image;
            if (!image.loadFromData(picture->bytes))
                return;
            picture->bytes.clear();
            QBuffer buffer(&picture->bytes);
            buffer.open(QIODevice::WriteOnly);
            if (!image.save(&buffer, "PNG"))
                return;
            picture->extension = QStringLiteral("png");
        }
        // 15 twips a pixel shows a picture without a size at 96 pixels an inch.
        const int width = format.width() > 0 ? qRound(format.width() * 20) : picture->pixelWidth * 15;
        const int height = format.height() > 0 ? qRound(format.height() * 20) : picture->pixelHeight * 15;
        m_out.open();
        m_out.word("pict");
        m_out.word(picture->extension == u"png" ? "pngblip" : "jpegblip");
        m_out.word("picw", picture->pixelWidth);
        m_out.word("pich", picture->pixelHeight);
        m_out.word("picwgoal", width);
        m_out.word("pichgoal", height);
        m_out.hex(picture->bytes);
        m_out.close();
    }

    void writeFontTable()
    {
        m_out.open();
        m_out.word("fonttbl");
        m_out.open();
        m_out.word("f", bodyFont);
        m_out.word("fswiss");
        m_out.word("fcharset", 0);
        m_out.text(u"Arial;");
        m_out.close();
        m_out.open();
        m_out.word("f", codeFont);
        m_out.word("fmodern");
        m_out.word("fcharset", 0);
        m_out.word("fprq", 1);
        m_out.text(u"Courier New;");
        m_out.close();
        m_out.close();
        m_out.newLine();
    }

    void writeColourTable()
    {
        m_out.open();
        m_out.word("colortbl");
        m_out.text(u";");
        m_out.word("red", 5);
        m_out.word("green", 99);
        m_out.word("blue", 193);
        m_out.text(u";");
        m_out.close();
        m_out.newLine();
    }

    void writeStyleSheet()
    {
        m_out.open();
        m_out.word("stylesheet");
        m_out.open();
        m_out.word("s", 0);
        m_out.word("f", bodyFont);
        m_out.word("fs", bodySize);
        m_out.text(u"Normal;");
        m_out.close();
        for (int level = 1; level <= 6; ++level) {
            m_out.newLine();
            m_out.open();
            m_out.word("s", level);
            m_out.word("outlinelevel", level - 1);
            m_out.word("sb", 240);
            m_out.word("sa", 120);
            m_out.word("keepn");
            m_out.word("b");
            m_out.word("f", bodyFont);
            m_out.word("fs", headingSizes[level]);
            m_out.word("sbasedon", 0);
            m_out.word("snext", 0);
            m_out.text(QStringLiteral("heading %1;").arg(level));
            m_out.close();
        }
        m_out.close();
        m_out.newLine();
    }

    void writeListTables(const QList<ListCollector::Levels>& lists)
    {
        if (lists.isEmpty())
            return;
        m_out.open();
        m_out.word("*");
        m_out.word("listtable");
        for (qsizetype index = 0; index < lists.size(); ++index) {
            const int id = static_cast<int>(index) + 1;
            m_out.newLine();
            m_out.open();
            m_out.word("list");
            m_out.word("listtemplateid", id);
            m_out.word("listhybrid");
            for (int level = 0; level < 9; ++level) {
                const bool ordered = lists[index][level].value_or(false);
                m_out.newLine();
                m_out.open();
                m_out.word("listlevel");
                m_out.word("levelnfc", ordered ? 0 : 23);
                m_out.word("levelnfcn", ordered ? 0 : 23);
                m_out.word("leveljc", 0);
                m_out.word("levelfollow", 0);
                m_out.word("levelstartat", 1);
                m_out.open();
                m_out.word("leveltext");
                if (ordered) {
                    // The level's own number and a full stop: "\'02\'0N." says so.
                    m_out.escapedByte(2);
                    m_out.escapedByte(static_cast<unsigned char>(level));
                    m_out.text(u".;");
                } else {
                    m_out.escapedByte(1);
                    m_out.text(u"\u2022;");
                }
                m_out.close();
                m_out.open();
                m_out.word("levelnumbers");
                if (ordered)
                    m_out.escapedByte(1);
                m_out.text(u";");
                m_out.close();
                m_out.word("fi", -360);
                m_out.word("li", listIndentStep * (level + 1));
                m_out.close();
            }
            m_out.word("listid", id);
            m_out.close();
        }
        m_out.close();
        m_out.newLine();
        m_out.open();
        m_out.word("*");
        m_out.word("listoverridetable");
        for (qsizetype index = 0; index < lists.size(); ++index) {
            const int id = static_cast<int>(index) + 1;
            m_out.open();
            m_out.word("listoverride");
            m_out.word("listid", id);
            m_out.word("listoverridecount", 0);
            m_out.word("ls", id);
            m_out.close();
        }
        m_out.close();
        m_out.newLine();
    }

    const QTextDocument& m_document;
    RtfOutput m_out;
    QHash<int, int> m_listNumbers;  // block number -> RTF list number
    QList<OpenTable> m_tables;
    QList<bool> m_openParagraph;  // per table depth, 0 the body: a paragraph waits for its end mark
};

}  // namespace
}  // namespace rtf

QByteArray writeRtf(const QTextDocument& document)
{
    return rtf::Writer(document).write();
}

}  // namespace wendrel
