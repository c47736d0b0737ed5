#include "DocumentConversion.h"

#include "documents/TextFiles.h"
#include "documents/docx/DocxReader.h"
#include "documents/docx/DocxWriter.h"
#include "documents/epub/EpubBook.h"
#include "documents/html/HtmlWriter.h"
#include "documents/odt/OdtReader.h"
#include "documents/odt/OdtWriter.h"
#include "documents/pdfout/DocumentPdfWriter.h"
#include "documents/rtf/RtfReader.h"
#include "documents/rtf/RtfWriter.h"
#include "documents/text/MarkdownWriter.h"
#include "documents/text/PlainTextWriter.h"
#include "documents/text/TextReaders.h"
#include "operations/AtomicFile.h"
#include "operations/ContentType.h"
#include "operations/FileNames.h"
#include "operations/OperationError.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QStringDecoder>
#include <QTextDocument>

namespace wendrel {

using document::documentToMarkdown;
using document::documentToPlainText;
using document::readHtml;
using document::readMarkdown;
using document::readOdt;
using document::readPlainText;
using document::writeDocumentPdf;
using document::writeOdt;

namespace {

QString translate(const char* text) { return QCoreApplication::translate("DocumentConversion", text); }

OperationError unreadable() { return OperationError(translate("Can't read this document")); }

// A text source of this size is a book of thousands of pages; the model of a larger one would
// take gigabytes. Packaged formats bound their own parts.
constexpr qint64 largestTextSource = 32 * 1024 * 1024;
constexpr qint64 largestRtfSource = 128 * 1024 * 1024;  // pictures in RTF are hex: twice their size

QByteArray readSource(const QString& path, qint64 limit)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw unreadable();
    if (file.size() > limit)
        throw OperationError(translate("This document is too large to convert"));
    QByteArray bytes = file.read(limit + 1);
    if (file.error() != QFileDevice::NoError)
        throw unreadable();
    if (bytes.size() > limit)
        throw OperationError(translate("This document is too large to convert"));
    return bytes;
}

// Text sources are UTF-8, with or without a byte order mark, or UTF-16 with one; anything else
// is refused rather than shown as mojibake.
QString decodeText(const QByteArray& bytes)
{
    QStringDecoder decoder(QStringConverter::encodingForData(bytes).value_or(QStringConverter::Utf8),
                           QStringConverter::Flag::Stateless);
    QString text = decoder.decode(bytes);
    if (decoder.hasError())
        throw unreadable();
    if (text.startsWith(QChar::ByteOrderMark))
        text.remove(0, 1);
    return text;
}

// Whatever goes wrong inside a reader, the user learns one thing: this file can't be read.
template <typename Read>
std::unique_ptr<QTextDocument> readGuarded(Read read)
{
    try {
        std::unique_ptr<QTextDocument> document = read();
        if (document)
            return document;
    } catch (const OperationError&) {
    } catch (const std::bad_alloc&) {
    }
    throw unreadable();
}

void writeBytes(const QString& path, const QByteArray& bytes)
{
    writeFileAtomically(path, bytes, translate("Couldn't write “%1”").arg(lastPathComponent(path)));
}

}  // namespace

std::unique_ptr<QTextDocument> readDocument(const QString& path)
{
    const ContentType type = ContentType::ofFile(path);
    if (type.conformsTo(ContentType::docx()))
        return readGuarded([&] { return readDocx(path); });
    if (type.conformsTo(ContentType::odt()))
        return readGuarded([&] { return readOdt(path); });
    if (type.conformsTo(ContentType::rtf())) {
        const QByteArray rtf = readSource(path, largestRtfSource);
        return readGuarded([&] { return readRtf(rtf); });
    }
    const QString text = decodeText(readSource(path, largestTextSource));
    const QString folder = QFileInfo(path).absolutePath();
    if (type.conformsToAny({ContentType::html(), ContentType::xhtml()}))
        return readGuarded([&] { return readHtml(text, folder); });
    if (type.conformsTo(ContentType::markdown()))
        return readGuarded([&] { return readMarkdown(text, folder); });
    return readGuarded([&] { return readPlainText(text); });
}

void writeDocument(const QTextDocument& document, DocumentTarget target, const QString& path, const QString& title)
{
    switch (target) {
    case DocumentTarget::pdf:
        writeDocumentPdf(document, path, title);
        return;
    case DocumentTarget::docx: {
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly))
            throw OperationError(translate("Couldn't write “%1”").arg(lastPathComponent(path)));
        writeDocx(document, file);
        return;
    }
    case DocumentTarget::rtf:
        writeBytes(path, writeRtf(document));
        return;
    case DocumentTarget::odt:
        writeOdt(document, path);
        return;
    case DocumentTarget::html:
        writeBytes(path, documentToHtml(document, {.title = title}).toUtf8());
        return;
    case DocumentTarget::txt:
        writeBytes(path, documentToPlainText(document).toUtf8());
        return;
    case DocumentTarget::md:
        writeBytes(path, documentToMarkdown(document).toUtf8());
        return;
    case DocumentTarget::epub:
        writeBytes(path, makeEPUB(document, title));
        return;
    }
}

}  // namespace wendrel
