#include "SheetTestTools.h"

#include "documents/sheets/SheetOperations.h"
#include "operations/ContentType.h"
#include "operations/JobRunner.h"
#include "operations/OperationCatalog.h"
#include "support/JobHarness.h"
#include "support/TestEnvironment.h"

#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace wendrel;
using namespace wendrel::test;
using namespace Qt::StringLiterals;

namespace {

const QByteArray tableCsv = "item,price,bought\r\n\"Tea, green\",1.5,2024-03-09\r\nMugs,12,2024-03-10\r\n";

class SheetOperationsTest : public ::testing::Test {
protected:
    void SetUp() override { registerSheetOperations(catalog); }
    void TearDown() override { EXPECT_TRUE(leftoverScratchFolders().isEmpty()); }

    JobReport run(const char* id, const QStringList& paths)
    {
        const FileOperationPtr entry = catalog.find(QString::fromUtf8(id));
        EXPECT_TRUE(entry) << id;
        return runJob(runner, entry, paths);
    }

    QString path(const QString& name) const { return folder.filePath(name); }

    QTemporaryDir folder;
    OperationCatalog catalog;
    JobRunner runner;
};

}  // namespace

TEST_F(SheetOperationsTest, EachEntryTakesEveryTableButItsOwnFormat)
{
    const ContentType csv = ContentType::commaSeparatedText();
    const ContentType tsv = ContentType::tabSeparatedText();
    const ContentType xlsx = ContentType::xlsx();
    const ContentType ods = ContentType::ods();
    const ContentType macroWorkbook = ContentType::fromExtension(u"xlsm"_s);
    const ContentType binaryWorkbook = ContentType::fromExtension(u"xlsb"_s);
    const struct {
        const char* id;
        QList<ContentType> taken;
        QList<ContentType> refused;
    } cases[] = {
        {"sheet.csv", {tsv, xlsx, ods, macroWorkbook}, {csv, binaryWorkbook, ContentType::plainText(), ContentType::docx()}},
        {"sheet.tsv", {csv, xlsx, ods, macroWorkbook}, {tsv, binaryWorkbook, ContentType::plainText(), ContentType::zipArchive()}},
        {"sheet.xlsx", {csv, tsv, ods, macroWorkbook}, {xlsx, binaryWorkbook, ContentType::plainText(), ContentType::odt()}},
    };
    for (const auto& testCase : cases) {
        const FileOperationPtr entry = catalog.find(QString::fromUtf8(testCase.id));
        ASSERT_TRUE(entry) << testCase.id;
        EXPECT_EQ(entry->ring(), RingKind::convert);
        for (const ContentType& type : testCase.taken)
            EXPECT_TRUE(entry->accepts(type)) << testCase.id << " " << type.name().toStdString();
        for (const ContentType& type : testCase.refused)
            EXPECT_FALSE(entry->accepts(type)) << testCase.id << " " << type.name().toStdString();
    }
}

TEST_F(SheetOperationsTest, ResultsLandBesideTheSourceNamedAfterIt)
{
    const QString source = path(u"Groceries.csv"_s);
    writeFile(source, tableCsv);
    const JobReport workbook = run("sheet.xlsx", {source});
    ASSERT_TRUE(workbook.succeeded) << workbook.message.toStdString();
    EXPECT_EQ(workbook.results, QStringList{path(u"Groceries.xlsx"_s)});

    const JobReport tabs = run("sheet.tsv", {workbook.results.first()});
    ASSERT_TRUE(tabs.succeeded) << tabs.message.toStdString();
    EXPECT_EQ(tabs.results, QStringList{path(u"Groceries.tsv"_s)});
    EXPECT_EQ(readFile(tabs.results.first()), "item\tprice\tbought\r\nTea, green\t1.5\t2024-03-09\r\nMugs\t12\t2024-03-10\r\n");

    const JobReport again = run("sheet.csv", {tabs.results.first()});
    ASSERT_TRUE(again.succeeded) << again.message.toStdString();
    EXPECT_EQ(again.results, QStringList{path(u"Groceries 2.csv"_s)});
    EXPECT_EQ(readFile(again.results.first()), tableCsv);
    EXPECT_EQ(readFile(source), tableCsv);
}

TEST_F(SheetOperationsTest, AWorkbookOfSeveralSheetsSaysOnlyTheFirstWasConverted)
{
    if (!toolExists(u"python3"_s))
        GTEST_SKIP() << "python3 makes the workbook";
    const QString main = u"http://schemas.openxmlformats.org/spreadsheetml/2006/main"_s;
    const QString relationships = u"http://schemas.openxmlformats.org/officeDocument/2006/relationships"_s;
    const QString sheet = u"<worksheet xmlns=\"%1\"><sheetData><row r=\"1\"><c r=\"A1\"><v>%2</v></c></row></sheetData></worksheet>"_s;
    const QString source = path(u"Book.xlsx"_s);
    ASSERT_TRUE(writeZipWithPython(source, {
        {u"xl/workbook.xml"_s, u"<workbook xmlns=\"%1\" xmlns:r=\"%2\"><sheets><sheet name=\"A\" sheetId=\"1\" r:id=\"a\"/>"
                               "<sheet name=\"B\" sheetId=\"2\" r:id=\"b\"/><sheet name=\"C\" sheetId=\"3\" r:id=\"c\"/>"
                               "</sheets></workbook>"_s.arg(main, relationships)},
        {u"xl/_rels/workbook.xml.rels"_s,
         u"<Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\">"
         "<Relationship Id=\"a\" Type=\"%1/worksheet\" Target=\"worksheets/sheet1.xml\"/>"
         "<Relationship Id=\"b\" Type=\"%1/worksheet\" Target=\"worksheets/sheet2.xml\"/>"
         "<Relationship Id=\"c\" Type=\"%1/worksheet\" Target=\"worksheets/sheet3.xml\"/></Relationships>"_s.arg(relationships)},
        {u"xl/worksheets/sheet1.xml"_s, sheet.arg(main, u"1"_s)},
        {u"xl/worksheets/sheet2.xml"_s, sheet.arg(main, u"2"_s)},
        {u"xl/worksheets/sheet3.xml"_s, sheet.arg(main, u"3"_s)},
    }));
    const JobReport report = run("sheet.csv", {source});
    ASSERT_TRUE(report.succeeded) << report.message.toStdString();
    EXPECT_EQ(readFile(path(u"Book.csv"_s)), "1\r\n");
    EXPECT_EQ(report.notes, QStringList{u"Only the first of 3 sheets was converted"_s});
}

TEST_F(SheetOperationsTest, AnUnreadableTableFailsWithOneSentenceAndLeavesNothingBehind)
{
    const struct {
        const char* name;
        QByteArray bytes;
        const char* id;
        const char16_t* message;
    } cases[] = {
        {"photo.xlsx", QByteArray("\xFF\xD8\xFF\xE0") + QByteArray(4000, 'j'), "sheet.csv", u"This file isn't a readable table"},
        {"sheet.ods", "PK\x03\x04 not really", "sheet.xlsx", u"This file isn't a readable table"},
        {"endless.csv", "a,\"" + QByteArray(17 * 1024 * 1024, 'x'), "sheet.tsv", u"This file isn't a readable table"},
        {"legacy.csv", "Stra\xDF" "e,1\n", "sheet.xlsx", u"This table isn't UTF-8 text"},
    };
    for (const auto& testCase : cases) {
        QTemporaryDir alone;
        const QString source = alone.filePath(QString::fromUtf8(testCase.name));
        writeFile(source, testCase.bytes);
        const JobReport report = run(testCase.id, {source});
        EXPECT_FALSE(report.succeeded) << testCase.name;
        ASSERT_EQ(report.failures.size(), 1) << testCase.name;
        EXPECT_EQ(report.failures.first().message, QString::fromUtf16(testCase.message)) << testCase.name;
        EXPECT_EQ(folderEntries(alone.path()), QStringList{QString::fromUtf8(testCase.name)}) << testCase.name;
        EXPECT_EQ(readFile(source), testCase.bytes) << testCase.name;
    }
}

TEST_F(SheetOperationsTest, TheCommandLineMakesAWorkbookOfACsv)
{
    if (!toolExists(u"python3"_s))
        GTEST_SKIP() << "python3 reads the workbook";
    const QString source = path(u"prices.csv"_s);
    writeFile(source, "Produkt;Preis;Datum\nTee;1.5;2024-03-09\n\"Kaffee; stark\";12;2024-03-10T08:15\n");
    const ToolRun wendrel = runTool(QStringLiteral(WENDREL_BINARY), {u"run"_s, u"sheet.xlsx"_s, source});
    EXPECT_EQ(wendrel.exitCode, 0) << wendrel.errors.toStdString();
    EXPECT_EQ(xlsxCellsByPython(path(u"prices.xlsx"_s)), (QStringList{
        uR"(["strings", "5", "5", 5])"_s, uR"(["A1", "s", "", "Produkt"])"_s, uR"(["B1", "s", "", "Preis"])"_s,
        uR"(["C1", "s", "", "Datum"])"_s, uR"(["A2", "s", "", "Tee"])"_s, uR"(["B2", "n", "", "1.5"])"_s,
        uR"(["C2", "n", "yyyy-mm-dd", "45360"])"_s, uR"(["A3", "s", "", "Kaffee; stark"])"_s, uR"(["B3", "n", "", "12"])"_s,
        uR"(["C3", "n", "yyyy-mm-dd hh:mm:ss", "45361.34375"])"_s}));
}
