#include "DocumentSamples.h"
#include "documents/ZipTestTools.h"
#include "documents/epub/EpubBook.h"
#include "documents/zip/ZipEntryBytes.h"
#include "documents/zip/ZipReader.h"
#include "documents/zip/ZipWriter.h"
#include "support/TestEnvironment.h"

#include <QBuffer>
#include <QDateTime>
#include <QLocale>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTextCursor>
#include <QTextDocument>

#include <gtest/gtest.h>

namespace wendrel::test {

namespace {

struct BookEntry {
    QString name;
    QString text;
};

// The entries as an independent reading of the archive gives them, in the archive's order.
QList<BookEntry> entriesOf(const QByteArray& book)
{
    QByteArray copy = book;
    QBuffer buffer(&copy);
    buffer.open(QIODevice::ReadOnly);
    const ZipReader reader(buffer);
    QList<BookEntry> entries;
    for (const ZipReader::Entry& entry : reader.entries())
        entries.append({entry.path, QString::fromUtf8(readZipEntry(reader, entry.path, 1 << 24).value_or("(missing)"))});
    return entries;
}

QString entryText(const QByteArray& book, const QString& name)
{
    for (const BookEntry& entry : entriesOf(book)) {
        if (entry.name == name)
            return entry.text;
    }
    return QStringLiteral("(no entry %1)").arg(name);
}

std::unique_ptr<QTextDocument> oneParagraph(const QString& text)
{
    auto document = std::make_unique<QTextDocument>();
    QTextCursor(document.get()).insertText(text);
    return document;
}

const QString head = QStringLiteral(
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE html>\n"
    "<html xmlns=\"http://www.w3.org/1999/xhtml\" xmlns:epub=\"http://www.idpf.org/2007/ops\">\n"
    "<head><meta charset=\"utf-8\"/><title>");

QString writeBook(const QByteArray& book, const QString& name)
{
    const QString path = scratchParent() + u'/' + name;
    writeFile(path, book);
    return path;
}

// The same book with its entries' texts changed by `edit`, packed the same way.
QByteArray rebuilt(const QByteArray& book, const std::function<QString(const QString&, QString)>& edit)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    ZipWriter zip(buffer);
    for (const BookEntry& entry : entriesOf(book)) {
        zip.addEntry(entry.name, edit(entry.name, entry.text).toUtf8(),
                     entry.name == u"mimetype" ? ZipWriter::Compression::store : ZipWriter::Compression::deflateWhenSmaller,
                     QDateTime::currentDateTime());
    }
    zip.finish();
    return bytes;
}

struct Validation {
    bool ran = false;
    QStringList messages;  // each error or warning line, as the validator words it
    QString output;
};

Validation epubcheck(const QString& path)
{
    // Debian's validator is a bare jar that only a registered binary format runs directly.
    const QString validator = QStandardPaths::findExecutable(QStringLiteral("epubcheck"));
    const QString java = QStandardPaths::findExecutable(QStringLiteral("java"));
    if (validator.isEmpty() || java.isEmpty())
        return {};
    const ToolRun run = runTool(java, {QStringLiteral("-jar"), validator, path});
    Validation result{.ran = run.exitCode >= 0, .messages = {}, .output = run.output + run.errors};
    for (const QString& line : result.output.split(u'\n')) {
        if (line.startsWith(QStringLiteral("ERROR")) || line.startsWith(QStringLiteral("WARNING"))
            || line.startsWith(QStringLiteral("FATAL")))
            result.messages.append(line);
    }
    return result;
}

}  // namespace

// The title is escaped once in every entry that shows it; the language follows the locale.
TEST(EpubBookTest, EntriesComeInOrderMimetypeFirstAndStoredEachWithItsText)
{
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Switzerland));
    const QDateTime before = QDateTime::currentDateTimeUtc().addSecs(-1);
    const QByteArray book = makeEPUB(*oneParagraph(QStringLiteral("Hello")), QStringLiteral("A&B <c>"));
    const QDateTime after = QDateTime::currentDateTimeUtc().addSecs(1);
    QLocale::setDefault(QLocale::system());

    // Readers find the type in the first bytes: a stored entry without extra field.
    EXPECT_EQ(le32(book, 0), 0x04034b50u);
    EXPECT_EQ(le16(book, 8), 0);
    EXPECT_EQ(le16(book, 28), 0);
    EXPECT_EQ(book.mid(30, 28), QByteArrayLiteral("mimetypeapplication/epub+zip"));
    QStringList names;
    for (const BookEntry& entry : entriesOf(book))
        names.append(entry.name);
    EXPECT_EQ(names, (QStringList{QStringLiteral("mimetype"), QStringLiteral("META-INF/container.xml"),
                                  QStringLiteral("OEBPS/content.opf"), QStringLiteral("OEBPS/nav.xhtml"),
                                  QStringLiteral("OEBPS/chapter.xhtml")}));
    EXPECT_EQ(independentCheckFailures(writeBook(book, QStringLiteral("hello.epub"))), QStringList());

    EXPECT_EQ(entryText(book, QStringLiteral("mimetype")), QStringLiteral("application/epub+zip"));
    EXPECT_EQ(entryText(book, QStringLiteral("META-INF/container.xml")),
              QStringLiteral("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                             "<container version=\"1.0\" xmlns=\"urn:oasis:names:tc:opendocument:xmlns:container\">\n"
                             "  <rootfiles><rootfile full-path=\"OEBPS/content.opf\" "
                             "media-type=\"application/oebps-package+xml\"/></rootfiles>\n</container>"));

    const QRegularExpression package(
        QRegularExpression::anchoredPattern(
            QRegularExpression::escape(QStringLiteral(
                "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                "<package xmlns=\"http://www.idpf.org/2007/opf\" version=\"3.0\" unique-identifier=\"uid\">\n"
                "  <metadata xmlns:dc=\"http://purl.org/dc/elements/1.1/\">\n"
                "    <dc:identifier id=\"uid\">urn:uuid:"))
            + QStringLiteral("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}")
            + QRegularExpression::escape(QStringLiteral("</dc:identifier>\n    <dc:title>A&amp;B &lt;c&gt;</dc:title>\n"
                                                        "    <dc:language>de</dc:language>\n"
                                                        "    <meta property=\"dcterms:modified\">"))
            + QStringLiteral("(\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\dZ)")
            + QRegularExpression::escape(QStringLiteral(
                "Z</meta>\n  </metadata>\n  <manifest>\n"
                "    <item id=\"nav\" href=\"nav.xhtml\" media-type=\"application/xhtml+xml\" properties=\"nav\"/>\n"
                "    <item id=\"chapter\" href=\"chapter.xhtml\" media-type=\"application/xhtml+xml\"/>\n"
                "  </manifest>\n  <spine><itemref idref=\"chapter\"/></spine>\n</package>"))));
    const QString opf = entryText(book, QStringLiteral("OEBPS/content.opf"));
    const QRegularExpressionMatch match = package.match(opf);
    ASSERT_TRUE(match.hasMatch()) << opf.toStdString();
    const QDateTime modified = QDateTime::fromString(match.captured(1), Qt::ISODate);
    EXPECT_TRUE(modified >= before && modified <= after) << match.captured(1).toStdString();

    EXPECT_EQ(entryText(book, QStringLiteral("OEBPS/nav.xhtml")),
              head + QStringLiteral("A&amp;B &lt;c&gt;</title></head>\n<body><nav epub:type=\"toc\"><ol><li>"
                                    "<a href=\"chapter.xhtml\">A&amp;B &lt;c&gt;</a></li></ol></nav></body>\n</html>"));
    EXPECT_EQ(entryText(book, QStringLiteral("OEBPS/chapter.xhtml")),
              head + QStringLiteral("A&amp;B &lt;c&gt;</title></head>\n<body>\n<p>Hello</p>\n</body>\n</html>"));
    EXPECT_EQ(escapedBookTitle(QStringLiteral("\"A\" & 'B' <>")), QStringLiteral("\"A\" &amp; 'B' &lt;&gt;"));

    const std::pair<QLocale, const char*> languages[] = {
        {QLocale(QLocale::English, QLocale::UnitedStates), "en"}, {QLocale(QLocale::French), "fr"}, {QLocale::c(), "en"}};
    for (const auto& [locale, expected] : languages) {
        QLocale::setDefault(locale);
        EXPECT_TRUE(entryText(makeEPUB(*oneParagraph(QStringLiteral("x")), QStringLiteral("T")), QStringLiteral("OEBPS/content.opf"))
                        .contains(QStringLiteral("<dc:language>%1</dc:language>").arg(QLatin1StringView(expected))))
            << locale.name().toStdString();
    }
    QLocale::setDefault(QLocale::system());
}

TEST(EpubBookTest, TwoBooksOfOneDocumentDifferOnlyInIdentifierAndDate)
{
    const auto document = richSampleDocument();
    const QList<BookEntry> first = entriesOf(makeEPUB(*document, QStringLiteral("Report")));
    const QList<BookEntry> second = entriesOf(makeEPUB(*document, QStringLiteral("Report")));
    const QRegularExpression identifier(QStringLiteral("urn:uuid:[0-9A-F-]{36}"));
    const QRegularExpression date(QStringLiteral("\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\dZZ"));
    ASSERT_EQ(first.size(), second.size());
    for (qsizetype i = 0; i < first.size(); ++i) {
        EXPECT_EQ(first[i].name, second[i].name);
        QString left = first[i].text, right = second[i].text;
        EXPECT_EQ(left.replace(identifier, QStringLiteral("ID")).replace(date, QStringLiteral("DATE")),
                  right.replace(identifier, QStringLiteral("ID")).replace(date, QStringLiteral("DATE")));
    }
    EXPECT_NE(first[2].text.section(u'\n', 3, 3), second[2].text.section(u'\n', 3, 3));
}

TEST(EpubBookTest, ChapterBodyFromExportedHtml)
{
    const std::pair<const char*, const char*> cases[] = {
        {"<html><body class=\"x\">\n<p>a</p>\n</body></html>", "\n<p>a</p>\n"}, {"<HTML><BODY>in</BODY></HTML>", "in"},
        {"<body>one</body> between </body> end", "one</body> between "},
        {"no tags <p>at all</p>", "no tags <p>at all</p>"}, {"<body>never closed", "<body>never closed"},
        {"closed only</body>", "closed only</body>"}, {"<br>", "<br/>"}, {"<BR >", "<BR/>"}, {"<br/>", "<br/>"},
        {"<br />", "<br/>"}, {"<img src=\"a.png\">", "<img src=\"a.png\"/>"},
        {"<img alt=\"\" src=\"a.png\" />", "<img alt=\"\" src=\"a.png\"/>"},
        {"<hr class=\"x\"><meta charset=\"utf-8\"><link rel=\"s\"><input type=\"text\">",
         "<hr class=\"x\"/><meta charset=\"utf-8\"/><link rel=\"s\"/><input type=\"text\"/>"},
        {"<p>keep</p><b>bold</b>", "<p>keep</p><b>bold</b>"},
        {"a&nbsp;b &NBSP; &amp;nbsp;", "a&#160;b &NBSP; &amp;nbsp;"},
    };
    for (const auto& [html, body] : cases)
        EXPECT_EQ(chapterBody(QString::fromUtf8(html)), QString::fromUtf8(body)) << html;
}

// The validator's only complaint about a book is the doubled Z its modified date carries on
// purpose; with that Z taken out, the same book passes without a single message.
TEST(EpubBookTest, ValidatorAcceptsTheSampleBook)
{
    const QByteArray book = makeEPUB(*richSampleDocument(), QStringLiteral("Quarterly & <Annual> Report"));
    const Validation asWritten = epubcheck(writeBook(book, QStringLiteral("sample.epub")));
    if (!asWritten.ran)
        GTEST_SKIP() << "epubcheck is not installed";
    const QRegularExpression doubledZ(QRegularExpression::anchoredPattern(
        QStringLiteral("ERROR\\(RSC-005\\): .*/sample\\.epub/OEBPS/content\\.opf\\(7,39\\): Error while parsing file: "
                       "dcterms:modified illegal syntax \\(expecting: \"CCYY-MM-DDThh:mm:ssZ\"\\)")));
    ASSERT_EQ(asWritten.messages.size(), 1) << asWritten.output.toStdString();
    EXPECT_TRUE(doubledZ.match(asWritten.messages.first()).hasMatch()) << asWritten.messages.first().toStdString();
    EXPECT_TRUE(asWritten.output.contains(QStringLiteral("Messages: 0 fatals / 1 error / 0 warnings / 0 infos")))
        << asWritten.output.toStdString();

    const QByteArray singleZ = rebuilt(book, [](const QString& name, QString text) {
        if (name == u"OEBPS/content.opf")
            text.replace(QStringLiteral("ZZ</meta>"), QStringLiteral("Z</meta>"));
        return text;
    });
    const Validation corrected = epubcheck(writeBook(singleZ, QStringLiteral("sample-single-z.epub")));
    EXPECT_EQ(corrected.messages, QStringList()) << corrected.output.toStdString();
    EXPECT_TRUE(corrected.output.contains(QStringLiteral("No errors or warnings detected")))
        << corrected.output.toStdString();

    // An empty document gives an empty chapter, which is a valid book too.
    QTextDocument nothing;
    const QByteArray empty = makeEPUB(nothing, QStringLiteral("Nothing"));
    EXPECT_EQ(entryText(empty, QStringLiteral("OEBPS/chapter.xhtml")),
              head + QStringLiteral("Nothing</title></head>\n<body></body>\n</html>"));
    const QByteArray emptySingleZ = rebuilt(empty, [](const QString&, QString text) {
        return text.replace(QStringLiteral("ZZ</meta>"), QStringLiteral("Z</meta>"));
    });
    const Validation emptyChecked = epubcheck(writeBook(emptySingleZ, QStringLiteral("empty-single-z.epub")));
    EXPECT_EQ(emptyChecked.messages, QStringList()) << emptyChecked.output.toStdString();
}

}  // namespace wendrel::test
