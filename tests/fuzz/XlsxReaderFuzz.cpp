// libFuzzer target for the XLSX reader. Bytes starting with "PK" are a whole package; any others
// are the XML of the sheet, shared strings, styles and workbook parts (split at partSeparator)
// inside a valid package, so mutations reach the XML paths. Every input ends in an
// OperationError or in rows the writers write; never a crash, a hang or runaway memory.
#include "FuzzSupport.h"
#include "SheetFuzzing.h"

using namespace wendrel;
using namespace wendrel::fuzz;

namespace {

const QByteArray contentTypes = R"(<?xml version="1.0" encoding="UTF-8"?>
<Types xmlns="http://schemas.openxmlformats.org/package/2006/content-types">
<Default Extension="rels" ContentType="application/vnd.openxmlformats-package.relationships+xml"/>
<Default Extension="xml" ContentType="application/xml"/>
<Override PartName="/xl/workbook.xml" ContentType="application/vnd.openxmlformats-officedocument.spreadsheetml.sheet.main+xml"/>
<Override PartName="/xl/worksheets/sheet1.xml" ContentType="application/vnd.openxmlformats-officedocument.spreadsheetml.worksheet+xml"/>
</Types>)";

const QByteArray packageRelationships = R"(<?xml version="1.0" encoding="UTF-8"?>
<Relationships xmlns="http://schemas.openxmlformats.org/package/2006/relationships">
<Relationship Id="rId1" Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/officeDocument" Target="xl/workbook.xml"/>
</Relationships>)";

const QByteArray workbookRelationships = R"(<?xml version="1.0" encoding="UTF-8"?>
<Relationships xmlns="http://schemas.openxmlformats.org/package/2006/relationships">
<Relationship Id="rId1" Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/worksheet" Target="worksheets/sheet1.xml"/>
<Relationship Id="rId2" Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/sharedStrings" Target="sharedStrings.xml"/>
<Relationship Id="rId3" Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/styles" Target="styles.xml"/>
</Relationships>)";

const QByteArray defaultWorkbook = R"(<?xml version="1.0" encoding="UTF-8"?>
<workbook xmlns="http://schemas.openxmlformats.org/spreadsheetml/2006/main" xmlns:r="http://schemas.openxmlformats.org/officeDocument/2006/relationships">
<sheets><sheet name="Sheet1" sheetId="1" r:id="rId1"/></sheets></workbook>)";

QByteArray packageOf(const QByteArray& bytes)
{
    if (bytes.startsWith("PK"))
        return bytes;
    const QList<QByteArray> xml = splitParts(bytes, 4);
    return zipPackage({{QStringLiteral("[Content_Types].xml"), contentTypes},
                       {QStringLiteral("_rels/.rels"), packageRelationships},
                       {QStringLiteral("xl/workbook.xml"), xml[3].isEmpty() ? defaultWorkbook : xml[3]},
                       {QStringLiteral("xl/_rels/workbook.xml.rels"), workbookRelationships},
                       {QStringLiteral("xl/worksheets/sheet1.xml"), xml[0]},
                       {QStringLiteral("xl/sharedStrings.xml"), xml[1]},
                       {QStringLiteral("xl/styles.xml"), xml[2]}});
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    convertEveryWay(scratchFile(QStringLiteral("input.xlsx"), packageOf(bytesOf(data, size))), SheetFormat::xlsx);
    return 0;
}
