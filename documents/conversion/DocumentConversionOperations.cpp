#include "DocumentConversionOperations.h"

#include "DocumentConversion.h"
#include "documents/TextFiles.h"
#include "documents/markdown/MarkdownToHtml.h"
#include "operations/FileNames.h"
#include "operations/Op.h"
#include "operations/OperationCatalog.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QTextDocument>

namespace wendrel {

namespace {

QString translate(const char* text) { return QCoreApplication::translate("DocumentConversion", text); }

// A Markdown file becomes a web page through the system's own small converter; that is the one
// conversion without the document model, and it lays out no text.
constexpr qint64 largestMarkdownPage = 32 * 1024 * 1024;

// What a conversion holds while it runs: the model of a document takes some tens of times the
// size of its file. Reserved before reading, so large documents convert one after another.
qint64 memoryEstimate(const QString& path)
{
    return std::min<qint64>(QFileInfo(path).size() * 40, 1024LL * 1024 * 1024);
}

ProducedFile convert(const QString& path, const OperationContext& context, DocumentTarget target)
{
    const QString title = QFileInfo(path).completeBaseName();
    const QString name = outputName(path, std::nullopt, extension(target));
    if (target == DocumentTarget::html && ContentType::ofFile(path).conformsTo(ContentType::markdown())) {
        const QString page = markdownToHTML(readUtf8TextFile(path, largestMarkdownPage), title);
        return context.produce(path, name, [&](const QString& scratch) { writeUtf8TextFile(scratch, page); });
    }
    const auto reservation = context.reserveMemory(memoryEstimate(path));
    const std::unique_ptr<QTextDocument> document = readDocument(path);
    context.throwIfCancelled();
    return context.produce(path, name,
                           [&](const QString& scratch) { writeDocument(*document, target, scratch, title); });
}

struct TargetEntry {
    EntryId id;  // "doc." and the extension
    DocumentTarget target;
    const char* title;
    const char* description;
    QList<ContentType> ownFormat;  // never offered a file already in this format
};

FileOperationPtr conversionEntry(const TargetEntry& entry)
{
    // Plain text of every kind, Markdown, HTML and RTF among it, and the word processors'
    // packages. Tables and subtitles are text too, but have conversions of their own.
    QList<ContentType> excludes{ContentType::commaSeparatedText(), ContentType::tabSeparatedText(),
                                ContentType::subRip(), ContentType::webVtt()};
    QList<ContentType> excludesExactly;
    if (entry.target == DocumentTarget::txt)
        excludesExactly = entry.ownFormat;  // everything textual conforms to plain text
    else
        excludes += entry.ownFormat;
    const DocumentTarget target = entry.target;
    return Op::make({
        .entry = {.id = entry.id,
                  .title = translate(entry.title),
                  .symbol = QStringLiteral("doc.text"),
                  .ring = RingKind::convert,
                  .inputs = {ContentType::plainText(), ContentType::docx(), ContentType::odt(), ContentType::rtf()},
                  .excludes = excludes,
                  .description = translate(entry.description),
                  .drawsText = true,
                  .drawsNoTextFor = target == DocumentTarget::html ? QList{ContentType::markdown()} : QList<ContentType>{}},
        .excludesExactly = excludesExactly,
        .perFile = [target](const QString& path, const OperationContext& context) {
            return convert(path, context, target);
        },
    });
}

}  // namespace

void registerDocumentConversionOperations(OperationCatalog& catalog)
{
    const TargetEntry entries[] = {
        {"doc.pdf", DocumentTarget::pdf, QT_TRANSLATE_NOOP("DocumentConversion", "PDF"),
         QT_TRANSLATE_NOOP("DocumentConversion", "A PDF of the document, its text selectable, on A4 or Letter paper."),
         {}},
        {"doc.docx", DocumentTarget::docx, QT_TRANSLATE_NOOP("DocumentConversion", "DOCX"),
         QT_TRANSLATE_NOOP("DocumentConversion", "A Word document with the headings, lists, tables and pictures."),
         {ContentType::docx()}},
        {"doc.rtf", DocumentTarget::rtf, QT_TRANSLATE_NOOP("DocumentConversion", "RTF"),
         QT_TRANSLATE_NOOP("DocumentConversion", "Rich Text, which almost every word processor opens."),
         {ContentType::rtf()}},
        {"doc.odt", DocumentTarget::odt, QT_TRANSLATE_NOOP("DocumentConversion", "ODT"),
         QT_TRANSLATE_NOOP("DocumentConversion", "An OpenDocument text."),
         {ContentType::odt()}},
        {"doc.html", DocumentTarget::html, QT_TRANSLATE_NOOP("DocumentConversion", "HTML"),
         QT_TRANSLATE_NOOP("DocumentConversion", "A web page in one file, pictures included."),
         {ContentType::html(), ContentType::xhtml()}},
        {"doc.txt", DocumentTarget::txt, QT_TRANSLATE_NOOP("DocumentConversion", "TXT"),
         QT_TRANSLATE_NOOP("DocumentConversion", "Just the text."),
         {ContentType::plainText()}},
        {"doc.md", DocumentTarget::md, QT_TRANSLATE_NOOP("DocumentConversion", "Markdown"),
         QT_TRANSLATE_NOOP("DocumentConversion", "Markdown with the headings, emphasis, links, lists and tables."),
         {ContentType::markdown()}},
        {"doc.epub", DocumentTarget::epub, QT_TRANSLATE_NOOP("DocumentConversion", "EPUB"),
         QT_TRANSLATE_NOOP("DocumentConversion", "An e-book with the whole document as one chapter."),
         {}},
    };
    for (const TargetEntry& entry : entries)
        catalog.add(conversionEntry(entry));
}

}  // namespace wendrel
