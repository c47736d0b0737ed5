#include "DocxBodyReader.h"

#include "DocxNumbering.h"
#include "DocxStyles.h"
#include "DocxXml.h"
#include "operations/OperationError.h"

#include <QCoreApplication>
#include <QHash>
#include <QStringList>

#include <algorithm>

namespace wendrel::docx {

namespace {

constexpr double emuPerPoint = 12700;
constexpr int deepestFieldNesting = 64;
constexpr qsizetype longestFieldInstruction = 4096;

struct TableState {
    std::unique_ptr<ContentTable> table = std::make_unique<ContentTable>();
    int row = -1;
    int column = 0;         // the grid column the next cell starts at
    int widestRow = 0;
    bool rowIsHeader = false;
    bool headerRowsGoOn = true;
    int cell = -1;          // index of the cell receiving content; -1 between cells
    int cellStart = 0;      // grid column of the current cell
    int cellSpan = 1;
    bool continuation = false;     // the current <w:tc> continues a merged cell
    QHash<int, int> cellStartingAt;  // grid column → the cell that last started there
};

struct FieldState {
    QString instruction;
    bool inResult = false;
    bool pushedLink = false;
};

struct DrawingState {
    int depth = 0;
    double widthPoints = 0;
    double heightPoints = 0;
    QStringList parts;
};

OperationError tooLarge()
{
    return OperationError(QCoreApplication::translate("Docx", "The document is too large or too deeply nested"));
}

class BodyReader {
public:
    BodyReader(PartReader& reader, const StyleSheet& styles, const Numbering& numbering,
               const Relationships& relationships)
        : m_reader(reader), m_styles(styles), m_numbering(numbering), m_relationships(relationships)
    {
    }

    std::vector<ContentBlock> read()
    {
        while (m_reader.next()) {
            if (m_reader.isStart())
                start();
            else if (m_reader.isEnd())
                end();
        }
        return std::move(m_body);
    }

private:
    void start()
    {
        switch (m_reader.elementNamespace()) {
        case Namespace::word:
            startWord();
            break;
        case Namespace::math:
            if (m_reader.name() == u"t")
                appendText(readText());
            break;
        case Namespace::markup:
            startAlternative();
            break;
        case Namespace::drawing:
            if (m_drawing && m_reader.name() == u"blip")
                addPicturePart(m_reader.attribute(u"embed"));
            break;
        case Namespace::wordDrawing:
            if (m_drawing && m_reader.name() == u"extent" && m_drawing->widthPoints == 0) {
                m_drawing->widthPoints = wholeNumber(m_reader.attribute(u"cx")).value_or(0) / emuPerPoint;
                m_drawing->heightPoints = wholeNumber(m_reader.attribute(u"cy")).value_or(0) / emuPerPoint;
            }
            break;
        case Namespace::vml:
            if (m_drawing && m_reader.name() == u"imagedata") {
                addPicturePart(m_reader.attribute(u"id") ? m_reader.attribute(u"id") : m_reader.attribute(u"relid"));
            } else if (m_drawing && m_reader.name() == u"shape" && m_drawing->widthPoints == 0) {
                std::tie(m_drawing->widthPoints, m_drawing->heightPoints) =
                    sizeOfVmlStyle(m_reader.attribute(u"style").value_or(QString()));
            }
            break;
        default:
            break;
        }
    }

    void startWord()
    {
        const QStringView name = m_reader.name();
        if (name == u"p") {
            if (m_paragraphDepth++ == 0) {
                m_paragraph = {};
                m_paragraphProperties = {};
                m_paragraphElementDepth = m_reader.depth();
                m_paragraphRun = m_styles.runProperties(m_styles.defaultParagraphStyle());
            }
        } else if (name == u"pPr") {
            if (m_paragraphDepth == 1 && m_reader.depth() == m_paragraphElementDepth + 1) {
                m_paragraphProperties = readParagraphProperties(m_reader);
                m_paragraphRun = m_styles.runProperties(paragraphStyle());
            } else {
                m_reader.skipElement();
            }
        } else if (name == u"r") {
            m_runElementDepth = m_reader.depth();
            setRunProperties({});
        } else if (name == u"rPr") {
            if (m_runElementDepth && m_reader.depth() == m_runElementDepth + 1)
                setRunProperties(readRunProperties(m_reader));
            else
                m_reader.skipElement();
        } else if (name == u"t") {
            appendText(readText());
        } else if (name == u"tab") {
            appendText(QStringLiteral("\t"));
        } else if (name == u"br") {
            const QString type = m_reader.attribute(u"type").value_or(QString());
            if (type != u"page" && type != u"column")
                appendText(QString(QChar::LineSeparator));
        } else if (name == u"cr") {
            appendText(QString(QChar::LineSeparator));
        } else if (name == u"noBreakHyphen") {
            appendText(QStringLiteral("-"));
        } else if (name == u"hyperlink") {
            m_links.append(hyperlinkTarget());
        } else if (name == u"fldSimple") {
            FieldState field{.instruction = m_reader.attribute(u"instr").value_or(QString()), .inResult = true};
            enterFieldResult(field);
            m_simpleFields.append(field);
        } else if (name == u"fldChar") {
            fieldCharacter(m_reader.attribute(u"fldCharType").value_or(QString()));
        } else if (name == u"instrText") {
            const QString text = readText();
            if (!m_fields.empty() && !m_fields.back().inResult
                && m_fields.back().instruction.size() < longestFieldInstruction)
                m_fields.back().instruction += text;
        } else if (name == u"drawing" || name == u"pict" || name == u"object") {
            if (!m_drawing)
                m_drawing = DrawingState{.depth = m_reader.depth()};
        } else if (name == u"tbl") {
            if (m_paragraphDepth == 0) {
                if (m_tables.size() >= deepestTableNesting)
                    throw tooLarge();
                m_tables.emplace_back();
            }
        } else if (name == u"tr") {
            if (TableState* table = openTable())
                startRow(*table);
        } else if (name == u"trPr") {
            if (TableState* table = openTable())
                readRowProperties(*table);
            else
                m_reader.skipElement();
        } else if (name == u"tc") {
            if (TableState* table = openTable())
                startCell(*table);
        } else if (name == u"tcPr") {
            if (TableState* table = openTable(); table && table->cell >= 0)
                readCellProperties(*table);
            else
                m_reader.skipElement();
        } else if (name == u"del" || name == u"moveFrom" || name == u"sdtPr" || name == u"sectPr"
                   || name == u"tblPr" || name == u"tblGrid" || name == u"rPrChange" || name == u"pPrChange") {
            // What was deleted, and settings without text of their own.
            m_reader.skipElement();
        }
    }

    void end()
    {
        const Namespace ns = m_reader.elementNamespace();
        const QStringView name = m_reader.name();
        if (ns == Namespace::markup && name == u"AlternateContent") {
            if (!m_alternatives.isEmpty())
                m_alternatives.removeLast();
            return;
        }
        if (ns != Namespace::word)
            return;
        if (m_drawing && m_reader.depth() == m_drawing->depth - 1
            && (name == u"drawing" || name == u"pict" || name == u"object")) {
            finishDrawing();
        } else if (name == u"p") {
            if (m_paragraphDepth > 0 && --m_paragraphDepth == 0)
                finishParagraph();
            else if (m_paragraphDepth > 0 && !m_paragraph.isEmpty())
                appendText(QString(QChar::LineSeparator));  // a paragraph of a text box ends
        } else if (name == u"r") {
            m_runElementDepth = 0;
        } else if (name == u"hyperlink") {
            if (!m_links.isEmpty())
                m_links.removeLast();
        } else if (name == u"fldSimple") {
            if (!m_simpleFields.isEmpty()) {
                if (m_simpleFields.takeLast().pushedLink && !m_links.isEmpty())
                    m_links.removeLast();
            }
        } else if (name == u"tc") {
            if (TableState* table = openTable())
                finishCell(*table);
        } else if (name == u"tr") {
            if (TableState* table = openTable())
                finishRow(*table);
        } else if (name == u"tbl") {
            if (m_paragraphDepth == 0 && !m_tables.empty())
                finishTable();
        }
    }

    // mc:AlternateContent offers the same content several ways: the first choice is read and
    // the rest, the fallback among them, passed over.
    void startAlternative()
    {
        const QStringView name = m_reader.name();
        if (name == u"AlternateContent") {
            m_alternatives.append(false);
        } else if ((name == u"Choice" || name == u"Fallback") && !m_alternatives.isEmpty()) {
            if (m_alternatives.last())
                m_reader.skipElement();
            else
                m_alternatives.last() = true;
        }
    }

    QString readText()
    {
        QString text;
        const int depth = m_reader.depth();
        while (m_reader.next() && m_reader.depth() >= depth) {
            if (m_reader.isText())
                text += m_reader.text();
        }
        return text;
    }

    QString paragraphStyle() const
    {
        return m_paragraphProperties.style.isEmpty() ? m_styles.defaultParagraphStyle() : m_paragraphProperties.style;
    }

    void setRunProperties(const RunProperties& direct)
    {
        RunProperties effective = m_paragraphRun;
        if (!direct.style.isEmpty()) {
            // The character style's own chain, without the defaults already in the paragraph's.
            const RunProperties character = m_styles.runProperties(direct.style, false);
            effective.overlay(character);
        }
        effective.overlay(direct);
        m_runStyle = effective.inlineStyle();
        m_runHidden = effective.hidden.value_or(false);
    }

    bool textIsShown() const
    {
        if (m_paragraphDepth == 0 || m_runHidden)
            return false;
        return std::all_of(m_fields.cbegin(), m_fields.cend(), [](const FieldState& field) { return field.inResult; });
    }

    void appendText(const QString& text)
    {
        if (text.isEmpty() || !textIsShown())
            return;
        document::InlineStyle style = m_runStyle;
        style.link = m_links.isEmpty() ? QString() : m_links.last();
        QList<ContentRun>& runs = m_paragraph.runs;
        if (!runs.isEmpty() && !runs.last().picture && runs.last().style == style)
            runs.last().text += text;
        else
            runs.append(ContentRun{.text = text, .style = style});
    }

    QString hyperlinkTarget() const
    {
        if (const std::optional<QString> id = m_reader.attribute(u"id")) {
            const Relationship relationship = m_relationships.value(*id);
            if (relationship.type == u"hyperlink")
                return relationship.target;
        }
        if (const std::optional<QString> anchor = m_reader.attribute(u"anchor"); anchor && !anchor->isEmpty())
            return u'#' + *anchor;
        return {};
    }

    void enterFieldResult(FieldState& field)
    {
        field.inResult = true;
        const QString link = hyperlinkOfField(field.instruction);
        if (!link.isEmpty()) {
            m_links.append(link);
            field.pushedLink = true;
        }
    }

    void fieldCharacter(const QString& type)
    {
        if (type == u"begin") {
            if (m_fields.size() >= deepestFieldNesting)
                ++m_fieldsBeyondDepth;
            else
                m_fields.push_back({});
        } else if (type == u"separate") {
            if (m_fieldsBeyondDepth == 0 && !m_fields.empty() && !m_fields.back().inResult)
                enterFieldResult(m_fields.back());
        } else if (type == u"end") {
            if (m_fieldsBeyondDepth > 0) {
                --m_fieldsBeyondDepth;
            } else if (!m_fields.empty()) {
                if (m_fields.back().pushedLink && !m_links.isEmpty())
                    m_links.removeLast();
                m_fields.pop_back();
            }
        }
    }

    void addPicturePart(const std::optional<QString>& relationshipId)
    {
        if (!relationshipId)
            return;
        const auto found = m_relationships.constFind(*relationshipId);
        if (found != m_relationships.cend() && !found->external && found->type == u"image")
            m_drawing->parts.append(found->target);
    }

    void finishDrawing()
    {
        const DrawingState drawing = *m_drawing;
        m_drawing.reset();
        if (!textIsShown())
            return;
        for (const QString& part : drawing.parts) {
            if (++m_pictures > mostPictures)
                throw OperationError(QCoreApplication::translate("Docx", "The document has too many pictures"));
            // A drawing's extent is the size of the one picture it shows; pictures grouped in
            // one drawing keep their own sizes.
            const bool sized = drawing.parts.size() == 1;
            document::InlineStyle style = m_runStyle;
            style.link = m_links.isEmpty() ? QString() : m_links.last();
            m_paragraph.runs.append(ContentRun{
                .style = style,
                .picture = PictureReference{.partPath = part,
                                            .widthPoints = sized ? drawing.widthPoints : 0,
                                            .heightPoints = sized ? drawing.heightPoints : 0}});
        }
    }

    std::vector<ContentBlock>* openBlocks()
    {
        if (m_tables.empty())
            return &m_body;
        TableState& table = m_tables.back();
        if (table.cell < 0)
            return nullptr;  // content between cells has no place
        return &table.table->cells[table.cell].blocks;
    }

    void countBlocks(qint64 count)
    {
        m_blocks += count;
        if (m_blocks > mostBlocks)
            throw tooLarge();
    }

    void finishParagraph()
    {
        const ParagraphProperties& direct = m_paragraphProperties;
        int heading = m_styles.headingLevel(paragraphStyle());
        if (direct.outlineLevel)
            heading = *direct.outlineLevel <= 8 ? std::min(6, *direct.outlineLevel + 1) : 0;
        m_paragraph.headingLevel = heading;

        NumberingReference numbering = m_styles.numbering(paragraphStyle());
        if (direct.numbering.numberingId)
            numbering.numberingId = direct.numbering.numberingId;
        if (direct.numbering.level)
            numbering.level = direct.numbering.level;
        if (heading == 0 && numbering.numberingId && m_numbering.isList(*numbering.numberingId)) {
            const int level = std::clamp(numbering.level.value_or(0), 0, 8);
            m_paragraph.list = ListItem{.numberingId = *numbering.numberingId,
                                        .level = level + 1,
                                        .ordered = m_numbering.isOrdered(*numbering.numberingId, level)};
        }

        std::vector<ContentBlock>* blocks = openBlocks();
        if (!blocks || (m_paragraph.isEmpty() && !m_tables.empty() && m_tables.back().continuation))
            return;
        countBlocks(1);
        blocks->push_back(ContentBlock{.paragraph = std::move(m_paragraph)});
        m_paragraph = {};
    }

    TableState* openTable()
    {
        return m_paragraphDepth == 0 && !m_tables.empty() ? &m_tables.back() : nullptr;
    }

    void startRow(TableState& table)
    {
        ++table.row;
        table.column = 0;
        table.rowIsHeader = false;
        table.cell = -1;
    }

    void readRowProperties(TableState& table)
    {
        const int depth = m_reader.depth();
        while (m_reader.next() && m_reader.depth() >= depth) {
            if (!m_reader.isStart())
                continue;
            if (m_reader.depth() == depth + 1 && m_reader.elementNamespace() == Namespace::word) {
                if (m_reader.name() == u"tblHeader")
                    table.rowIsHeader = m_reader.toggleValue();
                else if (m_reader.name() == u"gridBefore")
                    table.column += std::clamp<qint64>(wholeNumber(m_reader.attribute(u"val")).value_or(0), 0, widestTable);
            }
            m_reader.skipElement();
        }
    }

    void startCell(TableState& table)
    {
        if (table.row < 0)
            startRow(table);  // a cell outside any row starts one
        table.cellStart = table.column;
        table.cellSpan = 1;
        table.continuation = false;
        if (table.cellStart >= widestTable)
            throw tooLarge();
        table.table->cells.push_back(ContentCell{.row = table.row, .column = table.cellStart});
        table.cell = static_cast<int>(table.table->cells.size()) - 1;
        countBlocks(1);
    }

    void readCellProperties(TableState& table)
    {
        int span = 1;
        std::optional<QString> verticalMerge;
        std::optional<QString> horizontalMerge;
        const int depth = m_reader.depth();
        while (m_reader.next() && m_reader.depth() >= depth) {
            if (!m_reader.isStart())
                continue;
            if (m_reader.depth() == depth + 1 && m_reader.elementNamespace() == Namespace::word) {
                if (m_reader.name() == u"gridSpan")
                    span = static_cast<int>(std::clamp<qint64>(wholeNumber(m_reader.attribute(u"val")).value_or(1), 1, widestTable));
                else if (m_reader.name() == u"vMerge")
                    verticalMerge = m_reader.attribute(u"val").value_or(QStringLiteral("continue"));
                else if (m_reader.name() == u"hMerge")
                    horizontalMerge = m_reader.attribute(u"val").value_or(QStringLiteral("continue"));
            }
            m_reader.skipElement();
        }

        std::vector<ContentCell>& cells = table.table->cells;
        ContentCell& cell = cells[table.cell];
        cell.columnSpan = span;
        table.cellSpan = span;
        const bool freshCell = table.cell == static_cast<int>(cells.size()) - 1 && cell.blocks.empty();
        if (!freshCell)
            return;
        if (verticalMerge && *verticalMerge != u"restart") {
            const int origin = table.cellStartingAt.value(table.cellStart, -1);
            if (origin >= 0 && cells[origin].row + cells[origin].rowSpan == table.row && cells[origin].columnSpan == span) {
                cells.pop_back();
                ++cells[origin].rowSpan;
                table.cell = origin;
                table.continuation = true;
            }
        } else if (horizontalMerge && *horizontalMerge != u"restart" && table.cell > 0) {
            ContentCell& previous = cells[table.cell - 1];
            if (previous.row == table.row && previous.column + previous.columnSpan == table.cellStart) {
                previous.columnSpan += span;
                cells.pop_back();
                table.cell = static_cast<int>(cells.size()) - 1;
                table.cellStart = previous.column;
                table.cellSpan = previous.columnSpan;
                table.continuation = true;
            }
        }
    }

    void finishCell(TableState& table)
    {
        if (table.cell < 0)
            return;
        table.column = table.cellStart + table.cellSpan;
        if (table.column > widestTable)
            throw tooLarge();
        table.cellStartingAt.insert(table.cellStart, table.cell);
        table.widestRow = std::max(table.widestRow, table.column);
        table.cell = -1;
        table.continuation = false;
    }

    void finishRow(TableState& table)
    {
        table.widestRow = std::max(table.widestRow, table.column);
        if (table.rowIsHeader && table.headerRowsGoOn)
            table.table->headerRows = table.row + 1;
        else
            table.headerRowsGoOn = false;
        table.cell = -1;
    }

    void finishTable()
    {
        TableState state = std::move(m_tables.back());
        m_tables.pop_back();
        ContentTable& table = *state.table;
        table.rows = state.row + 1;
        table.columns = state.widestRow;
        if (table.rows <= 0 || table.columns <= 0 || table.cells.empty())
            return;
        // Qt makes every grid cell, spanned or not.
        countBlocks(static_cast<qint64>(table.rows) * table.columns - static_cast<qint64>(table.cells.size()));
        if (std::vector<ContentBlock>* blocks = openBlocks())
            blocks->push_back(ContentBlock{.table = std::move(state.table)});
    }

    PartReader& m_reader;
    const StyleSheet& m_styles;
    const Numbering& m_numbering;
    const Relationships& m_relationships;

    std::vector<ContentBlock> m_body;
    std::vector<TableState> m_tables;
    qint64 m_blocks = 0;
    int m_pictures = 0;

    int m_paragraphDepth = 0;  // paragraphs of text boxes nest inside the paragraph holding them
    int m_paragraphElementDepth = 0;
    ContentParagraph m_paragraph;
    ParagraphProperties m_paragraphProperties;
    RunProperties m_paragraphRun;

    int m_runElementDepth = 0;
    document::InlineStyle m_runStyle;
    bool m_runHidden = false;

    QStringList m_links;  // innermost last; empty: a link whose target isn't known
    std::vector<FieldState> m_fields;
    int m_fieldsBeyondDepth = 0;
    QList<FieldState> m_simpleFields;
    std::optional<DrawingState> m_drawing;
    QList<bool> m_alternatives;  // per open mc:AlternateContent: whether a choice was taken
};

double pointsOfLength(QStringView value)
{
    value = value.trimmed();
    struct Unit {
        QStringView suffix;
        double points;
    };
    static constexpr Unit units[] = {{u"pt", 1}, {u"in", 72}, {u"cm", 72 / 2.54}, {u"mm", 72 / 25.4},
                                     {u"pc", 12}, {u"px", 0.75}};
    double factor = 0.75;  // a bare number counts pixels
    for (const Unit& unit : units) {
        if (value.endsWith(unit.suffix, Qt::CaseInsensitive)) {
            factor = unit.points;
            value.chop(unit.suffix.size());
            break;
        }
    }
    bool ok = false;
    const double number = value.trimmed().toDouble(&ok);
    return ok && number > 0 && number < 1e6 ? number * factor : 0;
}

}  // namespace

std::vector<ContentBlock> readBody(const QByteArray& xml, const QString& partName, const StyleSheet& styles,
                                   const Numbering& numbering, const Relationships& relationships)
{
    PartReader reader(xml, partName);
    return BodyReader(reader, styles, numbering, relationships).read();
}

QString hyperlinkOfField(const QString& instruction)
{
    // Words of the instruction, quoted ones kept whole.
    QStringList words;
    QString word;
    bool quoted = false;
    bool inWord = false;
    for (QChar character : instruction) {
        if (character == u'"') {
            quoted = !quoted;
            inWord = true;
        } else if (character.isSpace() && !quoted) {
            if (inWord)
                words.append(word);
            word.clear();
            inWord = false;
        } else {
            word += character;
            inWord = true;
        }
    }
    if (inWord)
        words.append(word);
    if (words.isEmpty() || words.first().compare(u"HYPERLINK", Qt::CaseInsensitive) != 0)
        return {};
    QString target;
    QString anchor;
    for (qsizetype i = 1; i < words.size(); ++i) {
        if (words[i] == u"\\l" && i + 1 < words.size())
            anchor = words[++i];
        else if (words[i] == u"\\o" || words[i] == u"\\t")
            ++i;  // a tooltip or target frame
        else if (words[i].startsWith(u'\\'))
            continue;  // a switch without argument
        else if (target.isEmpty())
            target = words[i];
    }
    if (!anchor.isEmpty())
        return target + u'#' + anchor;
    return target;
}

std::pair<double, double> sizeOfVmlStyle(const QString& style)
{
    double width = 0;
    double height = 0;
    for (const QString& declaration : style.split(u';', Qt::SkipEmptyParts)) {
        const QString property = declaration.section(u':', 0, 0).trimmed().toLower();
        const QString value = declaration.section(u':', 1);
        if (property == u"width")
            width = pointsOfLength(value);
        else if (property == u"height")
            height = pointsOfLength(value);
    }
    return {width, height};
}

}  // namespace wendrel::docx
