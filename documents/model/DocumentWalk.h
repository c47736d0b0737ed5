#pragma once

#include "DocumentModel.h"

#include <QList>
#include <QString>
#include <QTextBlock>
#include <QTextImageFormat>

#include <optional>

class QTextDocument;
class QTextTable;
class QTextTableCell;

namespace wendrel::document {

// One piece of a paragraph: text in one inline style, or one picture.
struct Run {
    QString text;  // empty for a picture; may hold QChar::LineSeparator for a line break
    InlineStyle style;
    std::optional<QTextImageFormat> picture;
};

// The runs of a block in order; adjacent fragments of the same style are joined.
QList<Run> runs(const QTextBlock& block);

// Walks a document in reading order. Writers implement what they need; tables may nest.
class DocumentVisitor {
public:
    virtual ~DocumentVisitor() = default;

    // A paragraph, heading or list item (see headingLevel and listPlacement).
    virtual void block(const QTextBlock& block) = 0;

    virtual void beginTable(const QTextTable& /*table*/) {}
    virtual void endTable(const QTextTable& /*table*/) {}
    virtual void beginRow(const QTextTable& /*table*/, int /*row*/) {}
    virtual void endRow(const QTextTable& /*table*/, int /*row*/) {}
    // Cells covered by another cell's span are not visited.
    virtual void beginCell(const QTextTableCell& /*cell*/) {}
    virtual void endCell(const QTextTableCell& /*cell*/) {}
};

void walkDocument(const QTextDocument& document, DocumentVisitor& visitor);

}  // namespace wendrel::document
