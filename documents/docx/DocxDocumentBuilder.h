#pragma once

#include "DocxContent.h"

#include <QByteArray>
#include <QString>

#include <functional>
#include <optional>
#include <vector>

class QTextDocument;

namespace wendrel::docx {

// The encoded bytes of an image part, or nothing when it can't be shown.
using PictureSource = std::function<std::optional<QByteArray>(const QString& partPath)>;

// Puts a body read from a package into `document` in the document model's shape: headings,
// lists (a new QTextList where the numbering, its kind or the level changes), tables with
// their spans and heading rows, pictures from `pictures`.
void buildDocument(QTextDocument& document, const std::vector<ContentBlock>& body, const PictureSource& pictures);

}  // namespace wendrel::docx
