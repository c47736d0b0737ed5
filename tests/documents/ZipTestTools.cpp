#include "ZipTestTools.h"

#include "support/TestEnvironment.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>

namespace wendrel::test {

QStringList independentCheckFailures(const QString& archive)
{
    QStringList failures;
    const auto check = [&](const QString& name, const ToolRun& run) {
        if (run.exitCode != 0)
            failures.append(name + QStringLiteral(": ") + run.output + run.errors);
    };
    check(QStringLiteral("unzip -t"), runTool(QStringLiteral("unzip"), {QStringLiteral("-tq"), archive}));
    check(QStringLiteral("zipinfo"), runTool(QStringLiteral("zipinfo"), {archive}));
    check(QStringLiteral("7z t"), runTool(QStringLiteral("7z"), {QStringLiteral("t"), archive}));
    check(QStringLiteral("zipfile"),
          runPython(QStringLiteral("import sys, zipfile\n"
                                   "bad = zipfile.ZipFile(sys.argv[1]).testzip()\n"
                                   "sys.exit('first bad entry: %s' % bad if bad else 0)\n"),
                    {archive}));
    return failures;
}

QMap<QString, QByteArray> treeContents(const QString& folder)
{
    QMap<QString, QByteArray> tree;
    const QDir root(folder);
    QDirIterator items(folder, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                       QDirIterator::Subdirectories);
    while (items.hasNext()) {
        const QFileInfo item = items.nextFileInfo();
        const QString relative = root.relativeFilePath(item.filePath());
        if (item.isDir())
            tree.insert(relative + u'/', {});
        else
            tree.insert(relative, readFile(item.filePath()));
    }
    return tree;
}

void makeSampleTree(const QString& folder)
{
    writeFile(folder + QStringLiteral("/notes.txt"), "Ferry times, summer schedule.\n");
    writeFile(folder + QStringLiteral("/empty"), {});
    writeFile(folder + QStringLiteral("/Café ☕.txt"), "espresso\n");
    writeFile(folder + QStringLiteral("/nested/deeper/table.csv"), "a,b\n1,2\n");
    writeFile(folder + QStringLiteral("/.hidden"), "not packed\n");

    QByteArray text;
    for (int line = 0; text.size() < 3 * 1024 * 1024; ++line)
        text += "line " + QByteArray::number(line) + ": the quick brown fox jumps over the lazy dog\n";
    writeFile(folder + QStringLiteral("/big.txt"), text);

    QByteArray noise(3 * 1024 * 1024 + 17, Qt::Uninitialized);
    QRandomGenerator random(5);
    random.fillRange(reinterpret_cast<quint32*>(noise.data()), noise.size() / 4);
    writeFile(folder + QStringLiteral("/noise.bin"), noise);

    // Text, noise, text: pieces deflated and pieces kept in stored blocks, joined in one stream.
    writeFile(folder + QStringLiteral("/mixed.bin"),
              text.left(1500 * 1024) + noise.left(1500 * 1024) + text.right(1024 * 1024));
}

void writeArchive(const QString& path, const std::function<void(ZipWriter&)>& fill,
                  ZipWriter::Options options)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        throw std::runtime_error("can't write test archive " + path.toStdString());
    ZipWriter writer(file, options);
    fill(writer);
    writer.finish();
}

namespace {

// A test that computes an offset wrongly fails, it doesn't read or write out of bounds.
void checkRange(const QByteArray& bytes, qsizetype offset, qsizetype length)
{
    if (offset < 0 || offset + length > bytes.size())
        throw std::out_of_range("field outside the archive's bytes");
}

}  // namespace

quint16 le16(const QByteArray& bytes, qsizetype offset)
{
    checkRange(bytes, offset, 2);
    return static_cast<quint16>(static_cast<quint8>(bytes.at(offset))
                                | static_cast<quint8>(bytes.at(offset + 1)) << 8);
}

quint32 le32(const QByteArray& bytes, qsizetype offset)
{
    return le16(bytes, offset) | static_cast<quint32>(le16(bytes, offset + 2)) << 16;
}

quint64 le64(const QByteArray& bytes, qsizetype offset)
{
    return le32(bytes, offset) | static_cast<quint64>(le32(bytes, offset + 4)) << 32;
}

QByteArray record(std::initializer_list<std::pair<quint64, int>> fields, const QByteArray& tail)
{
    QByteArray bytes;
    for (const auto& [value, width] : fields) {
        for (int index = 0; index < width; ++index)
            bytes += static_cast<char>(value >> (8 * index));
    }
    return bytes + tail;
}

void putLe16(QByteArray& bytes, qsizetype offset, quint16 value)
{
    checkRange(bytes, offset, 2);
    bytes[offset] = static_cast<char>(value & 0xFF);
    bytes[offset + 1] = static_cast<char>(value >> 8);
}

void putLe32(QByteArray& bytes, qsizetype offset, quint32 value)
{
    putLe16(bytes, offset, static_cast<quint16>(value & 0xFFFF));
    putLe16(bytes, offset + 2, static_cast<quint16>(value >> 16));
}

void putLe64(QByteArray& bytes, qsizetype offset, quint64 value)
{
    putLe32(bytes, offset, static_cast<quint32>(value & 0xFFFFFFFF));
    putLe32(bytes, offset + 4, static_cast<quint32>(value >> 32));
}

QList<qsizetype> centralRecordOffsets(const QByteArray& archive)
{
    const qsizetype end = archive.size() - 22;
    QList<qsizetype> offsets;
    qsizetype offset = le32(archive, end + 16);
    for (quint16 index = 0; index < le16(archive, end + 10); ++index) {
        offsets.append(offset);
        offset += 46 + le16(archive, offset + 28) + le16(archive, offset + 30) + le16(archive, offset + 32);
    }
    return offsets;
}

}  // namespace wendrel::test
