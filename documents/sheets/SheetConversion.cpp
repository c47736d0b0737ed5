#include "SheetConversion.h"

#include "DelimitedFile.h"
#include "DelimitedText.h"
#include "SheetErrors.h"
#include "XlsxWriter.h"
#include "operations/ContentType.h"

#include <QCoreApplication>
#include <QFile>

namespace wendrel {

namespace {

WorkbookSummary readSheet(const QString& source, SheetFormat from, bool typed, const QString& scratchFolder,
                          const SheetRowSink& sink, const SheetProgress& progress)
{
    switch (from) {
    case SheetFormat::csv:
        readDelimitedFile(source, {.delimiter = std::nullopt, .typeValues = typed}, sink, progress);
        return {};
    case SheetFormat::tsv:
        readDelimitedFile(source, {.delimiter = u'\t', .typeValues = typed}, sink, progress);
        return {};
    case SheetFormat::xlsx:
        return readXlsx(source, scratchFolder, sink, progress);
    case SheetFormat::ods:
        return readOds(source, scratchFolder, sink, progress);
    }
    return {};
}

}  // namespace

std::optional<SheetFormat> sheetFormatOf(const QString& path)
{
    const ContentType type = ContentType::ofFile(path);
    if (type.conformsTo(ContentType::xlsx()))
        return SheetFormat::xlsx;
    if (type.conformsTo(ContentType::ods()))
        return SheetFormat::ods;
    if (type.conformsTo(ContentType::tabSeparatedText()))
        return SheetFormat::tsv;
    if (type.conformsTo(ContentType::commaSeparatedText()))
        return SheetFormat::csv;
    return std::nullopt;
}

WorkbookSummary convertSheet(const QString& source, SheetFormat from, const QString& destination, SheetFormat to,
                             const QString& scratchFolder, const SheetProgress& progress)
{
    const bool delimitedSource = from == SheetFormat::csv || from == SheetFormat::tsv;
    if (to == SheetFormat::xlsx) {
        XlsxWriter writer(scratchFolder);
        const WorkbookSummary summary = readSheet(source, from, true, scratchFolder,
                                                  [&](const SheetRow& row) { writer.writeRow(row); }, progress);
        writer.finish(destination);
        return summary;
    }
    if (to != SheetFormat::csv && to != SheetFormat::tsv)
        throw OperationError(QCoreApplication::translate("SheetOperations", "Can't write this kind of table"));

    QFile file(destination);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        throw OperationError::withReason(QCoreApplication::translate("SheetOperations", "Couldn't write the table"),
                                         file.errorString());
    }
    DelimitedWriter writer(file, to == SheetFormat::csv ? u',' : u'\t');
    // Between delimited files every field keeps its text: "007" and "1.50" stay as written.
    const WorkbookSummary summary = readSheet(source, from, !delimitedSource, scratchFolder,
                                              [&](const SheetRow& row) { writer.writeRow(row); }, progress);
    writer.finish();
    if (!file.flush()) {
        throw OperationError::withReason(QCoreApplication::translate("SheetOperations", "Couldn't write the table"),
                                         file.errorString());
    }
    return summary;
}

}  // namespace wendrel
