#include "DocumentModel.h"

#include <QBuffer>
#include <QFont>
#include <QImage>
#include <QImageReader>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextImageFormat>
#include <QTextList>
#include <QUrl>
#include <QVariant>

namespace wendrel::document {

namespace {

bool isOrderedStyle(QTextListFormat::Style style)
{
    switch (style) {
    case QTextListFormat::ListDecimal:
    case QTextListFormat::ListLowerAlpha:
    case QTextListFormat::ListUpperAlpha:
    case QTextListFormat::ListLowerRoman:
    case QTextListFormat::ListUpperRoman:
        return true;
    default:
        return false;
    }
}

// The three formats every writer can embed, told by their first bytes.
std::optional<std::pair<QString, QString>> embeddableKind(const QByteArray& bytes)
{
    if (bytes.startsWith("\x89PNG\r\n\x1a\n"))
        return std::pair{QStringLiteral("image/png"), QStringLiteral("png")};
    if (bytes.startsWith("\xff\xd8\xff"))
        return std::pair{QStringLiteral("image/jpeg"), QStringLiteral("jpeg")};
    if (bytes.startsWith("GIF87a") || bytes.startsWith("GIF89a"))
        return std::pair{QStringLiteral("image/gif"), QStringLiteral("gif")};
    return std::nullopt;
}

QByteArray encodePng(const QImage& image)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    if (!image.save(&buffer, "PNG"))
        return {};
    return bytes;
}

}  // namespace

InlineStyle inlineStyle(const QTextCharFormat& format)
{
    return {
        .bold = format.fontWeight() >= QFont::Bold,
        .italic = format.fontItalic(),
        .underline = format.fontUnderline() && !format.isAnchor(),
        .strike = format.fontStrikeOut(),
        .code = format.fontFixedPitch(),
        .link = format.isAnchor() ? format.anchorHref() : QString(),
    };
}

QTextCharFormat charFormat(const InlineStyle& style, QTextCharFormat base)
{
    if (style.bold)
        base.setFontWeight(QFont::Bold);
    base.setFontItalic(style.italic);
    base.setFontUnderline(style.underline || !style.link.isEmpty());
    base.setFontStrikeOut(style.strike);
    if (style.code) {
        base.setFontFixedPitch(true);
        base.setFontFamilies({QStringLiteral("monospace")});
    }
    if (!style.link.isEmpty()) {
        base.setAnchor(true);
        base.setAnchorHref(style.link);
    }
    return base;
}

int headingLevel(const QTextBlock& block)
{
    const int level = block.blockFormat().headingLevel();
    return level >= 1 && level <= 6 ? level : 0;
}

QTextCharFormat headingCharFormat(int level)
{
    QTextCharFormat format;
    format.setFontWeight(QFont::Bold);
    // The same steps as Qt's own HTML and Markdown readers: h1 three sizes up, h4 the body size.
    format.setProperty(QTextFormat::FontSizeAdjustment, 4 - std::clamp(level, 1, 6));
    return format;
}

void setHeading(QTextCursor& cursor, int level)
{
    QTextBlockFormat block = cursor.blockFormat();
    block.setHeadingLevel(level);
    cursor.setBlockFormat(block);
    cursor.setCharFormat(level > 0 ? headingCharFormat(level) : QTextCharFormat());
}

std::optional<ListPlacement> listPlacement(const QTextBlock& block)
{
    const QTextList* list = block.textList();
    if (!list)
        return std::nullopt;
    const QTextListFormat format = list->format();
    return ListPlacement{
        .ordered = isOrderedStyle(format.style()),
        .level = std::max(1, format.indent()),
    };
}

QTextListFormat listFormat(bool ordered, int level)
{
    static constexpr QTextListFormat::Style bullets[] = {QTextListFormat::ListDisc, QTextListFormat::ListCircle,
                                                         QTextListFormat::ListSquare};
    QTextListFormat format;
    format.setIndent(std::max(1, level));
    format.setStyle(ordered ? QTextListFormat::ListDecimal : bullets[(std::max(1, level) - 1) % 3]);
    return format;
}

QTextImageFormat addPicture(QTextDocument& document, const QByteArray& encoded, double widthPoints,
                            double heightPoints)
{
    // Numbered per document, so names never collide with what an HTML source refers to.
    const int number = document.property("wendrelPictures").toInt() + 1;
    document.setProperty("wendrelPictures", number);
    const QString name = QStringLiteral("wendrel-picture:%1").arg(number);
    document.addResource(QTextDocument::ImageResource, QUrl(name), encoded);
    QTextImageFormat format;
    format.setName(name);
    if (widthPoints > 0)
        format.setWidth(widthPoints);
    if (heightPoints > 0)
        format.setHeight(heightPoints);
    return format;
}

std::optional<Picture> picture(const QTextDocument& document, const QTextImageFormat& format)
{
    const QVariant resource = document.resource(QTextDocument::ImageResource, QUrl(format.name()));
    QByteArray bytes;
    if (resource.typeId() == QMetaType::QByteArray) {
        bytes = resource.toByteArray();
        if (!embeddableKind(bytes)) {
            QImage image;
            if (!image.loadFromData(bytes))
                return std::nullopt;
            bytes = encodePng(image);
        }
    } else if (resource.canConvert<QImage>()) {
        bytes = encodePng(resource.value<QImage>());
    }
    const auto kind = embeddableKind(bytes);
    if (!kind)
        return std::nullopt;

    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    const QSize size = QImageReader(&buffer).size();
    if (!size.isValid() || size.isEmpty())
        return std::nullopt;
    return Picture{.bytes = bytes, .mimeType = kind->first, .extension = kind->second,
                   .pixelWidth = size.width(), .pixelHeight = size.height()};
}

}  // namespace wendrel::document
