#include "SheetErrors.h"

#include "operations/Logging.h"

#include <QCoreApplication>

namespace wendrel::sheet {

namespace {

QString translate(const char* text) { return QCoreApplication::translate("SheetOperations", text); }

}  // namespace

OperationError unreadableTable(const QString& reason)
{
    if (!reason.isEmpty())
        qCInfo(lcJobs).noquote() << "Unreadable table:" << reason;
    return OperationError(translate("This file isn't a readable table"));
}

OperationError notUtf8Table() { return OperationError(translate("This table isn't UTF-8 text")); }

OperationError tooManyRowsForWorkbook()
{
    return OperationError(translate("The table has more than 1,048,576 rows, more than an XLSX workbook holds"));
}

OperationError tooManyColumnsForWorkbook()
{
    return OperationError(translate("The table has more than 16,384 columns, more than an XLSX workbook holds"));
}

OperationError cellTooLongForWorkbook()
{
    return OperationError(
        translate("A cell holds more than 32,767 characters, more than an XLSX workbook allows"));
}

}  // namespace wendrel::sheet
