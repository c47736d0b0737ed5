#pragma once

#include "PdfCompressionLevels.h"

#include <QString>

#include <functional>

namespace wendrel {

class OperationContext;

// Writes `source` compressed at `level` to `destination` (a scratch path) and returns the
// bytes written: the pictures stored anew (see PictureRecompression.h), objects nothing uses
// dropped, small objects packed into object streams. Text, fonts, drawings, links, forms and
// annotations stay as they were. A result that isn't smaller than the source is the source's
// own bytes: a document never grows. Throws OperationError "Can't open this PDF", "This PDF is
// password-protected" or "Couldn't save the PDF".
qint64 compressKeepingText(const QString& source, const PdfCompressionLevel& level, const QString& destination,
                           const OperationContext& context, const std::function<void(double)>& progress = {});

}  // namespace wendrel
