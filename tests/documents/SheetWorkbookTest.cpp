#include "SheetTestTools.h"

#include "documents/sheets/SheetConversion.h"
#include "documents/sheets/WorkbookReading.h"
#include "documents/sheets/XlsxWriter.h"
#include "operations/OperationError.h"
#include "support/TestEnvironment.h"

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace wendrel;
using namespace wendrel::test;
using namespace Qt::StringLiterals;

namespace {

const QString spreadsheetMain = u"http://schemas.openxmlformats.org/spreadsheetml/2006/main"_s;
const QString packageRelationships = u"http://schemas.openxmlformats.org/package/2006/relationships"_s;
const QString documentRelationships = u"http://schemas.openxmlformats.org/officeDocument/2006/relationships"_s;

class SheetWorkbookTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        if (!toolExists(u"python3"_s))
            GTEST_SKIP() << "python3 is needed to make and check workbooks independently";
    }

    QString path(const QString& name) const { return folder.filePath(name); }

    QStringList xlsxRows(const QString& file, WorkbookSummary* summary = nullptr) const
    {
        return rowsAsText([&](const SheetRowSink& sink) {
            const WorkbookSummary read = readXlsx(file, scratch.path(), sink, {});
            if (summary)
                *summary = read;
        });
    }

    QStringList odsRows(const QString& file, WorkbookSummary* summary = nullptr) const
    {
        return rowsAsText([&](const SheetRowSink& sink) {
            const WorkbookSummary read = readOds(file, scratch.path(), sink, {});
            if (summary)
                *summary = read;
        });
    }

    // The parts of a workbook of one sheet around `sheetData`.
    static QList<std::pair<QString, QString>> workbookParts(const QString& sheetData, const QString& beforeWorkbook = {})
    {
        return {
            {u"_rels/.rels"_s, u"<Relationships xmlns=\"%1\"><Relationship Id=\"r1\" Type=\"%2/officeDocument\" "
                               "Target=\"xl/workbook.xml\"/></Relationships>"_s.arg(packageRelationships, documentRelationships)},
            {u"xl/workbook.xml"_s, u"%3<workbook xmlns=\"%1\" xmlns:r=\"%2\"><sheets><sheet name=\"S\" sheetId=\"1\" "
                                   "r:id=\"rS\"/></sheets></workbook>"_s.arg(spreadsheetMain, documentRelationships, beforeWorkbook)},
            {u"xl/_rels/workbook.xml.rels"_s,
             u"<Relationships xmlns=\"%1\"><Relationship Id=\"rS\" Type=\"%2/worksheet\" Target=\"worksheets/sheet1.xml\"/>"
             "<Relationship Id=\"rT\" Type=\"%2/sharedStrings\" Target=\"sharedStrings.xml\"/></Relationships>"_s
                 .arg(packageRelationships, documentRelationships)},
            {u"xl/worksheets/sheet1.xml"_s, u"<worksheet xmlns=\"%1\"><sheetData>%2</sheetData></worksheet>"_s.arg(spreadsheetMain, sheetData)},
        };
    }

    QString makeZip(const QString& name, const QList<std::pair<QString, QString>>& parts) const
    {
        const QString file = path(name);
        EXPECT_TRUE(writeZipWithPython(file, parts)) << name.toStdString();
        return file;
    }

    QTemporaryDir folder;
    QTemporaryDir scratch;
};

}  // namespace

TEST_F(SheetWorkbookTest, WrittenCellsKeepTheirTypesForAnIndependentReader)
{
    const QString file = path(u"typed.xlsx"_s);
    XlsxWriter writer(scratch.path());
    const QList<SheetRow> rows{
        {SheetCell::ofText(u"name"_s), SheetCell::ofText(u"amount"_s), SheetCell::ofText(u"when"_s), SheetCell::ofText(u"ok"_s)},
        {SheetCell::ofText(u"Ann, \"A\" <&>"_s), SheetCell::ofNumber(1234.5), SheetCell::ofDate(QDate(2024, 3, 9)),
         SheetCell::ofBoolean(true)},
        {},
        {SheetCell::ofText(u" padded "_s), SheetCell::ofNumber(1e15), SheetCell::ofDateTime(QDate(2024, 3, 9), QTime(18, 0)),
         SheetCell{}, SheetCell::ofTime(QTime(6, 0))},
        {SheetCell::ofText(u"name"_s), SheetCell::ofText(u"bell\u0007 東京"_s)},
        {SheetCell{}, SheetCell::ofNumber(-0.25), SheetCell::ofDate(QDate(1850, 1, 1)), SheetCell{}},
    };
    for (const SheetRow& row : rows)
        writer.writeRow(row);
    writer.finish(file);

    EXPECT_EQ(xlsxCellsByPython(file), (QStringList{
        uR"(["strings", "9", "8", 8])"_s,
        uR"(["A1", "s", "", "name"])"_s, uR"(["B1", "s", "", "amount"])"_s, uR"(["C1", "s", "", "when"])"_s,
        uR"(["D1", "s", "", "ok"])"_s,
        uR"(["A2", "s", "", "Ann, \"A\" <&>"])"_s, uR"(["B2", "n", "", "1234.5"])"_s,
        uR"(["C2", "n", "yyyy-mm-dd", "45360"])"_s, uR"(["D2", "b", "", "1"])"_s,
        uR"(["A4", "s", "", " padded "])"_s, uR"(["B4", "n", "", "1000000000000000"])"_s,
        uR"(["C4", "n", "yyyy-mm-dd hh:mm:ss", "45360.75"])"_s, uR"(["E4", "n", "hh:mm:ss", "0.25"])"_s,
        uR"(["A5", "s", "", "name"])"_s, uR"(["B5", "s", "", "bell_x0007_ 東京"])"_s,
        uR"(["B6", "n", "", "-0.25"])"_s, uR"(["C6", "s", "", "1850-01-01"])"_s,
    }));
    // And our own reader gives the table back, the empty row in its place.
    EXPECT_EQ(xlsxRows(file), (QStringList{
        u"name|amount|when|ok"_s, u"Ann, \"A\" <&>|1234.5|2024-03-09|TRUE"_s, u""_s,
        u" padded |1000000000000000|2024-03-09T18:00||06:00"_s, u"name|bell\u0007 東京"_s, u"|-0.25|1850-01-01"_s}));
}

TEST_F(SheetWorkbookTest, CsvThroughXlsxAndBackKeepsTextNumbersAndDates)
{
    const QString csv = path(u"table.csv"_s);
    writeFile(csv, "name,amount,when,note\r\n"
                   "\"Smith, Ann\",1234.5,2024-03-09,\"said \"\"hi\"\"\nthen left\"\r\n"
                   "007,-0.25,2024-03-09T14:30,TRUE\r\n"
                   "short\r\n"
                   "\r\n"
                   "x,1e3,2024-03-09T14:30:05.5,+44 20 7946 0958\r\n");
    const QString xlsx = path(u"table.xlsx"_s);
    const QString back = path(u"back.csv"_s);
    convertSheet(csv, SheetFormat::csv, xlsx, SheetFormat::xlsx, scratch.path(), {});
    convertSheet(xlsx, SheetFormat::xlsx, back, SheetFormat::csv, scratch.path(), {});

    EXPECT_EQ(readFile(back), "name,amount,when,note\r\n"
                              "\"Smith, Ann\",1234.5,2024-03-09,\"said \"\"hi\"\"\nthen left\"\r\n"
                              "007,-0.25,2024-03-09T14:30,TRUE\r\n"
                              "short\r\n"
                              "\r\n"
                              "x,1000,2024-03-09T14:30:05.500,+44 20 7946 0958\r\n");
    const QStringList cells = xlsxCellsByPython(xlsx);
    for (const QString& cell : {uR"(["B2", "n", "", "1234.5"])"_s, uR"(["C2", "n", "yyyy-mm-dd", "45360"])"_s,
                                uR"(["A3", "s", "", "007"])"_s, uR"(["D3", "b", "", "1"])"_s,
                                uR"(["C3", "n", "yyyy-mm-dd hh:mm:ss", "45360.604166666664"])"_s,
                                uR"(["D6", "s", "", "+44 20 7946 0958"])"_s})
        EXPECT_TRUE(cells.contains(cell)) << cell.toStdString() << "\n" << cells.join(u'\n').toStdString();
}

TEST_F(SheetWorkbookTest, DelimitedToDelimitedKeepsEveryFieldAsWritten)
{
    const QString csv = path(u"semi.csv"_s);
    writeFile(csv, "\xEF\xBB\xBFProdukt;Preis;Code\nTee;1,50;007\n\"Kaffee; stark\";2.50;1e3\n");
    const QString tsv = path(u"semi.tsv"_s);
    convertSheet(csv, SheetFormat::csv, tsv, SheetFormat::tsv, scratch.path(), {});
    EXPECT_EQ(readFile(tsv), "Produkt\tPreis\tCode\r\nTee\t1,50\t007\r\nKaffee; stark\t2.50\t1e3\r\n");
}

TEST_F(SheetWorkbookTest, ReadsAWorkbookOfInlineStrings1904DatesAndItsOwnDateFormat)
{
    const QString file = path(u"other.xlsx"_s);
    ASSERT_TRUE(writeZipWithPython(file, {
        {u"[Content_Types].xml"_s, u"<Types xmlns=\"http://schemas.openxmlformats.org/package/2006/content-types\"/>"_s},
        {u"_rels/.rels"_s, u"<Relationships xmlns=\"%1\"><Relationship Id=\"a\" Type=\"%2/officeDocument\" "
                           "Target=\"/xl/book.xml\"/></Relationships>"_s.arg(packageRelationships, documentRelationships)},
        {u"xl/book.xml"_s, u"<workbook xmlns=\"%1\" xmlns:r=\"%2\"><workbookPr date1904=\"1\"/><sheets>"
                           "<sheet name=\"Data\" sheetId=\"7\" r:id=\"rData\"/><sheet name=\"More\" sheetId=\"1\" r:id=\"rMore\"/>"
                           "</sheets></workbook>"_s.arg(spreadsheetMain, documentRelationships)},
        {u"xl/_rels/book.xml.rels"_s,
         u"<Relationships xmlns=\"%1\"><Relationship Id=\"rMore\" Type=\"%2/worksheet\" Target=\"sheets/more.xml\"/>"
         "<Relationship Id=\"rData\" Type=\"%2/worksheet\" Target=\"sheets/data.xml\"/>"
         "<Relationship Id=\"rS\" Type=\"%2/sharedStrings\" Target=\"text.xml\"/>"
         "<Relationship Id=\"rY\" Type=\"%2/styles\" Target=\"look.xml\"/></Relationships>"_s
             .arg(packageRelationships, documentRelationships)},
        {u"xl/text.xml"_s, u"<sst xmlns=\"%1\"><si><r><t>rich </t></r><r><rPr><b/></rPr><t>text</t></r>"
                           "<rPh sb=\"0\" eb=\"1\"><t>guide</t></rPh></si><si><t xml:space=\"preserve\">  spaced</t></si>"
                           "<si><t>line_x000D_break</t></si></sst>"_s.arg(spreadsheetMain)},
        {u"xl/look.xml"_s, u"<styleSheet xmlns=\"%1\"><numFmts count=\"1\"><numFmt numFmtId=\"200\" "
                           "formatCode=\"dd&quot;.&quot;mm&quot;.&quot;yyyy\"/></numFmts><cellXfs count=\"5\">"
                           "<xf numFmtId=\"0\"/><xf numFmtId=\"200\"/><xf numFmtId=\"4\"/><xf numFmtId=\"22\"/>"
                           "<xf numFmtId=\"20\"/></cellXfs></styleSheet>"_s.arg(spreadsheetMain)},
        {u"xl/sheets/data.xml"_s,
         u"<worksheet xmlns=\"%1\"><sheetData>"
         "<row r=\"2\"><c r=\"B2\" t=\"inlineStr\"><is><t>inline</t></is></c><c r=\"D2\" t=\"s\"><v>0</v></c></row>"
         "<row r=\"3\"><c r=\"A3\" s=\"1\"><v>43898</v></c><c r=\"B3\" s=\"2\"><v>1234.5</v></c>"
         "<c r=\"C3\" s=\"3\"><v>43898.25</v></c><c s=\"4\"><v>0.5</v></c></row>"
         "<row r=\"4\"><c r=\"A4\" t=\"b\"><v>0</v></c><c r=\"B4\" t=\"e\"><v>#DIV/0!</v></c>"
         "<c r=\"C4\" t=\"str\"><f>A1&amp;\"x\"</f><v>joined</v></c><c r=\"D4\" t=\"s\"><v>1</v></c>"
         "<c r=\"E4\" t=\"s\"><v>2</v></c></row>"
         "<row r=\"5\" spans=\"1:3\" ht=\"20\" customHeight=\"1\"/><row r=\"6\"><c r=\"A6\" s=\"1\"/></row>"
         "</sheetData></worksheet>"_s.arg(spreadsheetMain)},
        {u"xl/sheets/more.xml"_s, u"<worksheet xmlns=\"%1\"><sheetData><row r=\"1\"><c r=\"A1\"><v>9</v></c></row>"
                                  "</sheetData></worksheet>"_s.arg(spreadsheetMain)},
    }));
    WorkbookSummary summary;
    EXPECT_EQ(xlsxRows(file, &summary), (QStringList{
        u""_s,
        u"|inline||rich text"_s,
        u"2024-03-09|1234.5|2024-03-09T06:00|12:00"_s,
        u"FALSE|#DIV/0!|joined|  spaced|line\rbreak"_s,
    }));
    EXPECT_EQ(summary.sheets, 2);
}

TEST_F(SheetWorkbookTest, ReadsTheFirstTableOfAnOpenDocumentSpreadsheetRepeatsAndAll)
{
    const QString file = path(u"made.ods"_s);
    const QString content = uR"(<office:document-content xmlns:office="urn:oasis:names:tc:opendocument:xmlns:office:1.0"
 xmlns:table="urn:oasis:names:tc:opendocument:xmlns:table:1.0" xmlns:text="urn:oasis:names:tc:opendocument:xmlns:text:1.0"
 xmlns:calcext="urn:org:documentfoundation:names:experimental:calc:xmlns:calcext:1.0" office:version="1.2"><office:body><office:spreadsheet>
<table:table table:name="First"><table:table-column table:number-columns-repeated="5"/>
<table:table-header-rows><table:table-row><table:table-cell office:value-type="string"><text:p>Name</text:p></table:table-cell>
<table:table-cell table:number-columns-repeated="2"/><table:table-cell office:value-type="string"><text:p>Value</text:p></table:table-cell>
</table:table-row></table:table-header-rows>
<table:table-row table:number-rows-repeated="2"><table:table-cell office:value-type="float" office:value="1.5"><text:p>1,5</text:p></table:table-cell>
<table:table-cell calcext:value-type="error" office:value-type="percentage" office:value="0.25"><text:p>25%</text:p></table:table-cell>
<table:table-cell office:value-type="currency" office:currency="EUR" office:value="-3"><text:p>-3,00 €</text:p></table:table-cell></table:table-row>
<table:table-row><table:table-cell office:value-type="date" office:date-value="2024-03-09"><text:p>09.03.24</text:p></table:table-cell>
<table:table-cell office:value-type="date" office:date-value="2024-03-09T14:30:00"/><table:table-cell office:value-type="time" office:time-value="PT18H00M00S"/>
<table:table-cell office:value-type="boolean" office:boolean-value="true"><text:p>TRUE</text:p></table:table-cell></table:table-row>
<table:table-row table:number-rows-repeated="3"><table:table-cell table:number-columns-repeated="1024"/></table:table-row>
<table:table-row><table:table-cell office:value-type="string"><text:p>two</text:p><text:p>lines<text:s text:c="3"/>spaced<text:tab/>tab</text:p>
<office:annotation><text:p>a comment</text:p></office:annotation></table:table-cell>
<table:table-cell office:value-type="string" table:number-columns-repeated="2"><text:p><text:span>x</text:span></text:p></table:table-cell>
<table:covered-table-cell/><table:table-cell office:value-type="float" office:value="7"><text:p>7</text:p></table:table-cell>
<table:table-cell table:number-columns-repeated="16000"/></table:table-row>
<table:table-row table:number-rows-repeated="1048570"><table:table-cell table:number-columns-repeated="16384"/></table:table-row>
</table:table>
<table:table table:name="Second"><table:table-row><table:table-cell office:value-type="string"><text:p>not read</text:p></table:table-cell></table:table-row></table:table>
</office:spreadsheet></office:body></office:document-content>)"_s;
    ASSERT_TRUE(writeZipWithPython(file, {{u"mimetype"_s, u"application/vnd.oasis.opendocument.spreadsheet"_s},
                                          {u"content.xml"_s, content}}));
    WorkbookSummary summary;
    EXPECT_EQ(odsRows(file, &summary), (QStringList{
        u"Name|||Value"_s,
        u"1.5|0.25|-3"_s,
        u"1.5|0.25|-3"_s,
        u"2024-03-09|2024-03-09T14:30|18:00|TRUE"_s,
        u""_s, u""_s, u""_s,
        u"two\nlines   spaced\ttab|x|x||7"_s,
    }));
    EXPECT_EQ(summary.sheets, 2);
}

TEST_F(SheetWorkbookTest, WhatIsNoReadableWorkbookSaysSoAndNothingElse)
{
    const QString unreadable = u"This file isn't a readable table"_s;
    const auto noWorkbook = [&](const char* name, const QByteArray& bytes) {
        writeFile(path(QString::fromUtf8(name)), bytes);
        return path(QString::fromUtf8(name));
    };
    const QString goodRow = u"<row r=\"1\"><c r=\"A1\"><v>1</v></c></row>"_s;
    const struct {
        const char* what;
        QString file;
    } xlsxCases[] = {
        {"binary renamed", noWorkbook("binary.xlsx", QByteArray("\x89PNG\r\n\x1a\n") + QByteArray(5000, '\x07'))},
        {"empty", noWorkbook("empty.xlsx", {})},
        {"no sheet part", makeZip(u"nosheet.xlsx"_s, workbookParts(goodRow).mid(0, 3))},
        {"no workbook part", makeZip(u"noworkbook.xlsx"_s, workbookParts(goodRow).mid(2))},
        {"a DTD", makeZip(u"dtd.xlsx"_s, workbookParts(goodRow, u"<!DOCTYPE workbook [<!ENTITY a \"aaaaaaaaaa\">"
                                                                     "<!ENTITY b \"&a;&a;&a;&a;&a;\">]>"_s))},
        {"a 1 GB part", makeZip(u"bomb.xlsx"_s, workbookParts(goodRow) << std::pair(u"xl/sharedStrings.xml"_s, u"<zeros:1073741824>"_s))},
        {"cut-off sheet XML", makeZip(u"cut.xlsx"_s, workbookParts(u"<row r=\"1\"><c r=\"A1\"><v>1"_s))},
        {"a cell past the last column", makeZip(u"wide.xlsx"_s, workbookParts(u"<row r=\"1\"><c r=\"XFE1\"><v>1</v></c></row>"_s))},
        {"a missing shared string", makeZip(u"nostring.xlsx"_s, workbookParts(u"<row r=\"1\"><c r=\"A1\" t=\"s\"><v>5</v></c></row>"_s)
                                                              << std::pair(u"xl/sharedStrings.xml"_s, u"<sst xmlns=\"%1\"/>"_s.arg(spreadsheetMain)))},
    };
    for (const auto& testCase : xlsxCases)
        EXPECT_EQ(errorMessageOf([&] { xlsxRows(testCase.file); }), unreadable) << testCase.what;
    // A whole workbook cut in half loses its directory: no ZIP any more.
    const QByteArray whole = readFile(makeZip(u"whole.xlsx"_s, workbookParts(goodRow)));
    EXPECT_EQ(errorMessageOf([&] { xlsxRows(noWorkbook("half.xlsx", whole.left(whole.size() / 2))); }), unreadable);

    const auto ods = [&](const char* name, const QString& table) {
        const QString file = path(QString::fromUtf8(name));
        writeZipWithPython(file, {{u"content.xml"_s,
                                   uR"(<office:document-content xmlns:office="urn:oasis:names:tc:opendocument:xmlns:office:1.0"
 xmlns:table="urn:oasis:names:tc:opendocument:xmlns:table:1.0" xmlns:text="urn:oasis:names:tc:opendocument:xmlns:text:1.0">
<office:body><office:spreadsheet>)"_s + table + u"</office:spreadsheet></office:body></office:document-content>"_s}});
        return file;
    };
    const QString filled = u"<table:table-cell office:value-type=\"float\" office:value=\"1\"/>"_s;
    const struct {
        const char* what;
        QString file;
    } odsCases[] = {
        {"no table", ods("notable.ods", {})},
        {"rows without end", ods("rows.ods", u"<table:table><table:table-row table:number-rows-repeated=\"1099511627776\">"_s
                                                 + filled + u"</table:table-row></table:table>"_s)},
        {"columns without end", ods("columns.ods", u"<table:table><table:table-row><table:table-cell office:value-type=\"float\" "
                                                       "office:value=\"1\" table:number-columns-repeated=\"100000\"/>"
                                                       "</table:table-row></table:table>"_s)},
        {"a billion spaces", ods("spaces.ods", u"<table:table><table:table-row><table:table-cell><text:p><text:s text:c=\"999999999999\"/>"
                                                   "</text:p></table:table-cell></table:table-row></table:table>"_s)},
        {"a million rows of a thousand filled cells",
         ods("cells.ods", u"<table:table><table:table-row table:number-rows-repeated=\"1000000\"><table:table-cell "
                          "office:value-type=\"float\" office:value=\"1\" table:number-columns-repeated=\"1000\"/>"
                          "</table:table-row></table:table>"_s)},
        {"no content", noWorkbook("empty.ods", "PK\x05\x06" + QByteArray(18, '\0'))},
    };
    for (const auto& testCase : odsCases) {
        qint64 rows = 0;
        EXPECT_EQ(errorMessageOf([&] { readOds(testCase.file, scratch.path(), [&](const SheetRow&) { ++rows; }, {}); }),
                  unreadable)
            << testCase.what;
    }
}

// LibreOffice's spreadsheet, when installed (the benchmarks install it), reads our workbook
// and writes one of its own for our reader.
TEST_F(SheetWorkbookTest, ASpreadsheetProgramAgreesWhenOneIsInstalled)
{
    if (!toolExists(u"soffice"_s))
        GTEST_SKIP() << "no soffice";
    const QString csv = path(u"source.csv"_s);
    writeFile(csv, "name,amount,when\r\n\"Smith, Ann\",1234.5,2024-03-09\r\nBo,-2,2024-12-31\r\n");
    const QString ours = path(u"ours.xlsx"_s);
    convertSheet(csv, SheetFormat::csv, ours, SheetFormat::xlsx, scratch.path(), {});

    QTemporaryDir converted;
    const QString profile = converted.filePath(u"profile"_s);
    runOffice(profile, {u"--convert-to"_s, u"xlsx"_s, u"--outdir"_s, converted.path(), csv});
    const QString theirs = converted.filePath(u"source.xlsx"_s);
    if (!QFile::exists(theirs))
        GTEST_SKIP() << "soffice can't open tables here (only its word processor is installed)";
    EXPECT_EQ(xlsxRows(theirs), (QStringList{u"name|amount|when"_s, u"Smith, Ann|1234.5|2024-03-09"_s, u"Bo|-2|2024-12-31"_s}));

    runOffice(profile, {u"--convert-to"_s, u"csv"_s, u"--outdir"_s, converted.path(), ours});
    EXPECT_EQ(readFile(converted.filePath(u"ours.csv"_s)).replace("\r\n", "\n"),
              "name,amount,when\n\"Smith, Ann\",1234.5,2024-03-09\nBo,-2,2024-12-31\n");
}

TEST_F(SheetWorkbookTest, TablesBeyondAWorkbooksLimitsAreRefusedInWords)
{
    const auto writing = [&](const std::function<void(XlsxWriter&)>& rows) {
        return errorMessageOf([&] {
            QTemporaryDir own;
            XlsxWriter writer(own.path());
            rows(writer);
            writer.finish(path(u"limits.xlsx"_s));
        });
    };
    EXPECT_EQ(writing([](XlsxWriter& writer) { writer.writeRow({SheetCell::ofText(QString(32'767, u'x'))}); }),
              u"(no error)");
    EXPECT_EQ(writing([](XlsxWriter& writer) { writer.writeRow({SheetCell::ofText(QString(32'768, u'x'))}); }),
              u"A cell holds more than 32,767 characters, more than an XLSX workbook allows");
    EXPECT_EQ(writing([](XlsxWriter& writer) {
                  SheetRow wide(16'384, SheetCell::ofNumber(1));
                  writer.writeRow(wide);
                  wide.append(SheetCell{});  // trailing empty cells take no column
                  writer.writeRow(wide);
                  wide.last() = SheetCell::ofNumber(2);  // the 16,385th column
                  writer.writeRow(wide);
              }),
              u"The table has more than 16,384 columns, more than an XLSX workbook holds");
    EXPECT_EQ(writing([](XlsxWriter& writer) {
                  for (int row = 0; row <= 1'048'576; ++row)
                      writer.writeRow(row % 100'000 == 0 ? SheetRow{SheetCell::ofNumber(row)} : SheetRow{});
              }),
              u"The table has more than 1,048,576 rows, more than an XLSX workbook holds");
}

TEST_F(SheetWorkbookTest, ProgressComesInBatchesAndAThrowStopsTheConversion)
{
    const QString csv = path(u"long.csv"_s);
    QByteArray text;
    for (int row = 0; row < 20'000; ++row)
        text += QByteArray::number(row) + ",row " + QByteArray::number(row) + "\n";
    writeFile(csv, text);
    QList<double> reports;
    const QString message = errorMessageOf([&] {
        convertSheet(csv, SheetFormat::csv, path(u"long.xlsx"_s), SheetFormat::xlsx, scratch.path(), [&](double fraction) {
            reports.append(fraction);
            if (reports.size() == 3)
                throw OperationCancelled();
        });
    });
    EXPECT_EQ(message, OperationCancelled().message());
    ASSERT_EQ(reports.size(), 3);
    EXPECT_TRUE(reports[0] > 0 && reports[0] <= reports[1] && reports[1] <= reports[2] && reports[2] < 1)
        << reports[0] << " " << reports[1] << " " << reports[2];
    EXPECT_FALSE(QFile::exists(path(u"long.xlsx"_s)));
}
