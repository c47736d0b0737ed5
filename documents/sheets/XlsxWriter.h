#pragma once

#include "SheetCell.h"

#include <QFile>
#include <QHash>
#include <QString>

namespace wendrel {

// Writes one table as an XLSX workbook of one sheet, streaming: the sheet's XML and the shared
// strings grow in files in a scratch folder as rows arrive, and finish() packs them. Only the
// table of distinct strings is held, each string once.
//
// Numbers are number cells, booleans boolean cells, text shared strings; dates, dates with a
// time and times are serial numbers styled yyyy-mm-dd, yyyy-mm-dd hh:mm:ss and hh:mm:ss (a date
// before 1900, which a workbook can't count, is written as its ISO text). Empty cells and
// empty rows take no place. Throws OperationError past a workbook's limits
// (sheet::tooManyRowsForWorkbook() and its siblings) and when a file can't be written.
class XlsxWriter {
public:
    // `scratchFolder` exists and stays until finish() has returned.
    explicit XlsxWriter(const QString& scratchFolder);

    void writeRow(const SheetRow& row);

    // Writes the workbook to `destination`.
    void finish(const QString& destination);

private:
    void appendCell(int column, const SheetCell& cell);
    void appendValueCell(const QByteArray& reference, const char* attributes, const QByteArray& value);
    int sharedString(const QString& text);
    void flushSheet();
    void flushStrings();

    QFile m_sheet;
    QFile m_strings;
    QByteArray m_sheetBuffer;
    QByteArray m_stringBuffer;
    QHash<QString, int> m_stringIndex;
    qint64 m_stringUses = 0;
    qint64 m_rows = 0;
    QByteArray m_rowNumber;
};

}  // namespace wendrel
