#include "documents/zip/ArchiveOperations.h"

#include "ZipTestTools.h"
#include "operations/JobRunner.h"
#include "operations/OperationCatalog.h"
#include "support/JobHarness.h"
#include "support/TestEnvironment.h"

#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

using namespace wendrel;
using namespace wendrel::test;

namespace {

class ArchiveOperationsTest : public ::testing::Test {
protected:
    void SetUp() override { registerArchiveOperations(catalog); }

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

TEST_F(ArchiveOperationsTest, ArchiveIsNamedAfterWhatWasDropped)
{
    writeFile(path(QStringLiteral("Report.pdf")), "%PDF-1.4 not really");
    writeFile(path(QStringLiteral("Docs/letter.txt")), "Dear reader");
    writeFile(path(QStringLiteral("notes.txt")), "notes");

    const JobReport file = run("archive.zip", {path(QStringLiteral("Report.pdf"))});
    const JobReport docs = run("archive.zip", {path(QStringLiteral("Docs/"))});
    const JobReport again = run("archive.zip", {path(QStringLiteral("Docs"))});
    const JobReport several = run("archive.zip", {path(QStringLiteral("notes.txt")), path(QStringLiteral("Docs/"))});

    ASSERT_TRUE(file.succeeded) << file.message.toStdString();
    EXPECT_EQ(file.results, QStringList{path(QStringLiteral("Report.pdf.zip"))});
    EXPECT_EQ(docs.results, QStringList{path(QStringLiteral("Docs.zip"))});
    EXPECT_EQ(again.results, QStringList{path(QStringLiteral("Docs 2.zip"))});
    EXPECT_EQ(several.results, QStringList{path(QStringLiteral("Archive.zip"))});
    for (const QString& archive : file.results + docs.results + several.results)
        EXPECT_EQ(independentCheckFailures(archive), QStringList()) << archive.toStdString();

    const ToolRun listing = runTool(QStringLiteral("zipinfo"), {QStringLiteral("-1"), path(QStringLiteral("Archive.zip"))});
    EXPECT_EQ(listing.output, u"notes.txt\nDocs/\nDocs/letter.txt\n");
    EXPECT_EQ(readFile(path(QStringLiteral("Report.pdf"))), "%PDF-1.4 not really");

    // An archive called "...zip" would unpack into "..", the folder above.
    ASSERT_TRUE(QFile::copy(path(QStringLiteral("Archive.zip")), path(QStringLiteral("...zip"))));
    const JobReport dots = run("archive.unzip", {path(QStringLiteral("...zip"))});
    EXPECT_EQ(dots.results, QStringList{path(QStringLiteral("Untitled"))});
    EXPECT_EQ(readFile(path(QStringLiteral("Untitled/notes.txt"))), "notes");
}

TEST_F(ArchiveOperationsTest, UnzipGivesAFolderBesideTheArchiveWithWhatWasPacked)
{
    const QString sample = path(QStringLiteral("Photos"));
    makeSampleTree(sample);
    const JobReport packed = run("archive.zip", {sample});
    ASSERT_TRUE(packed.succeeded) << packed.message.toStdString();
    EXPECT_EQ(independentCheckFailures(packed.results.first()), QStringList());
    const QByteArray archive = readFile(packed.results.first());

    const JobReport unpacked = run("archive.unzip", packed.results);
    ASSERT_TRUE(unpacked.succeeded) << unpacked.message.toStdString();
    // "Photos" is taken by the original folder, so the unpacked one counts up.
    EXPECT_EQ(unpacked.results, QStringList{path(QStringLiteral("Photos 2"))});
    QMap<QString, QByteArray> expected = treeContents(sample);
    expected.remove(QStringLiteral(".hidden"));
    EXPECT_EQ(treeContents(path(QStringLiteral("Photos 2/Photos"))), expected);
    EXPECT_EQ(readFile(packed.results.first()), archive);
}

TEST_F(ArchiveOperationsTest, LinksAreLeftOutEverythingElseUnpackedAndTheReportSaysHowMany)
{
    writeFile(path(QStringLiteral("Tree/a.txt")), "alpha alpha alpha alpha");
    ASSERT_TRUE(QFile::link(QStringLiteral("/etc"), path(QStringLiteral("Tree/etc"))));
    ASSERT_EQ(runTool(QStringLiteral("zip"), {QStringLiteral("-qry"), QStringLiteral("one.zip"), QStringLiteral("Tree")}, folder.path()).exitCode, 0);
    ASSERT_TRUE(QFile::copy(QStringLiteral(WENDREL_TEST_DATA "/zip-with-links.zip"), path(QStringLiteral("two.zip"))));

    struct Case {
        const char* archive;
        const char* message;
        QStringList files;  // what the folder holds below "Tree"
    };
    const Case cases[] = {
        {"one.zip", "one (1 link left out)", {QStringLiteral("a.txt")}},
        {"two.zip", "two (2 links left out)", {QStringLiteral("after.txt"), QStringLiteral("readme.txt")}},
    };
    for (const Case& row : cases) {
        const JobReport report = run("archive.unzip", {path(QString::fromUtf8(row.archive))});
        ASSERT_TRUE(report.succeeded) << report.message.toStdString();
        EXPECT_EQ(report.message, QString::fromUtf8(row.message));
        EXPECT_EQ(folderEntries(report.results.first() + QStringLiteral("/Tree")), row.files);
    }
}

TEST_F(ArchiveOperationsTest, NamesThatAreNotUtf8KeepTheirBytesThereAndBack)
{
    const QString names = path(QStringLiteral("Names"));
    writeFile(names + QStringLiteral("/Grüße.txt"), "utf-8");
    const QByteArray raw = QFile::encodeName(names) + "/Caf\xe9.txt";
    const int descriptor = ::open(raw.constData(), O_WRONLY | O_CREAT, 0644);
    ASSERT_GE(descriptor, 0);
    ASSERT_EQ(::write(descriptor, "latin-1", 7), 7);
    ::close(descriptor);

    const JobReport packed = run("archive.zip", {names});
    ASSERT_TRUE(packed.succeeded) << packed.message.toStdString();
    EXPECT_EQ(independentCheckFailures(packed.results.first()), QStringList());
    // The UTF-8 flag only on the name that is UTF-8, as Python reads it.
    const ToolRun flags = runPython(QStringLiteral("import sys, zipfile\n"
                                                   "for i in zipfile.ZipFile(sys.argv[1]).infolist(): print(i.flag_bits & 0x800)\n"),
                                    {packed.results.first()});
    EXPECT_EQ(flags.output, u"2048\n0\n2048\n");  // Names/, Caf\xe9.txt, Grüße.txt

    const JobReport unpacked = run("archive.unzip", packed.results);
    ASSERT_TRUE(unpacked.succeeded) << unpacked.message.toStdString();
    EXPECT_EQ(readFile(unpacked.results.first() + QStringLiteral("/Names/Grüße.txt")), "utf-8");
    QFile back;
    const int found = ::open((QFile::encodeName(unpacked.results.first()) + "/Names/Caf\xe9.txt").constData(), O_RDONLY);
    ASSERT_GE(found, 0) << "the name's bytes changed";
    ASSERT_TRUE(back.open(found, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle));
    EXPECT_EQ(back.readAll(), "latin-1");
}

TEST_F(ArchiveOperationsTest, BadArchivesLeaveNothingBehindAndSayWhy)
{
    writeFile(path(QStringLiteral("Tree/a.txt")), "alpha alpha alpha alpha");
    ASSERT_EQ(runTool(QStringLiteral("zip"), {QStringLiteral("-qr"), QStringLiteral("good.zip"), QStringLiteral("Tree")}, folder.path()).exitCode, 0);
    ASSERT_EQ(runTool(QStringLiteral("zip"), {QStringLiteral("-qrP"), QStringLiteral("pw"), QStringLiteral("locked.zip"), QStringLiteral("Tree")}, folder.path()).exitCode, 0);
    const QByteArray good = readFile(path(QStringLiteral("good.zip")));
    QByteArray bad = good;
    const qsizetype local = good.indexOf("Tree/a.txt") - 30;
    bad[local + 30 + le16(good, local + 26) + le16(good, local + 28)] = '\xff';  // the first byte of the data
    writeFile(path(QStringLiteral("bad.zip")), bad);
    writeFile(path(QStringLiteral("fake.zip")), "just text with a zip name");
    ASSERT_TRUE(QFile::copy(QStringLiteral(WENDREL_TEST_DATA "/zip-overlapping-records.zip"), path(QStringLiteral("overlapping.zip"))));

    struct Case {
        const char* name;
        const char* message;
    };
    const Case cases[] = {
        {"fake.zip", "Not a ZIP archive"}, {"bad.zip", "Damaged ZIP archive"},
        {"locked.zip", "Encrypted ZIP archives aren't supported"}, {"overlapping.zip", "Damaged ZIP archive"},
    };
    const QStringList before = folderEntries(folder.path());
    for (const Case& broken : cases) {
        const QString archive = path(QString::fromUtf8(broken.name));
        const QByteArray bytes = readFile(archive);
        const JobReport report = run("archive.unzip", {archive});
        EXPECT_FALSE(report.succeeded) << broken.name;
        EXPECT_EQ(report.message, QString::fromUtf8(broken.message)) << broken.name;
        EXPECT_EQ(readFile(archive), bytes);
    }
    EXPECT_EQ(folderEntries(folder.path()), before);
}

TEST_F(ArchiveOperationsTest, ZipTakesAnyItemAndUnzipOnlyArchives)
{
    writeFile(path(QStringLiteral("notes.txt")), "notes");
    writeFile(path(QStringLiteral("pack.zip")), "PK");
    const auto ids = [&](const QString& item) {
        QStringList found;
        for (const FileOperationPtr& entry : catalog.fitting(RingKind::convert, {item}))
            found.append(entry->id());
        return found;
    };
    EXPECT_EQ(ids(path(QStringLiteral("notes.txt"))), QStringList{QStringLiteral("archive.zip")});
    EXPECT_EQ(ids(folder.path() + u'/'), QStringList{QStringLiteral("archive.zip")});
    EXPECT_EQ(ids(path(QStringLiteral("pack.zip"))), (QStringList{QStringLiteral("archive.zip"), QStringLiteral("archive.unzip")}));
    EXPECT_TRUE(catalog.find(QStringLiteral("archive.zip"))->combinesInputs());
    EXPECT_FALSE(catalog.find(QStringLiteral("archive.unzip"))->combinesInputs());
}
