#pragma once

#include "PdfCompressionLevels.h"

#include <QString>

#include <functional>

namespace wendrel {

class OperationContext;

// Writes every page of `source` as one picture to `destination` (a scratch path) and returns
// the bytes written: each page drawn at the level's resolution and stored as JPEG at its
// quality, on a page of the size it is seen at (a page turned a quarter stays landscape). Text
// becomes pixels: nothing can be selected or searched after. Pages are drawn on all cores.
// Throws OperationError "Can't open this PDF", "This PDF is password-protected", "Page is too
// large", or "Couldn't create the PDF" when no page could be made.
qint64 compressAsPictures(const QString& source, const PdfCompressionLevel& level, const QString& destination,
                          const OperationContext& context, const std::function<void(double)>& progress = {});

}  // namespace wendrel
