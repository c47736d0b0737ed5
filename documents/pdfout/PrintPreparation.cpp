#include "PrintPreparation.h"

#include "documents/model/DocumentModel.h"

#include <QFont>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextFrame>
#include <QTextTable>

#include <vector>

namespace wendrel::document {

namespace {

// Qt's layout measures pictures, borders and spacing in pixels of 1/96 inch.
constexpr double pixelsPerPoint = 96.0 / 72.0;

struct PictureResize {
    int position = 0;
    QTextImageFormat format;
};

QTextImageFormat sizedForPage(const QTextDocument& copy, QTextImageFormat format, double textWidth)
{
    double width = format.width() * pixelsPerPoint;
    double height = format.height() * pixelsPerPoint;
    if (width <= 0 || height <= 0) {
        const auto picture = document::picture(copy, format);
        if (!picture)
            return format;
        const double aspect = double(picture->pixelHeight) / picture->pixelWidth;
        if (width > 0)
            height = width * aspect;
        else if (height > 0)
            width = height / aspect;
        else
            width = picture->pixelWidth, height = picture->pixelHeight;
    }
    if (width > textWidth) {
        height *= textWidth / width;
        width = textWidth;
    }
    format.setWidth(width);
    format.setHeight(height);
    return format;
}

void styleTables(QTextFrame* frame)
{
    if (auto* table = qobject_cast<QTextTable*>(frame)) {
        QTextTableFormat format = table->format();
        format.setBorder(1);
        format.setBorderStyle(QTextFrameFormat::BorderStyle_Solid);
        format.setBorderBrush(QColor(0x80, 0x80, 0x80));
        format.setBorderCollapse(true);
        format.setCellSpacing(0);
        format.setCellPadding(4);
        format.setBottomMargin(std::max(format.bottomMargin(), 8.0));
        table->setFormat(format);
    }
    for (QTextFrame* child : frame->childFrames())
        styleTables(child);
}

}  // namespace

void prepareForPrinting(QTextDocument& copy, double textWidthPixels)
{
    copy.setDefaultFont(QFont(QStringLiteral("DejaVu Sans"), 11));
    copy.setDocumentMargin(0);  // the page has margins of its own

    std::vector<PictureResize> pictures;
    std::vector<std::pair<QTextBlock, QTextBlockFormat>> spacing;
    for (QTextBlock block = copy.begin(); block.isValid(); block = block.next()) {
        QTextBlockFormat format = block.blockFormat();
        if (!format.hasProperty(QTextFormat::BlockTopMargin) && !format.hasProperty(QTextFormat::BlockBottomMargin)) {
            if (headingLevel(block) > 0) {
                format.setTopMargin(14);
                format.setBottomMargin(6);
            } else {
                format.setBottomMargin(block.textList() ? 2 : 8);
            }
            spacing.emplace_back(block, format);
        }
        for (auto it = block.begin(); !it.atEnd(); ++it) {
            const QTextFragment fragment = it.fragment();
            if (fragment.isValid() && fragment.charFormat().isImageFormat()) {
                const QTextImageFormat picture = fragment.charFormat().toImageFormat();
                for (int i = 0; i < fragment.length(); ++i)
                    pictures.push_back({fragment.position() + i, sizedForPage(copy, picture, textWidthPixels)});
            }
        }
    }
    for (auto& [block, format] : spacing)
        QTextCursor(block).setBlockFormat(format);
    for (const PictureResize& resize : pictures) {
        QTextCursor cursor(&copy);
        cursor.setPosition(resize.position);
        cursor.setPosition(resize.position + 1, QTextCursor::KeepAnchor);
        cursor.setCharFormat(resize.format);
    }
    styleTables(copy.rootFrame());
}

}  // namespace wendrel::document
