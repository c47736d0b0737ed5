#include "SheetFuzzing.h"

#include "FuzzSupport.h"

#include "operations/OperationError.h"

#include <QDir>

namespace wendrel::fuzz {

void convertEveryWay(const QString& source, SheetFormat from)
{
    const QDir scratch(scratchFolder());
    const QString work = scratch.filePath(QStringLiteral("work"));
    REQUIRE(scratch.mkpath(QStringLiteral("work")));
    try {
        convertSheet(source, from, scratch.filePath(QStringLiteral("out.csv")), SheetFormat::csv, work, {});
    } catch (const OperationError&) {
        return;
    }
    const QString workbook = scratch.filePath(QStringLiteral("out.xlsx"));
    try {
        convertSheet(source, from, workbook, SheetFormat::xlsx, work, {});
    } catch (const OperationError&) {
        return;  // beyond a workbook's limits, which a CSV doesn't have
    }
    try {
        convertSheet(workbook, SheetFormat::xlsx, scratch.filePath(QStringLiteral("back.csv")), SheetFormat::csv,
                     work, {});
    } catch (const OperationError& error) {
        qFatal("our own workbook can't be read back: %s", qPrintable(error.message()));
    }
}

}  // namespace wendrel::fuzz
