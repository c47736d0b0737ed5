#include "RtfReader.h"

#include "RtfCodePage.h"
#include "RtfContentBuilder.h"
#include "RtfControlWords.h"
#include "RtfDocumentAssembly.h"
#include "RtfReaderState.h"
#include "RtfTextRules.h"
#include "RtfTokenizer.h"

#include "operations/OperationError.h"

#include <QBuffer>
#include <QHash>
#include <QImageReader>
#include <QTextDocument>

#include <algorithm>

namespace wendrel {

namespace rtf {
namespace {

// Groups nested deeper than this are read as if their braces weren't there: real documents
// stay within a few dozen levels, and the saved states stay small however deep a file goes.
constexpr qsizetype maximumGroupDepth = 512;

bool startsLikeRtf(const QByteArray& bytes)
{
    qsizetype start = bytes.startsWith("\xEF\xBB\xBF") ? 3 : 0;
    while (start < bytes.size() && QByteArrayView(" \t\r\n").contains(bytes[start]))
        ++start;
    return QByteArrayView(bytes).sliced(start).startsWith("{\\rtf");
}

QByteArray bytesOfHex(const QByteArray& digits)
{
    QByteArray bytes;
    bytes.reserve(digits.size() / 2);
    for (qsizetype index = 0; index + 1 < digits.size(); index += 2)
        bytes.append(static_cast<char>(hexDigitValue(digits[index]) * 16 + hexDigitValue(digits[index + 1])));
    return bytes;  // an odd digit at the end is dropped
}

// Whether a picture's header gives its size: cut-off or damaged pictures are left out.
bool hasReadableSize(const QByteArray& bytes)
{
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    const QSize size = QImageReader(&buffer).size();
    return size.isValid() && !size.isEmpty();
}

class Interpreter {
public:
    explicit Interpreter(const QByteArray& source) : m_tokenizer(source) {}

    QList<Item> run()
    {
        for (Token token = m_tokenizer.next(); token.kind != Token::Kind::End; token = m_tokenizer.next()) {
            switch (token.kind) {
            case Token::Kind::GroupStart:
                flushText();
                m_fallbackToSkip = 0;
                openGroup();
                break;
            case Token::Kind::GroupEnd:
                flushText();
                m_fallbackToSkip = 0;
                if (m_groups.size() == 1 && m_flattenedGroups == 0)
                    endParagraph(paragraphDepth(), false);  // text left before the last brace
                closeGroup();
                if (m_groups.isEmpty())
                    return finish();  // the document's own group closed: what follows isn't RTF
                break;
            case Token::Kind::ControlWord:
                if (m_groups.isEmpty())
                    break;
                if (m_fallbackToSkip > 0) {
                    --m_fallbackToSkip;
                    if (meaningOf(token.word).word == Word::Binary)
                        m_tokenizer.takeBinary(token.parameter);
                    break;
                }
                flushText();
                controlWord(token);
                break;
            case Token::Kind::Text:
                if (!m_groups.isEmpty())
                    text(token.word);
                break;
            case Token::Kind::HexByte:
                if (m_groups.isEmpty())
                    break;
                if (m_fallbackToSkip > 0)
                    --m_fallbackToSkip;
                else
                    m_pendingBytes.append(static_cast<char>(token.byte));
                break;
            case Token::Kind::End:
                break;
            }
        }
        // Never closed: everything read so far stands.
        flushText();
        return finish();
    }

private:
    GroupState& state() { return m_groups.last(); }

    void openGroup()
    {
        if (m_groups.size() >= maximumGroupDepth) {
            ++m_flattenedGroups;
            return;
        }
        m_groups.append(m_groups.isEmpty() ? GroupState{} : m_groups.last());
        m_ignorableNext = false;
        if (state().destination == Destination::StyleSheet && m_groups.size() == m_styleSheetDepth + 1)
            m_styleEntry = {0, StyleEntry{}};
    }

    void closeGroup()
    {
        if (m_flattenedGroups > 0) {
            --m_flattenedGroups;
            return;
        }
        if (m_groups.isEmpty())
            return;
        const qsizetype depth = m_groups.size();
        const Destination closing = state().destination;
        if (closing == Destination::FontTable && m_fontEntry >= 0)
            finishFontEntry();
        if (closing == Destination::StyleSheet && depth == m_styleSheetDepth + 1)
            finishStyleEntry();
        if (depth == m_pictureDepth) {
            m_pictureDepth = -1;
            finishPicture();
        }
        if (depth == m_oldListDepth) {
            m_oldListDepth = -1;
            if (depth >= 2 && m_oldList.level > 0)
                m_groups[depth - 2].paragraph.oldStyleList = m_oldList;
        }
        if (!m_fields.isEmpty() && m_fields.last().depth == depth)
            m_fields.removeLast();
        m_groups.removeLast();
    }

    void setDestination(Destination destination) { state().destination = destination; }

    bool inBodyText() const
    {
        return m_groups.last().destination == Destination::Body;
    }

    void controlWord(const Token& token)
    {
        if (token.word == "*") {
            m_ignorableNext = true;
            return;
        }
        const bool ignorable = std::exchange(m_ignorableNext, false);
        const WordMeaning meaning = meaningOf(token.word);
        const int parameter = token.parameter;
        const bool on = !token.hasParameter || parameter != 0;
        GroupState& group = state();
        const Destination destination = group.destination;

        if (meaning.word == Word::Binary) {
            const QByteArrayView data = m_tokenizer.takeBinary(token.hasParameter ? parameter : 0);
            if (destination == Destination::Picture)
                m_picture.binary.append(data);
            return;
        }
        if (destination == Destination::Skip)
            return;
        if (ignorable && meaning.word == Word::Unknown) {
            setDestination(Destination::Skip);
            return;
        }

        switch (meaning.word) {
        case Word::Unknown:
        case Word::Rtf:
            return;
        case Word::Ansi:
            m_codePage = 1252;
            return;
        case Word::Mac:
            m_codePage = 10000;
            return;
        case Word::Pc:
            m_codePage = 437;
            return;
        case Word::Pca:
            m_codePage = 850;
            return;
        case Word::AnsiCodePage:
            if (parameter > 0)
                m_codePage = parameter;
            return;
        case Word::DefaultFont:
            m_defaultFont = parameter;
            return;
        case Word::UnicodeFallback:
            group.unicodeFallbackLength = std::clamp(parameter, 0, 16);
            return;
        case Word::Unicode: {
            const int unit = parameter < 0 ? parameter + 65536 : parameter;
            if (unit > 0 && unit <= 0xFFFF)
                deliver(QString(QChar(char16_t(unit))));
            m_fallbackToSkip = group.unicodeFallbackLength;
            return;
        }

        case Word::FontTable:
            setDestination(Destination::FontTable);
            return;
        case Word::StyleSheet:
            setDestination(Destination::StyleSheet);
            m_styleSheetDepth = m_groups.size();
            return;
        case Word::ListTable:
            setDestination(Destination::ListTable);
            return;
        case Word::ListOverrideTable:
            setDestination(Destination::ListOverrideTable);
            return;
        case Word::Field:
            if (m_fields.size() < maximumGroupDepth)
                m_fields.append(OpenField{.depth = m_groups.size()});
            return;
        case Word::FieldInstruction:
            if (destination == Destination::Body)
                setDestination(Destination::FieldInstruction);
            else
                setDestination(Destination::Skip);
            return;
        case Word::FieldResult:
            if (destination == Destination::Body && !m_fields.isEmpty()) {
                const QString target = hyperlinkTarget(m_fields.last().instruction);
                if (!target.isEmpty())
                    group.link = target;
            } else if (destination != Destination::Body) {
                setDestination(Destination::Skip);
            }
            return;
        case Word::Picture:
            if (destination == Destination::Body && m_pictureDepth < 0) {
                setDestination(Destination::Picture);
                m_picture = {};
                m_pictureDepth = m_groups.size();
            } else {
                setDestination(Destination::Skip);
            }
            return;
        case Word::ShapePicture:
            return;  // its picture is read; the older one beside it, in \nonshppict, is skipped
        case Word::NestedTableProperties:
            group.inNestedTableProperties = true;
            return;
        case Word::OldListNumbering:
            if (destination == Destination::Body && m_oldListDepth < 0) {
                setDestination(Destination::OldListNumbering);
                m_oldList = {};
                m_oldListDepth = m_groups.size();
            } else {
                setDestination(Destination::Skip);
            }
            return;
        case Word::SkippedDestination:
            setDestination(Destination::Skip);
            return;
        default:
            break;
        }

        switch (destination) {
        case Destination::FontTable:
            fontTableWord(meaning.word, parameter);
            return;
        case Destination::StyleSheet:
            if (meaning.word == Word::Style)
                m_styleEntry.first = parameter;
            else if (meaning.word == Word::OtherStyle)
                m_styleEntry.first = -1;
            else if (meaning.word == Word::OutlineLevel)
                m_styleEntry.second.outlineLevel = parameter;
            return;
        case Destination::ListTable:
            listTableWord(meaning.word, parameter);
            return;
        case Destination::ListOverrideTable:
            if (meaning.word == Word::ListOverrideEntry)
                m_listOverrides.append(ListOverride{});
            else if (meaning.word == Word::ListId && !m_listOverrides.isEmpty())
                m_listOverrides.last().listId = parameter;
            else if (meaning.word == Word::ListOverrideNumber && !m_listOverrides.isEmpty())
                m_listOverrides.last().number = parameter;
            return;
        case Destination::Picture:
            pictureWord(meaning.word, parameter);
            return;
        case Destination::OldListNumbering:
            oldListWord(meaning.word, parameter);
            return;
        case Destination::FieldInstruction:
        case Destination::Body:
            break;
        case Destination::Skip:
            return;
        }
        bodyWord(meaning, parameter, on);
    }

    void bodyWord(const WordMeaning& meaning, int parameter, bool on)
    {
        GroupState& group = state();
        CharacterState& character = group.character;
        ParagraphState& paragraph = group.paragraph;
        switch (meaning.word) {
        case Word::Character:
            deliver(QString(QChar(meaning.character)));
            return;
        case Word::Font:
            character.font = parameter;
            return;
        case Word::Bold:
            character.bold = on;
            return;
        case Word::Italic:
            character.italic = on;
            return;
        case Word::Underline:
            character.underline = on;
            return;
        case Word::UnderlineNone:
            character.underline = false;
            return;
        case Word::Strike:
        case Word::DoubleStrike:
            character.strike = on;
            return;
        case Word::Plain:
            character = CharacterState{};
            return;
        case Word::ParagraphDefaults:
            paragraph = ParagraphState{};
            return;
        case Word::Style:
            paragraph.style = parameter;
            return;
        case Word::OutlineLevel:
            paragraph.outlineLevel = parameter;
            return;
        case Word::ListOverrideNumber:
            paragraph.listOverride = parameter;
            return;
        case Word::ListLevelNumber:
            paragraph.listLevel = std::clamp(parameter, 0, 8);
            return;
        case Word::InTable:
            paragraph.inTable = on;
            return;
        case Word::TableDepth:
            paragraph.tableDepth = std::clamp(parameter, 0, ContentBuilder::maximumDepth);
            return;
        case Word::LeftIndent:
            paragraph.leftIndent = parameter;
            return;
        case Word::FirstLineIndent:
            paragraph.firstLineIndent = parameter;
            return;
        case Word::Line:
            deliver(QString(QChar(QChar::LineSeparator)));
            return;
        case Word::Tab:
            deliver(QStringLiteral("\t"));
            return;
        case Word::Paragraph:
        case Word::Section:
            if (inBodyText())
                endParagraph(paragraphDepth(), true);
            return;
        case Word::Cell:
        case Word::NestedCell:
            if (inBodyText()) {
                const int depth = std::max(1, paragraphDepth());
                endParagraph(depth, false);
                m_content.endCell(depth);
            }
            return;
        case Word::Row:
            if (!inBodyText())
                return;
            endParagraph(1, false);
            m_content.endRow(1, m_rowDefinitions.value(1));
            return;
        case Word::NestedRow: {
            if (!inBodyText())
                return;
            const int depth = std::max(2, paragraphDepth());
            endParagraph(depth, false);
            m_content.endRow(depth, m_rowDefinitions.value(depth));
            return;
        }
        case Word::RowDefaults:
            m_definitionDepth = group.inNestedTableProperties ? std::max(2, paragraphDepth()) : 1;
            m_rowDefinitions[m_definitionDepth] = {};
            m_cellMerge = {};
            return;
        case Word::RowHeader:
            m_rowDefinitions[m_definitionDepth].header = true;
            return;
        case Word::CellMergeFirst:
        case Word::CellVerticalMergeFirst:
            return;
        case Word::CellMerge:
            m_cellMerge.withPrevious = true;
            return;
        case Word::CellVerticalMerge:
            m_cellMerge.withAbove = true;
            return;
        case Word::CellBoundary: {
            RowDefinition& definition = m_rowDefinitions[m_definitionDepth];
            if (definition.cells.size() < 4096)
                definition.cells.append(m_cellMerge);
            m_cellMerge = {};
            return;
        }
        default:
            return;
        }
    }

    void fontTableWord(Word word, int parameter)
    {
        if (word == Word::Font) {
            if (m_fontEntry >= 0)
                finishFontEntry();
            m_fontEntry = parameter;
            m_font = {};
        } else if (word == Word::FontFamilyModern) {
            m_font.fixedPitch = true;
        } else if (word == Word::FontPitch) {
            m_font.fixedPitch = m_font.fixedPitch || parameter == 1;
        } else if (word == Word::FontCharset) {
            if (m_font.codePage == 0)
                m_font.codePage = codePageOfCharset(parameter);
        } else if (word == Word::FontCodePage) {
            m_font.codePage = parameter;
        }
    }

    void finishFontEntry()
    {
        m_font.name = m_font.name.trimmed();
        m_font.fixedPitch = m_font.fixedPitch || isMonospaceFontName(m_font.name);
        if (m_fonts.size() < 4096 || m_fonts.contains(m_fontEntry))
            m_fonts.insert(m_fontEntry, m_font);
        m_fontEntry = -1;
        m_font = {};
    }

    void finishStyleEntry()
    {
        if (m_styleEntry.first >= 0 && (m_styles.size() < 4096 || m_styles.contains(m_styleEntry.first))) {
            m_styleEntry.second.name = m_styleEntry.second.name.trimmed();
            m_styles.insert(m_styleEntry.first, m_styleEntry.second);
        }
        m_styleEntry = {-1, StyleEntry{}};
    }

    void listTableWord(Word word, int parameter)
    {
        if (word == Word::List) {
            if (m_lists.size() < 4096)
                m_lists.append(ListDefinition{});
        } else if (m_lists.isEmpty()) {
            return;
        } else if (word == Word::ListId) {
            m_lists.last().id = parameter;
        } else if (word == Word::ListLevel) {
            if (m_lists.last().levelNumberFormats.size() < 9)
                m_lists.last().levelNumberFormats.append(0);
        } else if (word == Word::LevelNumberFormat && !m_lists.last().levelNumberFormats.isEmpty()) {
            m_lists.last().levelNumberFormats.last() = parameter;
        }
    }

    void pictureWord(Word word, int parameter)
    {
        switch (word) {
        case Word::PngBlip:
            m_picture.kind = PictureInProgress::Kind::Png;
            return;
        case Word::JpegBlip:
            m_picture.kind = PictureInProgress::Kind::Jpeg;
            return;
        case Word::OtherBlip:
            m_picture.kind = PictureInProgress::Kind::Unknown;
            return;
        case Word::PictureGoalWidth:
            m_picture.goalWidth = parameter;
            return;
        case Word::PictureGoalHeight:
            m_picture.goalHeight = parameter;
            return;
        case Word::PictureScaleX:
            m_picture.scaleX = parameter;
            return;
        case Word::PictureScaleY:
            m_picture.scaleY = parameter;
            return;
        default:
            return;
        }
    }

    void oldListWord(Word word, int parameter)
    {
        switch (word) {
        case Word::OldListLevel:
            m_oldList.level = std::clamp(parameter, 1, 9);
            return;
        case Word::OldListBullet:
            m_oldList.level = std::max(m_oldList.level, 1);
            m_oldList.ordered = false;
            return;
        case Word::OldListBody:
            m_oldList.level = std::max(m_oldList.level, 1);
            m_oldList.ordered = true;
            return;
        case Word::OldListNumbered:
            m_oldList.ordered = true;
            return;
        default:
            return;
        }
    }

    void finishPicture()
    {
        PictureInProgress picture = std::exchange(m_picture, {});
        QByteArray bytes = picture.binary.isEmpty() ? bytesOfHex(picture.hexDigits) : picture.binary;
        const bool png = picture.kind == PictureInProgress::Kind::Png && bytes.startsWith("\x89PNG");
        const bool jpeg = picture.kind == PictureInProgress::Kind::Jpeg && bytes.startsWith("\xFF\xD8");
        if ((!png && !jpeg) || !hasReadableSize(bytes))
            return;  // metafiles, device-dependent bitmaps and broken data have no place in the model
        const auto points = [](int goal, int scale) {
            return goal > 0 ? goal / 20.0 * std::clamp(scale > 0 ? scale : 100, 1, 1000) / 100.0 : 0.0;
        };
        m_spans.append(Span{.picture = PictureData{.bytes = std::move(bytes),
                                                   .widthPoints = points(picture.goalWidth, picture.scaleX),
                                                   .heightPoints = points(picture.goalHeight, picture.scaleY)}});
    }

    void text(QByteArrayView bytes)
    {
        if (m_fallbackToSkip > 0) {
            const qsizetype skipped = std::min<qsizetype>(m_fallbackToSkip, bytes.size());
            m_fallbackToSkip -= static_cast<int>(skipped);
            bytes = bytes.sliced(skipped);
        }
        if (bytes.isEmpty())
            return;
        switch (state().destination) {
        case Destination::Picture:
            for (const char c : bytes) {
                if (hexDigitValue(c) >= 0)
                    m_picture.hexDigits.append(c);
            }
            return;
        case Destination::Skip:
        case Destination::ListTable:
        case Destination::ListOverrideTable:
        case Destination::OldListNumbering:
            return;
        default:
            m_pendingBytes.append(bytes.data(), bytes.size());
        }
    }

    int codePageOfFont(int font) const
    {
        const auto found = m_fonts.constFind(font < 0 ? m_defaultFont : font);
        return found != m_fonts.constEnd() && found->codePage > 0 ? found->codePage : m_codePage;
    }

    void flushText()
    {
        if (m_pendingBytes.isEmpty() || m_groups.isEmpty())
            return;
        const QByteArray bytes = std::exchange(m_pendingBytes, {});
        const int codePage = state().destination == Destination::Body ? codePageOfFont(state().character.font)
                                                                       : m_codePage;
        deliver(m_decoder.decode(codePage, bytes));
    }

    // Decoded text for the current destination.
    void deliver(const QString& text)
    {
        GroupState& group = state();
        switch (group.destination) {
        case Destination::Body:
            break;
        case Destination::FontTable:
            for (const QChar c : text) {
                if (c == u';') {
                    if (m_fontEntry >= 0)
                        finishFontEntry();
                } else if (m_fontEntry >= 0 && m_font.name.size() < 256) {
                    m_font.name.append(c);
                }
            }
            return;
        case Destination::StyleSheet:
            for (const QChar c : text) {
                if (c == u';')
                    finishStyleEntry();
                else if (m_styleEntry.first >= 0 && m_styleEntry.second.name.size() < 256)
                    m_styleEntry.second.name.append(c);
            }
            return;
        case Destination::FieldInstruction:
            if (!m_fields.isEmpty() && m_fields.last().instruction.size() < 65536)
                m_fields.last().instruction += text;
            return;
        default:
            return;
        }

        QString cleaned;
        cleaned.reserve(text.size());
        for (const QChar c : text) {
            if (c.unicode() >= 0x20 || c == u'\t')
                cleaned.append(c);
        }
        if (cleaned.isEmpty())
            return;
        const CharacterState& character = group.character;
        const auto font = m_fonts.constFind(character.font < 0 ? m_defaultFont : character.font);
        const document::InlineStyle style{
            .bold = character.bold,
            .italic = character.italic,
            .underline = character.underline,
            .strike = character.strike,
            .code = font != m_fonts.constEnd() && font->fixedPitch,
            .link = group.link,
        };
        if (!m_spans.isEmpty() && !m_spans.last().picture && m_spans.last().style == style)
            m_spans.last().text += cleaned;
        else
            m_spans.append(Span{.text = cleaned, .style = style});
    }

    // The paragraph properties in force; defaults once the document's own group has closed.
    const ParagraphState& paragraphState() const
    {
        static const ParagraphState defaults;
        return m_groups.isEmpty() ? defaults : m_groups.last().paragraph;
    }

    int paragraphDepth() const
    {
        const ParagraphState& paragraph = paragraphState();
        return paragraph.inTable ? std::max(1, paragraph.tableDepth) : 0;
    }

    int headingLevelOf(const ParagraphState& paragraph) const
    {
        const auto levelOfOutline = [](int outline) { return outline >= 0 && outline <= 5 ? outline + 1 : 0; };
        if (paragraph.outlineLevel >= 0)
            return levelOfOutline(paragraph.outlineLevel);
        const auto style = m_styles.constFind(paragraph.style);
        if (style == m_styles.constEnd())
            return 0;
        if (style->outlineLevel >= 0)
            return levelOfOutline(style->outlineLevel);
        return headingLevelOfStyleName(style->name);
    }

    std::optional<ListItem> listItemOf(const ParagraphState& paragraph) const
    {
        if (paragraph.listOverride > 0) {
            ListItem item{.ordered = false, .level = paragraph.listLevel + 1, .list = paragraph.listOverride};
            for (const ListOverride& entry : m_listOverrides) {
                if (entry.number != paragraph.listOverride)
                    continue;
                for (const ListDefinition& list : m_lists) {
                    if (list.id == entry.listId && paragraph.listLevel < list.levelNumberFormats.size()) {
                        const int format = list.levelNumberFormats[paragraph.listLevel];
                        item.ordered = format != 23 && format != 255;
                    }
                }
                break;
            }
            return item;
        }
        if (paragraph.oldStyleList)
            return ListItem{.ordered = paragraph.oldStyleList->ordered, .level = paragraph.oldStyleList->level,
                            .list = -1};
        return std::nullopt;
    }

    // Ends the paragraph being read. An empty one inside a table cell is only the cell's end.
    void endParagraph(int depth, bool keepEmpty)
    {
        if (m_spans.isEmpty() && !keepEmpty)
            return;
        const ParagraphState& state = paragraphState();
        Paragraph paragraph{.spans = std::exchange(m_spans, {}), .headingLevel = headingLevelOf(state)};
        if (paragraph.headingLevel == 0) {
            paragraph.listItem = listItemOf(state);
            if (!paragraph.listItem && state.firstLineIndent < 0)
                takeTypedMarker(paragraph, state);
        }
        m_content.addParagraph(std::move(paragraph), depth);
    }

    // Writers without list tables type the marker and a tab on a hanging indent.
    static void takeTypedMarker(Paragraph& paragraph, const ParagraphState& state)
    {
        if (paragraph.spans.isEmpty() || paragraph.spans.first().picture)
            return;
        QString& text = paragraph.spans.first().text;
        const auto marker = typedListMarker(text);
        if (!marker)
            return;
        text.remove(0, marker->length);
        if (text.isEmpty())
            paragraph.spans.removeFirst();
        const int level = std::clamp((state.leftIndent + 180) / 360, 1, 9);
        paragraph.listItem = ListItem{.ordered = marker->ordered, .level = level, .list = -2};
    }

    QList<Item> finish()
    {
        if (!m_spans.isEmpty())
            endParagraph(paragraphDepth(), false);
        return m_content.finish();
    }

    struct OpenField {
        qsizetype depth = 0;
        QString instruction;
    };

    Tokenizer m_tokenizer;
    CodePageDecoder m_decoder;
    ContentBuilder m_content;

    QList<GroupState> m_groups;
    qsizetype m_flattenedGroups = 0;
    bool m_ignorableNext = false;
    int m_fallbackToSkip = 0;
    QByteArray m_pendingBytes;
    QList<Span> m_spans;

    int m_codePage = 1252;
    int m_defaultFont = 0;
    QHash<int, FontEntry> m_fonts;
    int m_fontEntry = -1;
    FontEntry m_font;
    QHash<int, StyleEntry> m_styles;
    qsizetype m_styleSheetDepth = -1;
    std::pair<int, StyleEntry> m_styleEntry{-1, {}};
    QList<ListDefinition> m_lists;
    QList<ListOverride> m_listOverrides;
    QList<OpenField> m_fields;

    PictureInProgress m_picture;
    qsizetype m_pictureDepth = -1;
    ListItem m_oldList{.level = 0};
    qsizetype m_oldListDepth = -1;

    QHash<int, RowDefinition> m_rowDefinitions;
    int m_definitionDepth = 1;
    RowDefinition::CellMerge m_cellMerge;
};

}  // namespace
}  // namespace rtf

std::unique_ptr<QTextDocument> readRtf(const QByteArray& rtf)
{
    if (!rtf::startsLikeRtf(rtf))
        throw OperationError(QStringLiteral("This isn't an RTF document"));
    return rtf::assembleDocument(rtf::Interpreter(rtf).run());
}

}  // namespace wendrel
