#include "EpubBook.h"

#include "documents/html/HtmlWriter.h"
#include "documents/zip/ZipWriter.h"

#include <QBuffer>
#include <QDateTime>
#include <QLocale>
#include <QRegularExpression>
#include <QUuid>

namespace wendrel {

using namespace Qt::StringLiterals;

namespace {

const QString container = QStringLiteral(
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<container version=\"1.0\" xmlns=\"urn:oasis:names:tc:opendocument:xmlns:container\">\n"
    "  <rootfiles><rootfile full-path=\"OEBPS/content.opf\" media-type=\"application/oebps-package+xml\"/>"
    "</rootfiles>\n"
    "</container>");

// The head of the navigation document and of the chapter, up to the title.
const QString xhtmlHead = QStringLiteral(
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!DOCTYPE html>\n"
    "<html xmlns=\"http://www.w3.org/1999/xhtml\" xmlns:epub=\"http://www.idpf.org/2007/ops\">\n"
    "<head><meta charset=\"utf-8\"/><title>");

// The user's language ("de" from "de_CH"); English when the locale names none.
QString languageCode()
{
    const QString language = QLocale().name().section(u'_', 0, 0);
    return language.isEmpty() || language == u"C"_s ? QStringLiteral("en") : language;
}

QString packageDocument(const QString& escapedTitle, const QDateTime& now)
{
    // The moment in ISO 8601 ends in its own Z, and the text after it starts with another:
    // every book of this writer carries the date that way.
    return QStringLiteral("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                          "<package xmlns=\"http://www.idpf.org/2007/opf\" version=\"3.0\" unique-identifier=\"uid\">\n"
                          "  <metadata xmlns:dc=\"http://purl.org/dc/elements/1.1/\">\n"
                          "    <dc:identifier id=\"uid\">urn:uuid:")
           + QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper()
           + u"</dc:identifier>\n    <dc:title>"_s + escapedTitle
           + u"</dc:title>\n    <dc:language>"_s + languageCode()
           + u"</dc:language>\n    <meta property=\"dcterms:modified\">"_s
           + now.toUTC().toString(Qt::ISODate)
           + u"Z</meta>\n  </metadata>\n  <manifest>\n"_s
             u"    <item id=\"nav\" href=\"nav.xhtml\" media-type=\"application/xhtml+xml\" properties=\"nav\"/>\n"_s
             u"    <item id=\"chapter\" href=\"chapter.xhtml\" media-type=\"application/xhtml+xml\"/>\n"_s
             u"  </manifest>\n  <spine><itemref idref=\"chapter\"/></spine>\n</package>"_s;
}

QString navigationDocument(const QString& escapedTitle)
{
    return xhtmlHead + escapedTitle + u"</title></head>\n<body>"_s
           + u"<nav epub:type=\"toc\"><ol><li><a href=\"chapter.xhtml\">"_s + escapedTitle
           + u"</a></li></ol></nav>"_s + u"</body>\n</html>"_s;
}

QString chapter(const QTextDocument& document, const QString& escapedTitle)
{
    // Pictures are not copied into the package, so their tags are left out: a reference to a
    // picture the book doesn't hold would fail validation and show as broken in readers.
    const QString html = documentToHtml(document, {.title = {}, .excludedElements = {QStringLiteral("img")}});
    return xhtmlHead + escapedTitle + u"</title></head>\n<body>"_s + chapterBody(html) + u"</body>\n</html>"_s;
}

}  // namespace

QString escapedBookTitle(const QString& title)
{
    QString escaped = title;
    escaped.replace(u'&', QStringLiteral("&amp;"));  // first, so the references below stay whole
    escaped.replace(u'<', QStringLiteral("&lt;"));
    escaped.replace(u'>', QStringLiteral("&gt;"));
    return escaped;
}

QString chapterBody(const QString& html)
{
    static const QRegularExpression bodyStart(QStringLiteral("<body[^>]*>"),
                                              QRegularExpression::CaseInsensitiveOption);
    static const QRegularExpression voidElement(QStringLiteral("<(br|hr|img|meta|link|input)([^>]*?)\\s*/?>"),
                                                QRegularExpression::CaseInsensitiveOption);
    QString body = html;
    if (const QRegularExpressionMatch start = bodyStart.match(html); start.hasMatch()) {
        const qsizetype end = html.lastIndexOf(QStringLiteral("</body>"), -1, Qt::CaseInsensitive);
        if (end >= start.capturedEnd())
            body = html.sliced(start.capturedEnd(), end - start.capturedEnd());
    }
    // XHTML is XML: an element without content must close itself.
    body.replace(voidElement, QStringLiteral("<\\1\\2/>"));
    body.replace(QStringLiteral("&nbsp;"), QStringLiteral("&#160;"));
    return body;
}

QByteArray makeEPUB(const QTextDocument& document, const QString& title)
{
    const QString escapedTitle = escapedBookTitle(title);
    const QDateTime now = QDateTime::currentDateTime();

    QByteArray book;
    QBuffer buffer(&book);
    buffer.open(QIODevice::WriteOnly);
    ZipWriter zip(buffer);
    // First and stored: readers recognise a book by these bytes at offset 38.
    zip.addEntry(QStringLiteral("mimetype"), QByteArrayLiteral("application/epub+zip"), ZipWriter::Compression::store,
                 now);
    const auto add = [&](const QString& name, const QString& text) {
        zip.addEntry(name, text.toUtf8(), ZipWriter::Compression::deflateWhenSmaller, now);
    };
    add(QStringLiteral("META-INF/container.xml"), container);
    add(QStringLiteral("OEBPS/content.opf"), packageDocument(escapedTitle, now));
    add(QStringLiteral("OEBPS/nav.xhtml"), navigationDocument(escapedTitle));
    add(QStringLiteral("OEBPS/chapter.xhtml"), chapter(document, escapedTitle));
    zip.finish();
    buffer.close();
    return book;
}

}  // namespace wendrel
