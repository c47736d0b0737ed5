#include "documents/zip/ZipWriter.h"

#include "ZipTestTools.h"
#include "documents/zip/Crc32.h"
#include "documents/zip/ZipFolderPlan.h"
#include "documents/zip/ZipReader.h"
#include "operations/OperationError.h"
#include "support/TestEnvironment.h"

#include <QBuffer>
#include <QCryptographicHash>
#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTimeZone>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace wendrel;
using namespace wendrel::test;

namespace {

const QByteArray epubMime = "application/epub+zip";

QDateTime localTime(int year, int month, int day, int hour, int minute, int second)
{
    return QDateTime(QDate(year, month, day), QTime(hour, minute, second));
}

QByteArray repeatedText(qsizetype size)
{
    QByteArray text;
    while (text.size() < size)
        text += "All work and no play makes a dull archive. ";
    return text.left(size);
}

class ZipWriterTest : public ::testing::Test {
protected:
    QString path(const QString& name) const { return folder.filePath(name); }

    QTemporaryDir folder;
};

}  // namespace

TEST(Crc32, MatchesTheStandardCheckValueAndContinues)
{
    EXPECT_EQ(crc32("123456789"), 0xCBF43926u);
    EXPECT_EQ(crc32(""), 0u);
    EXPECT_EQ(crc32("56789", crc32("1234")), 0xCBF43926u);
    EXPECT_EQ(crc32Combine(crc32("1234"), crc32("56789"), 5), 0xCBF43926u);
}

TEST_F(ZipWriterTest, HeadersHoldExactlyTheFieldsOfAnOrdinaryArchive)
{
    const QDateTime written = localTime(2024, 3, 5, 14, 7, 9);
    const QByteArray text = repeatedText(4000);
    writeArchive(path(QStringLiteral("book.zip")), [&](ZipWriter& writer) {
        writer.addEntry(QStringLiteral("mimetype"), epubMime, ZipWriter::Compression::store, written);
        writer.addEntry(QStringLiteral("OEBPS/"), {}, ZipWriter::Compression::store, written);
        writer.addEntry(QStringLiteral("OEBPS/chapter.xhtml"), text,
                        ZipWriter::Compression::deflateWhenSmaller, written);
    });
    const QByteArray archive = readFile(path(QStringLiteral("book.zip")));

    // EPUB readers find the type in the first bytes: the stored "mimetype" without extra field.
    EXPECT_EQ(archive.left(4), QByteArray("PK\x03\x04"));
    EXPECT_EQ(archive.mid(30, 8), "mimetype");
    EXPECT_EQ(archive.mid(38, 20), epubMime);

    const quint16 time = 14 * 2048 + 7 * 32 + 9 / 2;
    const quint16 date = (2024 - 1980) * 512 + 3 * 32 + 5;
    struct Expected {
        QByteArray name;
        quint16 method;
        QByteArray contents;
        quint32 attributes;
    };
    const Expected entries[] = {
        {"mimetype", 0, epubMime, 0x81A40000}, {"OEBPS/", 0, {}, 0x41ED0010},
        {"OEBPS/chapter.xhtml", 8, text, 0x81A40000},
    };

    qsizetype local = 0;
    const QList<qsizetype> central = centralRecordOffsets(archive);
    ASSERT_EQ(central.size(), 3);
    for (int index = 0; index < 3; ++index) {
        const Expected& entry = entries[index];
        SCOPED_TRACE(entry.name.toStdString());
        const quint32 compressedSize = le32(archive, local + 18);
        const QByteArray shared = record({{20, 2}, {0x0800, 2}, {entry.method, 2}, {time, 2}, {date, 2},
                                          {crc32(entry.contents), 4}, {compressedSize, 4},
                                          {static_cast<quint64>(entry.contents.size()), 4},
                                          {static_cast<quint64>(entry.name.size()), 2}, {0, 2}});
        // No extra field, no comment, made on Unix 3.0.
        EXPECT_EQ(archive.mid(local, 30 + entry.name.size()), record({{0x04034B50, 4}}, shared + entry.name));
        EXPECT_EQ(archive.mid(central[index], 46 + entry.name.size()),
                  record({{0x02014B50, 4}, {0x031E, 2}}, shared)
                      + record({{0, 2}, {0, 2}, {0, 2}, {entry.attributes, 4}, {static_cast<quint64>(local), 4}}, entry.name));
        if (entry.method == 0)
            EXPECT_EQ(archive.mid(local + 30 + entry.name.size(), compressedSize), entry.contents);
        else
            EXPECT_LT(compressedSize, entry.contents.size());
        local += 30 + entry.name.size() + compressedSize;
    }

    // The central directory follows the last entry directly and the end record closes the file.
    const qsizetype end = archive.size() - 22;
    EXPECT_EQ(central.first(), local);
    EXPECT_EQ(archive.mid(end), record({{0x06054B50, 4}, {0, 2}, {0, 2}, {3, 2}, {3, 2},
                                        {static_cast<quint64>(end - local), 4}, {static_cast<quint64>(local), 4}, {0, 2}}));
    EXPECT_TRUE(independentCheckFailures(path(QStringLiteral("book.zip"))).isEmpty());
}

TEST_F(ZipWriterTest, DeflatesOnlyWhenThatIsStrictlySmaller)
{
    QByteArray noise(5000, Qt::Uninitialized);
    QRandomGenerator(7).fillRange(reinterpret_cast<quint32*>(noise.data()), noise.size() / 4);
    QByteArray longNoise(3 * 1024 * 1024, Qt::Uninitialized);  // several pieces, none shrinks
    QRandomGenerator(8).fillRange(reinterpret_cast<quint32*>(longNoise.data()), longNoise.size() / 4);
    const QDateTime now = QDateTime::currentDateTime();
    writeArchive(path(QStringLiteral("methods.zip")), [&](ZipWriter& writer) {
        writer.addEntry(QStringLiteral("empty"), {}, ZipWriter::Compression::deflateWhenSmaller, now);
        writer.addEntry(QStringLiteral("x"), "x", ZipWriter::Compression::deflateWhenSmaller, now);
        writer.addEntry(QStringLiteral("noise"), noise, ZipWriter::Compression::deflateWhenSmaller, now);
        writer.addEntry(QStringLiteral("text"), repeatedText(5000), ZipWriter::Compression::deflateWhenSmaller, now);
        writer.addEntry(QStringLiteral("kept"), repeatedText(5000), ZipWriter::Compression::store, now);
        writer.addEntry(QStringLiteral("long noise"), longNoise, ZipWriter::Compression::deflateWhenSmaller, now);
        writer.addEntry(QStringLiteral("long text"), repeatedText(3 * 1024 * 1024), ZipWriter::Compression::deflateWhenSmaller, now);
    });
    const QByteArray archive = readFile(path(QStringLiteral("methods.zip")));
    const QList<qsizetype> central = centralRecordOffsets(archive);
    ASSERT_EQ(central.size(), 7);
    const quint16 methods[] = {0, 0, 0, 8, 0, 0, 8};
    for (int index = 0; index < 7; ++index)
        EXPECT_EQ(le16(archive, central[index] + 10), methods[index]) << index;
    EXPECT_EQ(le32(archive, central[0] + 16), 0u);  // an empty file's CRC
    EXPECT_EQ(le32(archive, central[2] + 20), 5000u);
    EXPECT_EQ(le32(archive, central[5] + 20), static_cast<quint32>(longNoise.size()));
    EXPECT_EQ(le32(archive, central[5] + 16), crc32(longNoise));
    EXPECT_TRUE(independentCheckFailures(path(QStringLiteral("methods.zip"))).isEmpty());
}

TEST(ZipFolderPlan, FoldersComeFirstThenTheirChildrenByNameWithoutHiddenItemsOrLoops)
{
    using Kind = ItemFacts::Kind;
    const QDateTime old = localTime(1999, 1, 2, 3, 4, 5);
    const auto folder = [](quint64 inode, bool readable = true) {
        return ItemFacts{.kind = Kind::folder, .identity = {1, inode}, .size = 0, .modified = {}, .readable = readable};
    };
    const auto file = [&](qint64 size) { return ItemFacts{.kind = Kind::file, .identity = {}, .size = size, .modified = old}; };
    const auto other = [](Kind kind) { return ItemFacts{.kind = kind, .identity = {}, .size = 0, .modified = {}}; };
    // A tree described by paths; the planner sees disks only through FolderView.
    const QMap<QByteArray, ItemFacts> tree{
        {"/T", folder(1)}, {"/T/b", file(1)}, {"/T/a", file(2)}, {"/T/B", file(3)}, {"/T/.hidden", file(4)},
        {"/T/Caf\xe9", file(5)},                                // no UTF-8: the bytes stay
        {"/T/sub", folder(2)}, {"/T/sub/c", file(6)},
        {"/T/sub/up", folder(1)},                               // a link back up: not followed
        {"/T/twin", folder(2)},                                 // a link across: followed
        {"/T/twin/c", file(6)}, {"/T/socket", other(Kind::other)}, {"/T/broken", other(Kind::missing)},
        {"/pipe", other(Kind::other)}, {"/Locked", folder(3)}, {"/Locked/closed", folder(4, false)},
        {"/one.txt", file(7)},
    };
    const FolderView view{
        .inspect = [&](const QByteArray& path) { return tree.value(path); },
        .names = [&](const QByteArray& parent) {
            QList<QByteArray> names;
            for (auto item = tree.keyBegin(); item != tree.keyEnd(); ++item) {
                if (item->startsWith(parent + '/') && !item->sliced(parent.size() + 1).contains('/'))
                    names.prepend(item->sliced(parent.size() + 1));
            }
            return names;
        },
    };
    const auto names = [&](const QByteArray& path, const QByteArray& name) {
        QList<QByteArray> planned;
        for (const PlannedItem& item : planItem(view, path, name)) {
            planned.append(item.name);
            EXPECT_EQ(item.sourcePath.isEmpty(), item.name.endsWith('/')) << item.name.toStdString();
            EXPECT_EQ(item.modified.isValid(), !item.name.endsWith('/')) << item.name.toStdString();
        }
        return planned;
    };
    EXPECT_EQ(names("/T/", "Docs"), (QList<QByteArray>{"Docs/", "Docs/B", "Docs/Caf\xe9", "Docs/a", "Docs/b",
                                                       "Docs/sub/", "Docs/sub/c", "Docs/twin/", "Docs/twin/c"}));
    EXPECT_EQ(names("/one.txt", "one.txt"), QList<QByteArray>{"one.txt"});
    EXPECT_EQ(planItem(view, "/one.txt", "one.txt").first().size, 7);

    const auto refusal = [&](const QByteArray& item) {
        try {
            planItem(view, item, "x");
            return QStringLiteral("planned");
        } catch (const OperationError& error) {
            return error.message();
        }
    };
    EXPECT_EQ(refusal("/gone.txt"), u"Couldn't read “gone.txt”: No such file or folder");
    EXPECT_EQ(refusal("/pipe"), u"“pipe” is neither a file nor a folder");
    EXPECT_EQ(refusal("/Locked"), u"Couldn't read “closed”: Permission denied");
}

TEST_F(ZipWriterTest, TheDiskShowsThePlannerNamesAsBytesAndLinksAsWhatTheyLeadTo)
{
    const QString loop = path(QStringLiteral("Loop"));
    writeFile(loop + QStringLiteral("/file.txt"), "once");
    writeFile(loop + QStringLiteral("/.hidden"), "hidden");
    const QByteArray rawName = QFile::encodeName(loop) + "/Caf\xe9.txt";
    const int raw = ::open(rawName.constData(), O_WRONLY | O_CREAT, 0644);
    ASSERT_GE(raw, 0);
    ::close(raw);
    ASSERT_TRUE(QFile::link(loop, loop + QStringLiteral("/again")));
    ASSERT_TRUE(QFile::link(QStringLiteral("nowhere"), loop + QStringLiteral("/broken")));
    ASSERT_EQ(::mkfifo(QFile::encodeName(loop + QStringLiteral("/pipe")).constData(), 0644), 0);

    QList<QByteArray> names;
    for (const PlannedItem& item : planItem(diskView(), QFile::encodeName(loop), "Loop"))
        names.append(item.name);
    EXPECT_EQ(names, (QList<QByteArray>{"Loop/", "Loop/Caf\xe9.txt", "Loop/file.txt"}));
}

TEST_F(ZipWriterTest, FilesKeepTheirTimeFromBefore1980UnderIt)
{
    const QString old = path(QStringLiteral("Old/old.txt"));
    writeFile(old, "from the archives");
    QFile file(old);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    ASSERT_TRUE(file.setFileTime(localTime(1975, 6, 15, 10, 20, 31), QFileDevice::FileModificationTime));
    file.close();

    const QDateTime before = QDateTime::currentDateTime();
    writeArchive(path(QStringLiteral("old.zip")),
                 [&](ZipWriter& writer) { writer.addItem(path(QStringLiteral("Old")), QStringLiteral("Old")); });
    const QDateTime after = QDateTime::currentDateTime();
    const QByteArray archive = readFile(path(QStringLiteral("old.zip")));
    const qsizetype local = archive.indexOf("Old/old.txt") - 30;
    EXPECT_EQ(le16(archive, local + 10), 10 * 2048 + 20 * 32 + 15);  // odd seconds round down
    EXPECT_EQ(le16(archive, local + 12), 0 * 512 + 6 * 32 + 15);

    // The folder entry carries the time it was packed.
    const QDateTime stamped = zip::fromDosDateTime({le16(archive, 10), le16(archive, 12)});
    EXPECT_GE(stamped, before.addSecs(-2));
    EXPECT_LE(stamped, after);
}

TEST_F(ZipWriterTest, BytesAreTheSameWhateverTheNumberOfThreads)
{
    const QString source = path(QStringLiteral("Sample"));
    makeSampleTree(source);
    // Files only: folder entries carry the time of the run.
    const QStringList files{QStringLiteral("big.txt"), QStringLiteral("mixed.bin"), QStringLiteral("noise.bin"), QStringLiteral("notes.txt"),
                            QStringLiteral("empty"), QStringLiteral("Café ☕.txt")};
    QByteArray archives[3];
    const int threadCounts[] = {1, 2, 5};
    for (int index = 0; index < 3; ++index) {
        const QString archive = path(QStringLiteral("threads%1.zip").arg(threadCounts[index]));
        writeArchive(archive, [&](ZipWriter& writer) {
            for (const QString& file : files)
                writer.addItem(source + u'/' + file, file);
        }, {.threads = threadCounts[index], .zip64Threshold = zip::zip64Marker32});
        archives[index] = readFile(archive);
    }
    ASSERT_GT(archives[0].size(), 3 * 1024 * 1024);
    EXPECT_EQ(archives[0], archives[1]);
    EXPECT_EQ(archives[0], archives[2]);
}

TEST_F(ZipWriterTest, LargeSizesAndOffsetsGoIntoZip64Fields)
{
    // The threshold lowered to 1,000 bytes gives the layout of a 4 GiB archive with small files.
    const QString source = path(QStringLiteral("Sample"));
    makeSampleTree(source);
    const QString archive = path(QStringLiteral("zip64.zip"));
    writeArchive(archive, [&](ZipWriter& writer) { writer.addItem(source, QStringLiteral("Sample")); },
                 {.threads = 0, .zip64Threshold = 1000});
    EXPECT_EQ(independentCheckFailures(archive), QStringList());

    const QByteArray bytes = readFile(archive);
    // big.txt is the first file: its local header carries both sizes in a ZIP64 field.
    const qsizetype big = bytes.indexOf("PK\x03\x04" + QByteArray(), bytes.indexOf("Sample/big.txt") - 30);
    const auto bigSize = static_cast<quint64>(QFileInfo(source + QStringLiteral("/big.txt")).size());
    EXPECT_EQ(bytes.mid(big + 4, 2), record({{45, 2}}));
    EXPECT_EQ(bytes.mid(big + 18, 12), record({{~0u, 4}, {~0u, 4}, {14, 2}, {20, 2}}));
    EXPECT_EQ(bytes.mid(big + 30, 14 + 12), record({{1, 2}, {16, 2}, {bigSize, 8}}).prepend("Sample/big.txt"));

    // The end: a ZIP64 end record, its locator, then the end record pointing to them.
    const qsizetype end = bytes.size() - 22;
    const qsizetype zip64End = end - 20 - 56;
    EXPECT_EQ(bytes.mid(end - 20, 16), record({{0x07064B50, 4}, {0, 4}, {static_cast<quint64>(zip64End), 8}}));
    EXPECT_EQ(bytes.mid(zip64End, 4), record({{0x06064B50, 4}}));
    EXPECT_EQ(le64(bytes, zip64End + 32), 10u);  // entries: three folders and seven files
    EXPECT_EQ(le32(bytes, end + 16), 0xFFFFFFFFu);

    // An entry past the threshold names its offset in the ZIP64 field only; its small sizes
    // stay where they are.
    const auto centralStart = static_cast<qsizetype>(le64(bytes, zip64End + 48));
    const qsizetype notesRecord = bytes.indexOf("Sample/notes.txt", centralStart) - 46;
    const qsizetype notesLocal = bytes.indexOf("Sample/notes.txt") - 30;
    ASSERT_GT(notesLocal, 1000);
    EXPECT_EQ(bytes.mid(notesRecord + 20, 8), record({{30, 4}, {30, 4}}));
    EXPECT_EQ(bytes.mid(notesRecord + 42, 4), record({{~0u, 4}}));
    EXPECT_EQ(bytes.mid(notesRecord + 46 + 16, 12), record({{1, 2}, {8, 2}, {static_cast<quint64>(notesLocal), 8}}));
}

TEST_F(ZipWriterTest, MoreThan65535EntriesGetAZip64EndRecord)
{
    const QDateTime now = QDateTime::currentDateTime();
    const auto fill = [&](int count) {
        return [&now, count](ZipWriter& writer) {
            for (int index = 0; index < count; ++index) {
                writer.addEntry(QStringLiteral("%1").arg(index), QByteArray::number(index),
                                ZipWriter::Compression::deflateWhenSmaller, now);
            }
        };
    };

    // Exactly 65,535 still fit the plain end record.
    writeArchive(path(QStringLiteral("full.zip")), fill(65535));
    const QByteArray full = readFile(path(QStringLiteral("full.zip")));
    EXPECT_EQ(le16(full, full.size() - 22 + 10), 65535);
    EXPECT_NE(le32(full, full.size() - 42), 0x07064B50u);

    const QString many = path(QStringLiteral("many.zip"));
    writeArchive(many, fill(70000));
    const QByteArray bytes = readFile(many);
    EXPECT_EQ(le16(bytes, bytes.size() - 22 + 10), 0xFFFF);
    EXPECT_EQ(le32(bytes, bytes.size() - 42), 0x07064B50u);

    EXPECT_EQ(independentCheckFailures(many), QStringList());

    QFile file(many);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const ZipReader reader(file);
    ASSERT_EQ(reader.entries().size(), 70000);
    QBuffer last;
    last.open(QIODevice::WriteOnly);
    reader.extract(reader.entries().last(), last);
    EXPECT_EQ(last.data(), "69999");
}

TEST_F(ZipWriterTest, FileThatChangesWhileBeingPackedIsReportedNotPacked)
{
    const QString growing = path(QStringLiteral("log.txt"));
    writeFile(growing, repeatedText(3 * 1024 * 1024));
    QFile archive(path(QStringLiteral("log.zip")));
    ASSERT_TRUE(archive.open(QIODevice::WriteOnly));
    ZipWriter writer(archive);
    writer.addItem(growing, QStringLiteral("log.txt"));
    writeFile(growing, repeatedText(1024));  // shrinks between planning and writing
    try {
        writer.finish();
        FAIL() << "the change went unnoticed";
    } catch (const OperationError& error) {
        EXPECT_EQ(error.message(), u"“log.txt” changed while it was being packed");
    }
}

TEST_F(ZipWriterTest, StoppingFromTheProgressCallbackEndsEveryThreadCleanly)
{
    const QString source = path(QStringLiteral("Sample"));
    makeSampleTree(source);
    QFile archive(path(QStringLiteral("stopped.zip")));
    ASSERT_TRUE(archive.open(QIODevice::WriteOnly));
    {
        ZipWriter writer(archive, {.threads = 4, .zip64Threshold = zip::zip64Marker32});
        writer.addItem(source, QStringLiteral("Sample"));
        int calls = 0;
        // Thrown while compressing threads still hold pieces: the writer must wait for them.
        EXPECT_THROW(writer.finish([&calls](qint64, qint64) {
            if (++calls == 2)
                throw OperationCancelled();
        }),
                     OperationCancelled);
    }
    archive.close();
    EXPECT_LT(archive.size(), 3 * 1024 * 1024);
}
