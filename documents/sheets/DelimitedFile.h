#pragma once

#include "SheetReading.h"

#include <optional>

namespace wendrel {

struct DelimitedReadOptions {
    // The separator; none: found from the first lines (detectDelimiter).
    std::optional<QChar> delimiter;
    // Fields become numbers, dates and booleans by typedCell()'s rule; otherwise every field
    // stays the text it was (for another delimited file, which should read exactly as this one).
    bool typeValues = false;
};

// Reads a CSV or TSV file in pieces and hands its rows on. The text is UTF-8, with or without
// a byte-order mark, or UTF-16 with one. Throws OperationError: sheet::notUtf8Table() for other
// bytes, sheet::unreadableTable() for fields or rows beyond the parser's limits, or when the
// file can't be read.
void readDelimitedFile(const QString& path, const DelimitedReadOptions& options, const SheetRowSink& sink,
                       const SheetProgress& progress);

}  // namespace wendrel
