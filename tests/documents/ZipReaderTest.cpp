#include "documents/zip/ZipReader.h"

#include "ZipTestTools.h"
#include "documents/zip/Crc32.h"
#include "documents/zip/ExtractionTarget.h"
#include "documents/zip/ZipEntryName.h"
#include "operations/OperationError.h"
#include "support/TestEnvironment.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace wendrel;
using namespace wendrel::test;

namespace {

// Python's zipfile writes entries with exactly the names and methods asked for, which lets the
// tests make archives no careful tool would.
const QString pythonArchive = QStringLiteral(
    "import sys, zipfile\n"
    "with zipfile.ZipFile(sys.argv[1], 'w') as z:\n"
    "    for entry in sys.argv[2:]:\n"
    "        name, method, text = entry.split('|')\n"
    "        z.writestr(zipfile.ZipInfo(name), text.encode(), compress_type={'0': 0, '8': 8, '12': 12}[method])\n");

using Tree = QMap<QString, QByteArray>;

class ZipReaderTest : public ::testing::Test {
protected:
    QString path(const QString& name) const { return folder.filePath(name); }

    // An archive made with Python from entries written "name|method|text", as bytes.
    QByteArray pythonZip(const QStringList& entries)
    {
        const QString archive = path(QStringLiteral("python.zip"));
        const ToolRun run = runPython(pythonArchive, QStringList{archive} + entries);
        EXPECT_EQ(run.exitCode, 0) << run.errors.toStdString();
        return readFile(archive);
    }

    struct Unpacked {
        QString message;  // the error's, or empty when all went well
        int linksLeftOut = 0;
    };

    Unpacked unpack(const QString& archive, const QString& into)
    {
        QDir().mkpath(into);
        QFile file(archive);
        if (!file.open(QIODevice::ReadOnly))
            return {QStringLiteral("can't open the archive")};
        try {
            const ZipReader reader(file);
            return {{}, reader.extractAll(into).linksLeftOut};
        } catch (const OperationError& error) {
            return {error.message()};
        }
    }

    QTemporaryDir folder;
};

struct Maker {
    const char* name;
    const char* command;  // a shell command run in the folder that holds "Sample"
    bool keepsModes = false;  // the maker records modification times and the execute bit
};

void PrintTo(const Maker& maker, std::ostream* out) { *out << maker.name; }

class ArchivesFromOtherTools : public ZipReaderTest, public ::testing::WithParamInterface<Maker> {};

QByteArray dataFile(const char* name) { return readFile(QStringLiteral(WENDREL_TEST_DATA "/") + QLatin1String(name)); }

}  // namespace

TEST_P(ArchivesFromOtherTools, UnpackToTheFilesThatWentIn)
{
    makeSampleTree(path(QStringLiteral("Sample")));
    const QString script = path(QStringLiteral("Sample/nested/run.sh"));
    writeFile(script, "#!/bin/sh\necho hi\n");
    QFile file(script);
    ASSERT_TRUE(file.setPermissions(file.permissions() | QFileDevice::ExeOwner | QFileDevice::ExeUser));
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    const QDateTime modified(QDate(2001, 2, 3), QTime(4, 5, 6));
    ASSERT_TRUE(file.setFileTime(modified, QFileDevice::FileModificationTime));
    file.close();
    const ToolRun made = runTool(QStringLiteral("sh"), {QStringLiteral("-c"), QString::fromUtf8(GetParam().command)},
                                 folder.path());
    ASSERT_EQ(made.exitCode, 0) << made.errors.toStdString();

    const QString out = path(QStringLiteral("out"));
    EXPECT_EQ(unpack(path(QStringLiteral("made.zip")), out).message, QString());
    EXPECT_EQ(treeContents(out + QStringLiteral("/Sample")), treeContents(path(QStringLiteral("Sample"))));
    if (GetParam().keepsModes) {
        const QFileInfo unpacked(out + QStringLiteral("/Sample/nested/run.sh"));
        EXPECT_EQ(unpacked.lastModified(), modified);
        EXPECT_TRUE(unpacked.permissions() & QFileDevice::ExeOwner);
        EXPECT_FALSE(QFileInfo(out + QStringLiteral("/Sample/notes.txt")).permissions() & QFileDevice::ExeOwner);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Makers, ArchivesFromOtherTools,
    ::testing::Values(
        Maker{"InfoZip", "zip -qr made.zip Sample", true},
        Maker{"InfoZipDataDescriptors", "zip -qr -fd made.zip Sample", true},
        Maker{"InfoZipZip64", "zip -qr -fz made.zip Sample", true},
        Maker{"InfoZipStreamed", "zip -qr - Sample > made.zip", true},
        Maker{"InfoZipWithComment", "zip -qr made.zip Sample && echo 'made by hand' | zip -qz made.zip", true},
        Maker{"SevenZip", "7z a -tzip made.zip Sample > /dev/null"},
        Maker{"PythonZipfileZip64",
              "/usr/bin/python3 -c \"import os, zipfile\n"
              "with zipfile.ZipFile('made.zip', 'w', zipfile.ZIP_DEFLATED) as z:\n"
              "    for top, folders, files in os.walk('Sample'):\n"
              "        for name in files:\n"
              "            path = os.path.join(top, name)\n"
              "            with open(path, 'rb') as source, z.open(path, 'w', force_zip64=True) as entry:\n"
              "                entry.write(source.read())\n\""}),
    [](const ::testing::TestParamInfo<Maker>& row) { return std::string(row.param.name); });

TEST(ExtractionTarget, StaysInsideTheFolderAndNeverOnIt)
{
    struct Case {
        QByteArray entry;
        std::optional<QByteArray> target;
    };
    const Case cases[] = {
        {"a.txt", "/box/a.txt"}, {"Docs/", "/box/Docs"},
        {"inside/./x//y.txt", "/box/inside/x/y.txt"},
        {"inside/../ok.txt", "/box/ok.txt"},
        {"/absolute.txt", "/box/absolute.txt"},      // counted from the folder
        {"C:/windows.txt", "/box/C:/windows.txt"},   // a drive letter is a name here
        {"..\\evil.txt", "/box/..\\evil.txt"},       // so is a backslash
        {"Caf\xe9.txt", "/box/Caf\xe9.txt"},         // bytes that are not UTF-8 pass
        {"../evil.txt", std::nullopt}, {"inside/../../evil.txt", std::nullopt},
        {"../box/climbs-back.txt", std::nullopt},    // refused whole, not clamped
        {"./", std::nullopt}, {"", std::nullopt}, {QByteArray("nul\0/x", 6), std::nullopt},
    };
    for (const Case& row : cases) {
        EXPECT_EQ(extractionTarget("/box", row.entry), row.target) << row.entry.toStdString();
        EXPECT_EQ(extractionTarget("/box/", row.entry), row.target) << row.entry.toStdString();
    }
    EXPECT_EQ(extractionTarget("/", "a"), QByteArray("/a"));
}

TEST(ZipEntryName, ReadsWhatEachKindOfMakerMeant)
{
    QByteArray unicodeField = QByteArray::fromHex("7570" "0c00" "01") + QByteArray(4, '\0') + "Grüße";
    putLe16(unicodeField, 2, static_cast<quint16>(unicodeField.size() - 4));
    putLe32(unicodeField, 5, crc32("Gr\x81\xe1" "e"));
    struct Case {
        QByteArray raw;
        bool flagged;
        QByteArray extras;
        bool madeOnUnix;
        QString text;
        QByteArray onDisk;
    };
    const Case cases[] = {
        {"Café", true, {}, true, QStringLiteral("Café"), "Café"},
        {"Caf\xff\xa9", true, {}, true, QStringLiteral("Caf\ufffd\ufffd"), "Caf\xef\xbf\xbd\xef\xbf\xbd"},
        {"Café", false, {}, false, QStringLiteral("Café"), "Café"},  // unflagged UTF-8 from Linux tools
        {"Gr\x81\xe1" "e", false, {}, false, QStringLiteral("Grüße"), "Grüße"},  // code page 437
        {"Gr\x81\xe1" "e", false, unicodeField, true, QStringLiteral("Grüße"), "Grüße"},
        {"Caf\xe9", false, {}, true, QStringLiteral("Caf\ufffd"), "Caf\xe9"},  // a Unix name in no encoding
    };
    for (const Case& row : cases) {
        const EntryName name = decodeEntryName(row.raw, row.flagged, row.extras, row.madeOnUnix);
        EXPECT_EQ(name.text, row.text) << row.raw.toStdString();
        EXPECT_EQ(name.onDisk, row.onDisk) << row.raw.toStdString();
    }
}

TEST_F(ZipReaderTest, EachArchiveUnpacksToItsTreeOrSaysWhy)
{
    const QByteArray deflated = pythonZip({QStringLiteral("a.txt|8|deflated deflated deflated deflated")});
    const qsizetype central = centralRecordOffsets(deflated).first();
    const auto changed = [](QByteArray bytes, const std::function<void(QByteArray&)>& change) {
        change(bytes);
        return bytes;
    };
    const QByteArray bomb = pythonZip({QStringLiteral("bomb.txt|8|") + QString(100'000, u'0')});
    const QByteArray crc = pythonZip({QStringLiteral("a.txt|8|checksum checksum checksum")});
    const QByteArray commented = [&] {
        QByteArray bytes = pythonZip({QStringLiteral("a.txt|8|hello hello hello")});
        putLe16(bytes, bytes.size() - 2, 0xFFFF);
        return bytes + QByteArray(0xFFFF, 'c');
    }();

    // The lowered threshold puts every size into ZIP64 fields, where 64 bits leave room for nonsense.
    writeArchive(path(QStringLiteral("sizes.zip")), [](ZipWriter& writer) {
        writer.addEntry(QStringLiteral("first.txt"), "written first", ZipWriter::Compression::store, QDateTime::currentDateTime());
        writer.addEntry(QStringLiteral("huge.bin"), QByteArray(2000, 'h'), ZipWriter::Compression::store, QDateTime::currentDateTime());
    }, {.threads = 1, .zip64Threshold = 1000});
    const QByteArray sizes = readFile(path(QStringLiteral("sizes.zip")));
    const qsizetype hugeSize = sizes.lastIndexOf("PK\x01\x02") + 46 + 8 + 4;  // name, then the field's id and length

    struct Case {
        const char* what;
        QByteArray archive;
        const char* message;  // empty when it unpacks
        Tree tree;            // what the folder holds afterwards
        int linksLeftOut = 0;
        bool partial = false;  // damage found while writing leaves what was written so far
    };
    const Case cases[] = {
        {"entries that would escape are skipped",
         pythonZip({QStringLiteral("../evil.txt|0|out"), QStringLiteral("inside/../../evil2.txt|0|out"),
                    QStringLiteral("/../evil3.txt|0|out"), QStringLiteral("./|0|"),
                    QStringLiteral("/absolute.txt|0|stays inside"), QStringLiteral("inside/ok.txt|8|fine fine fine fine")}),
         "", {{QStringLiteral("absolute.txt"), "stays inside"}, {QStringLiteral("inside/"), {}},
              {QStringLiteral("inside/ok.txt"), "fine fine fine fine"}}},
        {"the Mac's metadata folder is never written",
         pythonZip({QStringLiteral("photo.txt|0|picture"), QStringLiteral("__MACOSX/|0|"),
                    QStringLiteral("__MACOSX/._photo.txt|0|resource fork")}),
         "", {{QStringLiteral("photo.txt"), "picture"}}},
        {"links are left out, the rest unpacked", dataFile("zip-with-links.zip"), "",
         {{QStringLiteral("Tree/"), {}}, {QStringLiteral("Tree/readme.txt"), "read me first"},
          {QStringLiteral("Tree/after.txt"), "written after the links"}}, 2},
        {"a wrong CRC with valid data passes",
         changed(crc, [&](QByteArray& bytes) {
             putLe32(bytes, 14, 0x12345678);
             putLe32(bytes, centralRecordOffsets(bytes).first() + 16, 0x12345678);
         }),
         "", {{QStringLiteral("a.txt"), "checksum checksum checksum"}}},
        {"no entries", pythonZip({}), "", {}},
        {"end record behind the longest comment", commented, "", {{QStringLiteral("a.txt"), "hello hello hello"}}},
        {"end record one byte further", commented + "c", "Not a ZIP archive", {}},
        {"directory ending early keeps the entries before",
         changed(pythonZip({QStringLiteral("a.txt|0|a"), QStringLiteral("b.txt|0|b")}),
                 [](QByteArray& bytes) { putLe16(bytes, bytes.size() - 22 + 10, 9); }),
         "", {{QStringLiteral("a.txt"), "a"}, {QStringLiteral("b.txt"), "b"}}},
        {"an unsupported method stops after the entries before",
         pythonZip({QStringLiteral("first.txt|8|written before the failure"), QStringLiteral("second.txt|12|bzip2 is not read"),
                    QStringLiteral("third.txt|0|never reached")}),
         "Unsupported ZIP compression", {{QStringLiteral("first.txt"), "written before the failure"}}},
        {"short", "PK\x05\x06", "Not a ZIP archive", {}}, {"text", QByteArray(5000, 'z'), "Not a ZIP archive", {}},
        {"nothing", {}, "Not a ZIP archive", {}},
        {"cut in half", deflated.left(deflated.size() / 2), "Not a ZIP archive", {}},
        {"payload past the end", changed(deflated, [&](QByteArray& b) { putLe32(b, central + 20, 0x7FFFFFF0); }),
         "Damaged ZIP archive", {}, 0, true},
        {"local header elsewhere", changed(deflated, [&](QByteArray& b) { putLe32(b, central + 42, 0x7FFFFFF0); }),
         "Damaged ZIP archive", {}, 0, true},
        {"local signature", changed(deflated, [](QByteArray& b) { b[2] = 'X'; }), "Damaged ZIP archive", {}, 0, true},
        {"invalid deflate data", changed(deflated, [](QByteArray& b) { b[30 + 5] = '\xff'; }), "Damaged ZIP archive", {}, 0, true},
        {"deflate data cut short", changed(deflated, [&](QByteArray& b) { putLe32(b, central + 20, 3); }),
         "Damaged ZIP archive", {}, 0, true},
        // The stated size says 100 bytes; the data inflates to a thousand times that.
        {"inflating past the stated size",
         changed(bomb, [](QByteArray& b) {
             putLe32(b, 22, 100);
             putLe32(b, centralRecordOffsets(b).first() + 24, 100);
         }),
         "Damaged ZIP archive", {}, 0, true},
        {"records sharing one local record", dataFile("zip-overlapping-records.zip"), "Damaged ZIP archive", {}},
        {"a size beyond reason", changed(sizes, [&](QByteArray& b) { putLe64(b, hugeSize, 0xFFFFFFFFFFFFFFF0ull); }),
         "Damaged ZIP archive", {}},
        {"a petabyte", changed(sizes, [&](QByteArray& b) { putLe64(b, hugeSize, 1ull << 50); }),
         "Not enough free disk space to unpack this ZIP archive", {}},
    };
    int index = 0;
    for (const Case& row : cases) {
        SCOPED_TRACE(row.what);
        const QString archive = path(QStringLiteral("case.zip"));
        writeFile(archive, row.archive);
        const QString out = path(QStringLiteral("out%1").arg(index++));
        const Unpacked unpacked = unpack(archive, out);
        EXPECT_EQ(unpacked.message, QString::fromUtf8(row.message));
        EXPECT_EQ(unpacked.linksLeftOut, row.linksLeftOut);
        if (!row.partial) {
            EXPECT_EQ(treeContents(out), row.tree);
        }
        // Never more than the stated size reaches the disk.
        EXPECT_LE(QFileInfo(out + QStringLiteral("/bomb.txt")).size(), 100);
    }
    EXPECT_EQ(folderEntries(folder.path()).filter(QStringLiteral("evil")), QStringList());
}

TEST_F(ZipReaderTest, EntryPast4GiBInAnArchiveWithAHoleIsFound)
{
    // A hand-made ZIP64 archive: a stored entry of 4 GiB + 16 zero bytes (a hole in the file,
    // so it costs no disk), then a small entry whose offset needs 64 bits.
    const quint64 zerosSize = (1ull << 32) + 16;
    quint32 zerosCrc = 0;
    const QByteArray megabyte(1 << 20, '\0');
    const quint32 megabyteCrc = crc32(megabyte);
    for (int index = 0; index < 4096; ++index)
        zerosCrc = crc32Combine(zerosCrc, megabyteCrc, megabyte.size());
    zerosCrc = crc32(QByteArray(16, '\0'), zerosCrc);

    const quint32 afterCrc = crc32("found me");
    const QByteArray head = record({{0x04034B50, 4}, {45, 2}, {0, 2}, {0, 2}, {0x21'0000, 4}, {zerosCrc, 4}, {~0u, 4}, {~0u, 4},
                                    {9, 2}, {20, 2}}, "zeros.bin")
                            + record({{1, 2}, {16, 2}, {zerosSize, 8}, {zerosSize, 8}});
    const quint64 afterOffset = static_cast<quint64>(head.size()) + zerosSize;
    const QByteArray tail = record({{0x04034B50, 4}, {20, 2}, {0, 2}, {0, 2}, {0x21'0000, 4}, {afterCrc, 4}, {8, 4}, {8, 4},
                                    {9, 2}, {0, 2}}, "after.txt" "found me");
    const quint64 centralOffset = afterOffset + static_cast<quint64>(tail.size());
    const QByteArray central =
        record({{0x02014B50, 4}, {0x031E, 2}, {45, 2}, {0, 2}, {0, 2}, {0x21'0000, 4}, {zerosCrc, 4}, {~0u, 4}, {~0u, 4},
                {9, 2}, {20, 2}, {0, 2}, {0, 2}, {0, 2}, {0x81A4'0000, 4}, {0, 4}}, "zeros.bin")
        + record({{1, 2}, {16, 2}, {zerosSize, 8}, {zerosSize, 8}})
        + record({{0x02014B50, 4}, {0x031E, 2}, {45, 2}, {0, 2}, {0, 2}, {0x21'0000, 4}, {afterCrc, 4}, {8, 4}, {8, 4},
                  {9, 2}, {12, 2}, {0, 2}, {0, 2}, {0, 2}, {0x81A4'0000, 4}, {~0u, 4}}, "after.txt")
        + record({{1, 2}, {8, 2}, {afterOffset, 8}});
    const quint64 zip64EndOffset = centralOffset + static_cast<quint64>(central.size());
    const QByteArray end =
        record({{0x06064B50, 4}, {44, 8}, {45, 2}, {45, 2}, {0, 4}, {0, 4}, {2, 8}, {2, 8},
                {static_cast<quint64>(central.size()), 8}, {centralOffset, 8}})
        + record({{0x07064B50, 4}, {0, 4}, {zip64EndOffset, 8}, {1, 4}})
        + record({{0x06054B50, 4}, {0, 2}, {0, 2}, {2, 2}, {2, 2}, {static_cast<quint64>(central.size()), 4}, {~0u, 4}, {0, 2}});

    const QString archive = path(QStringLiteral("holey.zip"));
    QFile file(archive);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(head);
    ASSERT_TRUE(file.seek(static_cast<qint64>(afterOffset)));
    file.write(tail + central + end);
    file.close();
    ASSERT_GT(QFileInfo(archive).size(), 1ll << 32);

    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const ZipReader reader(file);
    ASSERT_EQ(reader.entries().size(), 2);
    EXPECT_EQ(reader.entries()[0].size, static_cast<qint64>(zerosSize));
    EXPECT_EQ(reader.entries()[1].localHeaderOffset, static_cast<qint64>(afterOffset));
    QBuffer found;
    found.open(QIODevice::WriteOnly);
    reader.extract(reader.entries()[1], found);
    EXPECT_EQ(found.data(), "found me");

    // The independent readers agree on the layout.
    EXPECT_EQ(runTool(QStringLiteral("unzip"), {QStringLiteral("-p"), archive, QStringLiteral("after.txt")}).output, u"found me");
    const ToolRun python = runPython(
        QStringLiteral("import sys, zipfile\nz = zipfile.ZipFile(sys.argv[1])\n"
                       "print(z.getinfo('zeros.bin').file_size, z.read('after.txt').decode())\n"),
        {archive});
    EXPECT_EQ(python.output.trimmed(), QStringLiteral("%1 found me").arg(zerosSize)) << python.errors.toStdString();
}
