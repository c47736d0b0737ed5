#pragma once

#include <QByteArray>
#include <QString>
#include <QTextCharFormat>

#include <optional>

class QTextBlock;
class QTextCursor;
class QTextDocument;
class QTextImageFormat;

namespace wendrel::document {

// How a document is held in a QTextDocument between reading and writing: the one shape every
// reader produces and every writer reads, so any reader meets any writer.
//
// - A heading is a block whose QTextBlockFormat::headingLevel() is 1 to 6; its text also carries
//   a larger bold character format, so the page shows it as a heading.
// - Inline styles are the character format's weight (bold from QFont::Bold up), italic,
//   underline, strike-out, fixed pitch (code) and anchor (a link, its target in anchorHref).
// - A list item is a block in a QTextList. Ordered lists use the decimal, alphabetic or roman
//   styles, bulleted lists disc, circle or square; the list format's indent() is the nesting
//   level, 1 for the outermost list.
// - A table is a QTextTable; its format's headerRowCount() counts heading rows.
// - A picture is a QTextImageFormat whose name() is a resource of the document holding the
//   picture's encoded bytes (PNG, JPEG or GIF) as a QByteArray; width and height, when set,
//   are in points.
// - A line break inside a paragraph is QChar::LineSeparator.

struct InlineStyle {
    bool bold = false;
    bool italic = false;
    bool underline = false;
    bool strike = false;
    bool code = false;
    QString link;  // empty: not a link

    friend bool operator==(const InlineStyle&, const InlineStyle&) = default;
};

InlineStyle inlineStyle(const QTextCharFormat& format);

// The character format for `style`, on top of `base` (which keeps size and font).
QTextCharFormat charFormat(const InlineStyle& style, QTextCharFormat base = {});

// 0 for an ordinary paragraph.
int headingLevel(const QTextBlock& block);

// Makes the cursor's block a heading of `level` (1-6), or an ordinary paragraph for 0, with the
// character format that shows it as such for text inserted afterwards.
void setHeading(QTextCursor& cursor, int level);

// The character format of heading text of `level` (1-6): bold, scaled from the body size.
QTextCharFormat headingCharFormat(int level);

struct ListPlacement {
    bool ordered = false;
    int level = 1;  // 1: outermost
};

std::optional<ListPlacement> listPlacement(const QTextBlock& block);

// The list format for a new list. (Qt 6.4 lists can't start at another number than 1.)
QTextListFormat listFormat(bool ordered, int level);

// Adds encoded picture bytes as a resource of `document` and returns the image format that
// shows it; `widthPoints` and `heightPoints` of 0 leave the size to the picture.
QTextImageFormat addPicture(QTextDocument& document, const QByteArray& encoded, double widthPoints = 0,
                            double heightPoints = 0);

struct Picture {
    QByteArray bytes;   // encoded
    QString mimeType;   // "image/png", "image/jpeg" or "image/gif"
    QString extension;  // "png", "jpeg" or "gif"
    int pixelWidth = 0;
    int pixelHeight = 0;
};

// The picture an image format shows, in a format every writer can embed (other formats and
// decoded images are re-encoded as PNG); nothing when it holds none that can be read.
std::optional<Picture> picture(const QTextDocument& document, const QTextImageFormat& format);

}  // namespace wendrel::document
