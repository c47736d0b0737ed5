#include "documents/zip/ZipReader.h"

#include "ZipTestTools.h"
#include "documents/zip/Crc32.h"
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

class ZipReaderTest : public ::testing::Test {
protected:
    QString path(const QString& name) const { return folder.filePath(name); }

    // Makes an archive with Python from entries written "name|method|text".
    QString pythonZip(const QString& name, const QStringList& entries)
    {
        const QString archive = path(name);
        const ToolRun run = runPython(pythonArchive, QStringList{archive} + entries);
        EXPECT_EQ(run.exitCode, 0) << run.output.toStdString();
        return archive;
    }

    // Unpacks with ZipReader; the error's message, or empty when all went well.
    QString unpack(const QString& archive, const QString& into)
    {
        QDir().mkpath(into);
        QFile file(archive);
        if (!file.open(QIODevice::ReadOnly))
            return QStringLiteral("can't open the archive");
        try {
            const ZipReader reader(file);
            reader.extractAll(into);
            return {};
        } catch (const OperationError& error) {
            return error.message();
        }
    }

    QTemporaryDir folder;
};

struct Maker {
    const char* name;
    const char* command;  // a shell command run in the folder that holds "Sample"
};

void PrintTo(const Maker& maker, std::ostream* out) { *out << maker.name; }

class ArchivesFromOtherTools : public ZipReaderTest, public ::testing::WithParamInterface<Maker> {};

}  // namespace

TEST_P(ArchivesFromOtherTools, UnpackToTheFilesThatWentIn)
{
    makeSampleTree(path(QStringLiteral("Sample")));
    const ToolRun made = runTool(QStringLiteral("sh"), {QStringLiteral("-c"), QString::fromUtf8(GetParam().command)},
                                 folder.path());
    ASSERT_EQ(made.exitCode, 0) << made.output.toStdString();

    const QString out = path(QStringLiteral("out"));
    EXPECT_EQ(unpack(path(QStringLiteral("made.zip")), out), QString());
    EXPECT_EQ(treeContents(out + QStringLiteral("/Sample")), treeContents(path(QStringLiteral("Sample"))));
}

INSTANTIATE_TEST_SUITE_P(
    Makers, ArchivesFromOtherTools,
    ::testing::Values(
        Maker{"InfoZip", "zip -qr made.zip Sample"},
        Maker{"InfoZipDataDescriptors", "zip -qr -fd made.zip Sample"},
        Maker{"InfoZipZip64", "zip -qr -fz made.zip Sample"},
        Maker{"InfoZipStreamed", "zip -qr - Sample > made.zip"},
        Maker{"InfoZipWithComment", "zip -qr made.zip Sample && echo 'made by hand' | zip -qz made.zip"},
        Maker{"SevenZip", "7z a -tzip made.zip Sample > /dev/null"},
        Maker{"PythonZipfile",
              "/usr/bin/python3 -c \"import os, zipfile\n"
              "with zipfile.ZipFile('made.zip', 'w', zipfile.ZIP_DEFLATED) as z:\n"
              "    z.comment = b'packed by a script'\n"
              "    for top, folders, files in os.walk('Sample'):\n"
              "        for name in files: z.write(os.path.join(top, name))\n\""},
        Maker{"PythonZipfileZip64",
              "/usr/bin/python3 -c \"import os, zipfile\n"
              "with zipfile.ZipFile('made.zip', 'w', zipfile.ZIP_DEFLATED) as z:\n"
              "    for top, folders, files in os.walk('Sample'):\n"
              "        for name in files:\n"
              "            path = os.path.join(top, name)\n"
              "            with open(path, 'rb') as source, z.open(path, 'w', force_zip64=True) as entry:\n"
              "                entry.write(source.read())\n\""}),
    [](const ::testing::TestParamInfo<Maker>& row) { return std::string(row.param.name); });

TEST_F(ZipReaderTest, LegacyNamesReadAsCodePage437AndBrokenUtf8IsRepaired)
{
    QByteArray bytes = readFile(pythonZip(QStringLiteral("legacy.zip"), {QStringLiteral("GrXYe.txt|0|hallo"),
                                                                         QStringLiteral("Caf\u00e9.txt|0|kaffee")}));
    // Python writes ASCII names unflagged and others flagged as UTF-8; swap in the raw bytes
    // an old Windows tool would have written, and break the UTF-8 of the flagged one.
    bytes.replace("GrXYe", "Gr\x81\xe1" "e");
    bytes.replace("Caf\xc3\xa9", "Caf\xff\xa9");
    writeFile(path(QStringLiteral("legacy.zip")), bytes);

    const QStringList names = entryNames(path(QStringLiteral("legacy.zip")));
    ASSERT_EQ(names.size(), 2);
    EXPECT_EQ(names[0], u"Grüße.txt");
    EXPECT_TRUE(names[1].startsWith(u"Caf")) << names[1].toStdString();
    EXPECT_TRUE(names[1].contains(QChar::ReplacementCharacter)) << names[1].toStdString();
}

TEST_F(ZipReaderTest, EndRecordIsFoundBehindTheLongestCommentButNoFurther)
{
    const QString archive = pythonZip(QStringLiteral("commented.zip"), {QStringLiteral("a.txt|8|hello hello hello")});
    const ToolRun commented = runPython(
        QStringLiteral("import sys, zipfile\n"
                       "with zipfile.ZipFile(sys.argv[1], 'a') as z: z.comment = b'c' * 65535\n"),
        {archive});
    ASSERT_EQ(commented.exitCode, 0) << commented.output.toStdString();
    EXPECT_EQ(entryNames(archive), QStringList{QStringLiteral("a.txt")});

    // One more byte after the comment puts the end record 65,558 bytes from the end.
    writeFile(archive, readFile(archive) + "c");
    EXPECT_EQ(unpack(archive, path(QStringLiteral("out"))), u"Not a ZIP archive");
}

TEST_F(ZipReaderTest, EntriesThatWouldEscapeAreSkippedAndTheRestUnpacked)
{
    const QString archive = pythonZip(QStringLiteral("escape.zip"), {
        QStringLiteral("../evil.txt|0|out"),
        QStringLiteral("inside/../../evil2.txt|0|out"),
        QStringLiteral("/../evil3.txt|0|out"),
        QStringLiteral("./|0|"),
        QStringLiteral("/absolute.txt|0|stays inside"),
        QStringLiteral("inside/ok.txt|8|fine fine fine fine"),
    });
    const QString out = path(QStringLiteral("box/out"));
    EXPECT_EQ(unpack(archive, out), QString());
    EXPECT_EQ(treeContents(path(QStringLiteral("box"))),
              (QMap<QString, QByteArray>{{QStringLiteral("out/"), {}},
                                         {QStringLiteral("out/absolute.txt"), "stays inside"},
                                         {QStringLiteral("out/inside/"), {}},
                                         {QStringLiteral("out/inside/ok.txt"), "fine fine fine fine"}}));
    EXPECT_FALSE(QFile::exists(path(QStringLiteral("evil.txt"))));
    EXPECT_FALSE(QFile::exists(path(QStringLiteral("evil2.txt"))));
    EXPECT_FALSE(QFile::exists(path(QStringLiteral("evil3.txt"))));
}

TEST_F(ZipReaderTest, MacMetadataFolderIsNeverWritten)
{
    const QString archive = pythonZip(QStringLiteral("mac.zip"), {
        QStringLiteral("photo.txt|0|picture"),
        QStringLiteral("__MACOSX/|0|"),
        QStringLiteral("__MACOSX/._photo.txt|0|resource fork"),
    });
    const QString out = path(QStringLiteral("out"));
    EXPECT_EQ(unpack(archive, out), QString());
    EXPECT_EQ(folderEntries(out), QStringList{QStringLiteral("photo.txt")});
}

TEST_F(ZipReaderTest, UnsupportedMethodStopsAfterEarlierEntriesWereWritten)
{
    const QString archive = pythonZip(QStringLiteral("bzip2.zip"), {
        QStringLiteral("first.txt|8|written before the failure"),
        QStringLiteral("second.txt|12|bzip2 is not read"),
        QStringLiteral("third.txt|0|never reached"),
    });
    const QString out = path(QStringLiteral("out"));
    EXPECT_EQ(unpack(archive, out), u"Unsupported ZIP compression");
    EXPECT_EQ(folderEntries(out), QStringList{QStringLiteral("first.txt")});
}

TEST_F(ZipReaderTest, WrongCrcWithValidDataIsExtractedWithoutComplaint)
{
    QByteArray bytes = readFile(pythonZip(QStringLiteral("crc.zip"), {QStringLiteral("a.txt|8|checksum checksum checksum")}));
    putLe32(bytes, 14, 0x12345678);
    putLe32(bytes, centralRecordOffsets(bytes).first() + 16, 0x12345678);
    writeFile(path(QStringLiteral("crc.zip")), bytes);
    const QString out = path(QStringLiteral("out"));
    EXPECT_EQ(unpack(path(QStringLiteral("crc.zip")), out), QString());
    EXPECT_EQ(readFile(out + QStringLiteral("/a.txt")), "checksum checksum checksum");
}

TEST_F(ZipReaderTest, ArchiveWithoutEntriesGivesAnEmptyFolder)
{
    const QString archive = pythonZip(QStringLiteral("empty.zip"), {});
    EXPECT_EQ(readFile(archive).size(), 22);
    const QString out = path(QStringLiteral("out"));
    EXPECT_EQ(unpack(archive, out), QString());
    EXPECT_TRUE(folderEntries(out).isEmpty());
}

TEST_F(ZipReaderTest, FilesThatAreNoArchiveSaySo)
{
    writeFile(path(QStringLiteral("short.zip")), "PK\x05\x06");
    writeFile(path(QStringLiteral("text.zip")), QByteArray(5000, 'z'));
    writeFile(path(QStringLiteral("nothing.zip")), {});
    for (const QString& name : {QStringLiteral("short.zip"), QStringLiteral("text.zip"), QStringLiteral("nothing.zip")})
        EXPECT_EQ(unpack(path(name), path(QStringLiteral("out"))), u"Not a ZIP archive") << name.toStdString();

    // Cut in half, the end record is gone too.
    const QByteArray whole = readFile(pythonZip(QStringLiteral("whole.zip"), {QStringLiteral("a.txt|0|some text here")}));
    writeFile(path(QStringLiteral("half.zip")), whole.left(whole.size() / 2));
    EXPECT_EQ(unpack(path(QStringLiteral("half.zip")), path(QStringLiteral("out"))), u"Not a ZIP archive");
}

TEST_F(ZipReaderTest, DamageInHeadersOrDataIsReportedNeverReadPast)
{
    const QByteArray good = readFile(pythonZip(QStringLiteral("good.zip"), {QStringLiteral("a.txt|8|deflated deflated deflated deflated")}));
    const qsizetype central = centralRecordOffsets(good).first();
    struct Damage {
        const char* what;
        std::function<void(QByteArray&)> apply;
    };
    const Damage damages[] = {
        {"payload past the end", [&](QByteArray& bytes) { putLe32(bytes, central + 20, 0x7FFFFFF0); }},
        {"local header elsewhere", [&](QByteArray& bytes) { putLe32(bytes, central + 42, 0x7FFFFFF0); }},
        {"local signature", [&](QByteArray& bytes) { bytes[2] = 'X'; }},
        {"invalid deflate data", [&](QByteArray& bytes) { bytes[30 + 5] = '\xff'; }},
        {"deflate data cut short", [&](QByteArray& bytes) { putLe32(bytes, central + 20, 3); }},
    };
    for (const Damage& damage : damages) {
        QByteArray bytes = good;
        damage.apply(bytes);
        writeFile(path(QStringLiteral("damaged.zip")), bytes);
        EXPECT_EQ(unpack(path(QStringLiteral("damaged.zip")), path(QStringLiteral("out"))), u"Damaged ZIP archive")
            << damage.what;
    }
}

TEST_F(ZipReaderTest, DirectoryEndingEarlyKeepsTheEntriesBefore)
{
    QByteArray bytes = readFile(pythonZip(QStringLiteral("short.zip"), {QStringLiteral("a.txt|0|a"), QStringLiteral("b.txt|0|b")}));
    putLe16(bytes, bytes.size() - 22 + 10, 9);  // claims nine entries
    writeFile(path(QStringLiteral("short.zip")), bytes);
    EXPECT_EQ(entryNames(path(QStringLiteral("short.zip"))), (QStringList{QStringLiteral("a.txt"), QStringLiteral("b.txt")}));
}

TEST_F(ZipReaderTest, EntryInflatingPastItsStatedSizeStopsThere)
{
    const QString zeros(100'000, u'0');
    QByteArray bytes = readFile(pythonZip(QStringLiteral("bomb.zip"), {QStringLiteral("bomb.txt|8|") + zeros}));
    // The stated size says 100 bytes; the data inflates to a thousand times that.
    putLe32(bytes, 22, 100);
    putLe32(bytes, centralRecordOffsets(bytes).first() + 24, 100);
    writeFile(path(QStringLiteral("bomb.zip")), bytes);
    const QString out = path(QStringLiteral("out"));
    EXPECT_EQ(unpack(path(QStringLiteral("bomb.zip")), out), u"Damaged ZIP archive");
    EXPECT_LE(QFileInfo(out + QStringLiteral("/bomb.txt")).size(), 100);
}

TEST_F(ZipReaderTest, SizesBeyondReasonAreRefusedBeforeAnythingIsWritten)
{
    // The lowered threshold puts every size into ZIP64 fields, where 64 bits leave room for nonsense.
    const QString archive = path(QStringLiteral("sizes.zip"));
    writeArchive(archive, [](ZipWriter& writer) {
        writer.addEntry(QStringLiteral("first.txt"), "written first", ZipWriter::Compression::store, QDateTime::currentDateTime());
        writer.addEntry(QStringLiteral("huge.bin"), QByteArray(2000, 'h'), ZipWriter::Compression::store, QDateTime::currentDateTime());
    }, {.threads = 1, .zip64Threshold = 1000});
    const QByteArray good = readFile(archive);
    const qsizetype hugeRecord = good.indexOf("PK\x01\x02", good.indexOf("PK\x01\x02") + 4);
    const qsizetype sizeField = hugeRecord + 46 + 8 + 4;  // name, then the field's id and length

    QByteArray absurd = good;
    putLe64(absurd, sizeField, 0xFFFFFFFFFFFFFFF0ull);
    writeFile(archive, absurd);
    EXPECT_EQ(unpack(archive, path(QStringLiteral("absurd"))), u"Damaged ZIP archive");
    EXPECT_TRUE(folderEntries(path(QStringLiteral("absurd"))).isEmpty());

    QByteArray petabyte = good;
    putLe64(petabyte, sizeField, 1ull << 50);
    writeFile(archive, petabyte);
    EXPECT_EQ(unpack(archive, path(QStringLiteral("full"))), u"Not enough free disk space to unpack this ZIP archive");
    EXPECT_TRUE(folderEntries(path(QStringLiteral("full"))).isEmpty());
}

TEST_F(ZipReaderTest, LinksAndEncryptionAreRefusedWithTheirOwnSentence)
{
    writeFile(path(QStringLiteral("Tree/secret.txt")), "classified");
    ASSERT_TRUE(QFile::link(QStringLiteral("/etc"), path(QStringLiteral("Tree/etc"))));
    const ToolRun linked = runTool(QStringLiteral("zip"), {QStringLiteral("-qry"), QStringLiteral("linked.zip"), QStringLiteral("Tree")}, folder.path());
    ASSERT_EQ(linked.exitCode, 0) << linked.output.toStdString();
    EXPECT_EQ(unpack(path(QStringLiteral("linked.zip")), path(QStringLiteral("links"))), u"ZIP archives with links aren't supported");
    EXPECT_FALSE(QFileInfo(path(QStringLiteral("links/Tree/etc"))).isSymLink());

    const ToolRun locked = runTool(QStringLiteral("zip"), {QStringLiteral("-qP"), QStringLiteral("hunter2"), QStringLiteral("locked.zip"), QStringLiteral("Tree/secret.txt")}, folder.path());
    ASSERT_EQ(locked.exitCode, 0) << locked.output.toStdString();
    EXPECT_EQ(unpack(path(QStringLiteral("locked.zip")), path(QStringLiteral("locked"))), u"Encrypted ZIP archives aren't supported");
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

    QByteArray head;  // local header of the zeros
    head += "PK\x03\x04";
    head += QByteArray::fromHex("2d00" "0000" "0000" "0000" "2100");
    head += QByteArray(4, '\0') + QByteArray::fromHex("ffffffff" "ffffffff" "0900" "1400") + "zeros.bin";
    putLe32(head, 14, zerosCrc);
    head += QByteArray::fromHex("0100" "1000") + QByteArray(16, '\0');
    putLe64(head, head.size() - 16, zerosSize);
    putLe64(head, head.size() - 8, zerosSize);

    const quint64 afterOffset = static_cast<quint64>(head.size()) + zerosSize;
    QByteArray tail;  // local header and data of the small entry, central directory, end records
    tail += "PK\x03\x04" + QByteArray::fromHex("1400" "0000" "0000" "0000" "2100") + QByteArray(4, '\0')
            + QByteArray::fromHex("08000000" "08000000" "0900" "0000") + "after.txt" + "found me";
    putLe32(tail, 14, crc32("found me"));

    const quint64 centralOffset = afterOffset + static_cast<quint64>(tail.size());
    QByteArray central;
    central += "PK\x01\x02" + QByteArray::fromHex("1e03" "2d00" "0000" "0000" "0000" "2100") + QByteArray(4, '\0')
               + QByteArray::fromHex("ffffffff" "ffffffff" "0900" "1400" "0000" "0000" "0000" "0000a481" "00000000")
               + "zeros.bin" + QByteArray::fromHex("0100" "1000") + QByteArray(16, '\0');
    putLe32(central, 16, zerosCrc);
    putLe64(central, central.size() - 16, zerosSize);
    putLe64(central, central.size() - 8, zerosSize);
    const qsizetype second = central.size();
    central += "PK\x01\x02" + QByteArray::fromHex("1e03" "2d00" "0000" "0000" "0000" "2100") + QByteArray(4, '\0')
               + QByteArray::fromHex("08000000" "08000000" "0900" "0c00" "0000" "0000" "0000" "0000a481" "ffffffff")
               + "after.txt" + QByteArray::fromHex("0100" "0800") + QByteArray(8, '\0');
    putLe32(central, second + 16, crc32("found me"));
    putLe64(central, central.size() - 8, afterOffset);

    const quint64 zip64EndOffset = centralOffset + static_cast<quint64>(central.size());
    QByteArray end = "PK\x06\x06" + QByteArray(52, '\0');
    putLe64(end, 4, 44);
    putLe16(end, 12, 45);
    putLe16(end, 14, 45);
    putLe64(end, 24, 2);
    putLe64(end, 32, 2);
    putLe64(end, 40, static_cast<quint64>(central.size()));
    putLe64(end, 48, centralOffset);
    end += "PK\x06\x07" + QByteArray(16, '\0');
    putLe64(end, 56 + 8, zip64EndOffset);
    putLe32(end, 56 + 16, 1);
    end += "PK\x05\x06" + QByteArray::fromHex("0000" "0000" "0200" "0200") + QByteArray(4, '\0')
           + QByteArray::fromHex("ffffffff" "0000");
    putLe32(end, end.size() - 10, static_cast<quint32>(central.size()));

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
    EXPECT_EQ(python.output.trimmed(), QStringLiteral("%1 found me").arg(zerosSize)) << python.output.toStdString();
}

TEST_F(ZipReaderTest, ModificationTimeAndExecuteBitComeBack)
{
    const QString script = path(QStringLiteral("Tools/run.sh"));
    writeFile(script, "#!/bin/sh\necho hi\n");
    QFile file(script);
    ASSERT_TRUE(file.setPermissions(file.permissions() | QFileDevice::ExeOwner | QFileDevice::ExeUser));
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    const QDateTime modified(QDate(2001, 2, 3), QTime(4, 5, 6));
    ASSERT_TRUE(file.setFileTime(modified, QFileDevice::FileModificationTime));
    file.close();
    writeFile(path(QStringLiteral("Tools/readme.txt")), "plain");
    ASSERT_EQ(runTool(QStringLiteral("zip"), {QStringLiteral("-qr"), QStringLiteral("tools.zip"), QStringLiteral("Tools")}, folder.path()).exitCode, 0);

    const QString out = path(QStringLiteral("out"));
    EXPECT_EQ(unpack(path(QStringLiteral("tools.zip")), out), QString());
    const QFileInfo unpacked(out + QStringLiteral("/Tools/run.sh"));
    EXPECT_EQ(unpacked.lastModified(), modified);
    EXPECT_TRUE(unpacked.permissions() & QFileDevice::ExeOwner);
    EXPECT_FALSE(QFileInfo(out + QStringLiteral("/Tools/readme.txt")).permissions() & QFileDevice::ExeOwner);
}
