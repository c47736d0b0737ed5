#include "SheetOperations.h"

#include "SheetConversion.h"
#include "SheetErrors.h"
#include "operations/FileNames.h"
#include "operations/Op.h"
#include "operations/OperationCatalog.h"
#include "operations/OperationError.h"

#include <QCoreApplication>
#include <QDir>
#include <QTemporaryDir>

namespace wendrel {

namespace {

QString translate(const char* text) { return QCoreApplication::translate("SheetOperations", text); }

QString firstSheetNote(int sheets)
{
    if (sheets <= 1)
        return {};
    return QCoreApplication::translate("SheetOperations", "Only the first of %n sheets was converted", nullptr, sheets);
}

OperationOutcome convertFile(const QString& path, const OperationContext& context, SheetFormat to,
                             const QString& extension)
{
    const std::optional<SheetFormat> from = sheetFormatOf(path);
    if (!from)
        throw sheet::unreadableTable(QStringLiteral("not a table's type: ") + path);
    WorkbookSummary summary;
    ProducedFile produced = context.produce(path, outputName(path, std::nullopt, extension), [&](const QString& destination) {
        QTemporaryDir scratch(QDir(context.workDirectory()).filePath(QStringLiteral("sheet-XXXXXX")));
        if (!scratch.isValid())
            throw OperationError::withReason(translate("Couldn't make a scratch folder"), scratch.errorString());
        summary = convertSheet(path, *from, destination, to, scratch.path(), [&context](double fraction) {
            context.throwIfCancelled();
            context.progress(fraction);
        });
    });
    produced.note = firstSheetNote(summary.sheets);
    return produced;
}

FileOperationPtr sheetEntry(EntryId id, const QString& title, SheetFormat to, const QString& extension,
                            const ContentType& ownType, const QString& description)
{
    // The binary workbook shares the XLSX family's type but not its XML: no reader here.
    const ContentType binaryWorkbook =
        ContentType::fromMimeName(QStringLiteral("application/vnd.ms-excel.sheet.binary.macroEnabled.12"));
    return Op::make({
        .entry = {.id = id, .title = title, .symbol = QStringLiteral("tablecells"), .ring = RingKind::convert,
                  .inputs = {ContentType::commaSeparatedText(), ContentType::tabSeparatedText(),
                             ContentType::xlsx(), ContentType::ods()},
                  .excludes = {binaryWorkbook},
                  .description = description},
        // Exactly: CSV and TSV both conform to plain text, and a macro workbook to XLSX, and
        // those are still worth converting.
        .excludesExactly = {ownType},
        .perFile = [to, extension](const QString& path, const OperationContext& context) {
            return convertFile(path, context, to, extension);
        },
    });
}

}  // namespace

void registerSheetOperations(OperationCatalog& catalog)
{
    catalog.add(sheetEntry("sheet.csv", translate("CSV"), SheetFormat::csv, QStringLiteral("csv"),
                           ContentType::commaSeparatedText(),
                           translate("The first sheet as comma-separated values, for any program that reads tables.")));
    catalog.add(sheetEntry("sheet.tsv", translate("TSV"), SheetFormat::tsv, QStringLiteral("tsv"),
                           ContentType::tabSeparatedText(),
                           translate("The first sheet as tab-separated values, which paste straight into a spreadsheet.")));
    catalog.add(sheetEntry("sheet.xlsx", translate("XLSX"), SheetFormat::xlsx, QStringLiteral("xlsx"),
                           ContentType::xlsx(),
                           translate("An Excel workbook, with numbers and dates kept as numbers and dates.")));
}

}  // namespace wendrel
