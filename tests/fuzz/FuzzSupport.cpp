#include "FuzzSupport.h"

#include "documents/docx/DocxReader.h"
#include "documents/docx/DocxWriter.h"
#include "documents/html/HtmlWriter.h"
#include "documents/odt/OdtReader.h"
#include "documents/odt/OdtWriter.h"
#include "documents/rtf/RtfWriter.h"
#include "documents/text/MarkdownWriter.h"
#include "documents/text/PlainTextWriter.h"
#include "documents/zip/ZipWriter.h"
#include "operations/OperationError.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QImage>
#include <QTemporaryDir>
#include <QTextDocument>
#include <QXmlStreamReader>

namespace wendrel::fuzz {

void ensureGuiApplication()
{
    static int argc = 1;
    static char name[] = "wendrel_fuzz";
    static char* argv[] = {name, nullptr};
    static const bool offscreen = qputenv("QT_QPA_PLATFORM", "offscreen");
    static QGuiApplication application(argc, argv);
    (void)offscreen;
}

QByteArray bytesOf(const std::uint8_t* data, std::size_t size)
{
    return QByteArray::fromRawData(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
}

QList<QByteArray> splitParts(const QByteArray& bytes, int count)
{
    QList<QByteArray> parts;
    const QByteArrayView separator(partSeparator);
    qsizetype from = 0;
    while (parts.size() < count - 1) {
        const qsizetype at = bytes.indexOf(separator, from);
        if (at < 0)
            break;
        parts.append(bytes.mid(from, at - from));
        from = at + separator.size();
    }
    parts.append(bytes.mid(from));
    while (parts.size() < count)
        parts.append(QByteArray());
    return parts;
}

QByteArray zipPackage(const QList<std::pair<QString, QByteArray>>& parts)
{
    QByteArray archive;
    QBuffer device(&archive);
    device.open(QIODevice::WriteOnly);
    // One thread: the fuzzer runs on a shared machine and the packages are tiny.
    ZipWriter writer(device, ZipWriter::Options{.threads = 1});
    const QDateTime modified(QDate(2024, 1, 1), QTime(0, 0));
    for (const auto& [name, contents] : parts)
        writer.addEntry(name, contents, ZipWriter::Compression::deflateWhenSmaller, modified);
    writer.finish();
    device.close();
    return archive;
}

QString scratchFolder()
{
    static QTemporaryDir folder;
    REQUIRE(folder.isValid());
    return folder.path();
}

QString scratchFile(const QString& name, const QByteArray& bytes)
{
    const QString path = QDir(scratchFolder()).filePath(name);
    QFile file(path);
    REQUIRE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    REQUIRE(file.write(bytes) == bytes.size());
    file.close();
    return path;
}

void writeEveryWay(const QTextDocument& document)
{
    REQUIRE(writeRtf(document).startsWith("{\\rtf1"));

    const QString page = documentToHtml(document, HtmlExport{.title = QStringLiteral("fuzz")});
    REQUIRE(page.startsWith(u"<!DOCTYPE html>"));
    QXmlStreamReader xml(page);
    while (!xml.atEnd())
        xml.readNext();
    REQUIRE(!xml.hasError());

    QByteArray docx;
    QBuffer device(&docx);
    device.open(QIODevice::WriteOnly);
    writeDocx(document, device);
    device.close();
    try {
        REQUIRE(readDocx(scratchFile(QStringLiteral("written.docx"), docx)) != nullptr);
    } catch (const OperationError& error) {
        qFatal("our own Word document can't be read back: %s", qPrintable(error.message()));
    }

    const QString odt = QDir(scratchFolder()).filePath(QStringLiteral("written.odt"));
    document::writeOdt(document, odt);
    try {
        REQUIRE(document::readOdt(odt) != nullptr);
    } catch (const OperationError& error) {
        qFatal("our own OpenDocument text can't be read back: %s", qPrintable(error.message()));
    }

    // Neither has a promise to check beyond finishing; they meet the document all the same.
    (void)document::documentToMarkdown(document);
    (void)document::documentToPlainText(document);
}

void readAndWriteEveryWay(const std::function<std::unique_ptr<QTextDocument>()>& read)
{
    std::unique_ptr<QTextDocument> document;
    try {
        document = read();
    } catch (const OperationError&) {
        return;
    }
    REQUIRE(document != nullptr);
    writeEveryWay(*document);
}

QByteArray smallPng()
{
    QImage image(3, 2, QImage::Format_RGB32);
    image.fill(Qt::darkCyan);
    QByteArray png;
    QBuffer device(&png);
    device.open(QIODevice::WriteOnly);
    image.save(&device, "PNG");
    return png;
}

}  // namespace wendrel::fuzz
