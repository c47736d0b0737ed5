#include "ImportedDocument.h"

#include "FontFamilies.h"
#include "PictureSources.h"
#include "documents/model/DocumentModel.h"

#include <QHash>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextFrame>
#include <QTextTable>
#include <QUrl>

#include <optional>
#include <vector>

namespace wendrel::document {

namespace {

// HTML sizes are CSS pixels, 96 to the inch; the model's are points, 72 to the inch.
constexpr double pointsPerPixel = 0.75;

// A change to the character format of a stretch of text, made after the walk over the text,
// last first, so earlier positions stay valid.
struct FormatEdit {
    int position = 0;
    int length = 0;
    std::optional<QTextCharFormat> replacement;  // nothing: remove the text (an unreadable picture)
    bool merge = false;
};

std::optional<QTextImageFormat> modelPicture(ImportedDocument& document, const QTextImageFormat& source,
                              QHash<QString, std::optional<QString>>& loaded)
{
    const QString name = source.name();
    auto known = loaded.find(name);
    if (known == loaded.end()) {
        std::optional<QString> resource;
        if (const auto bytes = readPictureSource(name, document.baseFolder()))
            resource = addPicture(document, *bytes).name();
        known = loaded.insert(name, resource);
    }
    if (!*known)
        return std::nullopt;
    QTextImageFormat format;
    format.setName(**known);
    if (source.width() > 0)
        format.setWidth(source.width() * pointsPerPixel);
    if (source.height() > 0)
        format.setHeight(source.height() * pointsPerPixel);
    return format;
}

void dropBackgroundPictures(QTextFrame* frame)
{
    QTextFrameFormat format = frame->frameFormat();
    if (format.hasProperty(QTextFormat::BackgroundImageUrl)) {
        format.clearProperty(QTextFormat::BackgroundImageUrl);
        frame->setFrameFormat(format);
    }
    if (auto* table = qobject_cast<QTextTable*>(frame)) {
        for (int row = 0; row < table->rows(); ++row) {
            for (int column = 0; column < table->columns(); ++column) {
                QTextTableCell cell = table->cellAt(row, column);
                QTextCharFormat cellFormat = cell.format();
                if (cell.row() == row && cell.column() == column
                    && cellFormat.hasProperty(QTextFormat::BackgroundImageUrl)) {
                    cellFormat.clearProperty(QTextFormat::BackgroundImageUrl);
                    cell.setFormat(cellFormat);
                }
            }
        }
    }
    for (QTextFrame* child : frame->childFrames())
        dropBackgroundPictures(child);
}

}  // namespace

QVariant ImportedDocument::loadResource(int type, const QUrl& name)
{
    if (type != QTextDocument::ImageResource)
        return {};  // style sheets and other documents are never read
    if (const auto bytes = readPictureSource(name.toString(QUrl::FullyEncoded), m_baseFolder))
        return *bytes;
    return {};
}

void normaliseImported(ImportedDocument& document, ImportedFrom from)
{
    std::vector<FormatEdit> edits;
    std::vector<QTextBlock> backgroundBlocks;
    QHash<QString, std::optional<QString>> loaded;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        if (block.blockFormat().hasProperty(QTextFormat::BackgroundImageUrl))
            backgroundBlocks.push_back(block);
        for (auto it = block.begin(); !it.atEnd(); ++it) {
            const QTextFragment fragment = it.fragment();
            if (!fragment.isValid())
                continue;
            const QTextCharFormat format = fragment.charFormat();
            if (format.isImageFormat()) {
                const auto picture = modelPicture(document, format.toImageFormat(), loaded);
                edits.push_back({fragment.position(), fragment.length(),
                                 picture ? std::optional<QTextCharFormat>(*picture) : std::nullopt});
            } else if (!format.fontFixedPitch() && anyMonospaceFamily(format.fontFamilies().toStringList())) {
                QTextCharFormat code;
                code.setFontFixedPitch(true);
                edits.push_back({fragment.position(), fragment.length(), code, true});
            }
        }
    }

    // One edit block for every change to the text: outside one, each change rescans the
    // document's frames and lays out its paragraph again. It ends before the frames are visited,
    // as the document finds them again only at its end.
    QTextCursor cursor(&document);
    cursor.beginEditBlock();
    for (auto edit = edits.rbegin(); edit != edits.rend(); ++edit) {
        cursor.setPosition(edit->position);
        cursor.setPosition(edit->position + edit->length, QTextCursor::KeepAnchor);
        if (!edit->replacement)
            cursor.removeSelectedText();
        else if (edit->merge)
            cursor.mergeCharFormat(*edit->replacement);
        else
            cursor.setCharFormat(*edit->replacement);
    }
    for (const QTextBlock& block : backgroundBlocks) {
        QTextBlockFormat format = block.blockFormat();
        format.clearProperty(QTextFormat::BackgroundImageUrl);
        QTextCursor(block).setBlockFormat(format);
    }
    cursor.endEditBlock();
    dropBackgroundPictures(document.rootFrame());

    if (from == ImportedFrom::markdown) {
        // Every Markdown table has exactly one heading row; Qt's reader doesn't say so.
        for (QTextFrame* frame : document.rootFrame()->childFrames()) {
            if (auto* table = qobject_cast<QTextTable*>(frame)) {
                QTextTableFormat format = table->format();
                format.setHeaderRowCount(1);
                table->setFormat(format);
            }
        }
    }
}

}  // namespace wendrel::document
